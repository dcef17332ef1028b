#include "writeTracker.h"

#include <algorithm>

namespace vshost {

namespace {

/// The driver prefers writes to everything else until it has sent so many in a row.
constexpr unsigned LONGEST_BURST = 10;

bool samePlace(const Place &a, const Place &b)
{
    return a.station == b.station && a.regName == b.regName && a.address == b.address && a.count == b.count;
}

std::string wordsFor(WriteOutcome outcome, int station, const Failure &failure)
{
    switch (outcome) {
    case WriteOutcome::Confirmed:
        return "confirmed";
    case WriteOutcome::Sent:
        return "sent to all stations, which do not answer";
    case WriteOutcome::GivenUp:
        return "given up: " + describe(station, failure);
    case WriteOutcome::Replaced:
        return "replaced by a later write before it was sent";
    case WriteOutcome::Dropped:
        return "dropped by the driver: too many writes are waiting, or it fits no frame";
    case WriteOutcome::Unsent:
        return "not sent";
    case WriteOutcome::Unconfirmed:
        return "sent, but not confirmed";
    }
    return std::string();
}

} // namespace

void WriteTracker::post(const Value &value, const ValueBytes &bytes, const std::string &text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_writes.push_back({++m_lastNumber, value, text});
    m_calls.setData(value.place.station, value.place.regName, value.place.address, value.place.count, bytes.data(),
                    m_lastNumber);
}

void WriteTracker::beforeChoice()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_seenNumber = m_lastNumber;
}

/// The driver's queue is in order, and a write that replaced a waiting one has taken its place: what stands before the
/// write that now goes out, or before the one it replaced, will not come any more.
void WriteTracker::frameChosen(const FRAME_PRO &frame)
{
    m_idleAnswers = 0;
    if (!isWrite(frame)) {
        if (m_burst < LONGEST_BURST)
            queueSeenEmpty();
        m_burst = 0;
        return;
    }
    ++m_burst;
    Writes dropped;
    Writes replaced;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto chosen = find(frame.variable.hostContext);
        if (chosen == m_writes.end())
            return;
        chosen->sent = true;
        const Write write = *chosen;
        const auto isSamePlace = [&write](const Write &other) {
            return samePlace(other.value.place, write.value.place);
        };
        dropped = takeBefore(std::find_if(m_writes.begin(), m_writes.end(), isSamePlace));
        std::copy_if(m_writes.begin(), find(write.number), std::back_inserter(replaced), isSamePlace);
        m_writes.erase(std::remove_if(m_writes.begin(), find(write.number), isSamePlace), find(write.number));
    }
    end(dropped, WriteOutcome::Dropped);
    end(replaced, WriteOutcome::Replaced);
}

/// The driver pauses for one call after a full burst, and for each write that it drops, which counts in the burst:
/// only more calls without a frame than that mean that its queue is empty.
void WriteTracker::nothingToSend()
{
    ++m_idleAnswers;
    ++m_burst;
    std::size_t waiting;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        waiting = m_writes.size();
    }
    if (m_idleAnswers > waiting + 1)
        queueSeenEmpty();
}

void WriteTracker::queueSeenEmpty()
{
    Writes dropped;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        dropped = takeBefore(std::find_if(m_writes.begin(), m_writes.end(),
                                          [this](const Write &write) { return write.number > m_seenNumber; }));
    }
    end(dropped, WriteOutcome::Dropped);
}

void WriteTracker::accepted(const FRAME_PRO &frame)
{
    if (isWrite(frame))
        endOne(frame.variable.hostContext, frame.replyLength == 0 ? WriteOutcome::Sent : WriteOutcome::Confirmed);
}

void WriteTracker::givenUp(const FRAME_PRO &frame, const Failure &failure)
{
    if (isWrite(frame))
        endOne(frame.variable.hostContext, WriteOutcome::GivenUp, failure);
}

void WriteTracker::finish()
{
    Writes left;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        left.swap(m_writes);
    }
    for (const Write &write : left)
        end({write}, write.sent ? WriteOutcome::Unconfirmed : WriteOutcome::Unsent);
}

bool WriteTracker::anyOutstanding() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return !m_writes.empty();
}

bool WriteTracker::isOutstanding(const Place &place) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(m_writes.begin(), m_writes.end(),
                       [&place](const Write &write) { return samePlace(write.value.place, place); });
}

WriteTracker::Writes::iterator WriteTracker::find(Number number)
{
    return std::find_if(
        m_writes.begin(), m_writes.end(), [number](const Write &write) { return write.number == number; });
}

WriteTracker::Writes WriteTracker::takeBefore(const Writes::const_iterator &end)
{
    Writes taken(m_writes.cbegin(), end);
    m_writes.erase(m_writes.cbegin(), end);
    return taken;
}

void WriteTracker::endOne(Number number, WriteOutcome outcome, const Failure &failure)
{
    Writes ended;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = find(number);
        if (found == m_writes.end())
            return;
        ended.push_back(*found);
        m_writes.erase(found);
    }
    end(ended, outcome, failure);
}

void WriteTracker::end(const Writes &writes, WriteOutcome outcome, const Failure &failure) const
{
    for (const Write &write : writes)
        m_handler({write.value, write.text, outcome, wordsFor(outcome, write.value.place.station, failure), failure});
}

} // namespace vshost
