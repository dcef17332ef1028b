/// Whole sessions over real links: the loaded library, the reference host's loop, and the simulated controller, which
/// has its own idea of the protocol. Nothing waits for time to pass: a session goes on until what is awaited is there.
#include "communication.h"
#include "driver.h"
#include "support/host.h"
#include "support/kinds.h"
#include "support/plant.h"
#include "writeTracker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <numeric>
#include <set>
#include <thread>

#include <unistd.h>

namespace {

/// Enough for every session here, and few enough to end a stuck one soon.
const int MOST_STEPS = 3000;

const int RETRIES = 3;
const std::chrono::milliseconds TIMEOUT(60);

/// A run of values, count in host terms.
struct Wanted {
    std::string regName;
    int address;
    int count;
    int station = 1;
};

std::string placeOf(int station, const std::string &regName, int address)
{
    return std::to_string(station) + " " + regName + " " + std::to_string(address);
}
std::string placeOf(const FRAME_PRO &frame)
{
    return placeOf(frame.variable.station, plain(frame.variable.regName), frame.variable.address);
}

/// The host: polls, writes, and keeps account of what it was told.
class Panel : private vshost::TransactionListener {
public:
    /// A short time-out is for sessions with faults; others must not lose a reply to a busy machine.
    explicit Panel(const vshost::LinkAddress &address, std::chrono::milliseconds timeout = std::chrono::seconds(5))
        : driver(TANEK_VS_LIBRARY, {1, false, RETRIES, 8}),
          tracker(driver.calls(), [this](const vshost::WriteEnd &end) { ++ends[end.outcome]; }),
          m_keeper(address, m_stop, [this](const std::string &notice) { notices.push_back(notice); }),
          m_communication(driver.calls(), m_keeper, m_stop, {timeout, {}, {}}, *this)
    {
        driver.onChange([this](int station, const QString &regName, int number) {
            ++reports[placeOf(station, plain(regName), number)];
            if (whenChanged)
                whenChanged(station, plain(regName), number);
        });
    }

    void polls(const std::vector<Wanted> &wanted)
    {
        QList<KEY_ADDRESS> keys;
        for (const Wanted &one : wanted)
            keys.append(key(one.regName, one.address, one.count, one.station));
        m_blocks = driver.calls().addrMerge(&keys);
    }

    void writes(const Wanted &place, const Bytes &values, std::uintptr_t number = 0)
    {
        driver.calls().setData(place.station, qt(place.regName), place.address, place.count, values.data(), number);
    }

    /// A write whose end is counted.
    void posts(const Wanted &place, const Bytes &values)
    {
        vshost::Value value;
        value.place.station = place.station;
        value.place.regName = qt(place.regName);
        value.place.address = place.address;
        value.place.count = place.count;
        vshost::ValueBytes bytes{};
        std::copy(values.begin(), values.end(), bytes.begin());
        tracker.post(value, bytes, "");
    }

    Bytes shows(const Wanted &place)
    {
        Bytes values(static_cast<std::size_t>(place.count) * 2);
        driver.calls().getData(place.station, qt(place.regName), place.address, place.count, values.data());
        values.resize(static_cast<std::size_t>(place.count) * (kindNamed(place.regName).holdsBits() ? 1 : 2));
        return values;
    }

    void step() { m_communication.step(); }

    /// Runs the loop until that holds; false when it does not come to hold.
    template <typename Condition> bool runsUntil(Condition condition)
    {
        for (int i = 0; i < MOST_STEPS && !condition(); ++i)
            step();
        return condition();
    }

    /// Runs until every block has been read once more.
    bool pollsAllAnew()
    {
        m_blocksRead.clear();
        return runsUntil([&] { return m_blocksRead.size() == static_cast<std::size_t>(m_blocks); });
    }

    bool transfers(vshost::RecipeDirection direction)
    {
        driver.requestRecipe(direction);
        return runsUntil([&] { return !driver.recipeRequested(direction); });
    }

