/// The communication thread in full poll, two threads that post writes, two that read values, a host that asks for
/// recipes, and a callback that reads and writes: all at once. Meant for the thread sanitizer above all.
#include "model/protocol.h"
#include "simulator/controller.h"
#include "support/wire.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <set>
#include <thread>

namespace {

const std::uintptr_t WRITES = 60000;
const int READS_PER_THREAD = 60000;
const int MOST_WAITING = 40; ///< writes in the queue, far from where it drops any

/// The callback answers a change of the one with a write of the other; both are polled.
const int MOVING_WORD = 30;
const int FOLLOWING_WORD = 31;

/// A word whose high byte says whether it is whole.
int marked(std::uintptr_t number) { return static_cast<int>((number & 0xff) | (~number & 0xff) << 8); }
bool isWhole(int word) { return word == 0 || word == marked(static_cast<std::uintptr_t>(word)); }

const int WORDS_OF_BITS[] = {20, 21};
bool holdsBits(int address) { return address == WORDS_OF_BITS[0] || address == WORDS_OF_BITS[1]; }

struct Write {
    const char *regName;
    int address;
    int hostCount;
    Bytes values;
};

/// What the write of that number writes. Even and odd numbers are of different threads, and meet at every address but
/// those of bits in words, where they meet in the words.
Write writeOf(std::uintptr_t number)
{
    const int spread = static_cast<int>(number / 10);
    switch (number / 2 % 5) {
    case 0:
        return {"D", spread % 16, 1, words({marked(number)})};
    case 1:
        return {"D_bit",
                320 + static_cast<int>(number % 2) + 2 * (spread % 16),
                1,
                {static_cast<unsigned char>(number * 2654435761U >> 20 & 1U)}};
    case 2:
        return {"M", spread % 16, 1, {static_cast<unsigned char>(number * 2654435761U >> 20 & 1U)}};
    case 3:
        return {"D", 40, 1, words({marked(number)})};
    default:
        return {"32C", 200 + spread % 4, 2, words({marked(number), marked(number + 1)})};
    }
}

int wordAt(int address)
{
    quint8 bytes[2] = {};
    intf_getData(1, QString::fromLatin1("D"), address, 1, bytes);
    return bytes[0] + 256 * bytes[1];
}

class Threads : public ::testing::Test {
protected:
    Threads() : controller({1})
    {
        int result = 0;
        intf_setAddrValueChangeCallBack(&Threads::changed);
        intf_initProperty(controlBlock.data(), nullptr, recipeBuffer.data(), &result, "1#0#0#2#16", &hostMutex);
        driver.recipeIndex = 0;
        polls();
        _RCP_VAR_PRO item;
        item.instanceId = 1;
        item.station = 1;
        item.regName = QString::fromLatin1("R");
        item.count = 40;
        const QVector<_RCP_VAR_PRO> items = QVector<_RCP_VAR_PRO>() << item;
        intf_setRcpAddress(&items);
        controller.addFault("silence:p=0.02");
        controller.addFault("error:p=0.02");
    }
    ~Threads() override { intf_setAddrValueChangeCallBack(nullptr); }

    static void polls()
    {
        const struct {
            const char *regName;
            int address, count;
        } wanted[] = {{"D", 0, 50}, {"D_bit", 320, 16}, {"D_bit", 336, 16}, {"M", 0, 16}, {"32C", 200, 8}};
        QList<KEY_ADDRESS> keys;
        for (const auto &one : wanted) {
            KEY_ADDRESS key;
            key.station = 1;
            key.regName = QString::fromLatin1(one.regName);
            key.address = one.address;
            key.count = one.count;
            keys.append(key);
        }
        intf_addrMerge(&keys);
    }

    static int changed(int, int station, QString &regName, int address)
    {
        if (station != 1 || regName != QString::fromLatin1("D"))
            return 0;
        if (!holdsBits(address) && !isWhole(wordAt(address)))
            ++tornWords;
        if (address == MOVING_WORD) {
            const Bytes values = words({marked(static_cast<std::uintptr_t>(wordAt(MOVING_WORD)))});
            intf_setData(1, regName, FOLLOWING_WORD, 1, values.data(), 0);
        }
        return 0;
    }

    static int waitingWrites()
    {
        const QMutexLocker lock(&driver.mutex);
        return static_cast<int>(driver.writeQueue.size());
    }

    /// One request and what the controller makes of it.
    bool transacts()
    {
        FRAME_PRO frame;
        if (intf_getSendFrame(&frame) == 0)
            return false;
        QByteArray reply;
        for (const vssim::Frame &request :
             vssim::FrameReader().feed(frame.frame, static_cast<std::size_t>(frame.frameLength))) {
            if (const auto answer = controller.answer(request))
                reply = arrayOf(answer->bytes);
        }
        QString description;
        const bool isPostedWrite = frame.readCount == 0 && frame.variable.hostContext != 0;
        if (intf_dealRcvFrame(reply, description) == 1 && isPostedWrite)
            confirmed.push_back(frame.variable.hostContext);
        if (++transactions % 16 == 0 && !isDone)
            controller.write(1, "D", MOVING_WORD, static_cast<std::uint32_t>(marked(transactions)));
        return true;
    }

