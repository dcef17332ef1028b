#include "statistics.h"

#include <fmt/format.h>

#include <algorithm>

namespace vshost {

namespace {

double milliseconds(std::chrono::microseconds time) { return static_cast<double>(time.count()) / 1000; }

std::string roundTripText(const StationCounts &counts)
{
    if (counts.accepted == 0)
        return "-";
    return fmt::format("{:.2f} / {:.2f} / {:.2f} ms", milliseconds(counts.shortest),
                       milliseconds(counts.total) / counts.accepted, milliseconds(counts.longest));
}

} // namespace

void Statistics::countSent(int station, std::size_t bytes, bool retry)
{
    StationCounts &counts = m_stations[station];
    ++(retry ? counts.retries : counts.transactions);
    counts.bytesSent += bytes;
}

void Statistics::countReply(int station, const Reply &reply)
{
    m_stations[station].bytesReceived += reply.bytes.size();
}

void Statistics::countAccepted(int station, const Reply &reply)
{
    if (reply.bytes.empty())
        return;
    StationCounts &counts = m_stations[station];
    ++counts.accepted;
    counts.shortest = std::min(counts.shortest, reply.roundTrip);
    counts.longest = std::max(counts.longest, reply.roundTrip);
    counts.total += reply.roundTrip;
}

void Statistics::countGivenUp(int station) { ++m_stations[station].giveUps; }

bool Statistics::anyAccepted() const
{
    return std::any_of(
        m_stations.begin(), m_stations.end(), [](const auto &station) { return station.second.accepted > 0; });
}

std::string Statistics::table() const
{
    if (empty())
        return "no station was asked";
    std::string text = fmt::format("{:>7} {:>12} {:>8} {:>9} {:>11} {:>11}  {}", "station", "transactions", "retries",
                                   "given up", "bytes out", "bytes in", "round trip min / avg / max");
    for (const auto &[station, counts] : m_stations) {
        text +=
            fmt::format("\n{:>7} {:>12} {:>8} {:>9} {:>11} {:>11}  {}", station, counts.transactions, counts.retries,
                        counts.giveUps, counts.bytesSent, counts.bytesReceived, roundTripText(counts));
    }
    return text;
}

} // namespace vshost
