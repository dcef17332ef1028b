/// Recipes: their plan, and their way between the host's buffer and the controller.
#include "serviceForProtocol/transactions/recipeTransfer.h"
#include "support/driverTest.h"

#include <rapidcheck/gtest.h>

#include <numeric>

namespace {

class RecipeTest : public DriverTest {
protected:
    std::string blocks() const
    {
        std::vector<std::string> all;
        for (int i = 0; i < driver.recipeBlocks.size(); ++i)
            all.push_back(text(driver.recipeBlocks.at(i)) + " from " +
                          std::to_string(driver.recipeBlocks.at(i).bufferOffset) + " item " +
                          std::to_string(driver.recipeBlockFirstItem.at(i)));
        return joined(all);
    }

    void fillsBuffer() { std::iota(recipeBuffer.begin(), recipeBuffer.end(), static_cast<quint16>(0x100)); }

    /// Three words with a block each, and a poll list.
    void plansThreeBlocks()
    {
        plansRecipe("D 0 1 from 0, D 5 1 from 1, D 9 1 from 2");
        polls("D 50 1");
    }

    std::string exchangesUntilDone(int asked)
    {
        std::vector<std::string> sent;
        while (isAsked(asked))
            sent.push_back(exchangesWell(1));
        return joined(sent);
    }

