#include "simulator/registerKinds.h"

#include <algorithm>

namespace vssim {

namespace {

constexpr std::uint32_t SYSTEM_OFFSET = 9000; // SD and SM begin at 9000, and at 0 on the wire

constexpr std::array<RegisterKind, REGISTER_KIND_COUNT> KINDS{{
    // name, notation, lowest, highest, value bits, unit bits, device code, wire offset, memory
    {"32C", Notation::Decimal, 200, 255, 32, 32, 0xAD, 0, "32C"},
    {"C", Notation::Decimal, 0, 199, 16, 16, 0xAC, 0, "C"},
    {"T", Notation::Decimal, 0, 511, 16, 16, 0xA8, 0, "T"},
    {"R", Notation::Decimal, 0, 25999, 16, 16, 0xA2, 0, "R"},
    {"SD", Notation::Decimal, 9000, 9511, 16, 16, 0xA1, SYSTEM_OFFSET, "SD"},
    {"D", Notation::Decimal, 0, 8999, 16, 16, 0xA0, 0, "D"},
    {"X", Notation::Octal, 0, 377, 1, 1, 0x90, 0, "X"},
    {"Y", Notation::Octal, 0, 377, 1, 1, 0x91, 0, "Y"},
    {"M", Notation::Decimal, 0, 8191, 1, 1, 0x92, 0, "M"},
    {"S", Notation::Decimal, 0, 4095, 1, 1, 0x93, 0, "S"},
    {"SM", Notation::Decimal, 9000, 9511, 1, 1, 0x94, SYSTEM_OFFSET, "SM"},
    {"D_bit", Notation::WordBit, 0, 143999, 1, 16, 0x95, 0, "D"},
    {"R_bit", Notation::WordBit, 0, 415999, 1, 16, 0x97, 0, "R"},
    {"T_Coil", Notation::Decimal, 0, 511, 1, 1, 0x98, 0, "T_Coil"},
    {"T_Contact", Notation::Decimal, 0, 511, 1, 1, 0x99, 0, "T_Contact"},
    {"C_Coil", Notation::Decimal, 0, 255, 1, 1, 0x9C, 0, "C_Coil"},
    {"C_Contact", Notation::Decimal, 0, 255, 1, 1, 0x9D, 0, "C_Contact"},
}};

template <typename Predicate> const RegisterKind *findIf(Predicate predicate)
{
    const auto found = std::find_if(KINDS.begin(), KINDS.end(), predicate);
    return found == KINDS.end() ? nullptr : &*found;
}

} // namespace

const std::array<RegisterKind, REGISTER_KIND_COUNT> &registerKinds() { return KINDS; }

const RegisterKind *findKind(std::string_view name)
{
    return findIf([name](const RegisterKind &kind) { return kind.name == name; });
}

const RegisterKind *findKindOfCode(std::uint8_t deviceCode)
{
    return findIf([deviceCode](const RegisterKind &kind) { return kind.deviceCode == deviceCode; });
}

} // namespace vssim
