/// How the bytes of a value read as a number, and back.
#ifndef VSHOST_VALUE_TYPE_H
#define VSHOST_VALUE_TYPE_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace vshost {

enum class ValueType { Bit, Int16, Uint16, Int32, Uint32, Float32, Hex };

/// The type's name in configurations and on the command line: "bit", "int16" and so on.
std::optional<ValueType> valueTypeFromName(const std::string &name);
const char *nameOf(ValueType type);
/// All names, for messages: "bit, int16, ...".
const char *allValueTypeNames();

/// Bytes of one value as the driver's calls take and give them: one byte for a bit, else two or four, least
/// significant first.
using ValueBytes = std::array<std::uint8_t, 4>;

/// What a value's bytes mean.
struct ValueFormat {
    ValueType type = ValueType::Uint16;
    /// Shown number = stored number * scale. Bits and hexadecimal values are shown as they are.
    double scale = 1;
    /// The register kind stores 32 bits per address, so that the shorter types do not fit and hex has eight digits.
    bool wideKind = false;
};

/// Host count of one value: 1 for a bit or 16 bits, 2 for 32 bits.
int hostCount(const ValueFormat &format);
/// Bytes of one value.
int byteCount(const ValueFormat &format);

/// A value as a JSON writer wants it.
using Number = std::variant<bool, std::int64_t, double, std::string>;
Number numberOf(const ValueFormat &format, const ValueBytes &bytes);
/// The same for people: 1 and 0 for bits, "0x1234" for hex.
std::string textOf(const ValueFormat &format, const ValueBytes &bytes);

/// Reads what a person writes: a decimal number, 0x and hexadecimal digits (the stored bits, without scale), and for
/// bits also on, off, true and false. Throws UsageError with the reason, such as "70000 is above 65535, the highest
/// uint16".
ValueBytes bytesOf(const ValueFormat &format, const std::string &text);

} // namespace vshost

#endif
