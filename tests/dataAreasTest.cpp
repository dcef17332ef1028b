#include "support/driverTest.h"

#include "serviceForProtocol/cache/dataAreas.h"

namespace {

class DataAreasTest : public DriverTest {
protected:
    static int indexOf(const char *keyName, int address, int station = 1)
    {
        return getIndexOfDataArea(station, qt(keyName), address, driver.dataAreas);
    }

    /// All flagged units as "D 100 flags 1 bits 0", in the order of the cache.
    static std::vector<std::string> flagged()
    {
        std::vector<std::string> units;
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_ &area = driver.dataAreas.at(i);
            units.push_back(plain(area.regName) + " " + std::to_string(area.address) + " flags " +
                            std::to_string(area.monitorFlags) + " bits " + std::to_string(area.monitorBits));
        }
        return units;
    }
};

TEST_F(DataAreasTest, areFoundByStationNameAndAddress)
{
    EXPECT_EQ(indexOf("D", 100), 0);
    EXPECT_EQ(indexOf("D", 100, 2), 1);
    EXPECT_EQ(indexOf("d", 100), 2);
    EXPECT_EQ(indexOf("D", 101), 3);
    EXPECT_EQ(indexOf("D", 100), 0);
    EXPECT_EQ(driver.dataAreas.size(), 4);
    const _DATA_ &area = driver.dataAreas.at(1);
    EXPECT_EQ(area.writePending + area.pendingBitWrites + area.monitorFlags + area.monitorBits, 0U);
    EXPECT_EQ(area.readValue[0] + area.readValue[3] + area.writeValue[0] + area.writeValue[3], 0);
}

TEST_F(DataAreasTest, areFoundWhenTheListWasChangedBehindTheIndex)
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

TEST_F(DataAreasTest, bitsAreSetAndClearedByPosition)
{
    EXPECT_EQ(_setBitValue(5, 1, 1), 7);
    EXPECT_EQ(_setBitValue(7, 0, 0), 6);
    EXPECT_EQ(_setBitValue(0, 31, -1), static_cast<int>(0x80000000U));
    EXPECT_EQ(_setBitValue(-1, 31, 0), 0x7fffffff);
    EXPECT_EQ(_setBitValue(1, 32, 1), 1);
    EXPECT_EQ(_setBitValue(1, -1, 1), 1);
}

TEST_F(DataAreasTest, flagsFollowTheShapeOfTheValue)
{
    const struct {
        const char *what;
        int valueWidth, unitWidth;
        const char *name;
        int address, count;
        std::vector<std::string> units;
    } rows[] = {
        {"32 in 32", 32, 32, "K", 10, 5, {"K 10 flags 1 bits 0", "K 11 flags 1 bits 0"}},
        {"32 in 1", 32, 1, "K_x", 10, 2, {"K 10 flags 1 bits 0"}},
        {"32 in 16", 32, 16, "K", 10, 3, {"K 10 flags 2 bits 0", "K 11 flags 4 bits 0"}},
        {"32 in 8",
         32,
         8,
         "K",
         10,
         2,
         {"K 10 flags 8 bits 0", "K 11 flags 16 bits 0", "K 12 flags 32 bits 0", "K 13 flags 64 bits 0"}},
        {"16 in 16", 16, 16, "K", 10, 2, {"K 10 flags 1 bits 0", "K 11 flags 1 bits 0"}},
        {"16 in 32", 16, 32, "K", 10, 1, {"K 10 flags 1 bits 0"}},
        {"16 in 8",
         16,
         8,
         "K",
         10,
         2,
         {"K 10 flags 2 bits 0", "K 11 flags 4 bits 0", "K 12 flags 2 bits 0", "K 13 flags 4 bits 0"}},
        {"plain bit", 1, 1, "K_Coil", 3, 1, {"K_Coil 3 flags 1 bits 0"}},
        {"plain byte", 8, 8, "K_Byte", 3, 1, {"K_Byte 3 flags 1 bits 0"}},
        {"bit in 16", 1, 16, "K_bit", 30, 4, {"K 1 flags 0 bits 49152", "K 2 flags 0 bits 3"}},
        {"bit in 8", 1, 8, "K_bit", 14, 4, {"K 1 flags 0 bits 192", "K 2 flags 0 bits 3"}},
        {"bit in 32", 1, 32, "K_bit", 14, 4, {}},
        {"width 64", 64, 16, "K", 14, 4, {}},
        {"a word short", 32, 32, "K", 10, 1, {}},
    };
    for (const auto &row : rows) {
        driver.dataAreas.clear();
        flagUnits(valueShape(row.valueWidth, row.unitWidth, qt(row.name)), 1, row.address, row.count);
        EXPECT_EQ(flagged(), row.units) << row.what;
    }
}

