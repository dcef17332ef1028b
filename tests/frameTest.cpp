/// Frames as bytes: the envelope, requests as they go out, and replies as they are judged.
#include "support/driverTest.h"
#include "support/kinds.h"
#include "tanek_vs/frameCodec.h"
#include "tanek_vs/replyCheck.h"
#include "tanek_vs/requestFrames.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

namespace {

// ---- The envelope ----

std::string checksum(const Bytes &bytes)
{
    const quint16 check = computate_check(bytes.data(), static_cast<quint16>(bytes.size()));
    return {static_cast<char>(check & 0xff), static_cast<char>(check >> 8)};
}

TEST(FrameCodec, checksumIsTheSumInTwoDigits)
{
    EXPECT_EQ(checksum({}), "00");
    EXPECT_EQ(checksum(hex("01 07 00 20 A0 00 01 00 0A 00")), "D3");
    EXPECT_EQ(checksum(hex("9f")), "9F");
    EXPECT_EQ(checksum(hex("ff ff")), "FE");
    EXPECT_EQ(checksum(Bytes(65535, 1)), "FF");
}

TEST(FrameCodec, undoublesTheBodyAlone)
{
    const struct {
        const char *what, *wire, *frame;
    } rows[] = {
        {"doubled data", "10 02 10 10 10 10 10 03 44 33", "10 02 10 10 10 03 44 33"},
        {"doubled data apart", "10 02 10 10 01 10 10 02 10 03 44 33", "10 02 10 01 10 02 10 03 44 33"},
        {"too short", "10 02 10 10 03 44", "10 02 10 10 03 44"},
        {"shortest", "10 02 10 10 03 44 33", "10 02 10 10 03 44 33"},
        {"single DLE last", "10 02 01 10 10 03 44 33", "10 02 01 10 10 03 44 33"},
        {"single DLE inside", "10 02 10 01 02 10 03 44 33", "10 02 10 01 02 10 03 44 33"},
        {"three DLE", "10 02 10 10 10 10 03 44 33", "10 02 10 10 10 03 44 33"},
        {"trailer digits", "10 02 01 10 03 10 10", "10 02 01 10 03 10 10"},
        {"only DLE", "10 10 10 10 10 10 10 10 10", "10 10 10 10 10 10 10 10"},
    };
    for (const auto &row : rows) {
        QByteArray array = arrayOf(hex(row.wire));
        dealFrameRead_0x10(array);
        EXPECT_EQ(hexText(bytesOf(array)), row.frame) << row.what;
    }
}

TEST(FrameCodec, refusesAFrameThatDoublingMakesTooLong)
{
    for (const int dles : {24, 25}) {
        Bytes frame(RECORD_BUFFER_SIZE, 0);
        int length = 1000;
        std::fill_n(frame.begin() + 100, dles, static_cast<unsigned char>(0x10));
        const Bytes before = frame;
        EXPECT_EQ(dealFrameSend_0x10(frame.data(), length), dles == 24);
        EXPECT_EQ(length, dles == 24 ? RECORD_BUFFER_SIZE : 1000);
        EXPECT_EQ(frame == before, dles == 25);
    }
    Bytes shortFrame = hex("10 02 10 10 03 44");
    int length = 6;
    EXPECT_TRUE(dealFrameSend_0x10(shortFrame.data(), length));
    EXPECT_EQ(length, 6) << "has no body";
    length = RECORD_BUFFER_SIZE + 1;
    EXPECT_FALSE(dealFrameSend_0x10(shortFrame.data(), length));
}

RC_GTEST_PROP(FrameCodec, doublingAndUndoublingAreInverse, ())
{
    // Many DLE and ETX, or their runs would hardly ever meet.
    const auto byte =
        rc::gen::oneOf(rc::gen::element<unsigned char>(0x10, 0x03, 0x02), rc::gen::arbitrary<unsigned char>());
    const Bytes body = *rc::gen::nonEmpty(rc::gen::container<Bytes>(byte));
    const Bytes frame = envelope(body);
    Bytes buffer = frame;
    buffer.resize(RECORD_BUFFER_SIZE);
    int length = static_cast<int>(frame.size());
    RC_ASSERT(dealFrameSend_0x10(buffer.data(), length));
    const Bytes wire(buffer.begin(), buffer.begin() + length);
    RC_ASSERT(wire == doubled(frame));
    QByteArray array = arrayOf(wire);
    dealFrameRead_0x10(array);
    RC_ASSERT(bytesOf(array) == frame);
}

// ---- Requests ----

std::string wire(const FRAME_PRO &frame) { return hexText(Bytes(frame.frame, frame.frame + frame.frameLength)); }
std::string wire(const char *body) { return hexText(doubled(envelope(hex(body)))); }

bool buildsWrite(VARIABLE wanted, const Bytes &values, FRAME_PRO &frame)
{
    std::copy(values.begin(), values.end(), wanted.data);
    return buildWriteFrame(wanted, frame);
}

TEST(RequestFrames, readsStandOnTheWireAsInTheTable)
{
    const struct {
        VARIABLE wanted;
        const char *body;
        int replyLength;
    } rows[] = {
        {request("D", 100, 10), "01 07 00 20 a0 00 01 00 0a 00", 30},
        {request("M", 0, 20), "01 07 00 21 92 00 00 00 14 00", 13},
        {request("M", 8191, 8), "01 07 00 21 92 91 81 00 08 00", 11},
        {request("X", 15, 1), "01 07 00 21 90 15 00 00 01 00", 11},
        {request("Y", 377, 9), "01 07 00 21 91 77 03 00 09 00", 12},
        {request("SD", 9010, 1), "01 07 00 20 a1 10 00 00 01 00", 12},
        {request("SD", 8999, 1), "01 07 00 20 a1 99 89 00 01 00", 12},
        {request("SM", 9000, 1), "01 07 00 21 94 00 00 00 01 00", 11},
        {request("D", 9010, 1), "01 07 00 20 a0 10 90 00 01 00", 12},
        {request("R", 25999, 32), "01 07 00 20 a2 99 59 02 20 00", 74},
        {request("32C", 200, 2), "01 07 00 20 ad 00 02 00 02 00", 18},
        {request("32C", 255, 0), "01 07 00 20 ad 55 02 00 00 00", 10},
        {request("C", 199, 16, 16), "10 07 00 20 ac 99 01 00 10 00", 42},
        {request("T", 511, 1, 254), "fe 07 00 20 a8 11 05 00 01 00", 12},
        {request("D", 0, 1, 511), "ff 07 00 20 a0 00 00 00 01 00",
         12}, // not the broadcast station, though sent like it
        {request("D", 0, 258), "01 07 00 20 a0 00 00 00 02 01", 526},
        {request("D", 0, 65535), "01 07 00 20 a0 00 00 00 ff ff", 131080},
        {request("D_bit", 1605, 2), "01 07 00 20 95 05 16 00 02 00", 14},
        {request("R_bit", 16, 1), "01 07 00 20 97 16 00 00 01 00", 12},
        {request("S", 4095, 1), "01 07 00 21 93 95 40 00 01 00", 11},
        {request("T_Coil", 0, 8), "01 07 00 21 98 00 00 00 08 00", 11},
        {request("T_Contact", 0, 8), "01 07 00 21 99 00 00 00 08 00", 11},
        {request("C_Coil", 0, 8), "01 07 00 21 9c 00 00 00 08 00", 11},
        {request("C_Contact", 0, 8), "01 07 00 21 9d 00 00 00 08 00", 11},
        {request("D", 999999, 1), "01 07 00 20 a0 99 99 99 01 00", 12},
        {request("SD", 1008999, 1), "01 07 00 20 a1 99 99 99 01 00", 12},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(text(row.wanted));
        FRAME_PRO frame;
        EXPECT_TRUE(buildReadFrame(row.wanted, frame));
        EXPECT_EQ(wire(frame), wire(row.body));
        EXPECT_EQ(frame.replyLength, row.replyLength);
        EXPECT_EQ(frame.dataOffset, 6);
        EXPECT_EQ(frame.readCount, row.wanted.count);
        EXPECT_EQ(text(frame.variable), text(row.wanted));
    }
    FRAME_PRO frame;
    buildReadFrame(request("D", 100, 10), frame);
    EXPECT_EQ(wire(frame), "10 02 01 07 00 20 a0 00 01 00 0a 00 10 03 44 33");
}

TEST(RequestFrames, writesStandOnTheWireAsInTheTable)
{
    const struct {
        VARIABLE wanted;
        Bytes values;
        const char *body;
    } rows[] = {
        {request("Y", 0, 10), {1, 0, 1, 1, 0, 0, 0, 0, 1, 1}, "01 09 00 29 91 00 00 00 02 00 0d 03"},
        {request("M", 8, 8), {0, 0, 0, 0, 0, 0, 0, 1}, "01 08 00 29 92 08 00 00 01 00 80"},
        {request("M", 0, 2), {255, 255}, "01 08 00 29 92 00 00 00 01 00 fd"}, // of a recipe of bits in words
        {request("D", 0, 1), words({0x1234}), "01 09 00 28 a0 00 00 00 01 00 34 12"},
        {request("D", 16, 2), words({0x1010, 0x0310}), "01 0b 00 28 a0 16 00 00 02 00 10 10 10 03"},
        {request("SD", 9000, 1), words({1}), "01 09 00 28 a1 00 00 00 01 00 01 00"},
        {request("SM", 9511, 1), {1}, "01 08 00 29 94 11 05 00 01 00 01"},
        {request("32C", 200, 1), hex("01 02 03 04"), "01 0b 00 28 ad 00 02 00 01 00 01 02 03 04"},
        {request("32C", 200, 0), {}, "01 07 00 28 ad 00 02 00 00 00"},
        {request("D_bit", 1605, 1), {1}, "01 08 00 29 95 05 10 00 01 00 01"},
        {request("D_bit", 124, 1), {0}, "01 08 00 29 95 7c 00 00 01 00 00"},
        {request("R_bit", 415999, 1), {1}, "01 08 00 29 97 9f 99 25 01 00 01"},
        {request("R_bit", 1599999, 1), {1}, "01 08 00 29 97 9f 99 99 01 00 01"},
        {request("X", 15, 1), {1}, "01 08 00 29 90 15 00 00 01 00 01"},
        {request("D", 1, 1, 255), words({2}), "ff 09 00 28 a0 01 00 00 01 00 02 00"},
        {request("D", 1, 1, 511), words({2}), "ff 09 00 28 a0 01 00 00 01 00 02 00"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(text(row.wanted));
        FRAME_PRO frame;
        EXPECT_TRUE(buildsWrite(row.wanted, row.values, frame));
        EXPECT_EQ(wire(frame), wire(row.body));
        EXPECT_EQ(frame.replyLength, row.wanted.station == 255 ? 0 : 10);
        EXPECT_TRUE(frame.dataOffset == 0 && frame.readCount == 0);
        EXPECT_EQ(text(frame.variable), text(row.wanted));
    }
}

TEST(RequestFrames, areNotBuiltForWhatTheyHaveNoRoomFor)
{
    FRAME_PRO frame;
    for (const VARIABLE &wanted : {request("D", 0, 1, 255), request("Q", 0, 1), request("D", 0, -1),
                                   request("D", 0, 65536), request("D", 1000000, 1), request("SD", 1009000, 1)})
        EXPECT_FALSE(buildReadFrame(wanted, frame)) << text(wanted);
    for (const VARIABLE &wanted : {request("Q", 0, 1), request("D", 0, -1), request("M", 0, -8), request("D", 0, 505),
                                   request("M", 0, 1025), request("32C", 200, 253), request("D", 0, 2147483647),
                                   request("D", 1000000, 1), request("D_bit", 1600000, 1)})
        EXPECT_FALSE(buildsWrite(wanted, {}, frame)) << text(wanted);
    EXPECT_FALSE(buildsWrite(request("D", 0, 504), {0x10}, frame)) << "one doubled byte makes it too long";
    EXPECT_TRUE(buildsWrite(request("D", 0, 504), {}, frame));
    EXPECT_EQ(frame.frameLength, 1024);
    EXPECT_TRUE(buildsWrite(request("M", 0, 1024), {}, frame = FRAME_PRO()));
    EXPECT_EQ(frame.frameLength, 144);
    EXPECT_EQ(getReadFrame(QList<VARIABLE>()), 0);
}

// ---- Replies ----

class ReplyTest : public DriverTest {
protected:
    /// What becomes of an answer to a read of D100 and D101.
    int receivesForRead(const Bytes &answer)
    {
        configures(1, 16);
        polls("D 100 2");
        sends();
        return receives(answer);
    }
};

TEST_F(ReplyTest, isRefusedWhenDamagedAndTheCacheStays)
{
    const Bytes good = reply(words({0x1234, 0x1010}));
    Bytes longer = good;
    longer.push_back(0);
    Bytes badDigit = good;
    badDigit.back() ^= 1;
    Bytes swappedDigits = good;
    std::swap(swappedDigits[swappedDigits.size() - 1], swappedDigits[swappedDigits.size() - 2]);
    const struct {
        const char *what;
        Bytes answer;
        int result;
    } rows[] = {
        {"good", good, 1},
        {"good, of another station", reply(words({0x1234, 0x1010}), 9), 1},
        {"empty", {}, 2},
        {"one word", reply(words({0x1234})), 2},
        {"a byte too many", longer, 2},
        {"wrong checksum", badDigit, 2},
        {"checksum digits swapped", swappedDigits, 2},
        {"status not 0, checksum right", reply(words({0x1234, 0x1010}), 1, 3), 2},
        {"an acknowledgement", acknowledgement(), 2},
        {"DLE not doubled", envelope(hex("01 05 00 00 34 12 10 10")), 2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(receivesForRead(row.answer), row.result);
        EXPECT_EQ(word(100), row.result == 1 ? 0x1234 : 0);
        EXPECT_EQ(reports(), row.result == 1 ? ("D 100, D 101") : "");
    }
}

TEST_F(ReplyTest, describesItsTransactionGoodOrBad)
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
        {key("C_Contact", 999990, 10, -2147483647 - 1), refusal(100), "-2147483648#C_Contact999990(10),error code:100"},
    };
    for (const auto &row : rows) {
        configures(3, 16);
        polls({row.wanted});
        exchanges(row.answer);
        EXPECT_EQ(description(), row.description);
    }
    configures(3, 16);
    writes("R_bit", 1605, 1, {1}, 2);
    exchanges({});
    EXPECT_EQ(description(), "2#R_bit100.5(1)");
}

TEST_F(ReplyTest, toNothingIsIgnored)
{
    QByteArray answer = arrayOf(hex("10 02 10 10 10 10 10 03 44 33"));
    const QByteArray unchanged = answer;
    QString text = qt("old");
    EXPECT_EQ(intf_dealRcvFrame(answer, text), 0);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(answer, unchanged);
    EXPECT_EQ(check_rcv_data(nullptr, 0), ReplyRefused);
}

TEST_F(ReplyTest, isLeftUndoubledInTheHostsArray)
{
    polls("D 0 1");
    sends();
    QByteArray answer = arrayOf(reply(words({0x1010})));
    QString text;
    EXPECT_EQ(intf_dealRcvFrame(answer, text), 1);
    EXPECT_EQ(bytesOf(answer), envelope(hex("01 03 00 00 10 10")));
}

TEST_F(ReplyTest, mayBeMissingOnlyWhereNoneIsAskedToAnswer)
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

/// The start and the DLE ETX are the link's business: the driver judges what they enclose, and the checksum.
std::vector<std::size_t> judgedBits(const Bytes &reply)
{
    std::vector<std::size_t> bits;
    for (std::size_t bit = 16; bit < 8 * reply.size(); ++bit)
        if (bit / 8 + 4 < reply.size() || bit / 8 + 2 >= reply.size())
            bits.push_back(bit);
    return bits;
}

Bytes flipped(Bytes reply, std::size_t bit)
{
    reply[bit / 8] = static_cast<unsigned char>(reply[bit / 8] ^ 1U << bit % 8);
    return reply;
}

TEST_F(ReplyTest, ofEveryKindIsRefusedWithAnyBitFlippedOrCutShort)
{
    for (const Kind &kind : kinds()) {
        for (const bool isWrite : {false, true}) {
            SCOPED_TRACE(std::string(kind.name) + (isWrite ? " written" : " read"));
            configures(1000000, 16);
            const int first = std::max(kind.lowest, 16);
            if (isWrite)
                writes(kind.name, first, 6, Bytes(12, 1));
            else
                polls({key(kind.name, first, 6)});
            sends();
            Bytes data(isWrite ? 0 : static_cast<std::size_t>(frame.replyLength - 10), 0x35);
            if (data.size() > 1)
                data[1] = 0x10;
            const Bytes good = reply(data);
            const Bytes before = reads(kind.name, first, 6);
            for (long length = 0; length < static_cast<long>(good.size()); ++length)
                EXPECT_EQ(receives(Bytes(good.begin(), good.begin() + length)), 8);
            for (const std::size_t bit : judgedBits(good))
                EXPECT_EQ(receives(flipped(good, bit)), 8) << bit;
            EXPECT_EQ(reads(kind.name, first, 6), before);
            EXPECT_EQ(receives(good), 1);
        }
    }
}

} // namespace
