/// One-time reads and writes as requests: cutting, queueing, displacing.
#include "serviceForProtocol/requests/pieces.h"
#include "support/driverTest.h"
#include "support/kinds.h"

#include <rapidcheck/gtest.h>

namespace {

class RequestTest : public DriverTest {
protected:
    static KEY_ADDRESS withUnitCode(KEY_ADDRESS wanted, int unitCode)
    {
        wanted.unitCode = unitCode;
        return wanted;
    }
    static KEY_ADDRESS inBits(const KEY_ADDRESS &wanted) { return withUnitCode(wanted, -1); }

    std::string conditionReads() const { return texts(driver.conditionReads); }
    std::string waitingWrites() const { return texts(driver.writeQueue); }
    std::string lastWaitingWrite() const { return text(driver.writeQueue.last()); }

    /// A queue without room: a head, and words from `first` on.
    void fillsQueue(int first)
    {
        for (int i = 0; i < 513; ++i)
            writes("D", first + i, 1, words({1}));
    }
};

TEST_F(RequestTest, conditionReadsAreCutAndConvertedToDeviceUnits)
{
    const struct {
        KEY_ADDRESS wanted;
        int mergeGap;
        const char *requests;
    } rows[] = {
        {key("D", 0, 10), 4, "D 0 4, D 4 4, D 8 2"},
        {inBits(key("D", 0, 20)), 1, "D 0 8, D 8 8, D 16 4"},
        {withUnitCode(key("D", 0, 3), -2), 2, "D 0 2, D 2 1"},
        {withUnitCode(key("D", 0, 3), 1), 2, "D 0 2, D 2 1"},
        {key("M", 0, 2), 16, "M 0 32"},
        {inBits(key("M", 5, 9)), 1, "M 5 128, M 13 16"},
        {key("32C", 200, 4), 16, "32C 200 2"},
        {key("32C", 200, 16), 4, "32C 200 2, 32C 202 2, 32C 204 2, 32C 206 2"},
        {key("32C", 200, 8), 3, "32C 200 1, 32C 201 1, 32C 202 1, 32C 203 1"},
        {key("32C", 200, 4), 1, "32C 200 1, 32C 201 1"},
        {key("32C", 200, 3), 2, "32C 200 1, 32C 201 0"},
        {inBits(key("32C", 200, 20)), 1, "32C 200 4, 32C 204 4, 32C 208 2"},
        {inBits(key("D_bit", 1605, 12)), 16, "D 100 2"},
        {inBits(key("D_bit", 1605, 11)), 16, "D 100 1"},
        {inBits(key("R_bit", 17, 10)), 1, "R 1 1, R 1 1"},
        {key("D", 0, 40), 0, "D 0 32, D 32 8"},
        {inBits(key("M", 0, 257)), -1, "M 0 4096, M 256 16"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(text(row.wanted));
        configures(3, row.mergeGap);
        EXPECT_EQ(intf_addConditionRead(&row.wanted, 77), 1);
        EXPECT_EQ(conditionReads(), row.requests);
        EXPECT_EQ(text(driver.lastConditionRead), text(driver.conditionReads.last()));
        EXPECT_EQ(driver.lastConditionRead.hostContext, 77U);
        EXPECT_EQ(driver.conditionReads.at(0).hostContext, 77U);
    }
}

TEST_F(RequestTest, aConditionReadReplacesAWaitingOneButNeverTheHead)
{
    for (const int address : {0, 0, 5, 0})
        asksForCondition(key("D", address, 1));
    EXPECT_EQ(conditionReads(), "D 0 1, D 0 1, D 5 1");
    EXPECT_EQ(text(driver.lastConditionRead), "D 0 1");
    for (int i = 0; i < 520; ++i)
        asksForCondition(key("R", i, 1));
    EXPECT_EQ(driver.conditionReads.size(), 513);
    EXPECT_EQ(text(driver.conditionReads.last()), "R 519 1");
}

TEST_F(RequestTest, theConditionReadQueuedLastNotifiesWhenItHasBeenRead)
{
    configures(3, 4);
    polls("D 0 3");
    asksForCondition(key("D", 0, 10));
    auto queued = driver.conditionReads.size();
    whenReported = [&](const Report &report) {
        if (report.text() == "condition 0")
            queued = driver.conditionReads.size();
    };
    EXPECT_EQ(exchangesWell(2), "read D 0 4, read D 4 4");
    EXPECT_EQ(reports(), "");
    EXPECT_EQ(exchangesWell(1), "read D 8 2");
    EXPECT_EQ(reports(), "condition 0");
    EXPECT_EQ(queued, 1) << "it is in the queue while the callback runs";
    EXPECT_TRUE(driver.conditionReads.isEmpty());
    asksForCondition(key("D", 100, 1));
    asksForCondition(key("D", 8, 1));
    exchangesWell(2);
    EXPECT_EQ(reports(), "") << "a burst of three is over: the second waits behind a block";
    exchangesWell(1);
    EXPECT_EQ(reports(), "condition 0");
}

TEST_F(RequestTest, aConditionReadThatIsGivenUpTakesTheOthersWithIt)
{
    configures(1, 16);
    asksForCondition(key("D", 0, 1));
    asksForCondition(key("D", 1, 1));
    EXPECT_EQ(exchanges({}), "read D 0 1");
    EXPECT_TRUE(driver.conditionReads.isEmpty());
    EXPECT_EQ(reports(), "");
    asksForCondition(key("D", 1, 1));
    EXPECT_EQ(exchanges({}), "read D 1 1");
    EXPECT_EQ(reports(), "condition -1");
}

TEST_F(RequestTest, aConditionReadThatCannotBeSentIsGivenUpAtOnce)
{
    configures(3, 9000);
    polls("D 3 1");
    for (const KEY_ADDRESS &wanted : {key("D", 0, 1, 255), key("M", 0, 4096)}) { // 65536 bits
        asksForCondition(wanted);
        EXPECT_EQ(sends(), "nothing");
        EXPECT_EQ(reports(), "condition -1");
        EXPECT_EQ(driver.lastTransactionFailed, 1);
        EXPECT_EQ(exchangesWell(1), "read D 3 1");
    }
}

TEST_F(RequestTest, writesAreCutIntoPiecesAndConvertedToDeviceUnits)
{
    const struct {
        const char *regName;
        int address, count, mergeGap;
        const char *requests;
    } rows[] = {
        {"D", 100, 10, 4, "D 100 4, D 104 4, D 108 2"},
        {"D", 100, 8, 4, "D 100 4, D 104 4"},
        {"D", 100, 4, 4, "D 100 4"},
        {"M", 0, 20, 1, "M 0 8, M 8 8, M 16 4"},
        {"D_bit", 1605, 9, 1, "D_bit 1605 8, D_bit 1613 1"},
        {"32C", 200, 4, 16, "32C 200 2"},
        {"32C", 200, 8, 2, "32C 200 1, 32C 201 1, 32C 202 1, 32C 203 1"},
        {"32C", 200, 6, 3, "32C 200 1, 32C 201 1, 32C 202 1"},
        {"32C", 200, 4, 1, "32C 200 1, 32C 201 1"},
        {"32C", 200, 12, 5, "32C 200 2, 32C 202 2, 32C 204 2"},
        {"32C", 200, 1, 16, "32C 200 0"},
        {"D", 0, 40, 0, "D 0 32, D 32 8"},
        {"D", 0, 40, -5, "D 0 32, D 32 8"},
        {"M", 0, 300, 0, "M 0 256, M 256 44"},
        {"D", 0, 512, 600, "D 0 512"},
        {"D", 0, 513, 600, ""},
        {"M", 0, 1024, 600, "M 0 1024"},
        {"M", 0, 1025, 600, ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " " + std::to_string(row.count));
        configures(3, row.mergeGap);
        writes(row.regName, row.address, row.count, Bytes(2100, 1));
        EXPECT_EQ(waitingWrites(), row.requests);
        EXPECT_EQ(driver.dataAreas.isEmpty(), driver.writeQueue.isEmpty() || row.count == 1);
    }
}

TEST_F(RequestTest, bitsAreOnOnlyWithOne)
{
    for (const int cacheOnly : {0, 1, 2}) {
        for (const char *regName : {"M", "D_bit"}) {
            configures(3, 16, cacheOnly);
            polls("");
            writes(regName, 0, 4, {2, 1, 255, 0});
            EXPECT_EQ(reads(regName, 0, 4), (Bytes{0, 1, 0, 0}));
            EXPECT_EQ(driver.writeQueue.size(), cacheOnly == 0 ? 1 : 0);
            EXPECT_EQ(sends(), cacheOnly == 0 ? "write " + std::string(regName) + " 0 4" : "nothing");
            if (cacheOnly == 0)
                EXPECT_EQ(sentBytes()[12], 0x02);
        }
    }
}

TEST_F(RequestTest, aWriteReplacesAWaitingOneForTheSamePlace)
{
    writes("D", 8000, 1, words({0}));
    writes("D", 100, 1, words({1}));
    writes("D", 200, 1, words({9}));
    writes("D", 100, 1, words({2}));
    EXPECT_EQ(waitingWrites(), "D 8000 1, D 100 1, D 200 1");
    EXPECT_EQ(driver.writeQueue.at(1).data[0], 2);
    writes("D", 100, 2, words({1, 1}));
    writes("D", 100, 1, words({2}), 2);
    writes("R", 100, 1, words({2}));
    EXPECT_EQ(driver.writeQueue.size(), 6);
    writes("D", 8000, 1, words({3}));
    EXPECT_EQ(driver.writeQueue.size(), 7) << "the head may be in flight";
}

TEST_F(RequestTest, writesCarryTheHostsContext)
{
    writes("D", 0, 1, words({1}), 1, 7);
    writes("D", 1, 1, words({1}), 1, 8);
    writes("D", 1, 1, words({1}), 1, ~std::uintptr_t(0));
    EXPECT_EQ(driver.writeQueue.at(1).hostContext, ~std::uintptr_t(0));
    sends();
    EXPECT_EQ(frame.variable.hostContext, 7U);
}

TEST_F(RequestTest, aWriteThatAFullQueueDisplacesIsGivenUpOnceTheOtherIsShown)
{
    polls("D 0 2, D 3000 1");
    fillsQueue(2488); // its last is D3000
    EXPECT_EQ(reports(), "D 3000");
    std::vector<int> shown;
    whenReported = [&](const Report &report) { shown.push_back(report.address == 3000 ? word(0) : word(3000)); };
    writes("D", 0, 2, words({7, 8}));
    EXPECT_EQ(driver.writeQueue.size(), 513);
    EXPECT_EQ(lastWaitingWrite(), "D 0 2");
    EXPECT_EQ(reports(), "D 0, D 1, D 3000");
    EXPECT_EQ(shown, (std::vector<int>{1, 1, 7}));
    EXPECT_EQ(word(3000), 0);
}

TEST_F(RequestTest, aLongWriteMayDisplaceItsOwnPieces)
{
    configures(3, 2);
    polls("D 0 6");
    fillsQueue(2488);
    writes("D", 0, 6, words({1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(lastWaitingWrite(), "D 4 2");
    EXPECT_EQ(reads("D", 0, 6), words({0, 0, 0, 0, 5, 6}));
    EXPECT_EQ(reports(), "D 0, D 1, D 2, D 3, D 4, D 5, D 0, D 1, D 2, D 3");
    EXPECT_EQ(word(3000), 0);
}

TEST_F(RequestTest, aWriteThatIsDisplacedWhileItIsShownIsGivenUpBehindIt)
{
    polls("D 0 3");
    fillsQueue(2488);
    whenReported = [this](const Report &report) {
        if (report.text() != "D 0")
            return;
        whenReported = nullptr;
        writes("D", 50, 1, words({9})); // takes the place of the one that is just being shown
        EXPECT_EQ(reads("D", 0, 3), words({1, 0, 0}));
    };
    writes("D", 0, 3, words({1, 2, 3}));
    EXPECT_EQ(lastWaitingWrite(), "D 50 1");
    EXPECT_EQ(reads("D", 0, 3), words({0, 0, 0}));
    EXPECT_EQ(reports(), "D 0, D 1, D 2, D 0, D 1, D 2");
    EXPECT_TRUE(driver.displacedWrites.isEmpty());
}

TEST_F(RequestTest, writesToTheCacheAloneQueueNothing)
{
    for (const int cacheOnly : {1, 2, -1}) {
        configures(3, 16, cacheOnly);
        polls("D 0 1");
        reports();
        writes("D", 0, 600, Bytes(1200, 1));
        EXPECT_EQ(word(599), 0x101);
        EXPECT_EQ(reports(), "D 0");
        EXPECT_EQ(exchangesWell(1), "read D 0 1");
        writes("D_bit", 0, 1, {0});
        EXPECT_EQ(word(0), 0x100);
        exchanges(reply(words({3})));
        EXPECT_EQ(word(0), 3) << "nobody settles such a write: a read that differs ends it";
    }
}

TEST_F(RequestTest, writesAreNotSentBeforeTheyAreShownAndHoldUpNoOthers)
{
    configures(3, 1);
    polls("D 0 1");
    writes("D", 50, 1, words({5}));
    // What the communication thread may do while another thread's write of three pieces is being shown.
    whenReported = [this](const Report &) {
        whenReported = nullptr;
        EXPECT_EQ(exchanges(acknowledgement()), "write D 50 1");
        EXPECT_EQ(exchanges(reply(words({0}))), "read D 0 1");
        EXPECT_EQ(word(0), 1) << "still outstanding";
    };
    writes("D", 0, 3, words({1, 2, 3}));
    EXPECT_EQ(whenReported, nullptr);
    EXPECT_EQ(exchangesWell(3), "write D 0 1, write D 1 1, write D 2 1");
    for (int address = 0; address < 3; ++address)
        EXPECT_EQ(unit("D", address).writePending, 0);
}

RC_GTEST_FIXTURE_PROP(RequestTest, aCutWriteCarriesEveryValueOnceAndWhole, ())
{
    const Kind &kind = *rc::gen::elementOf(kinds());
    const int count = *rc::gen::inRange(1, kind.holdsBits() ? 1025 : 513) / kind.hostCount();
    const int gap = *rc::gen::inRange(1, 600);
    const auto values = *rc::gen::container<Bytes>(static_cast<std::size_t>(count * kind.bytes()),
                                                   rc::gen::inRange<unsigned char>(0, 2));
    configures(3, gap);
    writes(kind.name, 40, count * kind.hostCount(), values);
    RC_PRE(count <= kind.highest - kind.lowest);
    int address = 40;
    Bytes carried;
    for (const VARIABLE &queued : driver.writeQueue) {
        RC_ASSERT(queued.address == address && queued.count >= 1);
        RC_ASSERT(queued.count * kind.hostCount() <= std::max(kind.holdsBits() ? 8 * gap : gap, kind.hostCount()));
        carried.insert(carried.end(), queued.data, queued.data + queued.count * kind.bytes());
        address += queued.count;
    }
    RC_ASSERT(carried == values);
}

TEST(GroupingKey, appendsPiecesBehindWhatTheListHolds)
{
    const ::Run run = {1, qt("M"), 5, 3};
    QList<::Run> pieces;
    groupingKey(run, 3, pieces, 1);
    groupingKey(run, 2, pieces, 1);
    groupingKey(run, 0, pieces, 1);
    EXPECT_EQ(texts(pieces), "M 5 3, M 5 2, M 7 1, M 5 3");
}

} // namespace