    /// What the controller has where the write went.
    Bytes heldBytes(const Write &write) const
    {
        const auto held = controller.read(1, write.regName, static_cast<std::uint32_t>(write.address)).value();
        Bytes bytes;
        for (std::size_t k = 0; k < write.values.size(); ++k)
            bytes.push_back(static_cast<unsigned char>(held >> (8 * k)));
        return bytes;
    }

    static void postsWrites(std::uintptr_t first)
    {
        for (std::uintptr_t number = first; number < WRITES; number += 2) {
            while (waitingWrites() > MOST_WAITING)
                std::this_thread::yield();
            const Write write = writeOf(number);
            intf_setData(1, QString::fromLatin1(write.regName), write.address, write.hostCount, write.values.data(),
                         number);
        }
    }

    static void readsValues()
    {
        const char *const names[] = {"D", "D_bit", "M", "32C"};
        quint8 bytes[64];
        for (int i = 0; i < READS_PER_THREAD; ++i) {
            intf_getData(1, QString::fromLatin1(names[i % 4]), i % 4 == 1 ? 320 : i % 4 == 3 ? 200 : 0, 8, bytes);
            if (!isWhole(wordAt(i % 16)))
                ++tornWords;
        }
    }

    void asksForRecipes()
    {
        for (; !isDone; std::this_thread::sleep_for(std::chrono::milliseconds(1))) {
            const QMutexLocker lock(&hostMutex);
            recipes += controlBlock[60116] == 0 ? 1 : 0;
            controlBlock[60116] = 1;
        }
    }

    vssim::Controller controller;
    std::vector<quint8> controlBlock = std::vector<quint8>(60117);
    std::vector<quint16> recipeBuffer = std::vector<quint16>(40);
    QMutex hostMutex;
    std::vector<std::uintptr_t> confirmed; ///< numbers of the writes, in the order of the wire
    std::uintptr_t transactions = 0;
    int recipes = 0;
    std::atomic<bool> isDone{false};
    static std::atomic<int> tornWords;
};

std::atomic<int> Threads::tornWords{0};

TEST_F(Threads, writeReadAndPollAtOnceAndAllIsAccountedFor)
{
    std::thread communication([this] {
        while (!isDone || waitingWrites() > 0)
            transacts();
    });
    std::thread host([this] { asksForRecipes(); });
    std::vector<std::thread> others;
    others.emplace_back(&Threads::postsWrites, 10);
    others.emplace_back(&Threads::postsWrites, 11);
    others.emplace_back(&Threads::readsValues);
    others.emplace_back(&Threads::readsValues);
    for (std::thread &thread : others)
        thread.join();
    isDone = true;
    communication.join();
    host.join();

    EXPECT_EQ(tornWords, 0);
    EXPECT_GT(recipes, 10);
    EXPECT_GT(transactions, 10000U);
    EXPECT_GT(confirmed.size(), 1000U);
    EXPECT_TRUE(driver.writesBeingMirrored.isEmpty());
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_ &area = driver.dataAreas.at(i);
        if (!holdsBits(area.address))
            EXPECT_EQ(area.writePending, 0) << area.regName.toStdString() << area.address;
    }

    // Neither fault lets a request be carried out: what the controller has is what was confirmed last.
    std::map<std::pair<std::string, int>, std::uintptr_t> last;
    for (const std::uintptr_t number : confirmed)
        last[{writeOf(number).regName, writeOf(number).address}] = number;
    for (const auto &entry : last) {
        const Write write = writeOf(entry.second);
        EXPECT_EQ(heldBytes(write), write.values) << write.regName << " " << write.address;
    }
    // A poll shows all that; of words whose bits were written in a row, once their contents change.
    controller.clearFaults();
    for (const int address : WORDS_OF_BITS) {
        const auto number = static_cast<std::uint32_t>(address);
        controller.write(1, "D", number, controller.read(1, "D", number).value() ^ 0xffffU);
    }
    controller.write(1, "D", MOVING_WORD, static_cast<std::uint32_t>(marked(77)));
    for (int i = 0; i < 40; ++i)
        transacts();
    for (const auto &entry : last) {
        const Write write = writeOf(entry.second);
        Bytes shown(write.values.size());
        intf_getData(1, QString::fromLatin1(write.regName), write.address, write.hostCount, shown.data());
        EXPECT_EQ(shown, heldBytes(write)) << write.regName << " " << write.address;
    }
    EXPECT_EQ(wordAt(FOLLOWING_WORD), marked(77));
    std::printf("%zu writes posted, %zu confirmed, %d values read, %zu transactions, %d recipes\n", WRITES - 10,
                confirmed.size(), 4 * READS_PER_THREAD, transactions, recipes);
}

} // namespace
