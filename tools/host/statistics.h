/// What happened on the link, counted per station.
#ifndef VSHOST_STATISTICS_H
#define VSHOST_STATISTICS_H

#include "exchange.h"

#include <map>
#include <string>

namespace vshost {

struct StationCounts {
    /// Requests that the driver wanted answered, each counted once however often it was sent.
    unsigned transactions = 0;
    unsigned retries = 0;
    unsigned giveUps = 0;
    /// Accepted replies, to which the round-trip times belong.
    unsigned accepted = 0;
    std::size_t bytesSent = 0;
    std::size_t bytesReceived = 0;
    std::chrono::microseconds shortest = std::chrono::microseconds::max();
    std::chrono::microseconds longest{0};
    std::chrono::microseconds total{0};
};

class Statistics {
public:
    void countSent(int station, std::size_t bytes, bool retry);
    void countReply(int station, const Reply &reply);
    void countAccepted(int station, const Reply &reply);
    void countGivenUp(int station);

    /// Whether any station has ever given a good reply.
    bool anyAccepted() const;
    bool empty() const { return m_stations.empty(); }

    /// A table for people, a line for each station; without stations, that there were none.
    std::string table() const;

private:
    std::map<int, StationCounts> m_stations;
};

} // namespace vshost

#endif
