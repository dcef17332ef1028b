/// Any sequence of the calls of a session with any arguments. After each call the driver's state is sound, and a screen
/// that is refreshed by reports alone is current; after all of them the driver still serves a host that behaves.
#include "fuzzSupport.h"
#include "model/protocol.h"
#include "simulator/frameReader.h"
#include "support/screen.h"

namespace {

const int MOST_UNITS_PER_BLOCK = 32;
const int MOST_QUEUED = 513;

/// What the screen shows.
const std::vector<Place> PLACES = {{"D", 0},     {"D", 1},      {"D", 64}, {"D_bit", 0}, {"D_bit", 1},
                                   {"D_bit", 5}, {"D_bit", 17}, {"M", 0},  {"M", 7},     {"32C", 3}};

/// A host that does whatever the input says.
class AnyHost : private Host {
public:
    explicit AnyHost(FuzzedDataProvider &any) : Host(linkedCalls()), m_any(any)
    {
        notesReports = false;
        freeInCallback = {&driver.mutex, &driver.dataAreaMutex, &hostMutex};
        whenReported = [this](const Report &report) { isTold(report); };
        m_screen.polls(PLACES);
    }

    void callsAnything();
    void findsTheStateSound();
    void isServedStill();

private:
    /// Refreshes the screen, and now and then writes something, as a host may.
    void isTold(const Report &report)
    {
        m_screen.refresh(report);
        if (!m_writesFromReports || ++m_reports % 3 != 0)
            return;
        m_writesFromReports = false;
        writes(m_reports % 2 ? "D" : "D_bit", report.address % 64, 1, words({static_cast<int>(m_reports)}));
        m_writesFromReports = true;
    }

    int station() { return m_any.ConsumeBool() ? 1 : m_any.PickValueInArray({2, 16, 255, 0, -1, 256, 1 << 30}); }
    KEY_ADDRESS anyKey()
    {
        KEY_ADDRESS wanted = key(anyRegName(m_any), anyNumber(m_any), anyNumber(m_any), station());
        wanted.unitCode = m_any.ConsumeIntegralInRange(-2, 1);
        return wanted;
    }
    Bytes goodReply();
    void reconfigures();
    void pollsAnything();
    void plansAnyRecipe();
    void postsAnything();
    void readsAnything();
    void exchangesAnything();
    void exchangesWell();