    vshost::Driver driver;
    std::map<vshost::WriteOutcome, std::size_t> ends; ///< of the writes that were posted
    vshost::WriteTracker tracker;
    std::function<void(int, const std::string &, int)> whenChanged;
    std::map<std::string, int> reports;
    std::vector<std::string> notices;
    bool notesWriteEnds = true;               ///< not in long sessions
    std::map<std::uintptr_t, bool> writeEnds; ///< by number: confirmed or given up
    std::map<int, int> readsOf;               ///< accepted reads, by station
    std::map<int, int> giveUpsOf;
    std::map<std::string, int> endsOf; ///< transactions that have ended, by place
    std::size_t transactions = 0;

private:
    void beforeChoice() override { tracker.beforeChoice(); }
    void nothingToSend() override { tracker.nothingToSend(); }
    void frameChosen(const FRAME_PRO &frame) override { tracker.frameChosen(frame); }
    void noteEnd(const FRAME_PRO &frame, bool isAccepted)
    {
        ++transactions;
        ++endsOf[placeOf(frame)];
        if (notesWriteEnds && vshost::isWrite(frame))
            writeEnds[frame.variable.hostContext] = isAccepted;
    }
    void accepted(const FRAME_PRO &frame) override
    {
        noteEnd(frame, true);
        tracker.accepted(frame);
        if (vshost::isWrite(frame))
            return;
        m_blocksRead.insert(placeOf(frame));
        ++readsOf[frame.variable.station];
    }
    void givenUp(const FRAME_PRO &frame, const vshost::Failure &failure) override
    {
        noteEnd(frame, false);
        tracker.givenUp(frame, failure);
        ++giveUpsOf[frame.variable.station];
    }

    vshost::StopSignal m_stop;
    vshost::LinkKeeper m_keeper;
    vshost::Communication m_communication;
    int m_blocks = 0;
    std::set<std::string> m_blocksRead;
};

/// The first address that the tests use of a kind: a DLE on the wire wherever the kind reaches it.
int firstOf(const Kind &kind) { return kind.isBitInWord() ? 3200 : kind.lowest + (kind.highest < 300 ? 0 : 16); }

Bytes memoryOf(const Plant &plant, const Kind &kind, int first, int values)
{
    Bytes bytes;
    for (int i = 0; i < values; ++i) {
        const auto value = plant.controller.read(1, kind.name, static_cast<std::uint32_t>(first + i)).value();
        for (int k = 0; k < kind.bytes(); ++k)
            bytes.push_back(static_cast<unsigned char>(value >> (8 * k)));
    }
    return bytes;
}

/// Two unlike values of the kind, one with a DLE in it.
Bytes twoValues(const Kind &kind)
{
    if (kind.holdsBits())
        return {1, 0};
    return kind.bytes() == 2 ? hex("10 03 ff 10") : hex("10 03 10 10 01 02 03 84");
}

class OverEveryLink : public ::testing::TestWithParam<bool> {};

std::string nameOfLink(const ::testing::TestParamInfo<bool> &info) { return info.param ? "serial" : "tcp"; }

TEST_P(OverEveryLink, valuesOfEveryKindAreReadAndWritten)
{
    Plant plant(GetParam(), {1});
    Panel panel(plant.address());
    std::vector<Wanted> wanted;
    for (const Kind &kind : kinds()) {
        wanted.push_back({kind.name, firstOf(kind), 2 * kind.hostCount()});
        plant.controller.write(1, kind.name, static_cast<std::uint32_t>(firstOf(kind)) + 1, 1);
    }
    panel.polls(wanted);
    ASSERT_TRUE(panel.pollsAllAnew());
    for (const Kind &kind : kinds()) {
        SCOPED_TRACE(kind.name);
        const int first = firstOf(kind);
        EXPECT_EQ(panel.shows({kind.name, first, 2 * kind.hostCount()}), memoryOf(plant, kind, first, 2));
        EXPECT_EQ(panel.reports[placeOf(1, kind.name, first + 1)], 1);
        EXPECT_EQ(panel.reports[placeOf(1, kind.name, first)], 0);
    }

    // Bits go one by one: a byte that stands for one bit alone is what the controller can tell.
    std::uintptr_t number = 0;
    for (const Kind &kind : kinds()) {
        const Bytes values = twoValues(kind);
        for (int i = 0; i < 2; ++i)
            panel.writes({kind.name, firstOf(kind) + i, kind.hostCount()},
                         Bytes(values.begin() + i * kind.bytes(), values.begin() + (i + 1) * kind.bytes()), ++number);
    }
    ASSERT_TRUE(panel.runsUntil([&] { return panel.writeEnds.size() == number; }));
    ASSERT_TRUE(panel.pollsAllAnew());
    for (const Kind &kind : kinds()) {
        SCOPED_TRACE(kind.name);
        EXPECT_EQ(memoryOf(plant, kind, firstOf(kind), 2), twoValues(kind));
        EXPECT_EQ(panel.shows({kind.name, firstOf(kind), 2 * kind.hostCount()}), twoValues(kind));
    }
    for (const auto &end : panel.writeEnds)
        EXPECT_TRUE(end.second) << "write " << end.first;
}

TEST_P(OverEveryLink, recipesGoDownAndComeBack)
{
    Plant plant(GetParam(), {1, 16});
    Panel panel(plant.address());
    QVector<_RCP_VAR_PRO> items;
    int offset = 0;
    const Wanted places[] = {{"32C", 200, 2}, {"32C", 201, 2}, {"D", 16, 70},
                             {"D", 86, 3},    {"R", 25999, 1}, {"D", 0, 5, 16}};
    for (const Wanted &place : places) {
        items.append(recipeItem(place.regName, place.address, place.count, offset, place.station));
        items.last().instanceId = 1;
        offset += place.count;
    }
    panel.driver.planRecipe(items, static_cast<std::size_t>(offset));
    std::vector<quint16> &buffer = panel.driver.recipeBuffer();
    std::iota(buffer.begin(), buffer.end(), static_cast<quint16>(0x1010));
    const std::vector<quint16> sent = buffer;
    ASSERT_TRUE(panel.transfers(vshost::RecipeDirection::Download));
    EXPECT_EQ(plant.controller.read(1, "32C", 201), 0x10131012U);
    EXPECT_EQ(plant.controller.read(1, "D", 88), 0x1010U + 76);
    EXPECT_EQ(plant.controller.read(16, "D", 4), 0x1010U + 82);
    std::fill(buffer.begin(), buffer.end(), quint16(0));
    ASSERT_TRUE(panel.transfers(vshost::RecipeDirection::Upload));
    EXPECT_EQ(buffer, sent);
}

INSTANTIATE_TEST_SUITE_P(Links, OverEveryLink, ::testing::Values(false, true), nameOfLink);

/// Values of four kinds that are polled and written, while a condition is read and a recipe carried up, under faults.
class UnderFaults : public ::testing::Test {
protected:
    struct Value {
        Kind kind;
        int address;

