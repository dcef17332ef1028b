/// Whole sessions over real links: the loaded library, the reference host's loop, and the simulated controller, which
/// has its own idea of the protocol. Nothing waits for time to pass: a session goes on until what is awaited is there.
#include "communication.h"
#include "driver.h"
#include "simulator/request.h"
#include "support/plant.h"
#include "support/wire.h"
#include "writeTracker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <variant>
#include <vector>

namespace {

/// Enough for every session here, and few enough to end a stuck one soon.
const int MOST_STEPS = 3000;

const int RETRIES = 3;
const std::chrono::milliseconds TIMEOUT(60);

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

/// The host: polls, writes, and keeps account of what it was told.
class Panel : private vshost::TransactionListener {
public:
    /// A short time-out is for sessions with faults; others must not lose a reply to a busy machine.
    explicit Panel(const vshost::LinkAddress &address, std::chrono::milliseconds timeout = std::chrono::seconds(5))
        : driver(TANEK_VS_LIBRARY, {1, false, RETRIES, 8}),
          m_keeper(address, m_stop, [this](const std::string &notice) { notices.push_back(notice); }),
          m_communication(driver.calls(), m_keeper, m_stop, {timeout, {}, {}}, *this)
    {
        driver.onChange([this](int station, const QString &regName, int number) {
            ++reports[placeOf(station, regName.toStdString(), number)];
            if (whenChanged)
                whenChanged(station, regName.toStdString(), number);
        });
    }

    void polls(const std::vector<Wanted> &wanted)
    {
        QList<KEY_ADDRESS> keys;
        for (const Wanted &one : wanted) {
            KEY_ADDRESS key;
            key.station = one.station;
            key.regName = QString::fromStdString(one.regName);
            key.address = one.address;
            key.count = one.count;
            keys.append(key);
        }
        m_blocks = driver.calls().addrMerge(&keys);
    }

    void writes(const Wanted &place, const Bytes &values, std::uintptr_t number = 0)
    {
        driver.calls().setData(place.station, QString::fromStdString(place.regName), place.address, place.count,
                               values.data(), number);
    }

    Bytes shows(const Wanted &place)
    {
        Bytes values(static_cast<std::size_t>(place.count) * 2);
        driver.calls().getData(place.station, QString::fromStdString(place.regName), place.address, place.count,
                               values.data());
        return values;
    }
    int word(int address, int station = 1)
    {
        const Bytes bytes = shows({"D", address, 1, station});
        return bytes[0] + 256 * bytes[1];
    }

