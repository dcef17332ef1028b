#include "exchange.h"

#include <algorithm>

namespace vshost {

namespace {

/// How long a wait for bytes may keep vshost from ending.
constexpr Milliseconds STOP_CHECK{50};

} // namespace

Exchange::Exchange(Milliseconds timeout, const StopSignal &stop, TraceBytes trace)
    : m_timeout(timeout), m_stop(stop), m_trace(std::move(trace))
{
}

Reply Exchange::run(Link &link, const Request &request)
{
    awaitOwedReplies(link, request);
    discardWaiting(link);
    const Clock::time_point sent = Clock::now();
    send(link, request);
    if (!request.expectsReply)
        return Reply();
    Reply reply = collect(link, request);
    reply.roundTrip = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - sent);
    return reply;
}

void Exchange::send(Link &link, const Request &request)
{
    if (m_trace)
        m_trace(true, request.bytes);
    link.send(request.bytes.data(), request.bytes.size());
    if (request.expectsReply)
        noteRequest(request);
}

void Exchange::noteRequest(const Request &request)
{
    Owed &owed = m_owed[request.station];
    if (owed.request != request.bytes) {
        if (owed.late.mayCome()) {
            owed.late.replies += owed.lateToEarlierRequests.mayCome() ? owed.lateToEarlierRequests.replies : 0;
            owed.lateToEarlierRequests = owed.late;
        }
        owed.request = request.bytes;
        owed.hasAnswered = false;
        owed.late.replies = 0;
    }
    ++owed.late.replies;
    owed.late.until = Clock::now() + 2 * m_timeout;
}

/// Accounts for a reply that has come.
/// @return false when it is passed over as a late answer to an earlier request.
bool Exchange::isAnswer(std::uint8_t station)
{
    Owed &owed = m_owed[station];
    owed.hasAnswered = true;
    if (owed.lateToEarlierRequests.mayCome()) {
        --owed.lateToEarlierRequests.replies;
        return false;
    }
    --owed.late.replies;
    return true;
}

Reply Exchange::collect(Link &link, const Request &request)
{
    const Clock::time_point deadline = Clock::now() + m_timeout;
    m_collector.reset();
    while (Clock::now() < deadline) {
        if (m_stop.requested())
            return {ReplyEnd::Interrupted, {}, {}};
        Bytes bytes = receive(link, deadline);
        while (const std::size_t taken = takeReply(bytes, request.station)) {
            if (isAnswer(request.station))
                return {ReplyEnd::Complete, m_collector.bytes(), {}};
            m_collector.reset();
            bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
        }
    }
    return {ReplyEnd::TimedOut, m_collector.bytes(), {}};
}

/// Goes through bytes reply by reply up to the first one of that station.
/// @return how many bytes that were; 0 when all were taken and its reply is not complete.
std::size_t Exchange::takeReply(const Bytes &bytes, std::uint8_t station)
{
    std::size_t taken = 0;
    while (taken < bytes.size()) {
        taken += m_collector.take(bytes.data() + taken, bytes.size() - taken);
        if (m_collector.complete() && m_collector.isFrom(station))
            return taken;
        if (m_collector.complete())
            m_collector.reset();
    }
    return 0;
}

void Exchange::awaitOwedReplies(Link &link, const Request &request)
{
    const auto found = m_owed.find(request.station);
    if (found == m_owed.end() || found->second.request == request.bytes || !found->second.hasAnswered)
        return;
    Late &late = found->second.late;
    m_collector.reset();
    while (late.mayCome() && !m_stop.requested()) {
        Bytes bytes = receive(link, late.until);
        while (const std::size_t taken = takeReply(bytes, request.station)) {
            --late.replies;
            m_collector.reset();
            bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
        }
    }
}

void Exchange::discardWaiting(Link &link)
{
    while (!receive(link, Clock::now()).empty()) {
    }
}

Bytes Exchange::receive(Link &link, Clock::time_point deadline)
{
    Bytes bytes = link.receive(std::min(timeUntil(deadline), STOP_CHECK));
    if (m_trace && !bytes.empty())
        m_trace(false, bytes);
    return bytes;
}

} // namespace vshost
