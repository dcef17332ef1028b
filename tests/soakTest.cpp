/// A long session over TCP under all faults at once, in which every write is accounted for. As long as
/// TANEK_VS_SOAK says, in transactions; short when it is not set.
#include "communication.h"
#include "model/protocol.h"
#include "support/plant.h"
#include "support/wire.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>

#include <unistd.h>

namespace {

const char *const FAULTS[] = {"silence:p=0.011", "error:p=0.011",         "drop:p=0.011",
                              "flip:p=0.012",    "truncate:p=0.011",      "overlong:p=0.011",
                              "garbage:p=0.011", "wrong-station:p=0.011", "delay:ms=1,p=0.011"};
const int MOST_WAITING = 200;
const std::size_t BURST_EVERY = 40;
const int WRITES_OF_BURST = 16;

/// Values that are polled and written; words 100 to 103 of D hold the bits.
struct Range {
    const char *regName;
    int first, number, hostCount;
};
const Range RANGES[] = {{"D", 0, 100, 1}, {"M", 0, 64, 1}, {"32C", 200, 8, 2}, {"D_bit", 1600, 64, 1}};
const int FIRST_WORD_OF_BITS = 100;
const int WORDS_OF_BITS = 4;

enum class End { None, Confirmed, GivenUp, Replaced };

struct Write {
    int run = 0;
    int address = 0;
    std::uint32_t value = 0;
    End end = End::None;
};

long residentBytes()
{
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

bool isSanitized()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#else
    return false;
#endif
}

std::size_t wantedTransactions()
{
    const char *const text = std::getenv("TANEK_VS_SOAK");
    return text ? std::strtoul(text, nullptr, 10) : 3000;
}

class Soak : public ::testing::Test, private vshost::TransactionListener {
protected:
    Soak() : plant(false, {1}), writes(wantedTransactions() + 1)
    {
        calls.getSendFrame = &intf_getSendFrame;
        calls.dealRcvFrame = &intf_dealRcvFrame;
        int result = 0;
        intf_initProperty(controlBlock.data(), nullptr, nullptr, &result, "1#0#0#3#8", &hostMutex);
        QList<KEY_ADDRESS> keys;
        for (const Range &run : RANGES) {
            KEY_ADDRESS key;
            key.station = 1;
            key.regName = QString::fromLatin1(run.regName);
            key.address = run.first;
            key.count = run.number * run.hostCount;
            if (key.regName != QString::fromLatin1("D_bit"))
                keys.append(key);
            for (int i = 0; key.regName == QString::fromLatin1("D_bit") && i < run.number; ++i) {
                key.address = run.first + i;
                key.count = 1;
                keys.append(key);
            }
        }
        blocks = intf_addrMerge(&keys);
        for (const char *fault : FAULTS)
            plant.controller.addFault(fault);
        communication = std::make_unique<vshost::Communication>(
            calls, keeper, stop, vshost::Communication::Settings{std::chrono::milliseconds(2), {}, {}},
            static_cast<vshost::TransactionListener &>(*this));
    }

    /// A request for exactly that place that waits behind the head is the one that gives way.
    void notesReplaced(const Write &write)
    {
        for (int i = 1; i < driver.writeQueue.size(); ++i) {
            const VARIABLE &waiting = driver.writeQueue.at(i);
            if (waiting.address == write.address && waiting.regName == QString::fromLatin1(RANGES[write.run].regName))
                writes[waiting.hostContext].end = End::Replaced;
        }
    }

    void posts()
    {
        const std::uintptr_t number = ++posted;
        const auto any = static_cast<std::uint32_t>(number * 2654435761U);
        Write write;
        write.run = static_cast<int>(any >> 8 & 3U);
        const Range &run = RANGES[write.run];
        write.address = run.first + static_cast<int>(any >> 12) % run.number;
        write.value = std::string(run.regName) == "D" ? any & 0xffff : run.hostCount == 2 ? any : any >> 7 & 1U;
        notesReplaced(write);
        writes[number] = write;
        Bytes bytes;
        for (int k = 0; k < 4; ++k)
            bytes.push_back(static_cast<unsigned char>(write.value >> (8 * k)));
        intf_setData(1, QString::fromLatin1(run.regName), write.address, run.hostCount, bytes.data(), number);
    }