    /// Runs the loop until that holds; false when it does not come to hold.
    template <typename Condition> bool runsUntil(Condition condition)
    {
        for (int i = 0; i < MOST_STEPS; ++i) {
            if (condition())
                return true;
            m_communication.step();
        }
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
    std::function<void(int, const std::string &, int)> whenChanged;
    std::map<std::string, int> reports;
    std::vector<std::string> notices;
    std::map<std::uintptr_t, bool> writeEnds; ///< by number: confirmed or given up
    std::map<int, int> readsOf;               ///< accepted reads, by station
    std::map<int, int> giveUpsOf;
    std::map<std::string, int> endsOf; ///< transactions that have ended, by place
    std::vector<FRAME_PRO> frames;
    vshost::WriteTracker *tracker = nullptr; ///< told of everything when there is one

private:
    void beforeChoice() override
    {
        if (tracker)
            tracker->beforeChoice();
    }
    void nothingToSend() override
    {
        if (tracker)
            tracker->nothingToSend();
    }
    void frameChosen(const FRAME_PRO &frame) override
    {
        frames.push_back(frame);
        if (tracker)
            tracker->frameChosen(frame);
    }
    void countEnd(const FRAME_PRO &frame)
    {
        ++endsOf[placeOf(frame.variable.station, frame.variable.regName.toStdString(), frame.variable.address)];
    }
    void accepted(const FRAME_PRO &frame) override
    {
        countEnd(frame);
        if (tracker)
            tracker->accepted(frame);
        if (vshost::isWrite(frame)) {
            writeEnds[frame.variable.hostContext] = true;
        } else {
            m_blocksRead.insert(
                placeOf(frame.variable.station, frame.variable.regName.toStdString(), frame.variable.address));
            ++readsOf[frame.variable.station];
        }
    }
    void givenUp(const FRAME_PRO &frame, const vshost::Failure &) override
    {
        countEnd(frame);
        ++giveUpsOf[frame.variable.station];
        if (vshost::isWrite(frame))
            writeEnds[frame.variable.hostContext] = false;
    }

    vshost::StopSignal m_stop;
    vshost::LinkKeeper m_keeper;
    vshost::Communication m_communication;
    int m_blocks = 0;
    std::set<std::string> m_blocksRead;
};

/// Every kind, with the first address and how many host counts and bytes its values take.
struct Kind {
    const char *name;
    int first;
    std::size_t bytesPerUnit;
};

const Kind KINDS[] = {{"32C", 200, 4},     {"C", 16, 2},      {"T", 16, 2},         {"R", 16, 2},
                      {"SD", 9016, 2},     {"D", 16, 2},      {"X", 16, 1},         {"Y", 16, 1},
                      {"M", 16, 1},        {"S", 16, 1},      {"SM", 9016, 1},      {"D_bit", 3200, 1},
                      {"R_bit", 3200, 1},  {"T_Coil", 16, 1}, {"T_Contact", 16, 1}, {"C_Coil", 16, 1},
                      {"C_Contact", 16, 1}};

int hostCount(const Kind &kind, int units) { return kind.bytesPerUnit == 4 ? 2 * units : units; }

/// Two unlike values of the kind, one with a DLE in it.
Bytes twoValues(const Kind &kind)
{
    if (kind.bytesPerUnit == 1)
        return {1, 0};
    return kind.bytesPerUnit == 2 ? hex("10 03 ff 10") : hex("10 03 10 10 01 02 03 84");
}

Bytes memoryOf(const Plant &plant, const Kind &kind, int units)
{
    Bytes bytes;
    for (int i = 0; i < units; ++i) {
        const auto value = plant.controller.read(1, kind.name, static_cast<std::uint32_t>(kind.first + i)).value();
        for (std::size_t k = 0; k < kind.bytesPerUnit; ++k)
            bytes.push_back(static_cast<unsigned char>(value >> (8 * k)));
    }
    return bytes;
}

class OverEveryLink : public ::testing::TestWithParam<bool> {};

std::string nameOfLink(const ::testing::TestParamInfo<bool> &info) { return info.param ? "serial" : "tcp"; }

TEST_P(OverEveryLink, valuesOfEveryKindAreReadAndWritten)
{
    Plant plant(GetParam(), {1});
    Panel panel(plant.address());
    std::vector<Wanted> wanted;
    for (const Kind &kind : KINDS) {
        wanted.push_back({kind.name, kind.first, hostCount(kind, 2)});
        plant.controller.write(1, kind.name, static_cast<std::uint32_t>(kind.first) + 1, 1);
    }
    panel.polls(wanted);
    ASSERT_TRUE(panel.pollsAllAnew());
    for (const Kind &kind : KINDS) {
        SCOPED_TRACE(kind.name);
        Bytes shown = panel.shows({kind.name, kind.first, hostCount(kind, 2)});
        shown.resize(2 * kind.bytesPerUnit);
        EXPECT_EQ(shown, memoryOf(plant, kind, 2));
        EXPECT_EQ(panel.reports[placeOf(1, kind.name, kind.first + 1)], 1);
        EXPECT_EQ(panel.reports[placeOf(1, kind.name, kind.first)], 0);
    }

    // Bits go one by one: a byte that stands for one bit alone is what the controller can tell.
    std::uintptr_t number = 0;
    for (const Kind &kind : KINDS) {
        const Bytes values = twoValues(kind);
        const auto size = static_cast<long>(kind.bytesPerUnit);
        for (int i = 0; i < 2; ++i)
            panel.writes({kind.name, kind.first + i, hostCount(kind, 1)},
                         Bytes(values.begin() + i * size, values.begin() + (i + 1) * size), ++number);
    }
    ASSERT_TRUE(panel.runsUntil([&] { return panel.writeEnds.size() == number; }));
    ASSERT_TRUE(panel.pollsAllAnew());
    for (const Kind &kind : KINDS) {
        SCOPED_TRACE(kind.name);
        EXPECT_EQ(memoryOf(plant, kind, 2), twoValues(kind));
        Bytes shown = panel.shows({kind.name, kind.first, hostCount(kind, 2)});
        shown.resize(2 * kind.bytesPerUnit);
        EXPECT_EQ(shown, twoValues(kind));
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
        _RCP_VAR_PRO item;
        item.instanceId = 1;
        item.station = place.station;
        item.regName = QString::fromStdString(place.regName);
        item.address = place.address;
        item.count = place.count;
        item.bufferOffset = offset;
        offset += place.count;
        items.append(item);
    }
    panel.driver.planRecipe(items, static_cast<std::size_t>(offset));
    std::vector<quint16> &buffer = panel.driver.recipeBuffer();
    for (std::size_t i = 0; i < buffer.size(); ++i)
        buffer[i] = static_cast<quint16>(0x1010 + i);
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

TEST(EndToEnd, theControllerReadsEveryFrameAsItWasMeant)
{
    Plant plant(false, {1});
    Panel panel(plant.address());
    std::vector<Wanted> wanted;
    for (const Kind &kind : KINDS)
        wanted.push_back({kind.name, kind.first, hostCount(kind, 3)});
    panel.polls(wanted);
    for (const Kind &kind : KINDS)
        panel.writes({kind.name, kind.first, hostCount(kind, 1)}, twoValues(kind));
    ASSERT_TRUE(panel.pollsAllAnew());

    for (const FRAME_PRO &frame : panel.frames) {
        const VARIABLE &meant = frame.variable;
        const std::string name = meant.regName.toStdString();
        SCOPED_TRACE(name + " " + std::to_string(meant.address));
        const vssim::Bytes bytes(frame.frame, frame.frame + frame.frameLength);
        const vssim::Decoded decoded = vssim::decode(vssim::FrameReader().feed(bytes).at(0));
        const auto *request = std::get_if<vssim::Request>(&decoded);
        ASSERT_TRUE(request);
        EXPECT_EQ(request->station, meant.station);
        EXPECT_EQ(request->kind->name, name);
        EXPECT_EQ(request->number, static_cast<std::uint32_t>(meant.address));
        if (request->command == vssim::Command::writeBits)
            EXPECT_EQ(request->count, static_cast<std::uint32_t>((meant.count + 7) / 8));
        else
            EXPECT_EQ(request->count, static_cast<std::uint32_t>(meant.count));
        if (request->command == vssim::Command::writeUnits)
            EXPECT_EQ(request->data, Bytes(meant.data, meant.data + request->data.size()));
    }
    EXPECT_GE(panel.frames.size(), 2 * std::size(KINDS) - 2);
}

/// A session under a fault: words, bits, bits in words and counters are polled and written, a condition is read, and a
/// recipe is carried up.
class UnderEveryFault : public ::testing::TestWithParam<std::tuple<const char *, bool>> {
protected:
    struct Value {
        const Kind *kind;
        int address;

        Wanted wanted() const { return {kind->name, address, hostCount(*kind, 1)}; }
        std::string place() const { return placeOf(1, kind->name, address); }
    };

    UnderEveryFault() : plant(std::get<1>(GetParam()), {1}), panel(plant.address(), TIMEOUT)
    {
        const struct {
            const char *name;
            int first, number;
        } runs[] = {{"D", 100, 40}, {"M", 16, 20}, {"32C", 200, 4}, {"D_bit", 3200, 8}};
        std::vector<Wanted> polled;
        for (const auto &run : runs) {
            const Kind *kind = std::find_if(std::begin(KINDS), std::end(KINDS),
                                            [&](const Kind &one) { return std::string(one.name) == run.name; });
            polled.push_back({run.name, run.first, hostCount(*kind, run.number)});
            for (int i = 0; i < run.number; ++i)
                values.push_back({kind, run.first + i});
        }
        for (const Value &value : values) {
            const std::uint32_t mask = value.kind->bytesPerUnit == 1 ? 1 : 0xffff;
            plant.controller.write(1, value.kind->name, static_cast<std::uint32_t>(value.address),
                                   static_cast<std::uint32_t>(value.address * 401) & mask);
            allowed[value.place()] = {Bytes(value.kind->bytesPerUnit, 0), held(value)};
        }
        panel.whenChanged = [this](int station, const std::string &regName, int number) {
            const auto known = allowed.find(placeOf(station, regName, number));
            if (known == allowed.end())
                return; // a recipe word, or the end of a condition read
            const Bytes now = shown(*std::find_if(values.begin(), values.end(),
                                                  [&](const Value &value) { return value.place() == known->first; }));
            EXPECT_EQ(known->second.count(now), 1U) << known->first << " shows " << hexText(now);
        };
        _RCP_VAR_PRO item;
        item.instanceId = 1;
        item.station = 1;
        item.regName = QString::fromLatin1("D");
        item.address = 100;
        item.count = 10;
        panel.driver.planRecipe(QVector<_RCP_VAR_PRO>() << item, 10);
        panel.polls(polled);
    }

    Bytes held(const Value &value) const
    {
        const Kind at = {value.kind->name, value.address, value.kind->bytesPerUnit};
        return memoryOf(plant, at, 1);
    }
    Bytes shown(const Value &value)
    {
        Bytes bytes = panel.shows(value.wanted());
        bytes.resize(value.kind->bytesPerUnit);
        return bytes;
    }

    /// Writes one value of each kind, and runs until each write has ended.
    void writesRound(int round)
    {
        for (const std::size_t first : {0U, 40U, 60U, 64U}) {
            const Value &value = values[first + static_cast<std::size_t>(round)];
            Bytes bytes = held(value);
            bytes[0] = value.kind->bytesPerUnit == 1 ? bytes[0] ^ 1 : static_cast<unsigned char>(0x10 + round);
            allowed[value.place()].insert(bytes);
            written[++lastWrite] = {value, bytes};
            panel.writes(value.wanted(), bytes, lastWrite);
        }
        EXPECT_TRUE(panel.runsUntil([&] { return panel.writeEnds.size() == lastWrite; }));
    }

    void readsCondition()
    {
        KEY_ADDRESS wanted;
        wanted.station = 1;
        wanted.regName = QString::fromLatin1("R");
        wanted.address = 7;
        wanted.count = 1;
        panel.driver.calls().addConditionRead(&wanted, 0);
        EXPECT_TRUE(panel.runsUntil([&] { return panel.endsOf[placeOf(1, "R", 7)] == 1; }));
    }

    /// @return the words that came up: the first ten that are polled.
    std::vector<quint16> uploads()
    {
        std::vector<quint16> &buffer = panel.driver.recipeBuffer();
        std::fill(buffer.begin(), buffer.end(), quint16(0));
        EXPECT_TRUE(panel.transfers(vshost::RecipeDirection::Upload));
        return buffer;
    }

    Plant plant;
    Panel panel;
    std::vector<Value> values;
    /// What each value may show: zeros, what the controller held at first, and what the host wrote.
    std::map<std::string, std::set<Bytes>> allowed;
    std::map<std::uintptr_t, std::pair<Value, Bytes>> written;
    std::uintptr_t lastWrite = 0;
};

TEST_P(UnderEveryFault, noWrongValueIsShownAndEveryWriteEnds)
{
    plant.controller.addFault(std::get<0>(GetParam()));
    for (int round = 0; round < 4; ++round)
        writesRound(round);
    readsCondition();
    const std::vector<quint16> uploaded = uploads();
    plant.controller.clearFaults();
    const std::vector<quint16> uploadedWell = uploads();
    EXPECT_TRUE(uploaded == uploadedWell || uploaded == std::vector<quint16>(10)) << "all of it or none";
    ASSERT_TRUE(panel.pollsAllAnew());
    ASSERT_TRUE(panel.pollsAllAnew());

    for (const Value &value : values)
        EXPECT_EQ(shown(value), held(value)) << value.place();
    for (const auto &write : written) {
        if (panel.writeEnds.at(write.first))
            EXPECT_EQ(held(write.second.first), write.second.second) << write.second.first.place() << " was confirmed";
    }
    const auto met = plant.controller.counts().faults;
    EXPECT_GT(std::accumulate(met.begin(), met.end(), std::uint64_t{0}), 0U) << "the fault was never met";
}

std::string nameOfFault(const ::testing::TestParamInfo<UnderEveryFault::ParamType> &info)
{
    std::string name = std::string(std::get<0>(info.param)) + (std::get<1>(info.param) ? "_serial" : "_tcp");
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Faults, UnderEveryFault,
                         ::testing::Combine(::testing::Values("silence:p=0.3", "silence:n=7", "error:p=0.4",
                                                              "error:n=7", "drop:p=0.4", "flip:p=0.5", "truncate:p=0.4",
                                                              "overlong:p=0.4", "garbage:p=0.5", "wrong-station:p=0.4",
                                                              "delay:ms=5,p=0.5", "delay:ms=80,n=2"),
                                            ::testing::Bool()),
                         nameOfFault);

TEST(EndToEnd, aSilentStationDelaysTheOthersByItsRetriesAlone)
{
    Plant plant(false, {1, 2, 3});
    plant.controller.addFault("silence@2");
    Panel panel(plant.address(), TIMEOUT);
    const int silentBlocks = 5;
    panel.polls({{"D", 0, 1, 1},
                 {"D", 0, 1, 2},
                 {"D", 100, 1, 2},
                 {"D", 200, 1, 2},
                 {"D", 300, 1, 2},
                 {"D", 400, 1, 2},
                 {"D", 0, 1, 3}});
    auto shortestRound = std::chrono::steady_clock::duration::max();
    for (int round = 1; round <= 3; ++round) {
        const auto start = std::chrono::steady_clock::now();
        ASSERT_TRUE(panel.runsUntil([&] { return panel.readsOf[3] == round; }));
        shortestRound = std::min(shortestRound, std::chrono::steady_clock::now() - start);
    }
    EXPECT_GE(panel.readsOf[1], 3);
    EXPECT_EQ(panel.readsOf[2], 0);
    EXPECT_EQ(panel.giveUpsOf[2], 3 * silentBlocks);
    EXPECT_EQ(plant.controller.counts().faults[static_cast<std::size_t>(vssim::FaultKind::silence)],
              3U * silentBlocks * RETRIES);
    EXPECT_LT(shortestRound, silentBlocks * RETRIES * TIMEOUT + (silentBlocks - 1) * TIMEOUT)
        << "a wait for each block";
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
    std::map<vshost::WriteOutcome, int> ends;
    vshost::WriteTracker tracker(panel.driver.calls(), [&](const vshost::WriteEnd &end) { ++ends[end.outcome]; });
    panel.tracker = &tracker;
    std::atomic<bool> isPosted{false};
    std::thread poster([&] {
        vshost::Value value;
        value.place.regName = QString::fromLatin1("D");
        for (int i = 1; i <= number; ++i) {
            value.place.address = i % places;
            tracker.post(value, {static_cast<unsigned char>(i), static_cast<unsigned char>(i >> 8)}, "");
        }
        isPosted = true;
    });
    for (int i = 0; i < 10 && (!isPosted || tracker.anyOutstanding()); ++i)
        panel.runsUntil([&] { return isPosted && !tracker.anyOutstanding(); });
    poster.join();
    EXPECT_EQ(ends[vshost::WriteOutcome::Confirmed] + ends[vshost::WriteOutcome::Replaced], number);
    EXPECT_GE(ends[vshost::WriteOutcome::Confirmed], places);
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
