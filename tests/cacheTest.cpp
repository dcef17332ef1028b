/// The cache: finding units, and how values of every shape are flagged, shown, mirrored, settled and reported.
#include "serviceForProtocol/cache/byteAssembly.h"
#include "serviceForProtocol/cache/cacheReads.h"
#include "serviceForProtocol/cache/changeReports.h"
#include "serviceForProtocol/requests/writeMirror.h"
#include "support/driverTest.h"
#include "support/kinds.h"

#include <algorithm>

namespace {

// ---- Finding units ----

class UnitsTest : public DriverTest {
protected:
    static int indexOf(const char *keyName, int address, int station = 1)
    {
        return getIndexOfDataArea(station, qt(keyName), address, driver.dataAreas);
    }
};

TEST_F(UnitsTest, areFoundWhenTheListWasChangedBehindTheIndex)
{
    for (int i = 0; i < 5; ++i)
        indexOf("D", i);
    driver.dataAreas.removeFirst();
    EXPECT_EQ(indexOf("D", 3), 2);
    EXPECT_EQ(indexOf("D", 0), 4);

    driver.dataAreas[4].address = 9; // the last, with as many entries and the same first one
    EXPECT_EQ(indexOf("D", 9), 4);

    driver.dataAreas.clear();
    EXPECT_EQ(indexOf("D", 7), 0);
    _DATA_ other;
    other.station = 1;
    other.regName = qt("M");
    driver.dataAreas[0] = other;
    EXPECT_EQ(indexOf("M", 0), 0);
    driver.dataAreas.append(other);
    EXPECT_EQ(indexOf("M", 0), 0) << "the first of two";
    EXPECT_EQ(indexOf("D", 7), 2);
}

TEST_F(UnitsTest, ofARunAreTheRightOnesInWhateverOrderTheyWereTouched)
{
    for (const int address : {5, 3, 4, 9, 0, 1, 2, 8})
        unit("D", address).readValue[0] = static_cast<quint8>(address + 1);
    unit("D", 6, 2).readValue[0] = 77;
    unit("R", 7).readValue[0] = 77;
    EXPECT_EQ(reads("D", 0, 10), words({1, 2, 3, 4, 5, 6, 0, 0, 9, 10}));
    writes("D", 0, 10, words({10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
    EXPECT_EQ(reads("D", 0, 10), words({10, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
    EXPECT_EQ(driver.dataAreas.size(), 12);
}

TEST_F(UnitsTest, ofBitsAreSetAndClearedByPosition)
{
    EXPECT_EQ(_setBitValue(5, 1, 1), 7);
    EXPECT_EQ(_setBitValue(7, 0, 0), 6);
    EXPECT_EQ(_setBitValue(0, 31, -1), static_cast<int>(0x80000000U));
    EXPECT_EQ(_setBitValue(-1, 31, 0), 0x7fffffff);
    EXPECT_EQ(_setBitValue(1, 32, 1), 1);
    EXPECT_EQ(_setBitValue(1, -1, 1), 1);
}

// ---- Shapes, also those that no register kind has today ----

struct ShapeRow {
    const char *what;
    int valueWidth, unitWidth;
    bool bitsInUnits;
    int hostCount;
    const char *values;
    const char *flags; ///< of the units from 10 on, each with its polled bits
    const char *written;
    const char *whenMirrored;
    const char *whenGivenUp;
};

// A value at 10 (a bit at 10: in unit 0 or 1) and those behind it are polled and written; all was 0 before.
const ShapeRow SHAPES[] = {
    {"32 in 32", 32, 32, false, 5, "01 02 03 04 00 00 00 00", "10:1/0 11:1/0", "01 02 03 04 00 00 00 00", "K 10",
     "K 10, K 11"},
    {"32 in 1", 32, 1, false, 3, "00 00 00 09", "10:1/0", "00 00 00 09", "K 10", "K 10"},
    {"32 in 16", 32, 16, false, 2, "01 00 02 00", "10:2/0 11:4/0", "01 00 02 00", "K_D 10, K_D 10", "K_D 10, K_D 10"},
    {"32 in 8", 32, 8, false, 2, "01 02 00 04", "10:8/0 11:10/0 12:20/0 13:40/0", "01 02 00 04",
     "K_D 10, K_D 10, K_D 10", "K_D 10, K_D 10, K_D 10, K_D 10"},
    {"16 in 16", 16, 16, false, 2, "00 01 00 00", "10:1/0 11:1/0", "00 01 00 00", "K 10", "K 10, K 11"},
    {"16 in 32", 16, 32, false, 1, "05 00", "10:1/0", "05 00", "K 10", "K 10"},
    {"16 in 8", 16, 8, false, 2, "01 02 00 03", "10:2/0 11:4/0 12:2/0 13:4/0", "01 02 00 03", "K_W 10, K_W 10, K_W 12",
     "K_W 10, K_W 10, K_W 12, K_W 12"},
    {"plain bit", 1, 1, false, 2, "01 00", "10:1/0 11:1/0", "01 00", "K 10", "K 10, K 11"},
    {"plain byte", 8, 8, false, 2, "7f 00", "10:1/0 11:1/0", "7f 00", "K 10", "K 10, K 11"},
    {"bit in 16", 1, 16, true, 7, "01 00 01 00 00 00 01", "0:0/fc00 1:0/1", "00 14 01 00",
     "K_bit 10, K_bit 12, K_bit 16", "K_bit 10, K_bit 11, K_bit 12, K_bit 13, K_bit 14, K_bit 15, K_bit 16"},
    {"bit in 8", 1, 8, true, 2, "01 01", "1:0/c", "0c", "K_bit 10, K_bit 11", "K_bit 10, K_bit 11, K_bit 10, K_bit 11"},
    {"bit in 32", 1, 32, true, 2, "01 01", "", "", "", ""},
    {"64 in 16", 64, 16, false, 2, "01 02 03 04", "", "", "", ""},
    {"a word short", 32, 32, false, 1, "01 02", "", "", "", ""},
};

class EveryShape : public UnitsTest, public ::testing::WithParamInterface<ShapeRow> {
protected:
    ShapeRow row = GetParam();
    ValueShape shape = valueShape(row.valueWidth, row.unitWidth, row.bitsInUnits);
    UnitRun units = UnitRun(shape, 1, qt("K"), 10, row.hostCount / shape.hostCountPerValue * shape.unitsPerValue);

    void mirrors(const char *values)
    {
        const ::Run run = {1, qt("K"), 10, row.hostCount};
        mirrorUnits(units, hex(values).data(), QueuedTwins(run));
    }

    std::string contents(const quint8 (_DATA_::*value)[4]) const
    {
        Bytes bytes;
        for (const _DATA_ &area : driver.dataAreas)
            bytes.insert(bytes.end(), area.*value, area.*value + shape.bytesPerUnit);
        return hexText(bytes);
    }

    long pendingUnits() const
    {
        return std::count_if(
            driver.dataAreas.begin(), driver.dataAreas.end(),
            [](const _DATA_ &area) { return area.writePending == 1; });
    }

    void SetUp() override { flag(units); }
};

TEST_P(EveryShape, isFlaggedOnItsUnits)
{
    std::ostringstream flags;
    for (const _DATA_ &area : driver.dataAreas)
        flags << (flags.str().empty() ? "" : " ") << std::dec << area.address << ":" << std::hex << area.monitorFlags
              << "/" << area.monitorBits;
    EXPECT_EQ(flags.str(), row.flags);
}

TEST_P(EveryShape, isShownAtOnceAndReportedWhereItChangesWhatIsShown)
{
    mirrors(row.values);
    EXPECT_EQ(reports(), row.whenMirrored);
    EXPECT_EQ(pendingUnits(), driver.dataAreas.size());
    EXPECT_EQ(contents(&_DATA_::writeValue), row.written);
    Bytes shown(hex(row.values).size() + 1, 0xEE);
    show(units, shown.data());
    if (units.count > 0)
        EXPECT_EQ(hexText(shown), row.values + std::string(" ee")) << "in the host's layout, and no byte more";
    else
        EXPECT_EQ(shown.front(), 0xEE);
    mirrors(row.values);
    EXPECT_EQ(reports(), "") << "nothing changes for the host";
}

TEST_P(EveryShape, becomesWhatWasReadWhenAccepted)
{
    mirrors(row.values);
    reports();
    settleUnits(units, true);
    EXPECT_EQ(pendingUnits(), 0);
    EXPECT_EQ(contents(&_DATA_::readValue), row.written);
    EXPECT_EQ(reports(), row.bitsInUnits ? row.whenGivenUp : "") << "only bits are reported where nothing changes";
}

TEST_P(EveryShape, isReportedWhenItsAcceptanceShowsItAgain)
{
    if (row.bitsInUnits)
        return;
    mirrors(row.values);
    settleUnits(units, false); // an earlier write of these units
    reports();
    settleUnits(units, true);
    EXPECT_EQ(reports(), row.whenMirrored);
    EXPECT_EQ(contents(&_DATA_::readValue), row.written);
}

TEST_P(EveryShape, isDroppedAndReportedWhenGivenUp)
{
    mirrors(row.values);
    const std::string before = contents(&_DATA_::readValue);
    reports();
    settleUnits(units, false);
    EXPECT_EQ(pendingUnits(), 0);
    EXPECT_EQ(contents(&_DATA_::readValue), before);
    EXPECT_EQ(reports(), row.whenGivenUp);
}

INSTANTIATE_TEST_SUITE_P(Shapes, EveryShape, ::testing::ValuesIn(SHAPES));

TEST_F(UnitsTest, theHighUnitOfAValueIsThereBeforeTheLowOneIsReported)
{
    const UnitRun units(valueShape(32, 16, false), 1, qt("K"), 10, 2);
    flag(units);
    std::vector<int> seen;
    whenReported = [&](const Report &) {
        seen.push_back(unit("K", 10).writeValue[0]);
        seen.push_back(unit("K", 11).writeValue[0]);
    };
    mirrorUnits(units, words({1, 2}).data(), QueuedTwins(::Run{1, qt("K"), 10, 2}));
    EXPECT_EQ(seen, (std::vector<int>{0, 2, 1, 2}));
}

TEST_F(UnitsTest, ofEveryKindLieUnderItsKeyName)
{
    for (const Kind &kind : kinds()) {
        driver.dataAreas.clear();
        EXPECT_EQ(_setDataAreaMonitorFlag(1, qt(kind.name), 35, 2), 0);
        EXPECT_EQ(plain(driver.dataAreas.first().regName), kind.unitName);
        EXPECT_EQ(driver.dataAreas.first().address, kind.isBitInWord() ? 2 : 35);
        EXPECT_EQ(driver.dataAreas.first().monitorBits, kind.isBitInWord() ? 0x18U : 0U);
        EXPECT_EQ(reads(kind.name, 35, 2), Bytes(kind.holdsBits() ? 2 : 4, 0));
    }
}

// ---- The driver's doors ----

TEST_F(UnitsTest, nothingSenselessIsFlaggedServedQueuedOrCreated)
{
    const char *const senseless = "Q 0 1, d 0 1, D 0 0, D 0 -3, D -1 1, D 0 9001, 32C 0 113, M 0 8193, "
                                  "D_bit 0 144001, D 2147483647 2, D_bit -16 1, R 0 2147483647, D 1000000 1, "
                                  "D 999999 2, M 999990 11, SD 1000000 1, 32C 999999 4, D_bit 1600000 1, "
                                  "R_bit 1599990 11";
    for (const _RCP_VAR_PRO &run : runsOf(senseless)) {
        const KEY_ADDRESS wanted = key(plain(run.regName), run.address, run.count);
        SCOPED_TRACE(text(wanted));
        quint8 value = 0xEE;
        EXPECT_EQ(_setDataAreaMonitorFlag(1, wanted.regName, wanted.address, wanted.count), 0);
        EXPECT_EQ(intf_getData(1, wanted.regName, wanted.address, wanted.count, &value), 1);
        EXPECT_EQ(value, 0xEE);
        EXPECT_EQ(intf_setData(1, wanted.regName, wanted.address, wanted.count, &value, 0), 1);
        asksForCondition(wanted);
        EXPECT_EQ(polls({wanted}), 0);
        EXPECT_TRUE(driver.dataAreas.isEmpty() && driver.writeQueue.isEmpty() && driver.conditionReads.isEmpty());
        EXPECT_EQ(text(driver.lastConditionRead), " 0 0 @0");
    }
    for (const _RCP_VAR_PRO &wanted :
         runsOf("D 999999 1, D 9000 9000, 32C 0 112, 32C 999999 3, D_bit 1599999 1, M 999990 10")) {
        SCOPED_TRACE(text(wanted));
        EXPECT_FALSE(reads(plain(wanted.regName), wanted.address, wanted.count).empty());
        EXPECT_GT(polls(text(wanted)), 0) << "an address above the highest is not refused";
    }
}

// ---- Reports ----

enum class Width { Bit, Byte, Word, DoubleWord };

TEST_F(UnitsTest, areReportedInTheViewsThatArePolled)
{
    const int null = -2;
    const struct {
        const char *what;
        Width width;
        int address;
        quint32 flags, bits;
        int before, after; ///< null: no contents given
        int mode;
        const char *reports;
    } rows[] = {
        {"word and bits", Width::Word, 100, 1, 0x8001, 1, 0x8001, 0, "K_bit 1615, K 100"},
        {"contents in the other order", Width::Word, 100, 1, 0x8001, 0x8001, 1, 0, "K_bit 1615, K 100"},
        {"without comparison", Width::Word, 100, 1, 0x8001, 1, null, 0, "K_bit 1600, K_bit 1615, K 100"},
        {"mode 1", Width::Word, 100, 1, 0x8001, null, 1, 1, "K 100"},
        {"mode 2", Width::DoubleWord, 100, 1, 0x8001, 0, 1, 2, "K 100"},
        {"mode -1", Width::Byte, 100, 1, 1, 0, 1, -1, "K_B 100"},
        {"nothing flagged", Width::Word, 100, 0, 0, null, null, 0, ""},
        {"nothing differs", Width::Word, 100, 1, 0x8001, 1, 1, 0, "K 100"},
        {"first and second of two words", Width::Word, 7, 6, 0, 0, 1, 0, "K_D 7, K_D 6"},
        {"value below 0", Width::Word, 0, 7, 0, 0, 1, 0, "K 0, K_D 0"},
        {"bits above the word", Width::Word, 1, 0, 0xffff0000, null, null, 0, ""},
        {"top bit of a double word", Width::DoubleWord, 2, 1, 0x80000001, 0, -2147483647 - 1, 0, "K_bit 95, K 2"},
        {"double word without views", Width::DoubleWord, 2, 0x7e, 0, 0, 1, 0, ""},
        {"byte in all views", Width::Byte, 9, 0x7f, 0x81, 0, 0x80, 0,
         "K_bit 79, K_B 9, K_W 9, K_W 8, K_D 9, K_D 8, K_D 7, K_D 6"},
        {"high byte at 0 ends the reports", Width::Byte, 0, 0x0c, 0, 0, 1, 0, ""},
        {"third byte at 1 ends the reports", Width::Byte, 1, 0x7e, 0, 0, 1, 0, "K_W 1, K_W 0, K_D 1, K_D 0"},
        {"byte without comparison", Width::Byte, 1, 0, 3, null, 0, 0, "K_bit 8, K_bit 9"},
        {"plain bit", Width::Bit, 5, 1, 0xff, 0, 1, 0, "K 5"},
        {"plain bit in other views", Width::Bit, 5, 0x7e, 0xff, 0, 1, 0, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        driver.dataAreas.clear();
        _DATA_ &area = unit("K", row.address);
        area.monitorFlags = row.flags;
        area.monitorBits = row.bits;
        const int *before = row.before == null ? nullptr : &row.before;
        const int *after = row.after == null ? nullptr : &row.after;
        const auto beforeByte = static_cast<quint8>(row.before);
        const auto afterByte = static_cast<quint8>(row.after);
        if (row.width == Width::Bit)
            _bitDataChange(0);
        else if (row.width == Width::Byte)
            _byteDataChange(before ? &beforeByte : nullptr, after ? &afterByte : nullptr, 0, row.mode);
        else
            (row.width == Width::Word ? _wordDataChange : _dwordDataChange)(before, after, 0, row.mode);
        EXPECT_EQ(reports(), row.reports);
    }
}

TEST_F(UnitsTest, areNotReportedWithoutCallbackOrEntry)
{
    unit("D", 1).monitorFlags = 1;
    _wordDataChange(nullptr, nullptr, 1, 0);
    _bitDataChange(-1);
    intf_setAddrValueChangeCallBack(nullptr);
    _wordDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(reports(), "");
}

TEST_F(UnitsTest, areReportedByANameThatTheHostMayKeepForItself)
{
    intf_setAddrValueChangeCallBack([](int, int, QString &name, int) {
        EXPECT_EQ(plain(name), "D");
        name = qt("changed by the host");
        return 7;
    });
    unit("D", 1).monitorFlags = 1;
    _wordDataChange(nullptr, nullptr, 0, 0);
    _wordDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(plain(unit("D", 1).regName), "D");
}

// ---- Small parts ----

TEST_F(UnitsTest, neverReadAreZerosAndFromThenOnCached)
{
    EXPECT_EQ(reads("D_bit", 1615, 2), (Bytes{0, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
    unit("D", 100).readValue[1] = 0x80;
    unit("D", 101).readValue[0] = 0x01;
    EXPECT_EQ(reads("D_bit", 1615, 2), (Bytes{1, 1}));
    EXPECT_EQ(reads("D", 100, 2), hex("00 80 01 00"));
    EXPECT_EQ(reads("32C", 200, 1), Bytes{});
    EXPECT_EQ(reads("32C", 200, 5), Bytes(8, 0));
    EXPECT_EQ(reports(), "");
}

TEST(HexText, isReadAsAByteWithMissingDigitsAsZero)
{
    const struct {
        const char *text;
        int position, value;
    } rows[] = {{"1F", 0, 31},         {"a0", 0, 160},        {"7", 0, 112},   {"", 0, 0},
                {"12", 1, 0x20},       {"12", 2, 0},          {"12", -1, 1},   {"0@", 0, 0},
                {"0A", 0, 10},         {"@/", 0, 0},          {":?", 0, 0xAF}, {"G\xff", 0, 0x08},
                {"12", 2147483647, 0}, {"12", -2147483647, 0}};
    for (const auto &row : rows)
        EXPECT_EQ(asc2hex(QByteArray(row.text), row.position), row.value) << row.text << " at " << row.position;
}

TEST(ByteAssembly, isLeastSignificantFirst)
{
    EXPECT_EQ(uchar2int16(2, 1), 258);
    EXPECT_EQ(uchar2int16(255, 255), 65535);
    EXPECT_EQ(uchar2int32(0, 0, 0, 1), 1 << 24);
    EXPECT_EQ(uchar2int32(1, 2, 3, 0x84), static_cast<int>(0x84030201U));
}

} // namespace
