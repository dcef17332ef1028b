#include "support/driverTest.h"

#include "serviceForProtocol/cache/dataAreas.h"
#include "serviceForProtocol/cache/writeMirror.h"

#include <algorithm>

namespace {

using WriteMirrorTest = DriverTest;

struct ShapeRow {
    const char *what;
    int valueWidth, unitWidth;
    const char *name;
    int hostCount;
    const char *values;
    int deviceUnits;
    Reports whenMirrored;
    Reports whenGivenUp;
};

// Every unit from 10 on is flagged in the way of its shape; all contents are 0 before.
const ShapeRow SHAPES[] = {
    {"32 in 32", 32, 32, "K", 4, "01 02 03 04 00 00 00 00", 2, {"K 10 @1"}, {"K 10 @1", "K 11 @1"}},
    {"32 in 16", 32, 16, "K", 2, "01 00 02 00", 2, {"K_D 10 @1", "K_D 10 @1"}, {"K_D 10 @1", "K_D 10 @1"}},
    {"32 in 8",
     32,
     8,
     "K",
     2,
     "01 02 00 04",
     4,
     {"K_D 10 @1", "K_D 10 @1", "K_D 10 @1"},
     {"K_D 10 @1", "K_D 10 @1", "K_D 10 @1", "K_D 10 @1"}},
    {"16 in 16", 16, 16, "K", 2, "00 01 00 00", 2, {"K 10 @1"}, {"K 10 @1", "K 11 @1"}},
    {"16 in 8", 16, 8, "K", 1, "01 02", 2, {"K_W 10 @1", "K_W 10 @1"}, {"K_W 10 @1", "K_W 10 @1"}},
    {"plain bit", 1, 1, "K_Coil", 2, "01 00", 2, {"K_Coil 10 @1"}, {"K_Coil 10 @1", "K_Coil 11 @1"}},
    {"plain byte", 8, 8, "K_Byte", 2, "7f 00", 2, {"K_Byte 10 @1"}, {"K_Byte 10 @1", "K_Byte 11 @1"}},
    {"bit in 16",
     1,
     16,
     "K_bit",
     3,
     "01 00 01",
     3,
     {"K_bit 10 @1", "K_bit 12 @1"},
     {"K_bit 10 @1", "K_bit 11 @1", "K_bit 12 @1"}},
    {"bit in 8",
     1,
     8,
     "K_bit",
     2,
     "01 01",
     2,
     {"K_bit 10 @1", "K_bit 11 @1"},
     {"K_bit 10 @1", "K_bit 11 @1", "K_bit 10 @1", "K_bit 11 @1"}},
    {"none", 64, 16, "K", 2, "01 02 03 04", 2, {}, {}},
};

class WriteMirrorShapeTest : public WriteMirrorTest, public ::testing::WithParamInterface<ShapeRow> {
protected:
    ShapeRow row = GetParam();
    ValueShape shape = valueShape(row.valueWidth, row.unitWidth, qt(row.name));

    void mirrors(const Bytes &values)
    {
        flagUnits(shape, 1, 10, row.hostCount);
        mirrorUnits(shape, 1, qt(row.name), 10, row.hostCount, values.data());
    }
    void settles(bool accepted) { settleUnits(shape, 1, qt(row.name), 10, row.deviceUnits, accepted); }

    /// Bytes of the units that hold the values, as shown.
    std::string unitsAs(const quint8 (_DATA_::*value)[4]) const
    {
        Bytes bytes;
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const quint8 *unitBytes = driver.dataAreas.at(i).*value;
            bytes.insert(bytes.end(), unitBytes, unitBytes + shape.bytesPerUnit);
        }
        return hexText(bytes);
    }

    int pendingUnits() const
    {
        int pending = 0;
        for (int i = 0; i < driver.dataAreas.size(); ++i)
            pending += driver.dataAreas.at(i).writePending;
        return pending;
    }
};

TEST_P(WriteMirrorShapeTest, isShownAtOnceAndReportedWhereItChangesWhatIsShown)
{
    mirrors(hex(row.values));
    EXPECT_EQ(reports(), row.whenMirrored);
    EXPECT_EQ(pendingUnits(), driver.dataAreas.size());
    const bool bits = shape.holdsBits();
    const std::string written = bits ? (row.unitWidth == 16 ? "00 14" : "0c") : row.values;
    if (shape.unitsPerValue != 0)
        EXPECT_EQ(unitsAs(&_DATA_::writeValue), written);

    mirrors(hex(row.values));
    EXPECT_EQ(reports(), Reports{}) << "nothing changes for the host";
}

TEST_P(WriteMirrorShapeTest, becomesWhatWasReadWhenAccepted)
{
    mirrors(hex(row.values));
    const std::string written = unitsAs(&_DATA_::writeValue);
    reports();
    settles(true);
    EXPECT_EQ(pendingUnits(), 0);
    EXPECT_EQ(unitsAs(&_DATA_::readValue), written);
    if (shape.holdsBits())
        EXPECT_EQ(reports(), row.whenGivenUp) << "bits are reported however their write ended";
    else
        EXPECT_EQ(reports(), Reports{});
}

