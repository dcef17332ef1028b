/// Every damage of one bit, and every reply cut short, of reads and writes of every kind: as the reference host takes
/// it from the link, and the driver judges it. And what a checksum that is a sum cannot see.
#include "model/protocol.h"
#include "replyCollector.h"
#include "support/wire.h"

#include <gtest/gtest.h>

namespace {

const char *const KINDS[] = {"32C", "C",  "T",     "R",     "SD",     "D",         "X",      "Y",        "M",
                             "S",   "SM", "D_bit", "R_bit", "T_Coil", "T_Contact", "C_Coil", "C_Contact"};
const int FIRST = 9008;
const int HOST_COUNT = 6;

class DamagedReplies : public ::testing::Test {
protected:
    /// A read or write of that kind is in flight, with nothing but zeros in the cache.
    void asks(const char *kind, bool writes)
    {
        int result = 0;
        intf_initProperty(controlBlock.data(), nullptr, nullptr, &result, "1#0#0#1000000#16", &hostMutex);
        regName = QString::fromLatin1(kind);
        if (writes) {
            intf_setData(1, regName, FIRST, HOST_COUNT, Bytes(2 * HOST_COUNT, 1).data(), 0);
        } else {
            KEY_ADDRESS key;
            key.station = 1;
            key.regName = regName;
            key.address = FIRST;
            key.count = HOST_COUNT;
            const QList<KEY_ADDRESS> keys = QList<KEY_ADDRESS>() << key;
            intf_addrMerge(&keys);
        }
        ASSERT_EQ(intf_getSendFrame(&frame), 1);
        // Data with a DLE, and bits of both kinds.
        Bytes data(writes ? 0 : static_cast<std::size_t>(frame.replyLength - 10), 0x35);
        if (data.size() > 1)
            data[1] = 0x10;
        good = reply(data);
    }

    /// What the driver says to the bytes of a link, handed over by a host that waits for the end of a reply.
    int receives(const Bytes &wire)
    {
        vshost::ReplyCollector collector;
        collector.take(wire.data(), wire.size());
        QByteArray array = collector.complete() ? arrayOf(collector.bytes()) : QByteArray();
        QString description;
        return intf_dealRcvFrame(array, description);
    }

    /// All of the cache, the bookkeeping of writes included.
    static Bytes cache()
    {
        Bytes all;
        for (int i = 0; i < driver.dataAreas.size(); ++i) {
            const _DATA_ &area = driver.dataAreas.at(i);
            all.insert(all.end(), area.readValue, area.readValue + 4);
            all.insert(all.end(), area.writeValue, area.writeValue + 4);
            all.push_back(area.writePending);
            all.push_back(static_cast<unsigned char>(area.pendingBitWrites));
        }
        return all;
    }

    /// Refused, and nothing changed.
    static void isHarmless(int result, const Bytes &before)
    {
        EXPECT_EQ(result, 8);
        EXPECT_EQ(cache(), before);
    }

    static Bytes flipped(Bytes wire, std::size_t bit)
    {
        wire[bit / 8] = static_cast<unsigned char>(wire[bit / 8] ^ 1U << bit % 8);
        return wire;
    }

    QString regName;
    FRAME_PRO frame;
    Bytes good;
    std::vector<quint8> controlBlock = std::vector<quint8>(60117);
    QMutex hostMutex;
};

TEST_F(DamagedReplies, ofOneBitOrCutShortAreRefusedForEveryKind)
{
    int flips = 0;
    int cuts = 0;
    for (const char *kind : KINDS) {
        for (const bool writes : {false, true}) {
            asks(kind, writes);
            SCOPED_TRACE(kind);
            const Bytes before = cache();
            for (std::size_t bit = 0; bit < 8 * good.size(); ++bit, ++flips)
                isHarmless(receives(flipped(good, bit)), before);
            for (std::size_t length = 0; length < good.size(); ++length, ++cuts)
                isHarmless(receives(Bytes(good.begin(), good.begin() + static_cast<long>(length))), before);
            EXPECT_EQ(receives(good), 1);
            EXPECT_NE(cache(), before);
        }
    }
    std::printf("%d flipped bits and %d cut replies, all refused\n", flips, cuts);
}

TEST_F(DamagedReplies, ofTwoBitsPassWhereTheirSumsCancelOut)
{
    asks("D", false);
    int pairs = 0;
    int passed = 0;
    for (std::size_t one = 0; one < 8 * good.size(); ++one) {
        for (std::size_t other = one + 1; other < 8 * good.size(); ++other, ++pairs) {
            if (receives(flipped(flipped(good, one), other)) != 1)
                continue;
            ++passed;
            asks("D", false);
        }
    }
    EXPECT_GT(passed, 0) << "two bits of one weight, one set and one cleared, leave the sum as it was";
    EXPECT_LT(passed, pairs / 20);
    std::printf("%d of %d pairs of flipped bits pass, %.2f %%\n", passed, pairs, 100.0 * passed / pairs);
}

} // namespace
