/// What a simulated controller has been asked so far.
#ifndef VSSIM_COUNTS_H
#define VSSIM_COUNTS_H

#include "simulator/faults.h"
#include "simulator/request.h"

#include <map>
#include <string>

namespace vssim {

struct Counts {
    std::map<Command, std::uint64_t> requests; ///< well-formed requests to a simulated station, by command
    std::uint64_t broadcasts = 0;              ///< writes to all stations
    std::uint64_t unanswerable = 0;            ///< to stations not simulated, to all but no write, or naming no station
    std::map<Status, std::uint64_t> refusals;  ///< answers with a status other than ok, by status
    FaultCounts faults{};
};

/// Lines for the user; what never happened is left out but for the requests.
std::string summaryText(const Counts &counts);

} // namespace vssim

#endif