TEST_P(WriteMirrorShapeTest, isDroppedAndReportedWhenGivenUp)
{
    mirrors(hex(row.values));
    const std::string read = unitsAs(&_DATA_::readValue);
    reports();
    settles(false);
    EXPECT_EQ(pendingUnits(), 0);
    EXPECT_EQ(unitsAs(&_DATA_::readValue), read);
    EXPECT_EQ(reports(), row.whenGivenUp);
}

std::string nameOfRow(const ::testing::TestParamInfo<ShapeRow> &info)
{
    std::string name = info.param.what;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(EveryShape, WriteMirrorShapeTest, ::testing::ValuesIn(SHAPES), nameOfRow);

TEST_F(WriteMirrorTest, aWordWriteSettlesOrFallsBack)
{
    polls({key("D", 100, 1)});
    exchanges(reply(words({7})));
    EXPECT_EQ(reports(), Reports{"D 100 @1"});

    writes("D", 100, 1, words({5}));
    EXPECT_EQ(reports(), Reports{"D 100 @1"});
    EXPECT_EQ(word(100), 5);
    EXPECT_EQ(exchanges(acknowledgement()), "write D 100 1 @1");
    EXPECT_EQ(word(100), 5);
    EXPECT_EQ(unit("D", 100).writePending, 0);
    EXPECT_EQ(reports(), Reports{});

    writes("D", 100, 1, words({9}));
    reports();
    for (int i = 0; i < 3; ++i)
        exchanges({});
    EXPECT_EQ(word(100), 5);
    EXPECT_EQ(reports(), Reports{"D 100 @1"});
}

TEST_F(WriteMirrorTest, writesOfBitsAreCountedUntilTheLastIsSettled)
{
    polls({key("D_bit", 1603, 1), key("D", 100, 1)});
    writes("D_bit", 1603, 1, {1});
    EXPECT_EQ(reports(), (Reports{"D_bit 1603 @1", "D 100 @1"}));
    EXPECT_EQ(word(100), 8);
    EXPECT_EQ(sends(), "write D_bit 1603 1 @1");
    writes("D_bit", 1603, 1, {0});
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0xC0U);
    writes("D_bit", 1603, 1, {1}); // replaces the second: there are still two
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0xC0U);
    reports();

    EXPECT_EQ(receives(acknowledgement()), 1);
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0x80U);
    EXPECT_EQ(unit("D", 100).writePending, 1);
    EXPECT_EQ(reports(), Reports{});
    exchanges(acknowledgement());
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0U);
    EXPECT_EQ(unit("D", 100).writePending, 0);
    EXPECT_EQ(reports(), (Reports{"D_bit 1603 @1", "D 100 @1"}));
    EXPECT_EQ(word(100), 8);
}

TEST_F(WriteMirrorTest, aWriteRepeatedFromTheReportOfItsFirstBitIsCountedForTheOthers)
{
    polls({key("D_bit", 1600, 2)});
    unit("D", 100).pendingBitWrites = 1; // an earlier write of the first bit
    whenReported = [this](const std::string &) {
        whenReported = nullptr;
        writes("D_bit", 1600, 2, {1, 1});
    };
    writes("D_bit", 1600, 2, {1, 1});
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0xFU);
}

TEST_F(WriteMirrorTest, aWordShowsItsOtherBitsWhileOneIsWritten)
{
    polls({key("D", 100, 1)});
    exchanges(reply(words({0x8421})));
    writes("D_bit", 1608, 2, {1, 2});
    EXPECT_EQ(word(100), 0x8521) << "a value byte other than 1 clears";
    EXPECT_EQ(sends(), "write D_bit 1608 2 @1");
    EXPECT_EQ(receives(acknowledgement()), 1);
    EXPECT_EQ(word(100), 0x8521);
}

