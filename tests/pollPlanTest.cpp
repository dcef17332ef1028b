#include "support/driverTest.h"

#include "serviceForProtocol/planning/pollPlan.h"
#include "tanek_vs/joinTest.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

namespace {

class PollPlanTest : public DriverTest {
protected:
    std::vector<std::string> plan(int mergeGap, const std::vector<KEY_ADDRESS> &keys)
    {
        configures(3, mergeGap);
        const int number = polls(keys);
        EXPECT_EQ(number, driver.readBlocks.size());
        return texts(driver.readBlocks);
    }
};

TEST_F(PollPlanTest, joinsWhatOneRequestCanRead)
{
    const struct {
        const char *what;
        int mergeGap;
        std::vector<KEY_ADDRESS> keys;
        std::vector<std::string> blocks;
    } rows[] = {
        {"touching", 0, {key("D", 0, 10), key("D", 10, 5)}, {"D 0 15 @1"}},
        {"inside", 0, {key("D", 0, 10), key("D", 2, 3)}, {"D 0 10 @1"}},
        {"gap bridged", 2, {key("D", 0, 10), key("D", 12, 5)}, {"D 0 17 @1"}},
        {"gap too wide", 1, {key("D", 0, 10), key("D", 12, 5)}, {"D 0 10 @1", "D 12 5 @1"}},
        {"gap bridged, block full",
         8,
         {key("D", 0, 20), key("D", 22, 10), key("D", 34, 4)},
         {"D 0 32 @1", "D 34 4 @1"}},
        {"cut", 16, {key("D", 0, 40)}, {"D 0 32 @1", "D 32 8 @1"}},
        {"exactly full", 16, {key("D", 0, 32), key("D", 32, 1)}, {"D 0 32 @1", "D 32 1 @1"}},
        {"overlap beyond the limit", 16, {key("D", 0, 20), key("D", 15, 20)}, {"D 0 20 @1", "D 15 20 @1"}},
        {"bits cut", 16, {key("M", 0, 40)}, {"M 0 32 @1", "M 32 8 @1"}},
        {"bits in a word", 16, {key("D_bit", 1605, 3)}, {"D 100 1 @1"}},
        {"bits and words", 0, {key("D", 101, 2), key("D_bit", 1605, 3)}, {"D 100 3 @1"}},
        {"bits counted in words, up", 0, {key("R_bit", 16, 17)}, {"R 1 2 @1"}},
        {"counters", 16, {key("32C", 200, 4)}, {"32C 200 2 @1"}},
        {"odd counter words", 0, {key("32C", 200, 3), key("32C", 210, 1)}, {"32C 200 1 @1", "32C 210 0 @1"}},
        {"sorted by station, kind, address",
         0,
         {key("M", 0, 1), key("D", 9, 1), key("D", 1, 1), key("D", 0, 1, 0), key("32C", 250, 2)},
         {"D 0 1 @0", "32C 250 1 @1", "D 1 1 @1", "D 9 1 @1", "M 0 1 @1"}},
        {"stations and kinds apart",
         16,
         {key("D", 0, 1), key("D", 1, 1, 2), key("R", 1, 1)},
         {"R 1 1 @1", "D 0 1 @1", "D 1 1 @2"}},
        {"coils are no bits in words",
         16,
         {key("T_Coil", 0, 20), key("T_Contact", 0, 1)},
         {"T_Coil 0 20 @1", "T_Contact 0 1 @1"}},
        {"key inside a cut one", 0, {key("D", 0, 40), key("D", 10, 5)}, {"D 0 32 @1", "D 32 8 @1"}},
        {"key from inside a cut one beyond it", 0, {key("D", 0, 40), key("D", 30, 20)}, {"D 0 32 @1", "D 32 18 @1"}},
        {"key too long to lengthen the rest of a cut one",
         0,
         {key("D", 0, 40), key("D", 30, 40)},
         {"D 0 32 @1", "D 32 30 @1", "D 62 8 @1"}},
        {"key in a station that weighs like a kind",
         0,
         {key("D", 65535, 1), key("X", 0, 1)},
         {"D 65535 1 @1", "X 0 1 @1"}},
        {"unknown and senseless left out",
         0,
         {key("Q", 0, 1), key("D", 5, 1), key("D", 0, 0), key("D", -1, 2)},
         {"D 5 1 @1"}},
        {"all left out", 0, {key("Q", 0, 1)}, {}},
        {"nothing", 0, {}, {}},
        {"at the end of the numbers", 16, {key("D", 2147483647, 1), key("D", 0, 1)}, {"D 0 1 @1", "D 2147483647 1 @1"}},
        {"broadcast", 0, {key("D", 0, 1, 255)}, {"D 0 1 @255"}},
        {"sorted across the end of the weights",
         0,
         {key("T", 0, 1, 3855), key("T", 1, 1, 3855), key("T", 5, 1, 3855)},
         {"T 1 1 @3855", "T 5 1 @3855", "T 0 1 @3855"}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(plan(row.mergeGap, row.keys), row.blocks) << row.what;
}

TEST_F(PollPlanTest, blocksCarryTheMarkOfThePollList)
{
    KEY_ADDRESS wanted = key("D", 0, 1);
    wanted.data[0] = 9;
    polls({wanted});
    EXPECT_EQ(driver.readBlocks.at(0).hostContext, 4U);
}

TEST_F(PollPlanTest, leavesTheHostsListAndOldEntriesAlone)
{
    QList<KEY_ADDRESS> list;
    list << key("D_bit", 1605, 3) << key("32C", 200, 4);
    intf_addrMerge(&list);
    EXPECT_EQ(texts(list), (std::vector<std::string>{"D_bit 1605 3 @1", "32C 200 4 @1"}));
    EXPECT_EQ(unit("D", 100).monitorBits, 0xE0U);
    unit("D", 100).readValue[0] = 5;
    EXPECT_EQ(polls({key("D", 7, 1)}), 1);
    EXPECT_EQ(unit("D", 100).monitorBits, 0U);
    EXPECT_EQ(unit("D", 100).readValue[0], 5);
    EXPECT_EQ(unit("D", 7).monitorFlags, 1U);
}

TEST_F(PollPlanTest, mergingKeepsTheFieldsOfTheFirstKeyAndTheOrderOfEqualOnes)
{
    KEY_ADDRESS first = key("D", 4, 1);
    first.hostLabel = qt("label");
    first.hostNote = qt("note");
    first.hostTag = 7;
    first.bufferOffset = 3;
    first.unitCode = -1;
    KEY_ADDRESS second = key("D", 4, 60);
    second.hostTag = 8;
    QList<KEY_ADDRESS> keys;
    keys << first << second;
    addrMerge(keys, MergePoll);
    // The first key is closed by the second, which the limit keeps from joining it.
    EXPECT_EQ(texts(keys), (std::vector<std::string>{"D 4 32 @1", "D 36 28 @1"}));
    EXPECT_EQ(plain(keys.at(0).hostLabel) + plain(keys.at(0).hostNote), "labelnote");
    EXPECT_EQ(keys.at(0).hostTag + keys.at(0).bufferOffset + keys.at(0).unitCode, 9);
}

TEST_F(PollPlanTest, weightsAndJoinTest)
{
    EXPECT_EQ(getRegAddressWeight(1, qt("D"), 100), 1441870U);
    EXPECT_EQ(getRegAddressWeight(0, qt("D"), 100), 327775U);
    EXPECT_EQ(getRegAddressWeight(0, qt("Q"), 0), static_cast<quint32>(-65535));
    EXPECT_EQ(getRegAddressWeight(-1, qt("32C"), 0), static_cast<quint32>(-17 * 65535));
    driver.mergeGap = 5;
    const struct {
        KEY_ADDRESS block, next;
        int mode, result;
    } rows[] = {
        {key("D", 0, 10), key("D", 10, 1), 0, 0},
        {key("D", 0, 10), key("D", 11, 1), 0, 1},
        {key("D", 0, 10), key("D", 15, 1), 1, 0},
        {key("D", 0, 10), key("D", 16, 1), 1, 1},
        {key("D", 0, 10), key("D", 15, 1), 2, 0},
        {key("D", 0, 10), key("D", 3, 1), 0, 0},
        {key("D", 0, 10), key("D", 10, 1, 2), 1, 1},
        {key("D", 0, 10), key("d", 10, 1), 1, 1},
        {key("D", 2147483647, 2), key("D", -2147483647, 1), 0, 0},
    };
    for (const auto &row : rows)
        EXPECT_EQ(judgeAddrMerge(row.block, row.next, row.mode), row.result)
            << text(row.block) << ", " << text(row.next);
    driver.mergeGap = -2;
    EXPECT_EQ(judgeAddrMerge(key("D", 0, 10), key("D", 9, 1), 1), 1);
    EXPECT_EQ(judgeAddrMerge(key("D", 0, 10), key("D", 8, 1), 1), 0);
}

/// The device units of a key as "station kind unit".
std::vector<std::string> unitsOf(const KEY_ADDRESS &wanted)
{
    const bool bitsInWords = plain(wanted.regName) == "D_bit";
    const int perUnit = plain(wanted.regName) == "32C" ? 2 : 1;
    // Bits in words are only promised the words from that of the first bit on.
    const int first = bitsInWords ? wanted.address / 16 : wanted.address;
    const int count = bitsInWords ? (wanted.count + 15) / 16 : wanted.count / perUnit;
    std::vector<std::string> units;
    for (int i = 0; i < count; ++i)
        units.push_back(std::to_string(wanted.station) + (bitsInWords ? "D" : plain(wanted.regName)) + " " +
                        std::to_string(first + i));
    return units;
}

rc::Gen<KEY_ADDRESS> keys()
{
    // Close together and often long, so that they overlap and are cut.
    return rc::gen::map(
        rc::gen::tuple(rc::gen::element<std::string>("D", "D_bit", "32C", "M", "T"), rc::gen::inRange(0, 90),
                       rc::gen::oneOf(rc::gen::inRange(1, 8), rc::gen::inRange(1, 110)),
                       rc::gen::element(1, 2, 3855)), // the weights of 3855 pass the end of their 32 bits
        [](const std::tuple<std::string, int, int, int> &fields) {
            return key(std::get<0>(fields), std::get<1>(fields), std::get<2>(fields), std::get<3>(fields));
        });
}

RC_GTEST_FIXTURE_PROP(PollPlanTest, everyPolledUnitLiesInABlockOfAtMost32, ())
{
    configures(3, *rc::gen::inRange(0, 20));
    const auto wanted = *rc::gen::container<std::vector<KEY_ADDRESS>>(keys());
    polls(wanted);

    std::vector<std::string> covered;
    for (int i = 0; i < driver.readBlocks.size(); ++i) {
        const VARIABLE &block = driver.readBlocks.at(i);
        RC_ASSERT(block.count >= 0 && block.count <= 32);
        for (int k = 0; k < block.count; ++k)
            covered.push_back(std::to_string(block.station) + plain(block.regName) + " " +
                              std::to_string(block.address + k));
    }
    std::sort(covered.begin(), covered.end());
    for (const KEY_ADDRESS &one : wanted) {
        for (const std::string &unitName : unitsOf(one))
            RC_ASSERT(std::binary_search(covered.begin(), covered.end(), unitName));
    }
}

} // namespace
