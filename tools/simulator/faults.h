/// Faults by name: which replies they meet, and what they do to them. Each is scripted for a station or for all, with a
/// probability or for a number of requests; it wears off and is counted.
#ifndef VSSIM_FAULTS_H
#define VSSIM_FAULTS_H

#include "simulator/reply.h"

#include <array>
#include <chrono>
#include <optional>
#include <random>
#include <string>

namespace vssim {

enum class FaultKind {
    Silence,      ///< the station does not hear the request: nothing is carried out, nothing is answered
    Error,        ///< the station refuses with a status: nothing is carried out
    Delay,        ///< the reply goes out late
    Drop,         ///< bytes get lost on the way
    Flip,         ///< bits change on the way; the checksum notices a single one always, several may cancel out
    Truncate,     ///< the reply's last bytes get lost
    Overlong,     ///< a well-formed reply with more data than was asked for
    Garbage,      ///< noise before the reply
    WrongStation, ///< a well-formed reply that names another station
};

constexpr std::size_t FAULT_KIND_COUNT = 9;

/// A fault that has been drawn for one request.
struct Fault {
    FaultKind kind;
    unsigned amount; ///< milliseconds, bytes, bits, a status or a station, as the kind needs
};

struct FaultRule {
    Fault fault;
    std::optional<std::uint8_t> station; ///< none: all stations
    double probability = 1;
    std::optional<unsigned> remaining; ///< requests still to be met; none: no end
};

/// Reads "NAME[:KEY=VALUE[,KEY=VALUE]...][@STATION]". Every name takes p (probability) and n (number of requests), most
/// take one key more. Throws std::invalid_argument with a message for the user.
FaultRule parseFault(const std::string &text);

const char *faultName(FaultKind kind);

/// The names with their keys and defaults, a line each, for help texts.
std::string faultList();

/// A reply as it goes out.
struct Answer {
    Bytes bytes;
    std::chrono::milliseconds delay{0};
};

using FaultCounts = std::array<std::uint64_t, FAULT_KIND_COUNT>; ///< by FaultKind

class Faults {
public:
    /// The same seed and the same requests give the same faults.
    explicit Faults(std::uint32_t seed = 1) : m_random(seed) {}

    void add(const FaultRule &rule) { m_rules.push_back(rule); }
    void clear() { m_rules.clear(); }

    /// The faults that meet this request to the station; counts them, and wears the rules off.
    std::vector<Fault> draw(std::uint8_t station);

    /// The reply on the wire with the faults done to it; `silence` and `error` are the caller's to heed before.
    Answer distort(Reply reply, const std::vector<Fault> &faults);

    const FaultCounts &counts() const { return m_met; }

private:
    bool meets(const FaultRule &rule, std::uint8_t station);
    void damage(Bytes &wire, const Fault &fault);
    void dropBytes(Bytes &wire, unsigned count);
    void flipBits(Bytes &wire, unsigned count);
    Bytes noise(unsigned count);
    std::size_t below(std::size_t end); ///< random; end > 0

    std::mt19937 m_random;
    std::vector<FaultRule> m_rules;
    FaultCounts m_met{};
};

} // namespace vssim

#endif
