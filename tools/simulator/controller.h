/// The simulated controller: any number of stations behind one link. Takes requests, gives answers; knows neither the
/// link nor the clock.
#ifndef VSSIM_CONTROLLER_H
#define VSSIM_CONTROLLER_H

#include "simulator/counts.h"
#include "simulator/stationMemory.h"

#include <mutex>
#include <set>

namespace vssim {

/// A request to write bits carries a number of bytes, never of bits: whether a byte stands for one bit or for eight,
/// the controller cannot see.
enum class BitWriteMode {
    WholeBytes, ///< every byte writes eight bits, as far as the kind reaches
    LoneBit,    ///< a lone byte writes one bit, its lowest; more bytes write eight bits each
};

/// All calls may come from any thread: each takes the controller's own lock.
class Controller {
public:
    explicit Controller(const std::set<std::uint8_t> &stationNumbers, BitWriteMode mode = BitWriteMode::LoneBit,
                        std::uint32_t seed = 1);

    /// Carries the request out and gives what goes back on the wire, faults included; nothing when no station answers.
    std::optional<Answer> answer(const Frame &frame);

    /// Nothing, or false, for a station that is not simulated, an unknown kind or a number out of range.
    std::optional<std::uint32_t> read(std::uint8_t station, std::string_view kindName, std::uint32_t number) const;
    bool write(std::uint8_t station, std::string_view kindName, std::uint32_t number, std::uint32_t value);

    /// In the text form of parseFault; throws std::invalid_argument.
    void addFault(const std::string &text);
    void clearFaults();

    Counts counts() const;
    const std::set<std::uint8_t> &stations() const { return m_numbers; }

private:
    void carryOutForAll(const Decoded &decoded);
    std::optional<Answer> answerOf(std::uint8_t station, const Decoded &decoded);
    Reply carryOut(StationMemory &memory, const Request &request) const;
    void writeBits(StationMemory &memory, const Request &request) const;

    const std::set<std::uint8_t> m_numbers;
    const BitWriteMode m_bitWriteMode;
    mutable std::mutex m_mutex; ///< guards everything below
    std::map<std::uint8_t, StationMemory> m_memories;
    Faults m_faults;
    Counts m_counted;
};

} // namespace vssim

#endif