TEST_F(DataAreasTest, everyKindIsFlaggedUnderItsKeyName)
{
    const struct {
        const char *name;
        const char *firstUnit;
    } rows[] = {
        {"32C", "32C 35 flags 1 bits 0"},
        {"C", "C 35 flags 1 bits 0"},
        {"T", "T 35 flags 1 bits 0"},
        {"R", "R 35 flags 1 bits 0"},
        {"SD", "SD 35 flags 1 bits 0"},
        {"D", "D 35 flags 1 bits 0"},
        {"X", "X 35 flags 1 bits 0"},
        {"Y", "Y 35 flags 1 bits 0"},
        {"M", "M 35 flags 1 bits 0"},
        {"S", "S 35 flags 1 bits 0"},
        {"SM", "SM 35 flags 1 bits 0"},
        {"D_bit", "D 2 flags 0 bits 24"},
        {"R_bit", "R 2 flags 0 bits 24"},
        {"T_Coil", "T_Coil 35 flags 1 bits 0"},
        {"C_Coil", "C_Coil 35 flags 1 bits 0"},
        {"T_Contact", "T_Contact 35 flags 1 bits 0"},
        {"C_Contact", "C_Contact 35 flags 1 bits 0"},
    };
    for (const auto &row : rows) {
        driver.dataAreas.clear();
        EXPECT_EQ(_setDataAreaMonitorFlag(1, qt(row.name), 35, 2), 0);
        ASSERT_FALSE(flagged().empty());
        EXPECT_EQ(flagged().front(), row.firstUnit);
    }
}

TEST_F(DataAreasTest, nothingSenselessIsFlaggedServedOrCreated)
{
    const struct {
        const char *name;
        int address, count;
    } rows[] = {{"Q", 0, 1},
                {"d", 0, 1},
                {"D", 0, 0},
                {"D", 0, -3},
                {"D", -1, 1},
                {"D", 0, 9001},
                {"32C", 0, 113},
                {"M", 0, 8193},
                {"D_bit", 0, 144001},
                {"D", 2147483647, 2},
                {"D_bit", -16, 1},
                {"R", 0, 2147483647},
                {"D", -2147483647 - 1, 2147483647}};
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.name) + " " + std::to_string(row.address) + " " + std::to_string(row.count));
        quint8 value = 0xEE;
        EXPECT_EQ(_setDataAreaMonitorFlag(1, qt(row.name), row.address, row.count), 0);
        EXPECT_EQ(intf_getData(1, qt(row.name), row.address, row.count, &value), 1);
        EXPECT_EQ(value, 0xEE);
        EXPECT_EQ(intf_setData(1, qt(row.name), row.address, row.count, &value, 0), 1);
        KEY_ADDRESS wanted = key(row.name, row.address, row.count);
        asksForCondition(wanted);
        EXPECT_EQ(polls({wanted}), 0);
        EXPECT_TRUE(driver.dataAreas.isEmpty() && driver.writeQueue.isEmpty() && driver.conditionReads.isEmpty());
        EXPECT_EQ(text(driver.lastConditionRead), " 0 0 @0");
    }
    for (const auto &row : {key("D", 2147483647, 1), key("D", 9000, 9000), key("32C", 0, 112)}) {
        EXPECT_EQ(reads(plain(row.regName), row.address, row.count).size(), static_cast<std::size_t>(row.count) * 2);
        EXPECT_GT(polls({row}), 0) << "an address above the highest is not refused";
    }
}

} // namespace
