#include "support/driverTest.h"

#include "serviceForProtocol/cache/changeReports.h"

namespace {

using ChangeReportsTest = DriverTest;

enum class Width { bit, byte, word, dword };

TEST_F(ChangeReportsTest, followTheFlagsOfTheUnit)
{
    const int null = -2;
    const struct {
        const char *what;
        Width width;
        int address;
        quint32 flags, bits;
        int before, after; // null: no contents given
        int mode;
        Reports reports;
    } rows[] = {
        {"word and bits", Width::word, 100, 1, 0x8001, 1, 0x8001, 0, {"K_bit 1615 @1", "K 100 @1"}},
        {"contents in the other order", Width::word, 100, 1, 0x8001, 0x8001, 1, 0, {"K_bit 1615 @1", "K 100 @1"}},
        {"without comparison", Width::word, 100, 1, 0x8001, 1, null, 0, {"K_bit 1600 @1", "K_bit 1615 @1", "K 100 @1"}},
        {"mode without bits", Width::word, 100, 1, 0x8001, null, 1, 1, {"K 100 @1"}},
        {"nothing flagged", Width::word, 100, 0, 0, null, null, 0, {}},
        {"nothing differs", Width::word, 100, 1, 0x8001, 1, 1, 0, {"K 100 @1"}},
        {"first and second of two words", Width::word, 7, 6, 0, 0, 1, 0, {"K_D 7 @1", "K_D 6 @1"}},
        {"value below 0", Width::word, 0, 7, 0, 0, 1, 0, {"K 0 @1", "K_D 0 @1"}},
        {"bits above the word", Width::word, 1, 0, 0xffff0000, null, null, 0, {}},
        {"top bit of a double word",
         Width::dword,
         2,
         1,
         0x80000001,
         0,
         static_cast<int>(0x80000000),
         0,
         {"K_bit 95 @1", "K 2 @1"}},
        {"double word without views", Width::dword, 2, 0x7e, 0, 0, 1, 0, {}},
        {"byte in all views",
         Width::byte,
         9,
         0x7f,
         0x81,
         0,
         0x80,
         0,
         {"K_bit 79 @1", "K_B 9 @1", "K_W 9 @1", "K_W 8 @1", "K_D 9 @1", "K_D 8 @1", "K_D 7 @1", "K_D 6 @1"}},
        {"high byte at 0 ends the reports", Width::byte, 0, 0x0c, 0, 0, 1, 0, {}},
        {"third byte at 1 ends the reports",
         Width::byte,
         1,
         0x7e,
         0,
         0,
         1,
         0,
         {"K_W 1 @1", "K_W 0 @1", "K_D 1 @1", "K_D 0 @1"}},
        {"byte without comparison", Width::byte, 1, 0, 3, null, 0, 0, {"K_bit 8 @1", "K_bit 9 @1"}},
        {"plain bit", Width::bit, 5, 1, 0xff, 0, 1, 0, {"K 5 @1"}},
        {"plain bit in other views", Width::bit, 5, 0x7e, 0xff, 0, 1, 0, {}},
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
        if (row.width == Width::bit)
            _bitDataChange(0);
        else if (row.width == Width::byte)
            _byteDataChange(before ? &beforeByte : nullptr, after ? &afterByte : nullptr, 0, row.mode);
        else
            (row.width == Width::word ? _wordDataChange : _dwordDataChange)(before, after, 0, row.mode);
        EXPECT_EQ(reports(), row.reports);
    }
}

TEST_F(ChangeReportsTest, areSkippedWithoutCallbackOrUnit)
{
    unit("D", 1).monitorFlags = 1;
    _wordDataChange(nullptr, nullptr, 1, 0);
    _bitDataChange(-1);
    intf_setAddrValueChangeCallBack(nullptr);
    _wordDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(reports(), Reports{});
}

TEST_F(ChangeReportsTest, aHostMayKeepTheNameForItself)
{
    intf_setAddrValueChangeCallBack([](int, int, QString &name, int) {
        EXPECT_EQ(plain(name), "D");
        name = qt("changed by the host");
        return 7;
    });
    _DATA_ &area = unit("D", 1);
    area.monitorFlags = 1;
    _wordDataChange(nullptr, nullptr, 0, 0);
    _wordDataChange(nullptr, nullptr, 0, 0);
    EXPECT_EQ(plain(area.regName), "D");
}

TEST(ByteAssembly, isLeastSignificantFirst)
{
    EXPECT_EQ(uchar2int16(2, 1), 258);
    EXPECT_EQ(uchar2int16(255, 255), 65535);
    EXPECT_EQ(uchar2int32(0, 0, 0, 1), 1 << 24);
    EXPECT_EQ(uchar2int32(1, 2, 3, 0x84), static_cast<int>(0x84030201U));
}

} // namespace
