/// The clock that all of vshost measures with.
#ifndef VSHOST_TIMING_H
#define VSHOST_TIMING_H

#include <chrono>

namespace vshost {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// Whole milliseconds from now until `time`, rounded up; 0 when it has passed.
inline Milliseconds timeUntil(Clock::time_point time)
{
    const Milliseconds left = std::chrono::ceil<Milliseconds>(time - Clock::now());
    return left > Milliseconds(0) ? left : Milliseconds(0);
}

} // namespace vshost

#endif
