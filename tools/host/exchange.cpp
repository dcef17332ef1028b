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
    if (!request.expectsReply) {
        return Reply();
    }
    Reply reply = collect(link, request);
    reply.roundTrip = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - sent);
    return reply;
}

void Exchange::send(Link &link, const Request &request)
{
    if (m_trace) {
        m_trace(true, request.bytes);
    }
    link.send(request.bytes.data(), request.bytes.size());
    if (!request.expectsReply) {
        return;
    }
    Owed &owed = m_owed[request.station];
    owed.replies = owed.request == request.bytes ? owed.replies + 1 : 1;
    owed.request = request.bytes;
    owed.until = Clock::now() + 2 * m_timeout;
}

Reply Exchange::collect(Link &link, const Request &request)
{
    const Clock::time_point deadline = Clock::now() + m_timeout;
    m_collector.reset();
    while (Clock::now() < deadline) {
        if (m_stop.requested()) {
            return {ReplyEnd::Interrupted, {}, {}};
        }
        if (tookReply(receive(link, deadline), request.station)) {
            --m_owed[request.station].replies;
            return {ReplyEnd::Complete, m_collector.bytes(), {}};
        }
    }
    return {ReplyEnd::TimedOut, m_collector.bytes(), {}};
}

/// Goes through bytes reply by reply; true when it stopped behind one of that station.
bool Exchange::tookReply(const Bytes &bytes, std::uint8_t station)
{
    std::size_t taken = 0;
    while (taken < bytes.size()) {
        taken += m_collector.take(bytes.data() + taken, bytes.size() - taken);
        if (m_collector.complete() && m_collector.isFrom(station)) {
            return true;
        }
        if (m_collector.complete()) {
            m_collector.reset();
        }
    }
    return false;
}

void Exchange::awaitOwedReplies(Link &link, const Request &request)
{
    const auto found = m_owed.find(request.station);
    if (found == m_owed.end() || found->second.request == request.bytes) {
        return;
    }
    Owed &owed = found->second;
    m_collector.reset();
    while (owed.replies > 0 && Clock::now() < owed.until && !m_stop.requested()) {
        if (tookReply(receive(link, owed.until), request.station)) {
            --owed.replies;
            m_collector.reset();
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
    if (m_trace && !bytes.empty()) {
        m_trace(false, bytes);
    }
    return bytes;
}

} // namespace vshost
