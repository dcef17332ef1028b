/// The simulated controller without a link: request bytes in, reply bytes out.
#include "simulator/controller.h"
#include "support/wire.h"

#include <gtest/gtest.h>

namespace {

using namespace vssim;
using ::Bytes;

/// The bytes that the controller puts on the wire for these, empty for silence.
Bytes answerTo(Controller &controller, const Bytes &wire)
{
    Bytes bytes;
    FrameReader reader;
    for (const Frame &frame : reader.feed(wire))
        if (const auto answer = controller.answer(frame))
            bytes.insert(bytes.end(), answer->bytes.begin(), answer->bytes.end());
    return bytes;
}

/// A frame as it stands, or what one encloses.
Bytes wireOf(const std::string &text)
{
    return text.empty() || text.rfind("10 02", 0) == 0 ? hex(text) : doubled(envelope(hex(text)));
}

TEST(Simulator, answersWithTheseBytes)
{
    Controller controller({1, 2, 16});
    controller.write(1, "D", 100, 0x1234);
    controller.write(1, "D", 101, 0x0010);
    controller.write(1, "SD", 9010, 7);
    controller.write(1, "32C", 255, 0xA1B2C3D4);
    controller.write(1, "X", 15, 1);
    controller.write(1, "M", 9, 1);
    const struct {
        const char *what, *request, *reply;
    } rows[] = {
        {"words of D", "10 02 01 07 00 20 A0 00 01 00 02 00 10 03 43 42",
         "10 02 01 05 00 00 34 12 10 10 00 10 03 35 43"},
        {"ten words of D", "01 07 00 20 A0 00 01 00 0A 00",
         "01 15 00 00 34 12 10 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"},
        {"word of sd with doubled address", "01 07 00 20 A1 10 00 00 01 00", "01 03 00 00 07 00"},
        {"counter of 32 bits", "01 07 00 20 AD 55 02 00 01 00", "01 05 00 00 D4 C3 B2 A1"},
        {"bit X17", "01 07 00 21 90 15 00 00 01 00", "01 02 00 00 01"},
        {"ten bits of M", "01 07 00 21 92 00 00 00 0A 00", "01 03 00 00 00 02"},
        {"no units", "01 07 00 20 A0 00 00 00 00 00", "01 01 00 00"},
        {"write of word", "01 09 00 28 A0 00 00 00 01 00 34 12", "01 01 00 00"},
        {"write to station 16", "10 09 00 28 A0 00 00 00 01 00 34 12", "10 01 00 00"},
        {"wrong checksum", "10 02 01 07 00 20 A0 00 01 00 0A 00 10 03 44 34", "10 02 01 01 00 02 10 03 30 34"},
        {"unknown device code", "01 07 00 20 A5 00 01 00 0A 00", "01 01 00 01"},
        {"past the end of D", "01 07 00 20 A0 99 89 00 02 00", "01 01 00 03"},
        {"below the counters of 32 bits", "01 07 00 20 AD 99 01 00 01 00", "01 01 00 03"},
        {"units of a bit kind", "01 07 00 20 92 00 00 00 01 00", "01 01 00 04"},
        {"unknown command", "01 07 00 30 A0 00 00 00 01 00", "01 01 00 04"},
        {"length field too long", "01 08 00 20 A0 00 01 00 0A 00", "01 01 00 05"},
        {"address not decimal", "01 07 00 20 A0 0A 01 00 01 00", "01 01 00 06"},
        {"other station", "03 07 00 20 A0 00 01 00 0A 00", ""},
        {"read of all stations", "FF 07 00 20 A0 00 01 00 0A 00", ""},
        {"nothing inside", "10 02 10 03 30 30", ""},
    };
    for (const auto &row : rows)
        EXPECT_EQ(hexText(answerTo(controller, wireOf(row.request))), hexText(wireOf(row.reply))) << row.what;
}

TEST(SimulatorWrites, bitsInsideAWordAddressedByWordAndNibble)
{
    Controller controller({1}, BitWriteMode::WholeBytes);
    answerTo(controller, wireOf("01 08 00 29 95 05 10 00 01 00 81")); // D100.5, eight bits
    EXPECT_EQ(controller.read(1, "D", 100), 0x1020U);
    EXPECT_EQ(controller.read(1, "D_bit", 1605), 1U);
    answerTo(controller, wireOf("01 08 00 29 95 7C 00 00 01 00 FF")); // D7.12 runs on into D8
    EXPECT_EQ(controller.read(1, "D", 7), 0xF000U);
    EXPECT_EQ(controller.read(1, "D", 8), 0x000FU);
}

TEST(SimulatorWrites, aLoneByteAsOneBitOnlyInSingleMode)
{
    for (const BitWriteMode mode : {BitWriteMode::WholeBytes, BitWriteMode::LoneBit}) {
        Controller controller({1}, mode);
        controller.write(1, "M", 11, 1);
        answerTo(controller, wireOf("01 08 00 29 92 10 00 00 01 00 01"));
        EXPECT_EQ(controller.read(1, "M", 10), 1U);
        EXPECT_EQ(controller.read(1, "M", 11), mode == BitWriteMode::LoneBit ? 1U : 0U);
    }
}

TEST(SimulatorWrites, bitsUpToTheEndOfTheKindAndPassesThePaddingOver)
{
    Controller controller({1}, BitWriteMode::WholeBytes);
    EXPECT_EQ(answerTo(controller, wireOf("01 09 00 29 91 65 03 00 02 00 0D 03"))[5], 0); // Y365 to Y377
    EXPECT_EQ(controller.read(1, "Y", 365), 1U);
    EXPECT_EQ(controller.read(1, "Y", 374), 1U);
    EXPECT_EQ(controller.read(1, "Y", 375), 0U);
    EXPECT_EQ(answerTo(controller, wireOf("01 09 00 29 91 70 03 00 01 00 0D 03"))[5], 5);
    EXPECT_EQ(answerTo(controller, wireOf("01 0A 00 29 91 70 03 00 02 00 0D 03"))[5], 5);
    EXPECT_EQ(answerTo(controller, wireOf("01 09 00 29 91 77 03 00 02 00 0D 03"))[5], 3);
}

TEST(SimulatorWrites, broadcastsInAllStationsWithoutAnAnswer)
{
    Controller controller({1, 9});
    EXPECT_TRUE(answerTo(controller, wireOf("FF 09 00 28 A0 05 00 00 01 00 2A 00")).empty());
    EXPECT_EQ(controller.read(1, "D", 5), 42U);
    EXPECT_EQ(controller.read(9, "D", 5), 42U);
    EXPECT_EQ(controller.counts().broadcasts, 1U);
}

TEST(FrameReader, findsTheSameRequestsByteByByteAndBetweenGarbage)
{
    const Bytes good = wireOf("01 07 00 20 A1 10 00 00 01 00");
    for (const char *before :
         {"", "00 FF 10", "10 02 01 07", "10 02 01 10 07", "10 10 02 10 03 30", "10 02 05 10 03 10"}) {
        Bytes stream = hex(before);
        stream.insert(stream.end(), good.begin(), good.end());
        FrameReader reader;
        std::vector<Frame> frames;
        for (const std::uint8_t byte : stream)
            for (Frame &frame : reader.feed(&byte, 1))
                frames.push_back(frame);
        ASSERT_FALSE(frames.empty()) << before;
        EXPECT_EQ(frames.back().body, hex("01 07 00 20 A1 10 00 00 01 00")) << before;
    }
}

TEST(FrameReader, givesUpARequestThatDoesNotEndAndFindsTheNext)
{
    FrameReader reader;
    EXPECT_TRUE(reader.feed(hex("10 02")).empty());
    EXPECT_TRUE(reader.feed(Bytes(100000, 0x55)).empty());
    EXPECT_EQ(reader.feed(wireOf("01 07 00 20 A0 00 00 00 01 00")).size(), 1U);
}

TEST(SimulatorFault, isSeenOnceAtItsStationAndCounted)
{
    const struct {
        const char *fault;
        const char *reply; ///< to a read of one word of D that holds 0x0055
    } rows[] = {
        {"silence:n=1", ""},
        {"error:status=9,n=1", "01 01 00 09"},
        {"truncate:n=1", "10 02 01 03 00 00 55 00"},
        {"overlong:bytes=1,n=1", "01 04 00 00 55 00 00"},
        {"wrong-station:n=1", "02 03 00 00 55 00"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.fault);
        Controller controller({1, 2});
        controller.write(1, "D", 0, 0x55);
        controller.addFault(std::string(row.fault) + "@1");
        EXPECT_EQ(answerTo(controller, wireOf("02 07 00 20 A0 00 00 00 01 00")), wireOf("02 03 00 00 00 00"));
        EXPECT_EQ(answerTo(controller, wireOf("01 07 00 20 A0 00 00 00 01 00")), wireOf(row.reply));
        EXPECT_EQ(answerTo(controller, wireOf("01 07 00 20 A0 00 00 00 01 00")), wireOf("01 03 00 00 55 00"));
        const FaultCounts counts = controller.counts().faults;
        EXPECT_EQ(counts[static_cast<std::size_t>(parseFault(row.fault).fault.kind)], 1U);
    }
}

TEST(SimulatorFault, changeOneBitLoseOneByteOrAddNoiseOrTime)
{
    const Bytes read = wireOf("01 07 00 20 A0 00 00 00 01 00");
    Controller controller({1});
    const Bytes sound = answerTo(controller, read);
    controller.addFault("flip:n=1");
    const Bytes flipped = answerTo(controller, read);
    ASSERT_EQ(flipped.size(), sound.size());
    EXPECT_NE(flipped, sound);
    controller.addFault("drop:n=1");
    EXPECT_EQ(answerTo(controller, read).size(), sound.size() - 1);
    controller.addFault("garbage:n=1,bytes=3");
    const Bytes noisy = answerTo(controller, read);
    EXPECT_EQ(Bytes(noisy.begin() + 3, noisy.end()), sound);
    controller.addFault("delay:ms=20");
    EXPECT_EQ(controller.answer(FrameReader().feed(read).front())->delay, std::chrono::milliseconds(20));
}

TEST(SimulatorFault, thatKeepTheRequestAwayLeaveTheMemoryAlone)
{
    for (const char *fault : {"silence", "error"}) {
        Controller controller({1});
        controller.addFault(fault);
        answerTo(controller, wireOf("01 09 00 28 A0 05 00 00 01 00 2A 00"));
        EXPECT_EQ(controller.read(1, "D", 5), 0U) << fault;
    }
}

TEST(SimulatorFault, refuseTextThatNamesNone)
{
    for (const char *text :
         {"", "silent", "flip:", "flip:p=2", "flip:ms=1", "flip:n=0", "delay:ms=x", "drop@", "drop@255"})
        EXPECT_THROW(parseFault(text), std::invalid_argument) << text;
}

} // namespace
