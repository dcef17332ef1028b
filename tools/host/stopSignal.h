/// The one place that knows when vshost has to end: on Ctrl-C, when its time is up, or when its output is gone.
#ifndef VSHOST_STOP_SIGNAL_H
#define VSHOST_STOP_SIGNAL_H

#include "timing.h"

#include <atomic>
#include <optional>

namespace vshost {

/// One per process, since it takes SIGINT and SIGTERM over. Every member may be used from any thread, except that
/// `endAfter` comes before the threads.
class StopSignal {
public:
    StopSignal();
    ~StopSignal();
    StopSignal(const StopSignal &) = delete;
    StopSignal &operator=(const StopSignal &) = delete;

    void endAfter(Milliseconds time) { m_deadline = Clock::now() + time; }
    void request();
    bool requested() const;

    /// Waits until the time has passed, or until it is time to end.
    void wait(Milliseconds time) const;

    /// Becomes readable when an end is requested, and stays so.
    int descriptor() const { return m_readEnd; }

private:
    std::optional<Clock::time_point> m_deadline;
    int m_readEnd = -1;
    int m_writeEnd = -1;
};

} // namespace vshost

#endif
