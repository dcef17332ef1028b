#include "support/driverTest.h"

#include "tanek_vs/frameCodec.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

namespace {

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
        const char *what;
        const char *wire;
        const char *frame;
    } rows[] = {
        {"doubled data", "10 02 10 10 10 10 10 03 44 33", "10 02 10 10 10 03 44 33"},
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
    Bytes tooShort = hex("10 02 10 10 03 44");
    int shortLength = 6;
    EXPECT_TRUE(dealFrameSend_0x10(tooShort.data(), shortLength));
    EXPECT_EQ(hexText(tooShort), "10 02 10 10 03 44") << "has no body";
    int endless = RECORD_BUFFER_SIZE + 1;
    EXPECT_FALSE(dealFrameSend_0x10(tooShort.data(), endless));

    Bytes frame(RECORD_BUFFER_SIZE, 0);
    int length = 1000;
    std::fill_n(frame.begin() + 100, 24, static_cast<unsigned char>(0x10));
    EXPECT_TRUE(dealFrameSend_0x10(frame.data(), length));
    EXPECT_EQ(length, RECORD_BUFFER_SIZE);

    Bytes tooLong(RECORD_BUFFER_SIZE, 0);
    std::fill_n(tooLong.begin() + 100, 25, static_cast<unsigned char>(0x10));
    const Bytes unchanged = tooLong;
    length = 1000;
    EXPECT_FALSE(dealFrameSend_0x10(tooLong.data(), length));
    EXPECT_EQ(length, 1000);
    EXPECT_EQ(tooLong, unchanged);
}

rc::Gen<Bytes> bodies()
{
    // Many DLE and ETX, or their runs would hardly ever meet.
    const auto byte =
        rc::gen::oneOf(rc::gen::element<unsigned char>(0x10, 0x03, 0x02), rc::gen::arbitrary<unsigned char>());
    return rc::gen::suchThat(rc::gen::container<Bytes>(byte),
                             [](const Bytes &body) { return !body.empty() && body.size() < 400; });
}

RC_GTEST_PROP(FrameCodec, doublingAndUndoublingAreInverse, ())
{
    const Bytes plainFrame = envelope(*bodies());
    Bytes buffer = plainFrame;
    buffer.resize(RECORD_BUFFER_SIZE);
    int length = static_cast<int>(plainFrame.size());
    RC_ASSERT(dealFrameSend_0x10(buffer.data(), length));
    const Bytes wire(buffer.begin(), buffer.begin() + length);
    RC_ASSERT(wire == doubled(plainFrame));
    QByteArray array = arrayOf(wire);
    dealFrameRead_0x10(array);
    RC_ASSERT(bytesOf(array) == plainFrame);
}

RC_GTEST_PROP(FrameCodec, undoublingOfAnythingShortensItInsideTheBodyAtMost, (const Bytes &anything))
{
    QByteArray array = arrayOf(anything);
    dealFrameRead_0x10(array);
    const Bytes result = bytesOf(array);
    RC_ASSERT(result.size() <= anything.size() && 2 * result.size() + 6 >= anything.size());
    if (anything.size() >= 7)
        RC_ASSERT(std::equal(result.end() - 4, result.end(), anything.end() - 4));
}

} // namespace
