#include "support/driverTest.h"

#include "serviceForProtocol/cache/cacheReads.h"

namespace {

using CacheReadsTest = DriverTest;

TEST_F(CacheReadsTest, valuesComeInTheLayoutOfTheirShape)
{
    // Unit u was read as the bytes u+0x10, u+0x20, u+0x30, u+0x40; unit 11 is shown as written, all ones.
    const struct {
        const char *what;
        int valueWidth, unitWidth;
        const char *name;
        int address, count;
        const char *bytes;
    } rows[] = {
        {"32 in 32", 32, 32, "K", 10, 5, "1a 2a 3a 4a ff ff ff ff"},
        {"32 in 16", 32, 16, "K", 10, 4, "1a 2a ff ff 1c 2c 1d 2d"},
        {"32 in 8", 32, 8, "K", 9, 2, "19 1a ff 1c"},
        {"16 in 16", 16, 16, "K", 10, 3, "1a 2a ff ff 1c 2c"},
        {"16 in 8", 16, 8, "K", 9, 2, "19 1a ff 1c"},
        {"plain", 1, 1, "K", 10, 3, "1a ff 1c"},
        {"byte", 8, 8, "K", 10, 1, "1a"},
        {"bit in 16", 1, 16, "K_bit", 10 * 16 + 12, 5, "00 01 00 00 01"},
        {"bit in 8", 1, 8, "K_bit", 10 * 8 + 3, 6, "01 01 00 00 00 01"},
        {"none", 64, 16, "K", 10, 3, ""},
    };
    for (int address = 0; address < 20; ++address) {
        for (int i = 0; i < 4; ++i) {
            unit("K", address).readValue[i] = static_cast<quint8>(address + 16 * (i + 1));
            unit("K", address).writeValue[i] = 0xff;
        }
    }
    unit("K", 11).writePending = 1;
    for (const auto &row : rows) {
        Bytes out(40, 0xEE);
        serveUnits(valueShape(row.valueWidth, row.unitWidth, qt(row.name)), 1, row.address, row.count, out.data());
        const Bytes expected = hex(row.bytes);
        EXPECT_EQ(hexText(Bytes(out.begin(), out.begin() + static_cast<long>(expected.size()))), row.bytes) << row.what;
        EXPECT_EQ(out[expected.size()], 0xEE) << row.what << " wrote too much";
    }
}

TEST_F(CacheReadsTest, unitsNeverReadAreZerosAndFromThenOnCached)
{
    EXPECT_EQ(reads("D_bit", 1615, 2), (Bytes{0, 0}));
    EXPECT_EQ(driver.dataAreas.size(), 2);
    unit("D", 100).readValue[1] = 0x80;
    unit("D", 101).readValue[0] = 0x01;
    EXPECT_EQ(reads("D_bit", 1615, 2), (Bytes{1, 1}));
    EXPECT_EQ(reads("D", 100, 2), hex("00 80 01 00"));
    EXPECT_EQ(reads("32C", 200, 1), Bytes{});
    EXPECT_EQ(reads("32C", 200, 4), Bytes(8, 0));
    EXPECT_EQ(reports(), Reports{});
}

TEST(HexText, isReadAsAByteWithMissingDigitsAsZero)
{
    const struct {
        const char *text;
        int position, value;
    } rows[] = {{"1F", 0, 31},   {"a0", 0, 160},     {"7", 0, 112},         {"", 0, 0},
                {"12", 1, 0x20}, {"12", 2, 0},       {"12", -1, 1},         {"@/", 0, 0},
                {":?", 0, 0xAF}, {"G\xff", 0, 0x08}, {"12", 2147483647, 0}, {"12", -2147483647, 0}};
    for (const auto &row : rows)
        EXPECT_EQ(asc2hex(QByteArray(row.text), row.position), row.value) << row.text << " at " << row.position;
}

} // namespace
