/// Written values from their posting to their end, as the host sees them.
#include "support/driverTest.h"

namespace {

using WriteTest = DriverTest;

TEST_F(WriteTest, isReportedWhenItsAcceptanceShowsItAgain)
{
    const struct {
        const char *what, *regName;
        int address;
        Bytes first, second, read;
        const char *whenShownAgain;
    } rows[] = {
        {"a word", "D", 100, words({5}), words({6}), words({4}), "D_bit 1601, D 100"},
        {"a counter", "32C", 200, hex("05 00 00 00"), hex("06 00 00 00"), hex("04 00 00 00"), "32C 200"},
        {"a bit that is not polled", "X", 8, {0}, {1}, {0}, "X 8"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        configures(1, 16);
        polls("D 100 1, D_bit 1600 3, 32C 200 2");
        const int count = row.first.size() == 4 ? 2 : 1;
        // The first is given up, so that the second, which waits, is no longer shown.
        writes(row.regName, row.address, count, row.read);
        exchanges(acknowledgement());
        writes(row.regName, row.address, count, row.first);
        writes(row.regName, row.address, count, row.second);
        exchanges({});
        EXPECT_EQ(reads(row.regName, row.address, count), row.read);
        reports();
        exchanges(acknowledgement());
        EXPECT_EQ(reads(row.regName, row.address, count), row.second);
        EXPECT_EQ(reports(), row.whenShownAgain);
    }
}

TEST_F(WriteTest, isReportedAgainWhenAPollBroughtOtherContentsMeanwhile)
{
    polls("D 100 1");
    sends();
    writes("D", 100, 1, words({5}));
    reports();
    EXPECT_EQ(receives(reply(words({9}))), 1);
    EXPECT_EQ(word(100), 9);
    EXPECT_EQ(reports(), "D 100");
    EXPECT_EQ(exchanges(acknowledgement()), "write D 100 1");
    EXPECT_EQ(word(100), 5);
    EXPECT_EQ(reports(), "D 100");
}

TEST_F(WriteTest, whoseShowingAReadEndsIsReportedBitByBit)
{
    polls("D_bit 1603 1");
    sends();
    writes("D", 100, 1, words({8}));
    EXPECT_EQ(reports(), "D_bit 1603");
    receives(reply(words({1})));
    EXPECT_EQ(reads("D_bit", 1603, 1), Bytes{0});
    EXPECT_EQ(reports(), "D_bit 1603");
}

TEST_F(WriteTest, ofBitsIsCountedUntilTheLastIsSettled)
{
    polls("D_bit 1603 1, D 100 1");
    writes("D_bit", 1603, 1, {1});
    EXPECT_EQ(reports(), "D_bit 1603, D 100");
    EXPECT_EQ(word(100), 8);
    EXPECT_EQ(sends(), "write D_bit 1603 1");
    writes("D_bit", 1603, 1, {0});
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0xC0U);
    writes("D_bit", 1603, 1, {1}); // replaces the second: there are still two
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0xC0U);
    reports();

    EXPECT_EQ(receives(acknowledgement()), 1);
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0x80U);
    EXPECT_EQ(unit("D", 100).writePending, 1);
    EXPECT_EQ(reports(), "");
    exchanges(acknowledgement());
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0U);
    EXPECT_EQ(unit("D", 100).writePending, 0);
    EXPECT_EQ(reports(), "D_bit 1603, D 100");
    EXPECT_EQ(word(100), 8);
}

TEST_F(WriteTest, ofABitIsNotCountedForGood)
{
    configures(1, 16);
    polls("D_bit 1603 1");
    // The second of two is replaced behind another head after the first was settled.
    writes("D_bit", 1603, 1, {1});
    sends();
    writes("D", 8000, 1, words({1}));
    writes("D_bit", 1603, 1, {0});
    receives(acknowledgement());
    writes("D_bit", 1603, 1, {1});
    exchanges(acknowledgement());
    EXPECT_EQ(exchanges(acknowledgement()), "write D_bit 1603 1");
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0U);
    reports();
    writes("D_bit", 1603, 1, {0});
    exchanges({});
    EXPECT_EQ(reads("D_bit", 1603, 1), Bytes{1}) << "a refused write is not shown as done";
    EXPECT_EQ(reports(), "D_bit 1603, D_bit 1603");
}

TEST_F(WriteTest, ofBitsAcrossWordsSettlesEachWordWithItsLastBit)
{
    polls("D 100 2");
    writes("D_bit", 1614, 4, {1, 1, 1, 1});
    writes("D_bit", 1618, 1, {1});
    EXPECT_EQ(unit("D", 100).bitRequests, 1U);
    EXPECT_EQ(unit("D", 101).bitRequests, 2U);
    reports();
    exchanges(acknowledgement());
    EXPECT_EQ(reports(), "D 100");
    EXPECT_EQ(unit("D", 101).writePending, 1) << "another request for its bits waits";
    exchanges(acknowledgement());
    EXPECT_EQ(reports(), "D 101");
    EXPECT_EQ(reads("D", 100, 2), words({0xC000, 7}));
}

TEST_F(WriteTest, repeatedFromTheReportOfItsFirstBitIsCountedForTheOthers)
{
    polls("D_bit 1600 2");
    unit("D", 100).pendingBitWrites = 1; // an earlier write of the first bit
    whenReported = [this](const Report &) {
        whenReported = nullptr;
        writes("D_bit", 1600, 2, {1, 1});
    };
    writes("D_bit", 1600, 2, {1, 1});
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0xFU);
}