        Wanted wanted() const { return {kind.name, address, kind.hostCount()}; }
        std::string place() const { return placeOf(1, kind.name, address); }
    };

    void begins(bool onPty, std::chrono::milliseconds timeout)
    {
        plant = std::make_unique<Plant>(onPty, std::set<std::uint8_t>{1});
        panel = std::make_unique<Panel>(plant->address(), timeout);
        _RCP_VAR_PRO item = recipeItem("D", 100, 10, 0);
        item.instanceId = 1;
        panel->driver.planRecipe(QVector<_RCP_VAR_PRO>() << item, 10);
        const struct {
            const char *name;
            int first, number;
        } runs[] = {{"D", 100, 40}, {"M", 16, 20}, {"32C", 200, 4}, {"D_bit", 3200, 8}};
        std::vector<Wanted> polled;
        for (const auto &run : runs) {
            const Kind &kind = kindNamed(run.name);
            polled.push_back({run.name, run.first, kind.hostCount() * run.number});
            for (int i = 0; i < run.number; ++i)
                values.push_back({kind, run.first + i});
        }
        for (const Value &value : values) {
            plant->controller.write(1, value.kind.name, static_cast<std::uint32_t>(value.address),
                                    static_cast<std::uint32_t>(value.address * 401) &
                                        (value.kind.holdsBits() ? 1U : 0xffffU));
            allowed[value.place()] = {Bytes(static_cast<std::size_t>(value.kind.bytes()), 0), held(value)};
        }
        panel->whenChanged = [this](int station, const std::string &regName, int number) {
            const auto known = allowed.find(placeOf(station, regName, number));
            if (known == allowed.end())
                return; // a recipe word, or the end of a condition read
            const Bytes now = panel->shows({regName, number, kindNamed(regName).hostCount()});
            EXPECT_EQ(known->second.count(now), 1U) << known->first << " shows " << hexText(now);
        };
        panel->polls(polled);
    }

    Bytes held(const Value &value) const { return memoryOf(*plant, value.kind, value.address, 1); }

    void expectsAllShown()
    {
        ASSERT_TRUE(panel->pollsAllAnew());
        ASSERT_TRUE(panel->pollsAllAnew());
        for (const Value &value : values)
            EXPECT_EQ(panel->shows(value.wanted()), held(value)) << value.place();
    }

