/// Who the driver is, its configuration, and arguments that are not there.
#include "support/driverTest.h"

namespace {

using IdentityTest = DriverTest;

TEST_F(IdentityTest, tellsWhoTheDriverIs)
{
    int type = -1;
    intf_getProtocolType(&type);
    EXPECT_EQ(type, 0);
    EXPECT_EQ(plain(intf_getVersion()), "2.0.0.0");
    for (int i = 0; i < 2; ++i) {
        QString text = qt("overwritten");
        intf_getDriverParameter(text);
        EXPECT_EQ(plain(text), "0,19200,8,NONE,1,1,0,192.168.0.10,8000,tanek_vs,32C,C,T,R,SD,D,X,Y,M,S,SM,D_bit,R_bit,"
                               "T_Coil,T_Contact,C_Coil,C_Contact");
        intf_SetDriverPropertyPage(qt("anything"));
        intf_getDriverPropertyPage(text);
        EXPECT_EQ(plain(text), "0_0");
    }
    EXPECT_EQ(plain(driver.propertyPageText), "anything");
}

TEST_F(IdentityTest, takesFiveNumbersFromThePropertyText)
{
    const struct {
        const char *property;
        std::vector<int> settings; ///< instance, cache only, retries, gap, words, bits
    } rows[] = {
        {"3#0#0#2#16", {3, 0, 2, 16, 16, 128}},
        {"4#1#7#5#6#99", {4, 1, 5, 6, 6, 48}},
        {"9#9#9#9", {4, 1, 5, 6, 6, 48}},
        {"", {4, 1, 5, 6, 6, 48}},
        {nullptr, {4, 1, 5, 6, 6, 48}},
        {"a#b#c#d#e", {0, 0, 0, 0, 0, 0}},
        {"1##0#2#-3", {1, 0, 2, -3, -3, -24}},
        {"1#0#0#2#2147483647", {1, 0, 2, 2147483647, 2147483647, -8}},
        {"1#0#0#2#2147483648", {1, 0, 2, 0, 0, 0}},
        {"1 # 2 #0# 3x#0x4", {1, 2, 0, 0, 0, 0}},
        {"\xa0"
         "1#\t+2#0#3#4",
         {0, 2, 3, 4, 4, 32}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.property ? row.property : "no text");
        configures(row.property);
        const std::vector<int> settings = {driver.instanceId, driver.cacheOnlyWrites,  driver.retryLimit,
                                           driver.mergeGap,   driver.maxWordsPerWrite, driver.maxBitsPerWrite};
        EXPECT_EQ(settings, row.settings);
    }
}

TEST_F(IdentityTest, resetDropsWorkAndCacheAndLeavesTheRest)
{
    plansRecipe("D 1 1 from 0, D 3 1 from 1");
    polls("D 0 10");
    asksForCondition(key("D", 50, 1));
    writes("D", 0, 1, words({5}));
    writes("D", 9, 1, words({5}));
    sends();
    receives({});
    driver.recipeIndex = 1;
    driver.lastTransactionFailed = 1;
    intf_SetDriverPropertyPage(qt("1_1"));

    configures(3, 16);

    EXPECT_TRUE(driver.readBlocks.isEmpty() && driver.writeQueue.isEmpty() && driver.conditionReads.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty() && driver.frameQueue.isEmpty());
    EXPECT_TRUE(driver.transactionKind == 0 && driver.burstCount == 0);
    EXPECT_TRUE(driver.retryCount == 0 && driver.lastTransactionFailed == 0);
    EXPECT_EQ(sends(), "nothing");
    EXPECT_NE(driver.valueChangeCallback, nullptr);
    EXPECT_EQ(driver.recipeIndex, 1);
    EXPECT_EQ(plain(driver.propertyPageText), "1_1");
    EXPECT_EQ(texts(driver.recipeBlocks), "D 1 1, D 3 1");
    EXPECT_EQ(text(driver.lastConditionRead), "D 50 1");
    EXPECT_EQ(text(driver.currentVariable), "D 0 1");
    EXPECT_EQ(word(0), 0);
}

TEST_F(IdentityTest, worksWithoutTheHostsObjectsAndCallback)
{
    intf_setAddrValueChangeCallBack(nullptr);
    intf_initProperty(nullptr, nullptr, nullptr, nullptr, "3#0#0#1#16", nullptr);
    plansRecipe("D 0 1 from 0");
    polls("D 0 1");
    EXPECT_EQ(exchanges(reply(words({7}))), "read D 0 1");
    EXPECT_EQ(word(0), 7);
}

TEST_F(IdentityTest, argumentsThatAreNullChangeNothing)
{
    polls("D 0 1");
    plansRecipe("D 0 1 from 0, D 5 1 from 1");
    const int units = static_cast<int>(driver.dataAreas.size());
    intf_getProtocolType(nullptr);
    EXPECT_EQ(intf_checkAddr(qt("D"), qt("1"), nullptr, 0, 1, 0), 0);
    EXPECT_EQ(intf_checkAddrValidity(qt("D"), qt("1"), nullptr, 1, 1), 0);
    EXPECT_EQ(intf_addrMerge(nullptr), 1);
    EXPECT_EQ(intf_addConditionRead(nullptr, 0), 1);
    EXPECT_EQ(intf_setRcpAddress(nullptr), 2);
    EXPECT_EQ(intf_getData(1, qt("D"), 0, 1, nullptr), 1);
    EXPECT_EQ(intf_setData(1, qt("D"), 0, 1, nullptr, 0), 1);
    EXPECT_EQ(intf_getSendFrame(nullptr), 0);
    EXPECT_EQ(unit("D", 0).monitorFlags, 1U);
    EXPECT_EQ(driver.recipeBlocks.size(), 2);
    EXPECT_EQ(driver.dataAreas.size(), units);
    EXPECT_TRUE(driver.writeQueue.isEmpty() && driver.conditionReads.isEmpty());
}

} // namespace
