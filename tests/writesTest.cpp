#include "support/driverTest.h"

#include "serviceForProtocol/cache/writes.h"

#include <rapidcheck/gtest.h>

namespace {

class WritesTest : public DriverTest {
protected:
    /// Something at the head of the queue, which nothing replaces.
    void headIsTaken() { writes("D", 8000, 1, words({0})); }

    static Bytes valuesOf(const VARIABLE &queued, std::size_t size) { return Bytes(queued.data, queued.data + size); }
    std::vector<std::string> queue() const { return texts(driver.writeQueue); }
};

TEST_F(WritesTest, areCutIntoPiecesAndConvertedToDeviceUnits)
{
    const struct {
        const char *regName;
        int address, count, mergeGap;
        std::vector<std::string> requests;
    } rows[] = {
        {"D", 100, 10, 4, {"D 100 4 @1", "D 104 4 @1", "D 108 2 @1"}},
        {"D", 100, 8, 4, {"D 100 4 @1", "D 104 4 @1"}},
        {"D", 100, 4, 4, {"D 100 4 @1"}},
        {"M", 0, 20, 1, {"M 0 8 @1", "M 8 8 @1", "M 16 4 @1"}},
        {"D_bit", 1605, 9, 1, {"D_bit 1605 8 @1", "D_bit 1613 1 @1"}},
        {"32C", 200, 4, 16, {"32C 200 2 @1"}},
        {"32C", 200, 4, 2, {"32C 200 1 @1", "32C 201 1 @1"}},
        {"32C", 200, 6, 3, {"32C 200 1 @1", "32C 201 1 @1"}},
        {"32C", 200, 1, 16, {"32C 200 0 @1"}},
        {"D", 0, 40, 0, {"D 0 32 @1", "D 32 8 @1"}},
        {"D", 0, 40, -5, {"D 0 32 @1", "D 32 8 @1"}},
        {"M", 0, 300, 0, {"M 0 256 @1", "M 256 44 @1"}},
        {"D", 0, 512, 600, {"D 0 512 @1"}},
        {"D", 0, 513, 600, {}},
        {"M", 0, 1024, 600, {"M 0 1024 @1"}},
        {"M", 0, 1025, 600, {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.regName) + " " + std::to_string(row.count));
        configures(3, row.mergeGap);
        writes(row.regName, row.address, row.count, Bytes(2100, 1));
        EXPECT_EQ(queue(), row.requests);
        EXPECT_EQ(driver.dataAreas.isEmpty(), row.requests.empty() || row.count == 1);
    }
}

TEST_F(WritesTest, replaceAWaitingOneForTheSamePlace)
{
    headIsTaken();
    writes("D", 100, 1, words({1}));
    writes("D", 200, 1, words({9}));
    writes("D", 100, 1, words({2}));
    EXPECT_EQ(queue(), (std::vector<std::string>{"D 8000 1 @1", "D 100 1 @1", "D 200 1 @1"}));
    EXPECT_EQ(valuesOf(driver.writeQueue.at(1), 2), words({2}));
    writes("D", 100, 2, words({1, 1}));
    writes("D", 100, 1, words({2}), 2);
    writes("R", 100, 1, words({2}));
    EXPECT_EQ(queue().size(), 6U);
    writes("D", 8000, 1, words({3}));
    EXPECT_EQ(queue().size(), 7U) << "the head may be in flight";
}

TEST_F(WritesTest, carryTheHostsContext)
{
    const Bytes values = words({1});
    intf_setData(1, qt("D"), 0, 1, values.data(), 7);
    intf_setData(1, qt("D"), 1, 1, values.data(), 8);
    intf_setData(1, qt("D"), 1, 1, values.data(), ~std::uintptr_t(0));
    EXPECT_EQ(driver.writeQueue.at(0).hostContext, 7U);
    EXPECT_EQ(driver.writeQueue.at(1).hostContext, ~std::uintptr_t(0));
    sends();
    EXPECT_EQ(frame.variable.hostContext, 7U);
}

TEST_F(WritesTest, aFullQueueHasItsLastEntryReplaced)
{
    for (int i = 0; i < 520; ++i)
        writes("D", i, 1, words({i}));
    EXPECT_EQ(queue().size(), 513U);
    EXPECT_EQ(queue()[511], "D 511 1 @1");
    EXPECT_EQ(queue()[512], "D 519 1 @1");
}

TEST_F(WritesTest, toTheCacheAloneQueueNothing)
{
    configures(3, 16, 1);
    polls({key("D", 0, 1)});
    writes("D", 0, 600, Bytes(1200, 1));
    EXPECT_EQ(word(599), 0x101);
    EXPECT_EQ(reports(), Reports{"D 0 @1"});
    EXPECT_EQ(sends(), "read D 0 1 @1");
}

TEST_F(WritesTest, areNotSentBeforeTheyAreMirroredAndHoldUpNoOthers)
{
    configures(3, 1);
    polls({key("D", 0, 1)});
    writes("D", 50, 1, words({5}));
    // What the communication thread may do while another thread's write of three pieces is being mirrored.
    whenReported = [this](const std::string &) {
        whenReported = nullptr;
        EXPECT_EQ(exchanges(acknowledgement()), "write D 50 1 @1");
        EXPECT_EQ(exchanges(reply(words({0}))), "read D 0 1 @1");
        EXPECT_EQ(word(0), 1) << "still outstanding";
    };
    writes("D", 0, 3, words({1, 2, 3}));
    EXPECT_EQ(whenReported, nullptr);
    EXPECT_EQ(exchangesWell(3), (std::vector<std::string>{"write D 0 1 @1", "write D 1 1 @1", "write D 2 1 @1"}));
    for (int address = 0; address < 3; ++address)
        EXPECT_EQ(unit("D", address).writePending, 0);
}

RC_GTEST_FIXTURE_PROP(WritesTest, cutWriteCarriesEveryValueOnce, ())
{
    const bool bits = *rc::gen::arbitrary<bool>();
    const int count = *rc::gen::inRange(1, bits ? 1025 : 513);
    const int gap = *rc::gen::inRange(1, 600);
    const int size = bits ? count : 2 * count;
    const auto value = rc::gen::inRange<unsigned char>(0, 2);
    const auto values = *rc::gen::container<Bytes>(static_cast<std::size_t>(size), value);
    configures(3, gap);
    writes(bits ? "M" : "D", 40, count, values);

    int address = 40;
    Bytes carried;
    for (int i = 0; i < driver.writeQueue.size(); ++i) {
        const VARIABLE &queued = driver.writeQueue.at(i);
        RC_ASSERT(queued.address == address);
        RC_ASSERT(queued.count >= 1 && queued.count <= (bits ? 8 * gap : gap));
        const Bytes piece = valuesOf(queued, static_cast<std::size_t>(bits ? queued.count : 2 * queued.count));
        carried.insert(carried.end(), piece.begin(), piece.end());
        address += queued.count;
    }
    RC_ASSERT(carried == values);
}

TEST(GroupingKey, appendsPiecesBehindWhatTheListHolds)
{
    KEY_ADDRESS record = key("M", 5, 3);
    record.data[2] = 1;
    record.hostTag = 9;
    QList<KEY_ADDRESS> pieces;
    groupingKey(record, 3, pieces, 1);
    groupingKey(record, 2, pieces, 1);
    groupingKey(record, 0, pieces, 1);
    EXPECT_EQ(texts(pieces), (std::vector<std::string>{"M 5 3 @1", "M 5 2 @1", "M 7 1 @1", "M 5 3 @1"}));
    EXPECT_EQ(pieces.at(2).data[0], 1);
    EXPECT_EQ(pieces.at(2).hostTag, 9);
    EXPECT_EQ(pieces.at(1).data[2], 0) << "a piece carries its own values alone";
}

} // namespace
