/// Which blocks a poll list is read in.
#include "serviceForProtocol/planning/pollPlan.h"
#include "support/driverTest.h"
#include "support/kinds.h"
#include "tanek_vs/addressJoin.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

namespace {

class PollPlanTest : public DriverTest {
protected:
    std::string plan(int mergeGap, const char *keys)
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
        const char *keys;
        const char *blocks;
    } rows[] = {
        {"touching", 0, "D 0 10, D 10 5", "D 0 15"},
        {"inside", 0, "D 0 10, D 2 3", "D 0 10"},
        {"gap bridged", 2, "D 0 10, D 12 5", "D 0 17"},
        {"gap too wide", 1, "D 0 10, D 12 5", "D 0 10, D 12 5"},
        {"gap bridged, block full", 8, "D 0 20, D 22 10, D 34 4", "D 0 32, D 34 4"},
        {"cut", 16, "D 0 40", "D 0 32, D 32 8"},
        {"exactly full", 16, "D 0 32, D 32 1", "D 0 32, D 32 1"},
        {"overlap beyond the limit", 16, "D 0 20, D 15 20", "D 0 20, D 15 20"},
        {"bits cut", 16, "M 0 40", "M 0 32, M 32 8"},
        {"bits in a word", 16, "D_bit 1605 3", "D 100 1"},
        {"bits and words", 0, "D 101 2, D_bit 1605 3", "D 100 3"},
        {"bits counted in words, up", 0, "R_bit 16 17", "R 1 2"},
        {"counters", 16, "32C 200 4", "32C 200 2"},
        {"odd counter words", 0, "32C 200 3, 32C 210 1", "32C 200 1, 32C 210 0"},
        {"sorted by station, kind, address", 0, "M 0 1, D 9 1, D 1 1, D 0 1 @0, 32C 250 2",
         "D 0 1 @0, 32C 250 1, D 1 1, D 9 1, M 0 1"},
        {"stations and kinds apart", 16, "D 0 1, D 1 1 @2, R 1 1", "R 1 1, D 0 1, D 1 1 @2"},
        {"coils are no bits in words", 16, "T_Coil 0 20, T_Contact 0 1", "T_Coil 0 20, T_Contact 0 1"},
        {"key inside a cut one", 0, "D 0 40, D 10 5", "D 0 32, D 32 8"},
        {"key from inside a cut one beyond it", 0, "D 0 40, D 30 20", "D 0 32, D 32 18"},
        {"key too long to lengthen the rest of a cut one", 0, "D 0 40, D 30 40", "D 0 32, D 32 30, D 62 8"},
        {"key in a station that weighs like a kind", 0, "D 65535 1, X 0 1", "D 65535 1, X 0 1"},
        {"unknown and senseless left out", 0, "Q 0 1, D 5 1, D 0 0, D -1 2, D 1000005 1", "D 5 1"},
        {"all left out", 0, "Q 0 1", ""},
        {"nothing", 0, "", ""},
        {"broadcast", 0, "D 0 1 @255", "D 0 1 @255"},
        {"sorted across the end of the weights", 0, "T 0 1 @3855, T 1 1 @3855, T 5 1 @3855",
         "T 1 1 @3855, T 5 1 @3855, T 0 1 @3855"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(plan(row.mergeGap, row.keys), row.blocks) << row.what;
}

TEST_F(PollPlanTest, leavesTheHostsListAndOldEntriesAlone)
{
    QList<KEY_ADDRESS> list;
    list << key("D_bit", 1605, 3) << key("32C", 200, 4);
    intf_addrMerge(&list);
    EXPECT_EQ(texts(list), "D_bit 1605 3, 32C 200 4");
    EXPECT_EQ(driver.readBlocks.at(0).hostContext, 4U);
    EXPECT_EQ(unit("D", 100).monitorBits, 0xE0U);
    unit("D", 100).readValue[0] = 5;
    EXPECT_EQ(polls("D 7 1"), 1);
    EXPECT_EQ(unit("D", 100).monitorBits, 0U);
    EXPECT_EQ(unit("D", 100).readValue[0], 5);
    EXPECT_EQ(unit("D", 7).monitorFlags, 1U);
}

TEST_F(PollPlanTest, weighsAndJoins)
{
    EXPECT_EQ(getRegAddressWeight(1, qt("D"), 100), 1441870U);
    EXPECT_EQ(getRegAddressWeight(0, qt("D"), 100), 327775U);
    EXPECT_EQ(getRegAddressWeight(0, qt("Q"), 0), static_cast<quint32>(-65535));
    EXPECT_EQ(getRegAddressWeight(-1, qt("32C"), 0), static_cast<quint32>(-17 * 65535));
    const struct {
        KEY_ADDRESS block, next;
        int mergeGap, mode, result;
    } rows[] = {
        {key("D", 0, 10), key("D", 10, 1), 5, 0, 0},
        {key("D", 0, 10), key("D", 11, 1), 5, 0, 1},
        {key("D", 0, 10), key("D", 15, 1), 5, 1, 0},
        {key("D", 0, 10), key("D", 16, 1), 5, 1, 1},
        {key("D", 0, 10), key("D", 15, 1), 5, 2, 0},
        {key("D", 0, 10), key("D", 3, 1), 5, 0, 0},
        {key("D", 0, 10), key("D", 10, 1, 2), 5, 1, 1},
        {key("D", 0, 10), key("d", 10, 1), 5, 1, 1},
        {key("D", 2147483647, 2), key("D", -2147483647, 1), 5, 0, 0},
        {key("D", 0, 10), key("D", 9, 1), -2, 1, 1},
        {key("D", 0, 10), key("D", 8, 1), -2, 1, 0},
    };
    for (const auto &row : rows) {
        driver.mergeGap = row.mergeGap;
        EXPECT_EQ(judgeAddrMerge(runOf(row.block), runOf(row.next), row.mode), row.result)
            << text(row.block) << ", " << text(row.next);
    }
}

rc::Gen<KEY_ADDRESS> keys()
{
    // Close together and often long, so that they overlap and are cut; the weights of 3855 pass the end of their bits.
    return rc::gen::apply(&key, rc::gen::element<std::string>("D", "D_bit", "32C", "M", "T"), rc::gen::inRange(0, 90),
                          rc::gen::oneOf(rc::gen::inRange(1, 8), rc::gen::inRange(1, 110)),
                          rc::gen::element(1, 2, 3855));
}

RC_GTEST_FIXTURE_PROP(PollPlanTest, everyPolledUnitLiesInABlockOfAtMost32, ())
{
    configures(3, *rc::gen::inRange(0, 20));
    const auto wanted = *rc::gen::container<std::vector<KEY_ADDRESS>>(keys());
    polls(wanted);
    std::vector<std::string> covered;
    for (const VARIABLE &block : driver.readBlocks) {
        RC_ASSERT(block.count >= 0 && block.count <= 32);
        for (int k = 0; k < block.count; ++k)
            covered.push_back(text(request(plain(block.regName), block.address + k, 1, block.station)));
    }
    std::sort(covered.begin(), covered.end());
    for (const KEY_ADDRESS &one : wanted) {
        const Kind &kind = kindNamed(plain(one.regName));
        // Bits in words are only promised the words from that of the first bit on.
        const int first = kind.isBitInWord() ? one.address / 16 : one.address;
        const int count = kind.isBitInWord() ? (one.count + 15) / 16 : one.count / kind.hostCount();
        for (int k = 0; k < count; ++k)
            RC_ASSERT(std::binary_search(covered.begin(), covered.end(),
                                         text(request(kind.unitName, first + k, 1, one.station))));
    }
}

} // namespace
