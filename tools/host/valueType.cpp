#include "valueType.h"

#include "errors.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace vshost {

namespace {

struct TypeName {
    ValueType type;
    const char *name;
};

constexpr TypeName TYPE_NAMES[] = {
    {ValueType::Bit, "bit"},     {ValueType::Int16, "int16"},   {ValueType::Uint16, "uint16"},
    {ValueType::Int32, "int32"}, {ValueType::Uint32, "uint32"}, {ValueType::Float32, "float32"},
    {ValueType::Hex, "hex"},
};

struct Range {
    std::int64_t lowest;
    std::int64_t highest;
};

Range rangeOf(const ValueFormat &format)
{
    switch (format.type) {
    case ValueType::Int16:
        return {std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()};
    case ValueType::Int32:
        return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    case ValueType::Bit:
        return {0, 1};
    default:
        return {0, hostCount(format) == 1 ? 0xFFFF : 0xFFFFFFFF};
    }
}

/// The stored bits, with the bytes beyond the value's size as zeros.
std::uint32_t bitsOf(const ValueFormat &format, const ValueBytes &bytes)
{
    std::uint32_t bits = 0;
    for (int i = byteCount(format) - 1; i >= 0; --i)
        bits = bits << 8 | bytes[static_cast<std::size_t>(i)];
    return bits;
}

ValueBytes fromBits(std::uint32_t bits)
{
    ValueBytes bytes;
    for (std::uint8_t &byte : bytes) {
        byte = static_cast<std::uint8_t>(bits);
        bits >>= 8;
    }
    return bytes;
}

std::int64_t integerOf(const ValueFormat &format, std::uint32_t bits)
{
    switch (format.type) {
    case ValueType::Int16:
        return static_cast<std::int16_t>(bits);
    case ValueType::Int32:
        return static_cast<std::int32_t>(bits);
    default:
        return bits;
    }
}

double floatOf(std::uint32_t bits)
{
    float number;
    std::memcpy(&number, &bits, sizeof number);
    return static_cast<double>(number);
}

/// A float has nine significant digits at most; ten also hold every scaled 32-bit integer, without the noise that
/// the multiplication leaves behind them.
std::string realText(const ValueFormat &format, double stored)
{
    return format.scale == 1 ? fmt::format("{}", static_cast<float>(stored))
                             : fmt::format("{:.10g}", stored * format.scale);
}

std::string hexOf(const ValueFormat &format, std::uint32_t bits)
{
    return fmt::format("0x{:0{}X}", bits, 2 * byteCount(format));
}

[[noreturn]] void refuseRange(const ValueFormat &format, const std::string &text, const Range &range)
{
    throw UsageError(fmt::format("{} is outside {} to {}, the range of {}", text,
                                 static_cast<double>(range.lowest) * format.scale,
                                 static_cast<double>(range.highest) * format.scale, nameOf(format.type)));
}

template <typename T> std::optional<T> readWhole(const std::string &text, std::size_t from, int base)
{
    T number = 0;
    const char *const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data() + from, end, number, base);
    return read.ec == std::errc() && read.ptr == end ? std::optional<T>(number) : std::nullopt;
}

double readDecimal(const ValueFormat &format, const std::string &text)
{
    double number = 0;
    const char *const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || !std::isfinite(number))
        throw UsageError(fmt::format("'{}' is not a number ({})", text, nameOf(format.type)));
    return number;
}

ValueBytes bitFromText(const std::string &text)
{
    if (text == "1" || text == "on" || text == "true")
        return fromBits(1);
    if (text == "0" || text == "off" || text == "false")
        return fromBits(0);
    throw UsageError(fmt::format("'{}' is not a bit; write 1 or 0, on or off, true or false", text));
}

