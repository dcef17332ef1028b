/// Follows every write from its posting to its end. The driver says nothing about a write itself: its end shows in
/// the frames that carry the write's number, in their results, and in frames that never come.
#ifndef VSHOST_WRITE_TRACKER_H
#define VSHOST_WRITE_TRACKER_H

#include "communication.h"
#include "registerKinds.h"

#include <deque>
#include <mutex>

namespace vshost {

enum class WriteOutcome {
    Confirmed,
    /// To all stations, which do not answer.
    Sent,
    GivenUp,
    /// A later write to the same place went out in its stead.
    Replaced,
    /// The driver took it and never sent it.
    Dropped,
    /// vshost ended first: the write was not sent, or sent and not confirmed.
    Unsent,
    Unconfirmed,
};

struct WriteEnd {
    Value value;
    /// What was written, as the user wrote it.
    std::string text;
    WriteOutcome outcome;
    /// For people: "confirmed", "given up: station 2 does not answer (2#D100(1))".
    std::string words;
    Failure failure;
};

/// `post` may be called on any thread; the rest on the communication thread.
class WriteTracker {
public:
    /// Told outside of the lock, on the communication thread.
    using EndHandler = std::function<void(const WriteEnd &)>;

    WriteTracker(const DriverCalls &calls, EndHandler handler) : m_calls(calls), m_handler(std::move(handler)) {}

    /// Hands the write to the driver. The driver must not be cutting writes of this size.
    void post(const Value &value, const ValueBytes &bytes, const std::string &text);

    void beforeChoice();
    void frameChosen(const FRAME_PRO &frame);
    void nothingToSend();
    void accepted(const FRAME_PRO &frame);
    void givenUp(const FRAME_PRO &frame, const Failure &failure);
    /// vshost ends: tells the end of every write that is left.
    void finish();

    bool anyOutstanding() const;
    bool isOutstanding(const Place &place) const;

private:
    using Number = std::uintptr_t;

    struct Write {
        Number number;
        Value value;
        std::string text;
        bool sent = false;
    };
    using Writes = std::deque<Write>;

    Writes::iterator find(Number number);
    Writes takeBefore(const Writes::const_iterator &end);
    void end(const Writes &writes, WriteOutcome outcome, const Failure &failure = Failure()) const;
    void endOne(Number number, WriteOutcome outcome, const Failure &failure = Failure());
    void queueSeenEmpty();

    const DriverCalls &m_calls;
    EndHandler m_handler;
    /// Held while a write is posted, so that `m_writes` is in the order of the driver's queue. The callback that the
    /// posting may run must therefore not come here.
    mutable std::mutex m_mutex;
    Writes m_writes;
    Number m_lastNumber = 0;
    /// The last write that had been posted when the driver was last asked for a frame.
    Number m_seenNumber = 0;
    /// Writes chosen since something else was, as far as the driver can have counted.
    unsigned m_burst = 0;
    unsigned m_idleAnswers = 0;
};

} // namespace vshost

#endif