    FuzzedDataProvider &m_any;
    Memory m_memory;
    Screen m_screen{*this};
    bool m_writesFromReports = true;
    unsigned m_reports = 0;
};

void AnyHost::reconfigures()
{
    const int gap = m_any.PickValueInArray({16, 1, 2, 7, 200, 0, -1, 600, 1 << 29});
    if (m_any.ConsumeIntegralInRange(0, 3) == 0)
        Host::configures(m_any.ConsumeRandomLengthString(20).c_str());
    else
        Host::configures(m_any.ConsumeIntegralInRange(-1, 3), gap, m_any.ConsumeIntegralInRange(0, 2));
    if (m_any.ConsumeIntegralInRange(0, 7) == 0)
        driver.recipeBuffer = nullptr;
    m_screen.polls(PLACES);
}

void AnyHost::pollsAnything()
{
    std::vector<KEY_ADDRESS> keys;
    for (int i = m_any.ConsumeIntegralInRange(0, 6); i > 0; --i) {
        keys.push_back(anyKey());
        // A long key over a whole kind is as good as ten, and slow.
        keys.back().count = keys.back().count > 3000 ? keys.back().count % 3000 : keys.back().count;
    }
    m_screen.polls(PLACES, keys);
}

void AnyHost::plansAnyRecipe()
{
    std::vector<_RCP_VAR_PRO> items;
    int offset = 0;
    for (int i = m_any.ConsumeIntegralInRange(0, 5); i > 0 && offset < 3000; --i) {
        const KEY_ADDRESS wanted = anyKey();
        const int count = wanted.count > 300 && wanted.count <= 416000 ? wanted.count % 90 : wanted.count;
        items.push_back(recipeItem(plain(wanted.regName), wanted.address, count,
                                   m_any.ConsumeIntegralInRange(0, 15) == 0 ? -offset : offset, wanted.station));
        items.back().instanceId += m_any.ConsumeIntegralInRange(0, 7) == 0 ? 1 : 0;
        offset += count > 0 && count <= 300 ? count : 0;
    }
    plansRecipe(items);
}

void AnyHost::postsAnything()
{
    const KEY_ADDRESS place = anyKey();
    // Now and then more writes than the queue holds, short ones.
    const int number = m_any.ConsumeIntegralInRange(0, 500) == 0 ? 520 : 1;
    const int longest = number == 1 ? 1100 : 8;
    const int count = place.count > longest ? place.count % longest : place.count;
    const Bytes values(static_cast<std::size_t>(std::max(count, 0)) * 2 + 1, m_any.ConsumeIntegral<quint8>() & 17);
    for (int i = number; i > 0; --i)
        writes(plain(place.regName), i == 1 ? place.address : i, count, values, place.station);
}

void AnyHost::readsAnything()
{
    const KEY_ADDRESS place = anyKey();
    reads(plain(place.regName), place.address, place.count > 5000 ? place.count % 5000 : place.count, place.station);
}

Bytes AnyHost::goodReply()
{
    if (frame.replyLength == 0)
        return {};
    return reply(Bytes(static_cast<std::size_t>(frame.replyLength - 10), m_any.ConsumeIntegral<quint8>()));
}

void AnyHost::exchangesAnything()
{
    const bool hasFrame = sends() != "nothing";
    Bytes answer;
    if (hasFrame && m_any.ConsumeBool())
        answer = goodReply();
    else if (m_any.ConsumeBool())
        answer = m_any.ConsumeBytes<quint8>(m_any.ConsumeIntegralInRange<std::size_t>(0, 40));
    const int result = receives(answer);
    require(hasFrame ? result == 1 || result == 2 || result == 8 : result == 0, "a known result");
    require(hasFrame || description().empty(), "nothing in flight, nothing described");
}

void AnyHost::callsAnything()
{
    switch (m_any.ConsumeIntegralInRange(0, 13)) {
    case 0:
        return reconfigures();
    case 1:
        return pollsAnything();
    case 2:
        return plansAnyRecipe();
    case 3:
        return asksForCondition(anyKey());
    case 4:
    case 5:
        return postsAnything();
    case 6:
        return readsAnything();
    case 7:
        return asks(m_any.ConsumeBool() ? DOWNLOAD_BYTE : UPLOAD_BYTE);
    default:
        return exchangesAnything();
    }
}

void AnyHost::findsTheStateSound()
{
    require(m_screen.stale().empty(), "the screen is current");
    require(driver.writeQueue.size() <= MOST_QUEUED && driver.conditionReads.size() <= MOST_QUEUED, "queue limits");
    require(driver.writeNumbers.size() == driver.writeQueue.size(), "a number for each write");
    require(driver.writesBeingMirrored.isEmpty() && driver.displacedWrites.isEmpty(), "every write is shown");
    require(driver.dataAreaIndex.size() == driver.dataAreas.size(), "the index has every unit");
    require(driver.recipeBlocks.size() == driver.recipeBlockFirstItem.size(), "a first item for each recipe block");
    for (const VARIABLE &block : driver.readBlocks)
        require(block.count <= MOST_UNITS_PER_BLOCK, "the longest block");
    for (const FRAME_PRO &built : driver.frameQueue) {
        require(built.frameLength > 0 && built.frameLength <= RECORD_BUFFER_SIZE, "the frame fits its buffer");
        const auto seen = vssim::FrameReader().feed(built.frame, static_cast<std::size_t>(built.frameLength));
        require(seen.size() == 1, "the request is one whole frame");
        require(seen.at(0).body.at(0) == static_cast<quint8>(built.variable.station), "for the station it names");
    }
}

void AnyHost::exchangesWell()
{
    if (sends() != "nothing")
        require(receives(m_memory.answer(frame)) == 1, "a good reply is accepted");
}

/// A host that answers all that comes has its work done within as many calls as there is work, and its screen shows
/// what the controller has.
void AnyHost::isServedStill()
{
    m_writesFromReports = false;
    const bool sendsWrites = driver.cacheOnlyWrites == 0;
    m_screen.polls(PLACES);
    const int work = static_cast<int>(2 * (driver.writeQueue.size() + driver.conditionReads.size()) +
                                      2 * driver.recipeBlocks.size() + driver.frameQueue.size() + 40);
    for (int i = 0; i < work; ++i)
        exchangesWell();
    require(driver.writeQueue.isEmpty() && driver.conditionReads.isEmpty(), "all queued work gets done");
    require(!isAsked(DOWNLOAD_BYTE) && !isAsked(UPLOAD_BYTE), "transfers end");
    require(m_screen.stale().empty(), "the screen is current at last");
    require(!sendsWrites || m_screen.wrong(m_memory).empty(), "the screen shows what the controller has");
    writes("D", 0, 1, words({4711}));
    for (int i = 0; i < 2; ++i)
        exchangesWell();
    require(!sendsWrites || m_memory.unit(1, "D", 0) == 4711, "a write goes out");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    AnyHost host(input);
    for (int i = 0; i < 120 && input.remaining_bytes() > 0; ++i) {
        host.callsAnything();
        host.findsTheStateSound();
    }
    host.isServedStill();
    return 0;
}