ValueBytes storedFromHex(const ValueFormat &format, const std::string &text)
{
    const std::optional<std::uint32_t> bits = readWhole<std::uint32_t>(text, 2, 16);
    if (!bits || (byteCount(format) < 4 && *bits > 0xFFFF)) {
        throw UsageError(
            fmt::format("'{}' is not a hexadecimal number of up to {} digits", text, 2 * byteCount(format)));
    }
    return fromBits(*bits);
}

ValueBytes floatFromText(const ValueFormat &format, const std::string &text)
{
    const double number = readDecimal(format, text) / format.scale;
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        throw UsageError(fmt::format("{} is too large for {}", text, nameOf(format.type)));
    const float stored = static_cast<float>(number);
    std::uint32_t bits;
    std::memcpy(&bits, &stored, sizeof bits);
    return fromBits(bits);
}

/// Scaled numbers are rounded to the nearest that can be stored; a plain integer has to be one.
ValueBytes integerFromText(const ValueFormat &format, const std::string &text)
{
    const double shown = readDecimal(format, text);
    const double stored = std::round(shown / format.scale);
    if (format.scale == 1 && stored != shown)
        throw UsageError(fmt::format("{} is not a whole number ({})", text, nameOf(format.type)));
    const Range range = rangeOf(format);
    if (!(stored >= static_cast<double>(range.lowest) && stored <= static_cast<double>(range.highest)))
        refuseRange(format, text, range);
    return fromBits(static_cast<std::uint32_t>(static_cast<std::int64_t>(stored)));
}

} // namespace

std::optional<ValueType> valueTypeFromName(const std::string &name)
{
    for (const TypeName &entry : TYPE_NAMES)
        if (name == entry.name)
            return entry.type;
    return std::nullopt;
}

const char *nameOf(ValueType type)
{
    for (const TypeName &entry : TYPE_NAMES)
        if (type == entry.type)
            return entry.name;
    return "";
}

const char *allValueTypeNames() { return "bit, int16, uint16, int32, uint32, float32, hex"; }

int hostCount(const ValueFormat &format)
{
    switch (format.type) {
    case ValueType::Int32:
    case ValueType::Uint32:
    case ValueType::Float32:
        return 2;
    case ValueType::Hex:
        return format.wideKind ? 2 : 1;
    default:
        return 1;
    }
}

int byteCount(const ValueFormat &format) { return format.type == ValueType::Bit ? 1 : 2 * hostCount(format); }

Number numberOf(const ValueFormat &format, const ValueBytes &bytes)
{
    const std::uint32_t bits = bitsOf(format, bytes);
    switch (format.type) {
    case ValueType::Bit:
        return bits != 0;
    case ValueType::Hex:
        return hexOf(format, bits);
    case ValueType::Float32:
        return std::strtod(realText(format, floatOf(bits)).c_str(), nullptr);
    default:
        break;
    }
    const std::int64_t stored = integerOf(format, bits);
    if (format.scale == 1)
        return stored;
    return std::strtod(realText(format, static_cast<double>(stored)).c_str(), nullptr);
}

std::string textOf(const ValueFormat &format, const ValueBytes &bytes)
{
    const Number number = numberOf(format, bytes);
    if (const bool *bit = std::get_if<bool>(&number))
        return *bit ? "1" : "0";
    if (const std::int64_t *integer = std::get_if<std::int64_t>(&number))
        return std::to_string(*integer);
    if (const double *real = std::get_if<double>(&number))
        return format.scale == 1 ? fmt::format("{}", static_cast<float>(*real)) : fmt::format("{:.10g}", *real);
    return std::get<std::string>(number);
}

ValueBytes bytesOf(const ValueFormat &format, const std::string &text)
{
    if (format.type == ValueType::Bit)
        return bitFromText(text);
    if (text.rfind("0x", 0) == 0 || text.rfind("0X", 0) == 0)
        return storedFromHex(format, text);
    return format.type == ValueType::Float32 ? floatFromText(format, text) : integerFromText(format, text);
}

} // namespace vshost
