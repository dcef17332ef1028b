#include "support/driverTest.h"

namespace {

class ReplyCheckTest : public DriverTest {
protected:
    /// What becomes of an answer to a read of D100 and D101.
    int receivesForRead(const Bytes &answer)
    {
        configures(1, 16);
        polls({key("D", 100, 2)});
        sends();
        return receives(answer);
    }
};

TEST_F(ReplyCheckTest, refusesADamagedReplyAndLeavesTheCache)
{
    const Bytes good = reply(words({0x1234, 0x1010}));
    Bytes tooShort = reply(words({0x1234}));
    Bytes longer = good;
    longer.push_back(0);
    Bytes badDigit = good;
    badDigit.back() ^= 1;
    Bytes swappedDigits = good;
    std::swap(swappedDigits[swappedDigits.size() - 1], swappedDigits[swappedDigits.size() - 2]);
    Bytes undoubled = envelope(hex("01 05 00 00 34 12 10 10"));
    const struct {
        const char *what;
        Bytes answer;
        int result;
    } rows[] = {
        {"good", good, 1},
        {"good, of another station", reply(words({0x1234, 0x1010}), 9), 1},
        {"empty", {}, 2},
        {"one word", tooShort, 2},
        {"a byte too many", longer, 2},
        {"wrong checksum", badDigit, 2},
        {"checksum digits swapped", swappedDigits, 2},
        {"status not 0, checksum right", reply(words({0x1234, 0x1010}), 1, 3), 2},
        {"an acknowledgement", acknowledgement(), 2},
        {"DLE not doubled", undoubled, 2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(receivesForRead(row.answer), row.result);
        EXPECT_EQ(word(100), row.result == 1 ? 0x1234 : 0);
        EXPECT_EQ(reports(), row.result == 1 ? (Reports{"D 100 @1", "D 101 @1"}) : Reports{});
    }
}

TEST_F(ReplyCheckTest, refusesEveryFlippedBitAndEveryTruncation)
{
    const Bytes good = reply(words({0x1234, 0x0310}));
    for (std::size_t position = 0; position < good.size(); ++position) {
        for (int bit = 0; bit < 8; ++bit) {
            Bytes flipped = good;
            flipped[position] = static_cast<unsigned char>(flipped[position] ^ 1 << bit);
            // The start and the DLE ETX are the link's business: the driver judges what they enclose.
            const bool isEnvelope = position < 2 || (position + 4 >= good.size() && position + 2 < good.size());
            EXPECT_EQ(receivesForRead(flipped), isEnvelope ? 1 : 2) << position << "." << bit;
        }
        EXPECT_EQ(receivesForRead(Bytes(good.begin(), good.begin() + static_cast<long>(position))), 2) << position;
        EXPECT_EQ(word(100), 0);
    }
}

TEST_F(ReplyCheckTest, describesTheTransactionForEveryReply)
{
    const struct {
        KEY_ADDRESS wanted;
        Bytes answer;
        const char *description;
    } rows[] = {
        {key("D", 100, 10), {}, "1#D100(10)"},
        {key("D", 100, 10), refusal(3), "1#D100(10),error code:3"},
        {key("D", 100, 10), refusal(255), "1#D100(10),error code:255"},
        {key("D", 100, 10), refusal(0x10), "1#D100(10),error code:16"},
        {key("D", 100, 10), acknowledgement(), "1#D100(10)"},
        {key("D", 100, 10), hex("10 02 01 01 00 05 00 00 00 00 00"), "1#D100(10)"},
        {key("X", 15, 1, 2), hex("00 00 00 00 00 07 00 00 00 00"), "2#X15(1),error code:7"},
    };
    for (const auto &row : rows) {
        polls({row.wanted});
        driver.frameQueue.clear();
        sends();
        receives(row.answer);
        EXPECT_EQ(description(), row.description);
    }
    writes("R_bit", 1605, 1, {1}, 2);
    driver.frameQueue.clear();
    exchanges({});
    EXPECT_EQ(description(), "2#R_bit100.5(1)");
}

TEST_F(ReplyCheckTest, ignoresAReplyToNothing)
{
    QByteArray answer = arrayOf(hex("10 02 10 10 10 10 10 03 44 33"));
    const QByteArray unchanged = answer;
    QString text = qt("old");
    EXPECT_EQ(intf_dealRcvFrame(answer, text), 0);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(answer, unchanged);
}

TEST_F(ReplyCheckTest, reducesDoubledBytesInTheHostsArray)
{
    polls({key("D", 0, 1)});
    sends();
    QByteArray answer = arrayOf(reply(words({0x1010})));
    QString text;
    EXPECT_EQ(intf_dealRcvFrame(answer, text), 1);
    EXPECT_EQ(bytesOf(answer), envelope(hex("01 03 00 00 10 10")));
}

TEST_F(ReplyCheckTest, acceptsSilenceOnlyWhereNoneIsAskedToAnswer)
{
    writes("D", 0, 1, words({1}), 255);
    sends();
    EXPECT_EQ(receives(acknowledgement()), 8);
    EXPECT_EQ(receives({}), 1);
    writes("D", 0, 1, words({1}), 1);
    sends();
    EXPECT_EQ(receives({}), 8);
    EXPECT_EQ(receives(reply(words({1}))), 8);
    EXPECT_EQ(receives(acknowledgement()), 1);
}

} // namespace
