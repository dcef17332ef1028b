/// The communication thread in full poll, two threads that post writes, two that read values, a host that asks for
/// recipes, and a callback that reads and writes: all at once. Meant for the thread sanitizer above all.
#include "model/protocol.h"
#include "support/screen.h"

#include <QtCore/QMutexLocker>

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <thread>

namespace {

const std::uintptr_t WRITES = 60000;
const int READS_PER_THREAD = 60000;
const int MOST_WAITING = 40;

/// The callback answers a change of the one with a write of the other; both are polled.
const int MOVING_WORD = 30;
const int FOLLOWING_WORD = 31;

/// The low byte of a word, with a high byte that says whether it is whole.
int marked(std::uintptr_t number) { return static_cast<int>((number & 0xff) | (~number & 0xff) << 8); }
bool isWhole(int word) { return word == 0 || word == marked(static_cast<std::uintptr_t>(word)); }

/// Words 20 and 21 are written bit by bit, and now and then whole.
bool holdsBits(int address) { return address == 20 || address == 21; }

struct Write {
    Place place;
    Bytes values;
};

/// What the write of that number writes. Even and odd numbers are of different threads, and meet everywhere.
Write writeOf(std::uintptr_t number)
{
    const int spread = static_cast<int>(number / 10);
    const auto bit = static_cast<unsigned char>(number * 2654435761U >> 20 & 1U);
    switch (number / 2 % 5) {
    case 0:
        return {{"D", spread % 16}, words({marked(number)})};
    case 1:
        return {{"D_bit", 320 + spread % 32}, {bit}};
    case 2:
        return {{"M", spread % 16}, {bit}};
    case 3:
        return spread % 4 == 0 ? Write{{"D", 20 + spread % 2}, words({static_cast<int>(number & 0xffff)})}
                               : Write{{"D", 40}, words({marked(number)})};
    default:
        return {{"32C", 200 + spread % 4}, words({marked(number), marked(number + 1)})};
    }
}

std::vector<Place> polledPlaces()
{
    std::vector<Place> places;
    for (int i = 0; i < 50; ++i)
        places.push_back({"D", i});
    for (int i = 0; i < 32; ++i)
        places.push_back({"D_bit", 320 + i});
    for (int i = 0; i < 16; ++i)
        places.push_back({"M", i});
    for (int i = 0; i < 4; ++i)
        places.push_back({"32C", 200 + i});
    return places;
}

class Threads : public ::testing::Test, protected Host {
protected:
    Threads() : Host(linkedCalls())
    {
        notesReports = false;
        configures(2, 16);
        screen.polls(polledPlaces());
        plansRecipe("R 0 40 from 0");
        whenReported = [this](const Report &report) { changed(report); };
    }

    void changed(const Report &report)
    {
        screen.refresh(report);
        if (report.regName != "D")
            return;
        if (!holdsBits(report.address) && !isWhole(word(report.address)))
            ++tornWords;
        if (report.address == MOVING_WORD)
            writes("D", FOLLOWING_WORD, 1, words({marked(static_cast<std::uintptr_t>(word(MOVING_WORD)))}));
    }

    static int waitingWrites()
    {
        const QMutexLocker lock(&driver.mutex);
        return static_cast<int>(driver.writeQueue.size());
    }

    /// One request and what the controller makes of it: 2 % are lost, 2 % refused.
    void transacts(bool withFaults)
    {
        if (sends() == "nothing")
            return;
        const bool isWrite = driver.transactionKind == TransactionWrite; // and not a recipe's
        const std::uint_fast32_t fault = withFaults ? random() % 50 : 2;
        const Bytes answer = fault == 0 ? Bytes() : fault == 1 ? refusal(4) : memory.answer(frame);
        if (receives(answer) == 1 && isWrite && frame.variable.hostContext != 0)
            confirmed.push_back(frame.variable.hostContext);
        if (++transactions % 16 == 0 && withFaults)
            memory.unit(1, "D", MOVING_WORD) = static_cast<std::uint32_t>(marked(transactions));
    }

    void postsWrites(std::uintptr_t first)
    {
        for (std::uintptr_t number = first; number < WRITES; number += 2) {
            // Now and then more writes than the queue holds, so that they displace each other.
            const bool floods = number / 2000 % 5 == 4;
            while (!floods && waitingWrites() > MOST_WAITING)
                std::this_thread::yield();
            const Write write = writeOf(number);
            writes(write.place.regName, write.place.address, kindNamed(write.place.regName).hostCount(), write.values,
                   1, number);
        }
    }

    void readsValues()
    {
        const Place places[] = {{"D", 0}, {"D_bit", 320}, {"M", 0}, {"32C", 200}};
        for (int i = 0; i < READS_PER_THREAD; ++i)
            reads(places[i % 4].regName, places[i % 4].address, 8);
    }

    void asksForRecipes()
    {
        while (!isDone) {
            const QMutexLocker lock(&hostMutex);
            if (isAsked(DOWNLOAD_BYTE) || isAsked(UPLOAD_BYTE))
                continue;
            asks(++recipes % 2 == 0 ? DOWNLOAD_BYTE : UPLOAD_BYTE);
        }
    }

    Memory memory;
    Screen screen{*this};
    std::mt19937 random{1};
    std::vector<std::uintptr_t> confirmed; ///< numbers of the writes, in the order of the wire
    std::uintptr_t transactions = 0;
    int recipes = 0;
    std::atomic<bool> isDone{false};
    std::atomic<int> tornWords{0};
};

TEST_F(Threads, writeReadAndPollAtOnceAndAllIsAccountedFor)
{
    std::thread communication([this] {
        while (!isDone || waitingWrites() > 0)
            transacts(!isDone);
    });
    std::thread host([this] { asksForRecipes(); });
    std::vector<std::thread> others;
    others.emplace_back([this] { postsWrites(10); });
    others.emplace_back([this] { postsWrites(11); });
    others.emplace_back([this] { readsValues(); });
    others.emplace_back([this] { readsValues(); });
    for (std::thread &thread : others)
        thread.join();
    isDone = true;
    communication.join();
    host.join();

    EXPECT_EQ(tornWords, 0);
    EXPECT_GT(recipes, 10);
    EXPECT_GT(transactions, 10000U);
    EXPECT_GT(confirmed.size(), 1000U);
    EXPECT_EQ(screen.stale(), "");
    EXPECT_TRUE(driver.writesBeingMirrored.isEmpty() && driver.displacedWrites.isEmpty());
    for (const _DATA_ &area : driver.dataAreas)
        EXPECT_TRUE(area.writePending == 0 && area.pendingBitWrites == 0 && area.bitRequests == 0)
            << plain(area.regName) << area.address;

    // Neither fault lets a request be carried out: what the controller has is what was confirmed last.
    std::map<std::string, Write> last;
    for (const std::uintptr_t number : confirmed) {
        const Write write = writeOf(number);
        if (write.place.regName != "D_bit" && !holdsBits(write.place.address))
            last[write.place.regName + std::to_string(write.place.address)] = write;
    }
    for (const auto &entry : last)
        EXPECT_EQ(memory.bytesOf(entry.second.place), entry.second.values) << entry.first;

    for (int i = 0; i < 40; ++i)
        transacts(false);
    EXPECT_EQ(screen.stale() + screen.wrong(memory), "");
    EXPECT_EQ(word(FOLLOWING_WORD), word(MOVING_WORD));
    std::printf("%zu writes posted, %zu confirmed, %d values read, %zu transactions, %d recipes\n", WRITES - 10,
                confirmed.size(), 2 * READS_PER_THREAD, transactions, recipes);
}

} // namespace