    void runs(std::size_t number)
    {
        const std::size_t target = transactions + number;
        while (transactions < target) {
            // In bursts, so that writes wait behind each other and some are replaced.
            const bool isTime = transactions % BURST_EVERY == 0 && driver.writeQueue.size() < MOST_WAITING;
            for (int i = 0; isTime && i < WRITES_OF_BURST && posted + 1 < writes.size(); ++i)
                posts();
            communication->step();
        }
    }

    std::uint32_t held(const char *regName, int address) const
    {
        return plant.controller.read(1, regName, static_cast<std::uint32_t>(address)).value();
    }

    vshost::DriverCalls calls;
    Plant plant;
    vshost::StopSignal stop;
    vshost::LinkKeeper keeper{plant.address(), stop, [](const std::string &) {}};
    std::unique_ptr<vshost::Communication> communication;
    std::vector<quint8> controlBlock = std::vector<quint8>(60117);
    QMutex hostMutex;
    int blocks = 0;
    std::vector<Write> writes; ///< by number; the first is none
    std::uintptr_t posted = 0;
    std::size_t transactions = 0;
    std::size_t blocksRead = 0;

private:
    void noteEnd(const FRAME_PRO &frame, End end)
    {
        ++transactions;
        if (vshost::isWrite(frame))
            writes[frame.variable.hostContext].end = end;
        else if (end == End::Confirmed)
            ++blocksRead;
    }
    void accepted(const FRAME_PRO &frame) override { noteEnd(frame, End::Confirmed); }
    void givenUp(const FRAME_PRO &frame, const vshost::Failure &) override { noteEnd(frame, End::GivenUp); }
};

TEST_F(Soak, accountsForEveryWriteAndGrowsNoFatter)
{
    const std::size_t wanted = wantedTransactions();
    runs(wanted / 5);
    const long residentBefore = residentBytes();
    runs(wanted - wanted / 5);
    const long growth = residentBytes() - residentBefore;
    while (!driver.writeQueue.isEmpty())
        communication->step();

    std::array<std::size_t, 4> ends{};
    for (std::uintptr_t number = 1; number <= posted; ++number)
        ++ends[static_cast<std::size_t>(writes[number].end)];
    EXPECT_EQ(ends[0], 0U) << "a write is unaccounted for";
    EXPECT_GT(ends[1], 0U);
    EXPECT_GT(ends[3], 0U);

    // A write that was given up may have been carried out, its confirmation being lost.
    for (int run = 0; run < 4; ++run) {
        for (int address = RANGES[run].first; address < RANGES[run].first + RANGES[run].number; ++address) {
            std::set<std::uint32_t> possible = {0};
            for (std::uintptr_t number = 1; number <= posted; ++number) {
                const Write &write = writes[number];
                if (write.run != run || write.address != address || write.end == End::Replaced)
                    continue;
                if (write.end == End::Confirmed)
                    possible.clear();
                possible.insert(write.value);
            }
            EXPECT_EQ(possible.count(held(RANGES[run].regName, address)), 1U) << RANGES[run].regName << address;
        }
    }

    plant.controller.clearFaults();
    for (int i = FIRST_WORD_OF_BITS; i < FIRST_WORD_OF_BITS + WORDS_OF_BITS; ++i)
        plant.controller.write(1, "D", static_cast<std::uint32_t>(i), held("D", i) ^ 0xffffU);
    const std::size_t target = blocksRead + 2 * static_cast<std::size_t>(blocks);
    while (blocksRead < target)
        communication->step();
    for (const Range &run : RANGES) {
        for (int address = run.first; address < run.first + run.number; ++address) {
            quint8 bytes[4] = {};
            intf_getData(1, QString::fromLatin1(run.regName), address, run.hostCount, bytes);
            const std::uint32_t shown = bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8 |
                                        static_cast<std::uint32_t>(bytes[2]) << 16 |
                                        static_cast<std::uint32_t>(bytes[3]) << 24;
            EXPECT_EQ(shown, held(run.regName, address)) << run.regName << address;
        }
    }
    if (!isSanitized())
        EXPECT_LT(growth, 1 << 20) << "bytes";
    std::printf("%zu transactions: %zu writes posted = %zu confirmed + %zu given up + %zu replaced; memory grew by %ld "
                "KiB\n",
                transactions, posted, ends[1], ends[2], ends[3], growth / 1024);
}

} // namespace
