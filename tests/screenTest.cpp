/// A screen that is refreshed by reports alone shows what intf_getData gives whenever a call has returned; and when all
/// writes have ended and every block was polled, both show what the controller has. Whatever came before.
#include "support/screen.h"
#include "support/driverTest.h"

#include <rapidcheck/gtest.h>

namespace {

class ScreenTest : public DriverTest {
protected:
    void SetUp() override
    {
        whenReported = [this](const Report &report) {
            screen.refresh(report);
            if (repost)
                repost(report);
        };
    }

    bool isInFlight() const { return !driver.frameQueue.isEmpty(); }

    /// The reply arrives.
    int isAnswered()
    {
        if (!isInFlight())
            return 0;
        sends();
        return receives(memory.answer(frame));
    }

    /// The request is lost, or its reply is.
    int isLost(bool isCarriedOut)
    {
        if (!isInFlight())
            return 0;
        sends();
        if (isCarriedOut)
            memory.answer(frame);
        return receives({});
    }

    /// Answers everything until nothing waits and every block was read once.
    void comesToRest()
    {
        repost = nullptr;
        for (int i = 0; i < 3000 && (isInFlight() || !driver.writeQueue.isEmpty()); ++i)
            exchangesWithController();
        ASSERT_TRUE(driver.writeQueue.isEmpty());
        const int reads = static_cast<int>(2 * (driver.readBlocks.size() + driver.conditionReads.size()));
        for (int i = 0; i < reads; ++i)
            exchangesWithController();
    }

    void exchangesWithController()
    {
        if (sends() != "nothing")
            ASSERT_EQ(receives(memory.answer(frame)), 1);
    }

    /// One of many things that may happen, with what it is about chosen by the other numbers.
    void lets(int event, int place, int value)
    {
        const Place &at = PLACES[static_cast<std::size_t>(place) % PLACES.size()];
        const Kind &kind = kindNamed(at.regName);
        const auto bits = static_cast<unsigned char>(value);
        switch (event) {
        case 0:
        case 1:
        case 2:
            return writes(at.regName, at.address, kind.hostCount(), {bits, 0, 0, bits}, at.station);
        case 3:
            return writes("D_bit", 1600 + place % 3, 2 + value % 40, Bytes(42, bits));
        case 4:
            return writes("D", 99, 2 + value % 3, Bytes(8, bits));
        case 5:
            memory.unit(at.station, kind.unitName, kind.isBitInWord() ? at.address / 16 : at.address) ^= bits & 1U;
            return;
        case 6:
            return asksForCondition(key(at.regName, at.address, kind.hostCount(), at.station));
        case 7: // a full queue, and more
            for (int i = 0; i < 515; ++i)
                writes("D", 200 + i, 1, words({value}));
            return;
        case 8:
            return screen.polls(PLACES);
        case 9:
            isLost(value % 2 == 0);
            return;
        case 10:
            if (isInFlight())
                receives(refusal(7));
            return;
        case 11:
            sends();
            return;
        default:
            isAnswered();
        }
    }

    static const std::vector<Place> PLACES;

    Memory memory;
    Screen screen = Screen(*this);
    std::function<void(const Report &)> repost;
};

const std::vector<Place> ScreenTest::PLACES = {{"D", 100},      {"D_bit", 1600}, {"D_bit", 1601},
                                               {"D_bit", 1602}, {"D_bit", 1616}, {"D", 101},
                                               {"M", 5},        {"32C", 200},    {"D", 7, 2}};

struct Happening {
    int event, place, value;
};

void showValue(const Happening &happening, std::ostream &out)
{
    out << happening.event << "/" << happening.place << "/" << happening.value;
}

rc::Gen<Happening> happenings()
{
    return rc::gen::construct<Happening>(
        rc::gen::oneOf(rc::gen::inRange(0, 16), rc::gen::inRange(0, 3), rc::gen::inRange(9, 14)),
        rc::gen::oneOf(rc::gen::inRange(0, 9), rc::gen::inRange(0, 3)), rc::gen::inRange(0, 256));
}

RC_GTEST_FIXTURE_PROP(ScreenTest, isRightInEverySession, ())
{
    SetUp();
    configures(*rc::gen::inRange(1, 4), *rc::gen::element(16, 3, 1));
    screen.polls(PLACES);
    const auto session = *rc::gen::container<std::vector<Happening>>(happenings());
    const int reposts = *rc::gen::inRange(0, 5);
    int reported = 0;
    repost = [&](const Report &report) {
        if (reposts == 0 || ++reported % (4 * reposts) != 0)
            return;
        const std::function<void(const Report &)> outer = std::exchange(repost, nullptr);
        lets(report.address % 5, reported, reported);
        repost = outer;
    };
    for (const Happening &happening : session) {
        lets(happening.event, happening.place, happening.value);
        RC_ASSERT(screen.stale() == "");
    }
    comesToRest();
    RC_ASSERT(screen.stale() + screen.wrong(memory) == "");
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        const _DATA_ &area = driver.dataAreas.at(i);
        RC_ASSERT(area.writePending + area.pendingBitWrites + area.bitRequests == 0U);
    }
    RC_ASSERT(driver.writesBeingMirrored.isEmpty() && driver.displacedWrites.isEmpty());
    reports();
}

/// Every order of five of these events, over one word and two of its bits.
TEST_F(ScreenTest, isRightInEverySessionOfFiveEvents)
{
    const std::vector<std::pair<const char *, std::function<void()>>> events = {
        {"post 5", [this] { writes("D", 100, 1, words({5})); }},
        {"post 2", [this] { writes("D", 100, 1, words({2})); }},
        {"bit 0 on", [this] { writes("D_bit", 1600, 1, {1}); }},
        {"bit 0 off", [this] { writes("D_bit", 1600, 1, {0}); }},
        {"bit 1 on", [this] { writes("D_bit", 1601, 1, {1}); }},
        {"two bits",
         [this] {
             writes("D_bit", 1600, 2, {1, 0});
         }},
        {"the controller changes", [this] { memory.unit(1, "D", 100) ^= 1; }},
        {"sent", [this] { sends(); }},
        {"answered", [this] { isAnswered(); }},
        {"request lost", [this] { isLost(false); }},
        {"reply lost", [this] { isLost(true); }},
    };
    const std::size_t length = 5;
    std::size_t sessions = 1;
    for (std::size_t i = 0; i < length; ++i)
        sessions *= events.size();
    for (std::size_t session = 0; session < sessions; ++session) {
        configures(1, 16);
        memory = Memory();
        screen.polls({{"D", 100}, {"D_bit", 1600}, {"D_bit", 1601}, {"D_bit", 1602}});
        std::string story;
        std::size_t rest = session;
        for (std::size_t i = 0; i < length; ++i, rest /= events.size()) {
            const auto &event = events[rest % events.size()];
            story += std::string(event.first) + ", ";
            event.second();
            ASSERT_EQ(screen.stale(), "") << story;
        }
        comesToRest();
        ASSERT_EQ(screen.stale() + screen.wrong(memory), "") << story;
        ASSERT_EQ(unit("D", 100).pendingBitWrites + unit("D", 100).bitRequests + unit("D", 100).writePending, 0U)
            << story;
        reports();
    }
    std::printf("%zu sessions\n", sessions);
}

} // namespace
