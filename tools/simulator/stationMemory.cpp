#include "simulator/stationMemory.h"

namespace vssim {

namespace {

std::size_t indexOfMemory(const RegisterKind &kind)
{
    const RegisterKind *memory = findKind(kind.memory);
    return static_cast<std::size_t>(memory - registerKinds().data());
}

bool isInRange(const RegisterKind &kind, std::uint32_t number)
{
    return number >= kind.lowest && number <= kind.highest;
}

std::uint32_t lowBits(std::uint32_t value, unsigned bits) { return bits >= 32 ? value : value & ((1U << bits) - 1U); }

// The word kinds with a bit view begin at 0, so a word's number is its index too.
std::size_t cellIndex(const RegisterKind &kind, std::uint32_t number)
{
    return isWordBitKind(kind) ? number / BITS_PER_WORD : number - kind.lowest;
}

} // namespace

StationMemory::StationMemory()
{
    for (std::size_t i = 0; i < REGISTER_KIND_COUNT; ++i) {
        const RegisterKind &kind = registerKinds()[i];
        if (kind.memory == kind.name)
            m_cells[i].resize(kind.highest - kind.lowest + 1);
    }
}

std::optional<std::uint32_t> StationMemory::read(const RegisterKind &kind, std::uint32_t number) const
{
    if (!isInRange(kind, number))
        return std::nullopt;
    const std::uint32_t cell = cellsOf(kind)[cellIndex(kind, number)];
    return isWordBitKind(kind) ? (cell >> (number % BITS_PER_WORD)) & 1U : cell;
}

bool StationMemory::write(const RegisterKind &kind, std::uint32_t number, std::uint32_t value)
{
    if (!isInRange(kind, number))
        return false;
    std::uint32_t &cell = cellsOf(kind)[cellIndex(kind, number)];
    const std::uint32_t kept = lowBits(value, kind.valueBits);
    if (!isWordBitKind(kind)) {
        cell = kept;
        return true;
    }
    const std::uint32_t shift = number % BITS_PER_WORD;
    cell = (cell & ~(1U << shift)) | (kept << shift);
    return true;
}

std::vector<std::uint32_t> &StationMemory::cellsOf(const RegisterKind &kind) { return m_cells[indexOfMemory(kind)]; }

const std::vector<std::uint32_t> &StationMemory::cellsOf(const RegisterKind &kind) const
{
    return m_cells[indexOfMemory(kind)];
}

} // namespace vssim