TEST_F(WriteMirrorTest, aReadEndsAPendingWriteUnlessBitsOfItAreOutstanding)
{
    const struct {
        const char *what;
        quint32 pendingBits;
        bool queued;
        int read;
        bool stillPending;
    } rows[] = {
        {"other contents", 0, false, 1, false}, {"same contents", 0, false, 0, true},
        {"bits and queue", 1, true, 1, true},   {"bits, queue empty", 1, false, 1, false},
        {"no bits, queue", 0, true, 1, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        configures(3, 16);
        polls({key("D", 0, 1), key("D_bit", 0, 16)});
        sends();
        unit("D", 0).writePending = 1;
        unit("D", 0).writeValue[0] = 9;
        unit("D", 0).pendingBitWrites = row.pendingBits;
        if (row.queued)
            driver.writeQueue.append(request("D", 50, 1));
        receives(reply(words({row.read})));
        EXPECT_EQ(unit("D", 0).writePending, row.stillPending ? 1 : 0);
        EXPECT_EQ(word(0), row.stillPending ? 9 : row.read);
        // What changed is what was read, whatever is shown.
        EXPECT_EQ(reports(), row.read ? (Reports{"D_bit 0 @1", "D 0 @1"}) : Reports{});
    }
    for (const unsigned char read : Bytes{0, 1}) {
        configures(3, 16);
        polls({key("M", 0, 1)});
        sends();
        unit("M", 0).writePending = 1;
        unit("M", 0).writeValue[0] = 1;
        unit("M", 0).pendingBitWrites = 1;
        driver.writeQueue.append(request("D", 50, 1));
        receives(reply({read}));
        EXPECT_EQ(unit("M", 0).writePending, read == 0 ? 1 : 0);
        EXPECT_EQ(reads("M", 0, 1), Bytes{1});
        EXPECT_EQ(reports(), read == 0 ? Reports{} : Reports{"M 0 @1"});
    }
}

TEST_F(WriteMirrorTest, theHighUnitOfAValueIsThereBeforeTheLowOneIsReported)
{
    const ValueShape shape = valueShape(32, 16, qt("K"));
    flagUnits(shape, 1, 10, 2);
    std::vector<int> seen;
    whenReported = [&](const std::string &) {
        seen.push_back(unit("K", 10).writeValue[0]);
        seen.push_back(unit("K", 11).writeValue[0]);
    };
    const Bytes values = words({1, 2});
    mirrorUnits(shape, 1, qt("K"), 10, 2, values.data());
    EXPECT_EQ(seen, (std::vector<int>{0, 2, 1, 2}));
}

TEST_F(WriteMirrorTest, aGivenUpWordTellsItsChangedBitsAndAGivenUpCounterAllOfThem)
{
    configures(1, 16);
    polls({key("D", 100, 1), key("D_bit", 1600, 4), key("32C", 200, 2)});
    unit("32C", 200).monitorBits = 0x80000001;
    writes("D", 100, 1, words({1}));
    writes("32C", 200, 2, hex("00 00 00 80"));
    EXPECT_EQ(reports(), (Reports{"D_bit 1600 @1", "D 100 @1", "32C_bit 6431 @1", "32C 200 @1"}));
    exchanges({});
    EXPECT_EQ(reports(), (Reports{"D_bit 1600 @1", "D 100 @1"}));
    exchanges({});
    EXPECT_EQ(reports(), (Reports{"32C_bit 6400 @1", "32C_bit 6431 @1", "32C 200 @1"}));
}

TEST_F(WriteMirrorTest, aWriteIsSettledBeforeItLeavesTheQueue)
{
    configures(1, 16);
    polls({key("D_bit", 1603, 1)});
    for (const Bytes &answer : {acknowledgement(), Bytes()}) {
        writes("D_bit", 1603, 1, {1});
        sends();
        reports();
        int queued = 0;
        whenReported = [&](const std::string &) { queued = static_cast<int>(driver.writeQueue.size()); };
        receives(answer);
        EXPECT_EQ(reports(), Reports{"D_bit 1603 @1"});
        EXPECT_EQ(queued, 1);
        whenReported = nullptr;
    }
}

TEST_F(WriteMirrorTest, callbacksSeeTheNewContentsAndMayWrite)
{
    std::vector<int> seen;
    polls({key("D", 100, 2), key("D_bit", 1600, 16)});
    whenReported = [&](const std::string &report) {
        seen.push_back(word(100));
        EXPECT_NE(unit("D", 100).pendingBitWrites, 0U) << "counted before it is reported";
        if (report == "D_bit 1601 @1")
            writes("D", 101, 1, words({7}));
    };
    writes("D_bit", 1600, 2, {1, 1});
    EXPECT_EQ(seen, (std::vector<int>{1, 1, 3, 3, 3}));
    EXPECT_EQ(reports(), (Reports{"D_bit 1600 @1", "D 100 @1", "D_bit 1601 @1", "D 101 @1", "D 100 @1"}));
    EXPECT_EQ(texts(driver.writeQueue), (std::vector<std::string>{"D_bit 1600 2 @1", "D 101 1 @1"}));
    EXPECT_TRUE(driver.writesBeingMirrored.isEmpty());
}

TEST_F(WriteMirrorTest, aBitIsReportedUnderTheHostsNameEvenWhenNotPolled)
{
    std::vector<int> seen;
    whenReported = [&](const std::string &) { seen.push_back(reads("X", 10, 1).front()); };
    writes("X", 10, 1, {1});
    EXPECT_EQ(reports(), Reports{"X 10 @1"});
    for (int i = 0; i < 3; ++i)
        exchanges({});
    EXPECT_EQ(reports(), Reports{"X 10 @1"});
    EXPECT_EQ(seen, (std::vector<int>{1, 0}));
}

TEST_F(WriteMirrorTest, aNewPollListForgetsOutstandingBitsButNotTheWrite)
{
    writes("D_bit", 1603, 1, {1});
    polls({key("D", 100, 1)});
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0U);
    EXPECT_EQ(unit("D", 100).writePending, 1);
    EXPECT_EQ(unit("D", 100).monitorFlags, 1U);
    exchanges(acknowledgement());
    EXPECT_EQ(unit("D", 100).writePending, 0);
    EXPECT_EQ(polls({}), 0);
    EXPECT_EQ(unit("D", 100).monitorFlags, 0U);
}

} // namespace