    std::unique_ptr<Plant> plant;
    std::unique_ptr<Panel> panel;
    std::vector<Value> values;
    /// What each value may show: zeros, what the controller held at first, and what the host wrote.
    std::map<std::string, std::set<Bytes>> allowed;
};

class OfEveryKind : public UnderFaults, public ::testing::WithParamInterface<std::tuple<const char *, bool>> {
protected:
    void SetUp() override { begins(std::get<1>(GetParam()), TIMEOUT); }

    /// Writes one value of each kind, and runs until each write has ended.
    void writesRound(int round)
    {
        for (const std::size_t first : {0U, 40U, 60U, 64U}) {
            const Value &value = values[first + static_cast<std::size_t>(round)];
            Bytes bytes = held(value);
            bytes[0] = value.kind.holdsBits() ? bytes[0] ^ 1 : static_cast<unsigned char>(0x10 + round);
            allowed[value.place()].insert(bytes);
            written.push_back({value, bytes});
            panel->writes(value.wanted(), bytes, written.size());
        }
        EXPECT_TRUE(panel->runsUntil([&] { return panel->writeEnds.size() == written.size(); }));
    }

    /// @return the words that came up: the first ten that are polled.
    std::vector<quint16> uploads()
    {
        std::vector<quint16> &buffer = panel->driver.recipeBuffer();
        std::fill(buffer.begin(), buffer.end(), quint16(0));
        EXPECT_TRUE(panel->transfers(vshost::RecipeDirection::Upload));
        return buffer;
    }

