#include "support/driverTest.h"

#include "serviceForProtocol/transactions/replyDecoding.h"
#include "tanek_vs/requestFrames.h"

namespace {

class RequestFramesTest : public DriverTest {
protected:
    /// The frame that was queued for the request, or an empty one.
    FRAME_PRO read(const VARIABLE &wanted)
    {
        driver.frameQueue.clear();
        QList<VARIABLE> requests;
        requests.append(wanted);
        const int result = getReadFrame(requests);
        EXPECT_EQ(result, driver.frameQueue.size());
        return driver.frameQueue.isEmpty() ? FRAME_PRO() : driver.frameQueue.takeFirst();
    }

    FRAME_PRO write(VARIABLE wanted, const Bytes &values)
    {
        driver.frameQueue.clear();
        std::copy(values.begin(), values.end(), wanted.data);
        getWriteFrame(wanted);
        return driver.frameQueue.isEmpty() ? FRAME_PRO() : driver.frameQueue.takeFirst();
    }

    static std::string wire(const FRAME_PRO &frame)
    {
        return hexText(Bytes(frame.frame, frame.frame + frame.frameLength));
    }
    static std::string wire(const char *body) { return hexText(doubled(envelope(hex(body)))); }
};

TEST_F(RequestFramesTest, readsStandOnTheWireAsInTheTable)
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
        {request("D", 0, 258), "01 07 00 20 a0 00 00 00 02 01", 526},
        {request("D_bit", 1605, 2), "01 07 00 20 95 05 16 00 02 00", 14},
        {request("R_bit", 16, 1), "01 07 00 20 97 16 00 00 01 00", 12},
        {request("S", 4095, 1), "01 07 00 21 93 95 40 00 01 00", 11},
        {request("T_Coil", 0, 8), "01 07 00 21 98 00 00 00 08 00", 11},
        {request("T_Contact", 0, 8), "01 07 00 21 99 00 00 00 08 00", 11},
        {request("C_Coil", 0, 8), "01 07 00 21 9c 00 00 00 08 00", 11},
        {request("C_Contact", 0, 8), "01 07 00 21 9d 00 00 00 08 00", 11},
        {request("D", 1234567, 1), "01 07 00 20 a0 67 45 23 01 00", 12},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(text(row.wanted));
        const FRAME_PRO built = read(row.wanted);
        EXPECT_EQ(wire(built), wire(row.body));
        EXPECT_EQ(built.replyLength, row.replyLength);
        EXPECT_EQ(built.dataOffset, 6);
        EXPECT_EQ(built.readCount, row.wanted.count);
        EXPECT_EQ(text(built.variable), text(row.wanted));
    }
    EXPECT_EQ(wire(read(request("D", 100, 10))), "10 02 01 07 00 20 a0 00 01 00 0a 00 10 03 44 33");
}

TEST_F(RequestFramesTest, writesStandOnTheWireAsInTheTable)
{
    const struct {
        VARIABLE wanted;
        Bytes values;
        const char *body;
    } rows[] = {
        {request("Y", 0, 10), {1, 0, 1, 1, 0, 0, 0, 0, 1, 1}, "01 09 00 29 91 00 00 00 02 00 0d 03"},
        {request("M", 8, 8), {0, 0, 0, 0, 0, 0, 0, 1}, "01 08 00 29 92 08 00 00 01 00 80"},
        {request("M", 0, 1), {3}, "01 08 00 29 92 00 00 00 01 00 03"},
        {request("M", 0, 2), {255, 255}, "01 08 00 29 92 00 00 00 01 00 fd"},
        {request("D", 0, 1), words({0x1234}), "01 09 00 28 a0 00 00 00 01 00 34 12"},
        {request("D", 16, 2), words({0x1010, 0x0310}), "01 0b 00 28 a0 16 00 00 02 00 10 10 10 03"},
        {request("SD", 9000, 1), words({1}), "01 09 00 28 a1 00 00 00 01 00 01 00"},
        {request("SM", 9511, 1), {1}, "01 08 00 29 94 11 05 00 01 00 01"},
        {request("32C", 200, 1), hex("01 02 03 04"), "01 0b 00 28 ad 00 02 00 01 00 01 02 03 04"},
        {request("32C", 200, 0), {}, "01 07 00 28 ad 00 02 00 00 00"},
        {request("D_bit", 1605, 1), {1}, "01 08 00 29 95 05 10 00 01 00 01"},
        {request("D_bit", 124, 1), {0}, "01 08 00 29 95 7c 00 00 01 00 00"},
        {request("R_bit", 415999, 1), {1}, "01 08 00 29 97 9f 99 25 01 00 01"},
        {request("X", 15, 1), {1}, "01 08 00 29 90 15 00 00 01 00 01"},
        {request("D", 1, 1, 255), words({2}), "ff 09 00 28 a0 01 00 00 01 00 02 00"},
        {request("D", 1, 1, 511), words({2}), "ff 09 00 28 a0 01 00 00 01 00 02 00"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(text(row.wanted));
        const FRAME_PRO built = write(row.wanted, row.values);
        EXPECT_EQ(wire(built), wire(row.body));
        EXPECT_EQ(built.replyLength, row.wanted.station == 255 ? 0 : 10);
        EXPECT_EQ(built.dataOffset + built.readCount, 0);
        EXPECT_EQ(text(built.variable), text(row.wanted));
    }
}

TEST_F(RequestFramesTest, requestsWithoutAFrameQueueNothing)
{
    for (const VARIABLE &wanted : {request("D", 0, 1, 255), request("Q", 0, 1), request("D", 0, -1)})
        EXPECT_EQ(read(wanted).frameLength, 0) << text(wanted);
    EXPECT_EQ(getReadFrame(QList<VARIABLE>()), 0);
    for (const VARIABLE &wanted : {request("Q", 0, 1), request("D", 0, -1), request("M", 0, -8), request("D", 0, 505),
                                   request("M", 0, 1025), request("32C", 200, 253), request("D", 0, 2147483647)})
        EXPECT_EQ(write(wanted, {}).frameLength, 0) << text(wanted);
    EXPECT_EQ(write(request("D", 0, 504), {}).frameLength, 1024);
    EXPECT_EQ(write(request("D", 0, 504), {0x10}).frameLength, 0) << "one doubled byte makes it too long";
    EXPECT_EQ(write(request("M", 0, 1024), {}).frameLength, 144);
}

TEST_F(RequestFramesTest, andDescriptionsAreTheSameOnEveryPlatform)
{
    // The digest is that of a 64-bit build, byte for byte what the tables above show samples of.
    std::uint64_t digest = 14695981039346656037U;
    const auto mix = [&digest](const std::string &bytes) {
        for (const char byte : bytes)
            digest = (digest ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    };
    int frames = 0;
    for (int kind = 0; kind < driver.regNames.size(); ++kind) {
        for (int station : {1, 16, 254, 255}) {
            for (int address = 0; address < 150000; address = 3 * address + 7) {
                for (int count : {1, 2, 16, 31, 200}) {
                    VARIABLE wanted = request(plain(driver.regNames.at(kind)), address, count, station);
                    for (const FRAME_PRO &made : {read(wanted), write(wanted, Bytes(800, 0x10))}) {
                        mix(wire(made) + std::to_string(made.replyLength));
                        driver.frameQueue.append(made);
                        mix(plain(getErrorInfo(QByteArray())));
                        ++frames;
                    }
                }
            }
        }
    }
    EXPECT_EQ(frames, 6800);
    EXPECT_EQ(digest, 11550689846245549599U);
}

} // namespace