    const char *const polled = "read D 50 1";
};

TEST_F(RecipeTest, isPlannedIntoBlocks)
{
    const struct {
        const char *what;
        const char *items;
        const char *blocks;
    } rows[] = {
        {"sorted and joined", "D 12 3 from 2, D 10 2 from 0, D 20 1 from 5",
         "D 10 5 from 0 item 0, D 20 1 from 5 item 2"},
        {"gaps stay", "D 10 2 from 0, D 13 1 from 2", "D 10 2 from 0 item 0, D 13 1 from 2 item 1"},
        {"counters", "32C 200 4 from 0", "32C 200 2 from 0 item 0"},
        {"bits", "M 0 5 from 0, D_bit 16 2 from 0", "M 0 5 from 0 item 0, D_bit 16 2 from 0 item 1"},
        {"full block", "D 0 20 from 0, D 20 12 from 20, D 32 1 from 32", "D 0 32 from 0 item 0, D 32 1 from 32 item 2"},
        {"long item, next joins its rest", "D 0 70 from 5, D 70 2 from 75, D 90 1 from 77",
         "D 0 32 from 5 item 0, D 32 32 from 37 item 0, D 64 8 from 69 item 0, D 90 1 from 77 item 2"},
        {"long counters", "32C 200 80 from 10", "32C 200 32 from 10 item 0, 32C 232 8 from 74 item 0"},
        {"long bits", "M 0 40 from 3, D_bit 0 33 from 3",
         "M 0 32 from 3 item 0, M 32 8 from 3 item 0, D_bit 0 32 from 3 item 1, D_bit 32 1 from 3 item 1"},
        {"item inside a long one", "D 0 40 from 0, D 10 2 from 40",
         "D 0 32 from 0 item 0, D 32 8 from 32 item 0, D 10 2 from 40 item 1"},
        {"unknown kind", "Q 0 9 from 0", "Q 0 -2 from 0 item 0"},
        {"longer than the kind", "32C 200 113 from 0, D 0 9001 from 0, M 0 8193 from 0",
         "32C 200 -1 from 0 item 0, D 0 -2 from 0 item 1, M 0 -2 from 0 item 2"},
        {"senseless counts stay apart", "D 0 5 from 0, D 3 -2 from 5, D 3 2147483647 from 5",
         "D 0 5 from 0 item 0, D 3 -2 from 5 item 1, D 3 -2 from 5 item 2"},
        {"none", "", ""},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        plansRecipe("R 0 1 from 0");
        EXPECT_EQ(plansRecipe(row.items), runsOf(row.items).size());
        EXPECT_EQ(blocks(), row.blocks);
    }
    std::vector<_RCP_VAR_PRO> items = runsOf("D 12 3 from 2, D 0 5 from 9, D 10 2 from 0");
    items[1].instanceId = INSTANCE + 1;
    EXPECT_EQ(plansRecipe(items), 2);
    EXPECT_EQ(blocks(), "D 10 5 from 0 item 0");
    EXPECT_EQ(driver.recipeItems.size(), 2);
    plansRecipe(std::vector<_RCP_VAR_PRO>(1000, recipeItem("C", 0, 416000, 0)));
    EXPECT_EQ(driver.recipeBlocks.size(), 1000) << "not millions";
}

TEST_F(RecipeTest, goesDownBlockByBlockAheadOfAll)
{
    fillsBuffer();
    plansRecipe("D 10 5 from 0, 32C 200 4 from 5, D 20 1 from 9");
    polls("D 10 1");
    writes("R", 0, 1, words({1}));
    driver.currentVariable.hostContext = 5;
    asks(DOWNLOAD_BYTE);
    asks(UPLOAD_BYTE);

    EXPECT_EQ(sends(), "write 32C 200 2");
    EXPECT_EQ(hexText(sentBytes()),
              hexText(doubled(envelope(hex("01 0f 00 28 ad 00 02 00 02 00 05 01 06 01 07 01 08 01")))));
    EXPECT_EQ(frame.variable.hostContext, 5U);
    EXPECT_EQ(receives(acknowledgement()), 1);
    EXPECT_EQ(exchanges(acknowledgement()), "write D 10 5");
    EXPECT_TRUE(isAsked(DOWNLOAD_BYTE));
    EXPECT_EQ(exchanges(acknowledgement()), "write D 20 1");
    EXPECT_FALSE(isAsked(DOWNLOAD_BYTE));
    EXPECT_TRUE(isAsked(UPLOAD_BYTE));
    EXPECT_EQ(driver.recipeIndex, 0);
    EXPECT_EQ(word(10), 0) << "recipe writes are no business of the cache";
    EXPECT_EQ(sends(), "read 32C 200 2");
}

TEST_F(RecipeTest, comesUpIntoTheBufferAndTheCache)
{
    plansRecipe("D 12 3 from 7, D 10 2 from 0, 32C 200 2 from 20, 32C 201 2 from 30");
    polls("D 12 1");
    asks(UPLOAD_BYTE);
    whenReported = [this](const Report &) { EXPECT_EQ(recipeBuffer[21], 0x0403) << "a value is filled whole"; };
    EXPECT_EQ(exchanges(reply(hex("01 02 03 04 05 06 07 08"))), "read 32C 200 2");
    EXPECT_EQ(reports(), "RWI 20, RWI 21, RWI 30, RWI 31");
    whenReported = [this](const Report &report) {
        if (report.text() == "RWI 0") {
            EXPECT_EQ(recipeBuffer[0], 1) << "filled before it is reported";
            EXPECT_EQ(recipeBuffer[1], 0) << "filled word by word";
        }
    };
    EXPECT_EQ(exchanges(reply(words({1, 2, 3, 4, 5}))), "read D 10 5");
    EXPECT_EQ(reports(), "D 12, RWI 0, RWI 1, RWI 7, RWI 8, RWI 9");
    EXPECT_EQ((std::vector<quint16>(recipeBuffer.begin(), recipeBuffer.begin() + 10)),
              (std::vector<quint16>{1, 2, 0, 0, 0, 0, 0, 3, 4, 5}));
    EXPECT_EQ((std::vector<int>{recipeBuffer[20], recipeBuffer[21], recipeBuffer[30], recipeBuffer[31]}),
              (std::vector<int>{0x0201, 0x0403, 0x0605, 0x0807}));
    EXPECT_EQ(word(14), 5);
    EXPECT_FALSE(isAsked(UPLOAD_BYTE));

    EXPECT_EQ(exchanges(reply(words({9}))), "read D 12 1");
    EXPECT_EQ(recipeBuffer[7], 3) << "a poll of a planned block fills the cache alone";
}

TEST_F(RecipeTest, ofALongItemOfCountersStandsForItsFirst)
{
    plansRecipe("32C 200 80 from 10");
    asks(UPLOAD_BYTE);
    Bytes first(128, 0);
    first[2] = 7;
    EXPECT_EQ(exchanges(reply(first)), "read 32C 200 32");
    EXPECT_EQ(exchanges(reply(Bytes(32, 9))), "read 32C 232 8");
    EXPECT_EQ(reports(), "RWI 10, RWI 11");
    EXPECT_TRUE(recipeBuffer[10] == 0 && recipeBuffer[11] == 7);
    EXPECT_FALSE(isAsked(UPLOAD_BYTE));
}

TEST_F(RecipeTest, fillsNothingInFrontOfTheBuffer)
{
    plansRecipe("D 10 1 from 0, D 11 2 from -1, D 13 1 from 5, 32C 200 2 from 8, 32C 201 2 from -1");
    asks(UPLOAD_BYTE);
    exchangesWell(2);
    EXPECT_EQ(reports(), "RWI 8, RWI 9, RWI 0, RWI 0, RWI 5");
}

TEST_F(RecipeTest, readsBitsIntoTheCacheAloneAndWritesZeros)
{
    plansRecipe("M 0 5 from 0");
    asks(UPLOAD_BYTE);
    EXPECT_EQ(exchanges(reply({0x15})), "read M 0 5");
    EXPECT_EQ(reads("M", 0, 5), (Bytes{1, 0, 1, 0, 1}));
    EXPECT_EQ(reports(), "");
    fillsBuffer();
    asks(DOWNLOAD_BYTE);
    sends();
    EXPECT_EQ(hexText(sentBytes()), hexText(envelope(hex("01 08 00 29 92 00 00 00 01 00 00"))));
}

RC_GTEST_FIXTURE_PROP(RecipeTest, carriesEveryWordToItsOwnRegisterOnce, ())
{
    // Items with gaps or touching, of all lengths, laid into the buffer as they come.
    const auto lengths = *rc::gen::nonEmpty(rc::gen::container<std::vector<int>>(rc::gen::inRange(1, 100)));
    std::vector<_RCP_VAR_PRO> items;
    int address = 100;
    int offset = 0;
    for (int length : lengths) {
        address += *rc::gen::inRange(0, 2);
        items.push_back(recipeItem("D", address, length, offset));
        address += length;
        offset += length;
    }
    RC_PRE(offset <= 4000 && address < 9000);
    plansRecipe(items);

    asks(UPLOAD_BYTE);
    while (isAsked(UPLOAD_BYTE)) {
        sends();
        Bytes data;
        for (int k = 0; k < frame.readCount; ++k)
            for (const unsigned char byte : words({frame.variable.address + k}))
                data.push_back(byte);
        RC_ASSERT(receives(reply(data)) == 1);
    }
    const std::string told = reports();
    RC_ASSERT(std::count(told.begin(), told.end(), 'R') == offset);
    for (const _RCP_VAR_PRO &item : items)
        for (int k = 0; k < item.count; ++k)
            RC_ASSERT(recipeBuffer[static_cast<std::size_t>(item.bufferOffset + k)] == item.address + k);

    asks(DOWNLOAD_BYTE);
    int written = 0;
    while (isAsked(DOWNLOAD_BYTE)) {
        sends();
        for (int k = 0; k < frame.variable.count; ++k, ++written) {
            const quint8 *data = frame.variable.data + 2 * k;
            RC_ASSERT(data[0] + 256 * data[1] == frame.variable.address + k);
        }
        receives(acknowledgement());
    }
    RC_ASSERT(written == offset);
}

TEST_F(RecipeTest, endsWhereABlockIsGivenUp)
{
    configures(1, 16);
    plansThreeBlocks();
    for (int requestByte : {DOWNLOAD_BYTE, UPLOAD_BYTE}) {
        asks(requestByte);
        exchangesWell(1);
        EXPECT_EQ(driver.recipeIndex, 1);
        exchanges({});
        EXPECT_FALSE(isAsked(requestByte));
        EXPECT_EQ(driver.recipeIndex, 0);
        EXPECT_EQ(exchangesWell(1), polled);
    }
}

TEST_F(RecipeTest, startsAtItsFirstBlockWhateverWasInterrupted)
{
    const char *const up = "read D 0 1, read D 5 1, read D 9 1";
    const char *const down = "write D 0 1, write D 5 1, write D 9 1";
    const auto withdraws = [this] { controlBlock[UPLOAD_BYTE] = 0; };
    const struct {
        const char *what;
        std::function<void()> interrupts;
        int asked;
        const char *carried;
    } rows[] = {
        {"withdrawn, then the other way", [&] { withdraws(), exchangesWell(1); }, DOWNLOAD_BYTE, down},
        {"the other way at once", withdraws, DOWNLOAD_BYTE, down},
        {"withdrawn, then again", [&] { withdraws(), exchangesWell(1); }, UPLOAD_BYTE, up},
        {"reset", [this] { configures(3, 16); }, UPLOAD_BYTE, up},
        {"planned anew", [this] { plansThreeBlocks(); }, UPLOAD_BYTE, up},
        {"a shorter plan", [this] { plansRecipe("D 0 1 from 0"); }, UPLOAD_BYTE, "read D 0 1"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        configures(3, 16);
        plansThreeBlocks();
        asks(UPLOAD_BYTE);
        EXPECT_EQ(exchangesWell(2), "read D 0 1, read D 5 1");
        row.interrupts();
        asks(row.asked);
        EXPECT_EQ(exchangesUntilDone(row.asked), row.carried);
    }
}

TEST_F(RecipeTest, planReplacedWithABlockInFlightIsCarriedFromItsStartWithoutForeignValues)
{
    configures(1, 16);
    for (const int asked : {UPLOAD_BYTE, DOWNLOAD_BYTE}) {
        const std::string way = asked == UPLOAD_BYTE ? "read " : "write ";
        for (const _RCP_VAR_PRO &item : runsOf("D 0 2 from 0, D 7 2 from 0, D 0 1 from 0")) {
            SCOPED_TRACE(way + text(item));
            plansRecipe("D 0 2 from 0, D 100 1 from 9");
            asks(asked);
            EXPECT_EQ(sends(), way + "D 0 2");
            plansRecipe({item, recipeItem("D", 200, 1, 9)});
            EXPECT_EQ(receives(asked == UPLOAD_BYTE ? reply(words({5, 6})) : acknowledgement()), 1);
            EXPECT_TRUE(isAsked(asked));
            EXPECT_EQ(recipeBuffer[0], 0);
            EXPECT_EQ(word(1), asked == UPLOAD_BYTE ? 6 : 0);
            EXPECT_EQ(exchangesWell(2), way + text(item) + ", " + way + "D 200 1");
            EXPECT_FALSE(isAsked(asked));
            configures(1, 16);

            plansRecipe({item});
            asks(asked);
            sends();
            plansRecipe({item});
            EXPECT_EQ(receives({}), 2);
            EXPECT_FALSE(isAsked(asked)) << "given up";
        }
    }
}

TEST_F(RecipeTest, endsWithABlockThatCannotBeSent)
{
    polls("D 50 1");
    const struct {
        _RCP_VAR_PRO item;
        bool canGoUp;
    } rows[] = {
        {recipeItem("Q", 0, 1, 0), false},       {recipeItem("D", 0, -1, 0), false},
        {recipeItem("D", 0, 9001, 0), false},    {recipeItem("32C", 200, 416001, 0), false},
        {recipeItem("D", 1000000, 1, 0), false}, {recipeItem("D", 0, 1, -1), true},
    };
    for (const auto &row : rows) {
        for (int requestByte : {DOWNLOAD_BYTE, UPLOAD_BYTE}) {
            SCOPED_TRACE(text(row.item));
            plansRecipe({row.item});
            asks(requestByte);
            if (requestByte == UPLOAD_BYTE && row.canGoUp) {
                EXPECT_EQ(exchangesWell(1), "read " + text(row.item));
            } else {
                EXPECT_EQ(sends(), "nothing");
                EXPECT_EQ(driver.lastTransactionFailed, 1);
            }
            EXPECT_FALSE(isAsked(requestByte));
            EXPECT_EQ(exchangesWell(1), polled);
        }
    }
}

TEST_F(RecipeTest, endsAtOnceWithNothingToCarryAndTheCallGoesOn)
{
    polls("D 50 1");
    asks(DOWNLOAD_BYTE);
    asks(UPLOAD_BYTE);
    EXPECT_EQ(exchangesWell(1), polled);
    EXPECT_FALSE(isAsked(DOWNLOAD_BYTE));
    EXPECT_TRUE(isAsked(UPLOAD_BYTE));
    EXPECT_EQ(exchangesWell(1), polled);
    EXPECT_FALSE(isAsked(UPLOAD_BYTE));

    plansRecipe("D 0 1 from 0");
    driver.recipeBuffer = nullptr;
    asks(UPLOAD_BYTE);
    EXPECT_EQ(exchangesWell(1), polled);
    EXPECT_FALSE(isAsked(UPLOAD_BYTE));
    for (int requestByte : {DOWNLOAD_BYTE, UPLOAD_BYTE}) {
        controlBlock[static_cast<std::size_t>(requestByte)] = 2;
        EXPECT_EQ(exchangesWell(1), polled);
        EXPECT_TRUE(isAsked(requestByte)) << "1 asks, nothing else";
    }
}

TEST_F(RecipeTest, requestsTakeTheirValuesFromTheBlocksPlace)
{
    fillsBuffer();
    VARIABLE wanted = request("M", 9, 9, 9);
    wanted.hostContext = 11;
    wanted.data[1000] = 1;
    rcpAddrToVar(recipeItem("D", 10, 2, 3), wanted, 0);
    EXPECT_EQ(text(wanted), "D 10 2");
    EXPECT_EQ(wanted.hostContext, 11U);
    EXPECT_EQ(std::accumulate(wanted.data, wanted.data + 1024, 0), 0);
    for (const char *regName : {"D_bit", "32C"}) {
        rcpAddrToVar(recipeItem(regName, 200, regName[0] == 'D' ? 2 : 1, 3), wanted, 1);
        EXPECT_EQ(Bytes(wanted.data, wanted.data + 5), hex("03 01 04 01 00"));
    }
    rcpAddrToVar(recipeItem("M", 10, 2, 3), wanted, 1);
    EXPECT_EQ(wanted.data[0], 0);
    rcpAddrToVar(recipeItem("D", 0, 2000, 0), wanted, 1);
    EXPECT_EQ(wanted.data[1023], recipeBuffer[511] >> 8);
}

} // namespace