    std::vector<std::pair<Value, Bytes>> written;
};

TEST_P(OfEveryKind, noWrongValueIsShownAndEveryWriteEnds)
{
    plant->controller.addFault(std::get<0>(GetParam()));
    for (int round = 0; round < 4; ++round)
        writesRound(round);
    const KEY_ADDRESS condition = key("R", 7, 1);
    panel->driver.calls().addConditionRead(&condition, 0);
    EXPECT_TRUE(panel->runsUntil([&] { return panel->endsOf[placeOf(1, "R", 7)] == 1; }));
    const std::vector<quint16> uploaded = uploads();
    plant->controller.clearFaults();
    EXPECT_TRUE(uploaded == uploads() || uploaded == std::vector<quint16>(10)) << "all of it or none";
    expectsAllShown();
    for (std::size_t i = 0; i < written.size(); ++i)
        if (panel->writeEnds.at(i + 1))
            EXPECT_EQ(held(written[i].first), written[i].second) << written[i].first.place() << " was confirmed";
    const auto met = plant->controller.counts().faults;
    EXPECT_GT(std::accumulate(met.begin(), met.end(), std::uint64_t{0}), 0U) << "the fault was never met";
}

INSTANTIATE_TEST_SUITE_P(Faults, OfEveryKind,
                         ::testing::Combine(::testing::Values("silence:p=0.3", "silence:n=7", "error:p=0.4",
                                                              "error:n=7", "drop:p=0.4", "flip:p=0.5", "truncate:p=0.4",
                                                              "overlong:p=0.4", "garbage:p=0.5", "wrong-station:p=0.4",
                                                              "delay:ms=5,p=0.5", "delay:ms=80,n=2"),
                                            ::testing::Bool()));

long residentBytes()
{
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

/// As long as TANEK_VS_SOAK says, in transactions; short when it is not set.
std::size_t wantedTransactions()
{
    const char *const text = std::getenv("TANEK_VS_SOAK");
    return text ? std::strtoul(text, nullptr, 10) : 3000;
}

using LongSession = UnderFaults;

TEST_F(LongSession, underAllFaultsAccountsForEveryWriteAndGrowsNoFatter)
{
    begins(false, std::chrono::milliseconds(2));
    panel->whenChanged = nullptr;
    panel->notesWriteEnds = false;
    for (const char *fault : {"silence:p=0.011", "error:p=0.011", "drop:p=0.011", "flip:p=0.012", "truncate:p=0.011",
                              "overlong:p=0.011", "garbage:p=0.011", "wrong-station:p=0.011", "delay:ms=1,p=0.011"})
        plant->controller.addFault(fault);
    const std::size_t wanted = wantedTransactions();
    std::size_t posted = 0;
    long residentBefore = 0;
    while (panel->transactions < wanted) {
        // In bursts, so that writes wait behind each other and some are replaced.
        for (int i = 0; i < 16 && panel->transactions % 40 == 0; ++i) {
            const std::size_t any = ++posted * 2654435761U;
            const Value &value = values[any / 4096 % values.size()];
            const auto low = static_cast<unsigned char>(any >> 8);
            const Bytes bytes = value.kind.holdsBits() ? Bytes{static_cast<unsigned char>(low & 1)}
                                                       : Bytes{low, static_cast<unsigned char>(any >> 16), 0, 0};
            panel->posts(value.wanted(), bytes);
        }
        panel->step();
        if (residentBefore == 0 && panel->transactions > wanted / 5)
            residentBefore = residentBytes();
    }
    const long growth = residentBytes() - residentBefore;
    EXPECT_TRUE(panel->runsUntil([&] { return !panel->tracker.anyOutstanding(); }));
    auto &ends = panel->ends;
    using vshost::WriteOutcome;
    EXPECT_EQ(ends[WriteOutcome::Confirmed] + ends[WriteOutcome::GivenUp] + ends[WriteOutcome::Replaced], posted);
    EXPECT_GT(ends[WriteOutcome::Replaced], 0U);
    plant->controller.clearFaults();
    expectsAllShown();
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(growth, 1 << 20) << "bytes";
#endif
    std::printf("%zu transactions: %zu writes posted = %zu confirmed + %zu given up + %zu replaced; memory grew by "
                "%ld KiB\n",
                panel->transactions, posted, ends[WriteOutcome::Confirmed], ends[WriteOutcome::GivenUp],
                ends[WriteOutcome::Replaced], growth / 1024);
}

TEST(EndToEnd, aSilentStationIsGivenUpAndTheOthersAreServed)
{
    Plant plant(false, {1, 2, 3});
    plant.controller.addFault("silence@2");
    Panel panel(plant.address(), TIMEOUT);
    const int silentBlocks = 5;
    std::vector<Wanted> wanted = {{"D", 0, 1, 1}, {"D", 0, 1, 3}};
    for (int i = 0; i < silentBlocks; ++i)
        wanted.push_back({"D", 100 * i, 1, 2});
    panel.polls(wanted);
    ASSERT_TRUE(panel.runsUntil([&] { return panel.readsOf[3] == 3; }));
    EXPECT_GE(panel.readsOf[1], 3);
    EXPECT_EQ(panel.readsOf[2], 0);
    EXPECT_EQ(panel.giveUpsOf[2], 3 * silentBlocks);
    plant.controller.clearFaults();
    ASSERT_TRUE(panel.runsUntil([&] { return panel.readsOf[2] == silentBlocks; }));
}

TEST(EndToEnd, everyWritePostedWhileTheLoopRunsIsToldItsEnd)
{
    const int places = 20;
    const int number = 3000;
    Plant plant(false, {1});
    Panel panel(plant.address());
    panel.polls({{"D", 0, places}});
    std::atomic<bool> isPosted{false};
    std::thread poster([&] {
        for (int i = 1; i <= number; ++i)
            panel.posts({"D", i % places, 1}, words({i}));
        isPosted = true;
    });
    for (int i = 0; i < 10 && (!isPosted || panel.tracker.anyOutstanding()); ++i)
        panel.runsUntil([&] { return isPosted && !panel.tracker.anyOutstanding(); });
    poster.join();
    using vshost::WriteOutcome;
    EXPECT_EQ(panel.ends[WriteOutcome::Confirmed] + panel.ends[WriteOutcome::Replaced], std::size_t(number));
    EXPECT_GE(panel.ends[WriteOutcome::Confirmed], std::size_t(places));
    for (int i = number - places + 1; i <= number; ++i)
        EXPECT_EQ(plant.controller.read(1, "D", static_cast<std::uint32_t>(i % places)), static_cast<std::uint32_t>(i));
}

TEST(EndToEnd, aCutLinkIsOpenedAgainAndNothingPostedIsLost)
{
    Plant plant(false, {1});
    Panel panel(plant.address());
    panel.polls({{"D", 0, 4}});
    ASSERT_TRUE(panel.pollsAllAnew());
    for (std::uintptr_t number = 1; number <= 5; ++number) {
        plant.dropLink();
        panel.writes({"D", static_cast<int>(number) - 1, 1}, words({static_cast<int>(number)}), number);
        ASSERT_TRUE(panel.runsUntil([&] { return panel.writeEnds.count(number) != 0; }));
        EXPECT_TRUE(panel.writeEnds[number]);
        EXPECT_EQ(plant.controller.read(1, "D", static_cast<std::uint32_t>(number - 1)), number);
    }
    EXPECT_NE(panel.notices.back().find("connected again"), std::string::npos);
}

} // namespace