TEST_F(WriteTest, ofABitKeepsTheOthersOfItsWord)
{
    polls("D 100 1");
    exchanges(reply(words({0x8421})));
    writes("D_bit", 1608, 2, {1, 2});
    EXPECT_EQ(word(100), 0x8521);
    EXPECT_EQ(exchanges(acknowledgement()), "write D_bit 1608 2");
    EXPECT_EQ(word(100), 0x8521);
}

TEST_F(WriteTest, goesOnBeingShownThroughReadsWhileBitsAreOutstanding)
{
    const struct {
        const char *what;
        const char *regName;
        int read;
        bool isStillShown;
    } rows[] = {
        {"a word, other contents read", "D", 1, false},
        {"a word, the same contents read", "D", 0, true},
        {"a bit of a word, other contents read", "D_bit", 4, true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        configures(3, 16);
        polls("D 0 1, D_bit 0 16");
        sends();
        writes(row.regName, 0, 1, {1, 3});
        const int written = word(0);
        reports();
        receives(reply(words({row.read})));
        EXPECT_EQ(unit("D", 0).writePending, row.isStillShown ? 1 : 0);
        EXPECT_EQ(word(0), row.isStillShown ? written : row.read);
        EXPECT_EQ(unit("D", 0).readValue[0], row.read);
    }
    for (const unsigned char read : Bytes{0, 1}) {
        configures(3, 16);
        polls("M 0 1");
        sends();
        writes("M", 0, 1, {1});
        reports();
        receives(reply({read}));
        EXPECT_EQ(unit("M", 0).writePending, read == 0 ? 1 : 0);
        EXPECT_EQ(reads("M", 0, 1), Bytes{1});
        EXPECT_EQ(reports(), read == 0 ? "" : "M 0");
    }
}

TEST_F(WriteTest, givenUpTellsChangedBitsOfAWordAndAllOfACounter)
{
    configures(1, 16);
    polls("D 100 1, D_bit 1600 4, 32C 200 2");
    unit("32C", 200).monitorBits = 0x80000001;
    writes("D", 100, 1, words({1}));
    writes("32C", 200, 2, hex("00 00 00 80"));
    EXPECT_EQ(reports(), "D_bit 1600, D 100, 32C_bit 6431, 32C 200");
    exchanges({});
    EXPECT_EQ(reports(), "D_bit 1600, D 100");
    exchanges({});
    EXPECT_EQ(reports(), "32C_bit 6400, 32C_bit 6431, 32C 200");
}

TEST_F(WriteTest, isSettledBeforeItLeavesTheQueue)
{
    configures(1, 16);
    polls("D_bit 1603 1");
    for (const Bytes &answer : {acknowledgement(), Bytes()}) {
        writes("D_bit", 1603, 1, {1});
        sends();
        reports();
        int queued = 0;
        whenReported = [&](const Report &) { queued = static_cast<int>(driver.writeQueue.size()); };
        receives(answer);
        EXPECT_EQ(reports(), "D_bit 1603");
        EXPECT_EQ(queued, 1);
        whenReported = nullptr;
    }
}

TEST_F(WriteTest, isThereWhenItIsReportedAndTheCallbackMayWrite)
{
    std::vector<int> seen;
    polls("D 100 2, D_bit 1600 16");
    whenReported = [&](const Report &report) {
        seen.push_back(word(100));
        EXPECT_NE(unit("D", 100).pendingBitWrites, 0U) << "counted before it is reported";
        if (report.text() == "D_bit 1601")
            writes("D", 101, 1, words({7}));
    };
    writes("D_bit", 1600, 2, {1, 1});
    EXPECT_EQ(seen, (std::vector<int>{1, 1, 3, 3, 3}));
    EXPECT_EQ(reports(), "D_bit 1600, D 100, D_bit 1601, D 101, D 100");
    EXPECT_EQ(texts(driver.writeQueue), "D_bit 1600 2, D 101 1");
    EXPECT_TRUE(driver.writesBeingMirrored.isEmpty());
}

TEST_F(WriteTest, ofAPlainBitIsReportedEvenWhenNotPolled)
{
    std::vector<int> seen;
    whenReported = [&](const Report &) { seen.push_back(reads("X", 10, 1).front()); };
    writes("X", 10, 1, {1});
    EXPECT_EQ(reports(), "X 10");
    for (int i = 0; i < 3; ++i)
        exchanges({});
    EXPECT_EQ(reports(), "X 10");
    EXPECT_EQ(seen, (std::vector<int>{1, 0}));
}

TEST_F(WriteTest, outlivesANewPollListThatForgetsItsCounts)
{
    writes("D_bit", 1603, 1, {1});
    polls("D 100 1");
    EXPECT_EQ(unit("D", 100).pendingBitWrites, 0U);
    EXPECT_EQ(unit("D", 100).writePending, 1);
    EXPECT_EQ(unit("D", 100).monitorFlags, 1U);
    exchanges(acknowledgement());
    EXPECT_EQ(unit("D", 100).writePending, 0);
    EXPECT_EQ(polls(""), 0);
    EXPECT_EQ(unit("D", 100).monitorFlags, 0U);
}

} // namespace
