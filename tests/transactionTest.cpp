/// Which transaction comes next, how often a frame is repeated, and what a reply does.
#include "serviceForProtocol/transactions/replyDecoding.h"
#include "support/driverTest.h"

namespace {

using TransactionTest = DriverTest;

TEST_F(TransactionTest, isNoneWhenThereIsNothingToDo)
{
    driver.burstCount = 5;
    driver.transactionKind = TransactionWrite;
    EXPECT_EQ(sends(), "nothing");
    EXPECT_EQ(driver.transactionKind, TransactionIdle);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(receives({}), 0);
}

TEST_F(TransactionTest, readsABlockAfterTenWrites)
{
    polls("R 0 1");
    for (int i = 0; i < 12; ++i)
        writes("D", i, 1, words({i}));
    EXPECT_EQ(exchangesWell(15), "write D 0 1, write D 1 1, write D 2 1, write D 3 1, write D 4 1, write D 5 1, "
                                 "write D 6 1, write D 7 1, write D 8 1, write D 9 1, read R 0 1, "
                                 "write D 10 1, write D 11 1, read R 0 1, read R 0 1");
}

TEST_F(TransactionTest, burstWithoutBlocksEndsInOneCallWithNothing)
{
    for (int i = 0; i < 11; ++i)
        writes("D", i, 1, words({i}));
    exchangesWell(10);
    EXPECT_EQ(sends(), "nothing");
    EXPECT_EQ(sends(), "write D 10 1");
}

TEST_F(TransactionTest, conditionReadsFillABurstOfThree)
{
    polls("R 0 1");
    for (int i = 0; i < 5; ++i)
        asksForCondition(key("D", i, 1));
    EXPECT_EQ(exchangesWell(7), "read D 0 1, read D 1 1, read D 2 1, read R 0 1, read D 3 1, read D 4 1, read R 0 1");
    asksForCondition(key("D", 0, 1));
    for (int i = 10; i < 13; ++i)
        writes("D", i, 1, words({i}));
    EXPECT_EQ(exchangesWell(5), "write D 10 1, write D 11 1, write D 12 1, read R 0 1, read D 0 1");
}

TEST_F(TransactionTest, blocksAreReadInTurn)
{
    EXPECT_EQ(polls("D 0 1, D 100 1, D 200 1"), 3);
    EXPECT_EQ(exchangesWell(4), "read D 0 1, read D 100 1, read D 200 1, read D 0 1");
    // A block that is in flight while the list is replaced counts as the first of the new list.
    sends();
    polls("D 7 1, D 107 1");
    EXPECT_EQ(receives(reply(words({1}))), 1);
    EXPECT_EQ(exchangesWell(2), "read D 107 1, read D 7 1");
    EXPECT_EQ(polls("D 0 1"), 1);
    EXPECT_EQ(exchangesWell(2), "read D 0 1, read D 0 1");
}

TEST_F(TransactionTest, frameIsResentUntilTheRetryLimit)
{
    polls("D 0 1, D 100 1");
    driver.lastTransactionFailed = 1;
    for (int limit : {3, 2, 1, 0, -1}) {
        SCOPED_TRACE(limit);
        driver.retryLimit = limit;
        const std::string first = sends();
        const Bytes bytes = sentBytes();
        for (int i = 1; i < limit; ++i) {
            EXPECT_EQ(receives({}), 8);
            EXPECT_EQ(sends(), first);
            EXPECT_EQ(sentBytes(), bytes);
        }
        EXPECT_EQ(receives({}), 2);
        EXPECT_EQ(driver.lastTransactionFailed, 1);
        EXPECT_EQ(driver.retryCount, 0);
        EXPECT_NE(exchangesWell(1), first) << "one silent station does not stop the others";
        EXPECT_EQ(driver.lastTransactionFailed, 0);
    }
}

TEST_F(TransactionTest, retriesAreCountedForEachFrameAnew)
{
    polls("D 0 1");
    for (int i = 0; i < 3; ++i) {
        sends();
        EXPECT_EQ(receives({}), 8);
        EXPECT_EQ(receives({}), 8);
        EXPECT_EQ(receives(reply(words({i}))), 1);
    }
}

TEST_F(TransactionTest, givenUpWriteLeavesTheQueueAndTheNextGoesOn)
{
    configures(2, 16);
    writes("D", 0, 2, words({1, 2}));
    writes("D", 5, 1, words({3}));
    EXPECT_EQ(exchanges(refusal(4)), "write D 0 2");
    EXPECT_EQ(exchanges(refusal(4)), "write D 0 2");
    EXPECT_EQ(description(), "1#D0(2),error code:4");
    EXPECT_EQ(reads("D", 0, 2), words({0, 0}));
    EXPECT_EQ(word(5), 3);
    EXPECT_EQ(exchanges(acknowledgement()), "write D 5 1");
    EXPECT_TRUE(driver.writeQueue.isEmpty());
}

TEST_F(TransactionTest, writeThatFitsNoFrameFailsAtOnceAndTheNextGoesOn)
{
    configures(3, 600);
    writes("D", 0, 505, Bytes(1010, 1));
    writes("D", 600, 500, Bytes(1000, 0x10));
    writes("D", 1500, 1, words({1}));
    asksForCondition(key("D", 2000, 1));
    EXPECT_EQ(word(0), 0x101);
    EXPECT_EQ(sends(), "nothing");
    EXPECT_EQ(word(0), 0) << "settled as failed";
    EXPECT_EQ(driver.lastTransactionFailed, 1);
    EXPECT_EQ(sends(), "nothing") << "doubling makes it too long";
    EXPECT_EQ(driver.burstCount, 2);
    EXPECT_EQ(exchangesWell(1), "write D 1500 1");
}

TEST_F(TransactionTest, blockForAllStationsHoldsTheRotation)
{
    polls("D 0 1 @255, D 0 1 @256");
    EXPECT_EQ(sends(), "nothing");
    EXPECT_EQ(sends(), "nothing");
    writes("D", 0, 1, words({1}), 255);
    EXPECT_EQ(exchanges({}), "write D 0 1 @255");
    EXPECT_EQ(driver.lastTransactionFailed, 0);
    EXPECT_EQ(reads("D", 0, 1, 255), words({1}));
    EXPECT_EQ(unit("D", 0, 255).writePending, 0);
}

TEST_F(TransactionTest, requestForNoUnitsIsSentAndAcknowledged)
{
    polls("32C 200 1, D 0 1");
    EXPECT_EQ(exchangesWell(2), "read 32C 200 0, read D 0 1");
    EXPECT_EQ(driver.lastTransactionFailed, 0);
}

TEST_F(TransactionTest, bringsValuesOfEveryUnitWidthToTheCache)
{
    polls("M 0 20, D 0 2, 32C 200 4");
    EXPECT_EQ(exchanges(reply(hex("04 03 02 81 ff 00 00 00"))), "read 32C 200 2");
    EXPECT_EQ(reports(), "32C 200, 32C 201");
    EXPECT_EQ(reads("32C", 200, 4), hex("04 03 02 81 ff 00 00 00"));
    EXPECT_EQ(exchanges(reply(hex("34 12 10 10"))), "read D 0 2");
    EXPECT_EQ(reads("D", 0, 2), hex("34 12 10 10"));
    EXPECT_EQ(exchanges(reply(hex("01 80 08"))), "read M 0 20");
    EXPECT_EQ(reports(), "D 0, D 1, M 0, M 15, M 19");
    exchangesWell(2);
    EXPECT_EQ(exchanges(reply(hex("01 80 08"))), "read M 0 20");
    EXPECT_EQ(reports(), "32C 200, 32C 201, D 0, D 1") << "M is unchanged";
}

TEST_F(TransactionTest, readMayBeAnsweredByAWriteFromItsReport)
{
    polls("D 0 2");
    whenReported = [this](const Report &report) {
        EXPECT_EQ(word(0), 5) << "stored before it is reported";
        if (report.text() == "D 0")
            writes("D_bit", 16, 1, {1});
    };
    exchanges(reply(words({5, 8})));
    // The bit was written into D1 before the reply's own D1 was stored; it is outstanding and stays shown.
    EXPECT_EQ(reads("D", 0, 2), words({5, 1}));
    EXPECT_EQ(exchanges(acknowledgement()), "write D_bit 16 1");
    EXPECT_EQ(reads("D", 0, 2), words({5, 9}));
}

TEST_F(TransactionTest, replyWithTooFewBytesReadsAsZeros)
{
    driver.transactionKind = TransactionBlockRead;
    unit("D", 1).readValue[0] = 7;
    unit("M", 8).readValue[0] = 1;
    // The bytes behind the reply's end are not its own.
    const char bytes[] = "\x10\x02\x01\x05\x00\x00\x01\x12\xff\xff\xff";
    analyzeFrameOfVal(QByteArray::fromRawData(bytes, 8), 2, 6, request("D", 0, 2));
    EXPECT_EQ(reads("D", 0, 2), words({0x1201, 0}));
    analyzeFrameOfVal(QByteArray::fromRawData(bytes, 7), 9, 6, request("M", 0, 9));
    EXPECT_EQ(reads("M", 0, 9), (Bytes{1, 0, 0, 0, 0, 0, 0, 0, 0}));
    analyzeFrameOfVal(QByteArray(), -1, 6, request("M", 0, -1));
}

} // namespace
