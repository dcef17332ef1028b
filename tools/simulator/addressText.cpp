#include "simulator/addressText.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <stdexcept>

namespace vssim {

namespace {

std::optional<std::uint32_t> parseDigits(std::string_view digits, int base)
{
    std::uint32_t value = 0;
    const char *end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, base);
    if (digits.empty() || result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return value;
}

std::optional<std::uint32_t> parseWordBit(std::string_view text)
{
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos)
        return std::nullopt;
    const auto word = parseDigits(text.substr(0, point), 10);
    const auto bit = parseDigits(text.substr(point + 1), 10);
    if (!word || !bit || *bit >= BITS_PER_WORD || *word > UINT32_MAX / BITS_PER_WORD)
        return std::nullopt;
    return *word * BITS_PER_WORD + *bit;
}

std::optional<std::uint32_t> parseNumber(std::string_view text, Notation notation)
{
    if (notation == Notation::WordBit)
        return parseWordBit(text);
    return parseDigits(text, notation == Notation::Octal ? 8 : 10);
}

// "32C" begins with a digit and "T_Coil" with another kind's name: the longest name that fits is meant.
const RegisterKind *longestKindOf(std::string_view text)
{
    const RegisterKind *longest = nullptr;
    for (const RegisterKind &kind : registerKinds()) {
        const bool fits = text.substr(0, kind.name.size()) == kind.name;
        if (fits && (!longest || kind.name.size() > longest->name.size()))
            longest = &kind;
    }
    return longest;
}

const char *notationText(Notation notation)
{
    switch (notation) {
    case Notation::Octal:
        return "an octal number";
    case Notation::WordBit:
        return "WORD.BIT with bits 0 to 15";
    case Notation::Decimal:
        break;
    }
    return "a decimal number";
}

} // namespace

Address parseAddress(const std::string &text)
{
    const RegisterKind *kind = longestKindOf(text);
    if (!kind)
        throw std::invalid_argument(fmt::format("\"{}\" begins with no register kind (such as D, M, X, D_bit)", text));
    const auto number = parseNumber(std::string_view(text).substr(kind->name.size()), kind->notation);
    if (!number)
        throw std::invalid_argument(
            fmt::format("\"{}\": the address of {} is {}", text, kind->name, notationText(kind->notation)));
    if (*number < kind->lowest || *number > kind->highest)
        throw std::invalid_argument(fmt::format("\"{}\" is out of range: {} to {}", text,
                                                addressText(*kind, kind->lowest), addressText(*kind, kind->highest)));
    return {kind, *number};
}

std::string addressText(const RegisterKind &kind, std::uint32_t number)
{
    switch (kind.notation) {
    case Notation::Octal:
        return fmt::format("{}{:o}", kind.name, number);
    case Notation::WordBit:
        return fmt::format("{}{}.{}", kind.name, number / BITS_PER_WORD, number % BITS_PER_WORD);
    case Notation::Decimal:
        break;
    }
    return fmt::format("{}{}", kind.name, number);
}

} // namespace vssim
