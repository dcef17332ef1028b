/// The memory of one station: a value for every number of every kind. Knows no frames.
#ifndef VSSIM_STATION_MEMORY_H
#define VSSIM_STATION_MEMORY_H

#include "simulator/registerKinds.h"

#include <optional>
#include <vector>

namespace vssim {

/// All values are 0 at first. Bits inside words are views of the words: D_bit of D, R_bit of R.
class StationMemory {
public:
    StationMemory();

    /// The value of one number of the kind, in the kind's value width; nothing when out of range.
    std::optional<std::uint32_t> read(const RegisterKind &kind, std::uint32_t number) const;

    /// Stores the value's low bits, as many as the kind is wide. False, and nothing stored, when out of range.
    bool write(const RegisterKind &kind, std::uint32_t number, std::uint32_t value);

private:
    std::vector<std::uint32_t> &cellsOf(const RegisterKind &kind);
    const std::vector<std::uint32_t> &cellsOf(const RegisterKind &kind) const;

    std::array<std::vector<std::uint32_t>, REGISTER_KIND_COUNT> m_cells; ///< in the order of registerKinds()
};

} // namespace vssim

#endif
