#include "support/driverTest.h"

namespace {

class ConditionReadsTest : public DriverTest {
protected:
    static KEY_ADDRESS inBits(KEY_ADDRESS wanted)
    {
        wanted.unitCode = -1;
        return wanted;
    }
    std::vector<std::string> queue() const { return texts(driver.conditionReads); }
};

TEST_F(ConditionReadsTest, areCutAndConvertedToDeviceUnits)
{
    const struct {
        KEY_ADDRESS wanted;
        int mergeGap;
        std::vector<std::string> requests;
    } rows[] = {
        {key("D", 0, 10), 4, {"D 0 4 @1", "D 4 4 @1", "D 8 2 @1"}},
        {inBits(key("D", 0, 20)), 1, {"D 0 8 @1", "D 8 8 @1", "D 16 4 @1"}},
        {key("M", 0, 2), 16, {"M 0 32 @1"}},
        {inBits(key("M", 5, 9)), 1, {"M 5 128 @1", "M 13 16 @1"}},
        {key("32C", 200, 4), 16, {"32C 200 2 @1"}},
        {key("32C", 200, 3), 2, {"32C 200 1 @1", "32C 202 0 @1"}},
        {inBits(key("D_bit", 1605, 12)), 16, {"D 100 2 @1"}},
        {inBits(key("D_bit", 1605, 11)), 16, {"D 100 1 @1"}},
        {inBits(key("R_bit", 17, 10)), 1, {"R 1 1 @1", "R 1 1 @1"}},
        {key("D", 0, 40), 0, {"D 0 32 @1", "D 32 8 @1"}},
        {inBits(key("M", 0, 257)), -1, {"M 0 4096 @1", "M 256 16 @1"}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(text(row.wanted));
        configures(3, row.mergeGap);
        EXPECT_EQ(intf_addConditionRead(&row.wanted, 77), 1);
        EXPECT_EQ(queue(), row.requests);
        EXPECT_EQ(text(driver.lastConditionRead), row.requests.back());
        EXPECT_EQ(driver.lastConditionRead.hostContext, 77U);
        EXPECT_EQ(driver.conditionReads.at(0).hostContext, 77U);
    }
}

TEST_F(ConditionReadsTest, replaceAWaitingOneButNeverTheHead)
{
    asksForCondition(key("D", 0, 1));
    asksForCondition(key("D", 0, 1));
    asksForCondition(key("D", 5, 1));
    asksForCondition(key("D", 0, 1));
    EXPECT_EQ(queue(), (std::vector<std::string>{"D 0 1 @1", "D 0 1 @1", "D 5 1 @1"}));
    EXPECT_EQ(text(driver.lastConditionRead), "D 0 1 @1");
    for (int i = 0; i < 520; ++i)
        asksForCondition(key("R", i, 1));
    EXPECT_EQ(queue().size(), 513U);
    EXPECT_EQ(queue()[512], "R 519 1 @1");
}

TEST_F(ConditionReadsTest, theOneQueuedLastNotifiesWhenItHasBeenRead)
{
    configures(3, 4);
    polls({key("D", 0, 3)});
    asksForCondition(key("D", 0, 10));
    std::size_t queued = 0;
    whenReported = [&](const std::string &report) {
        if (report == "-1 0 @-1 of -1")
            queued = queue().size();
    };
    EXPECT_EQ(exchanges(reply(words({0, 0, 0, 0}))), "read D 0 4 @1");
    EXPECT_EQ(exchanges(reply(words({0, 0, 0, 0}))), "read D 4 4 @1");
    EXPECT_EQ(reports(), Reports{});
    EXPECT_EQ(exchanges(reply(words({0, 0}))), "read D 8 2 @1");
    EXPECT_EQ(reports(), Reports{"-1 0 @-1 of -1"});
    EXPECT_EQ(queued, 1U) << "it is in the queue while the callback runs";
    EXPECT_TRUE(queue().empty());
    asksForCondition(key("D", 100, 1));
    asksForCondition(key("D", 8, 1));
    exchangesWell(2);
    EXPECT_EQ(reports(), Reports{}) << "a burst of three is over: the second waits behind a block";
    exchangesWell(1);
    EXPECT_EQ(reports(), Reports{"-1 0 @-1 of -1"});
}

TEST_F(ConditionReadsTest, oneGivenUpTakesTheOthersWithIt)
{
    configures(1, 16);
    asksForCondition(key("D", 0, 1));
    asksForCondition(key("D", 1, 1));
    EXPECT_EQ(exchanges({}), "read D 0 1 @1");
    EXPECT_TRUE(queue().empty());
    EXPECT_EQ(reports(), Reports{});
    asksForCondition(key("D", 1, 1));
    EXPECT_EQ(exchanges({}), "read D 1 1 @1");
    EXPECT_EQ(reports(), Reports{"-1 -1 @-1 of -1"});
}

TEST_F(ConditionReadsTest, oneThatCannotBeSentIsGivenUpAtOnce)
{
    asksForCondition(key("D", 0, 1, 255));
    polls({key("D", 3, 1)});
    EXPECT_EQ(sends(), "nothing");
    EXPECT_EQ(reports(), Reports{"-1 -1 @-1 of -1"});
    EXPECT_EQ(driver.lastTransactionFailed, 1);
    EXPECT_EQ(sends(), "read D 3 1 @1");
}

} // namespace
