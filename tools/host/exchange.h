/// One request and its reply on an open link. Knows frames as bytes only; the clock is here, the link is lent.
#ifndef VSHOST_EXCHANGE_H
#define VSHOST_EXCHANGE_H

#include "link.h"
#include "replyCollector.h"
#include "stopSignal.h"

#include <functional>
#include <map>

namespace vshost {

struct Request {
    std::uint8_t station = 0;
    Bytes bytes;
    /// False for what is sent to all stations.
    bool expectsReply = true;
};

enum class ReplyEnd {
    /// A whole reply of the station asked, or none was to be expected.
    Complete,
    /// What came until the time-out, often nothing.
    TimedOut,
    /// vshost is to end; the reply means nothing.
    Interrupted,
};

struct Reply {
    ReplyEnd end = ReplyEnd::Complete;
    Bytes bytes;
    std::chrono::microseconds roundTrip{0};
};

/// Every chunk of bytes on the link, for a trace: true for bytes sent.
using TraceBytes = std::function<void(bool sent, const Bytes &bytes)>;

class Exchange {
public:
    /// `stop` must outlive the exchange; `trace` may be empty.
    Exchange(Milliseconds timeout, const StopSignal &stop, TraceBytes trace);

    /// Sends and collects. A reply of another station is noise, and so is what came before the request. Throws
    /// LinkError.
    Reply run(Link &link, const Request &request);

    /// For a link opened anew: what was asked on the old one is not answered here.
    void forgetOwedReplies() { m_owed.clear(); }

private:
    /// Replies that may still come, up to twice the time-out after their request.
    struct Late {
        int replies = 0;
        Clock::time_point until;

        bool mayCome() const { return replies > 0 && Clock::now() < until; }
    };

    /// What a station has not answered in time. Nothing in a reply says which request it answers, so a late one could
    /// be taken for the answer to the next request. Where the station answers at all, its late replies are waited for
    /// before it is asked something else. Where it does not, waiting would hold up the others: should it come to
    /// life, as many of its replies as are owed are passed over. The same request may be repeated in any case.
    struct Owed {
        Bytes request;
        bool hasAnswered = false;
        Late late;
        Late lateToEarlierRequests;
    };

    void send(Link &link, const Request &request);
    void noteRequest(const Request &request);
    bool isAnswer(std::uint8_t station);
    Reply collect(Link &link, const Request &request);
    void awaitOwedReplies(Link &link, const Request &request);
    void discardWaiting(Link &link);
    Bytes receive(Link &link, Clock::time_point deadline);
    std::size_t takeReply(const Bytes &bytes, std::uint8_t station);

    Milliseconds m_timeout;
    const StopSignal &m_stop;
    TraceBytes m_trace;
    ReplyCollector m_collector;
    std::map<std::uint8_t, Owed> m_owed;
};

} // namespace vshost

#endif
