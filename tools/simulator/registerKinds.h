/// The seventeen register kinds of the controller: names, numbers, widths and device codes. Holds no values.
#ifndef VSSIM_REGISTER_KINDS_H
#define VSSIM_REGISTER_KINDS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vssim {

/// How people write an address of the kind.
enum class Notation {
    Decimal, ///< D100
    Octal,   ///< X17 is number 15
    WordBit, ///< D_bit100.5 is number 16 * 100 + 5
};

struct RegisterKind {
    std::string_view name;
    Notation notation;
    std::uint32_t lowest;    ///< lowest and highest number; of a word.bit kind these are bits: 16 * word + bit
    std::uint32_t highest;   ///<
    unsigned valueBits;      ///< width of what a write carries: 1, 16 or 32
    unsigned unitBits;       ///< width of what a read answers; differs from valueBits for word.bit kinds, read as words
    std::uint8_t deviceCode; ///< names the kind in a request
    std::uint32_t wireOffset; ///< number of wire address 0
    std::string_view memory;  ///< the kind that holds the values: its own name, or the word kind of a word.bit kind
};

constexpr std::size_t REGISTER_KIND_COUNT = 17;
constexpr std::uint32_t BITS_PER_WORD = 16;

const std::array<RegisterKind, REGISTER_KIND_COUNT> &registerKinds();

/// Null for a name or code that no kind has. Names are case-sensitive.
const RegisterKind *findKind(std::string_view name);
const RegisterKind *findKindOfCode(std::uint8_t deviceCode);

inline bool isBitKind(const RegisterKind &kind) { return kind.valueBits == 1; }

inline bool isWordBitKind(const RegisterKind &kind) { return kind.notation == Notation::WordBit; }

} // namespace vssim

#endif
