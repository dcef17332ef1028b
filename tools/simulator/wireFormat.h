/// What requests and replies have in common on the wire: the envelope, its checksum, and the doubling of DLE.
///
///   DLE STX | body, every DLE in it doubled | DLE ETX | checksum, two hexadecimal digits
///
/// The checksum is the sum of the body's bytes before doubling, kept to 8 bits, as upper-case digits, high nibble
/// first.
#ifndef VSSIM_WIRE_FORMAT_H
#define VSSIM_WIRE_FORMAT_H

#include "simulator/bytes.h"

#include <array>

namespace vssim {

constexpr std::uint8_t DLE = 0x10;
constexpr std::uint8_t STX = 0x02;
constexpr std::uint8_t ETX = 0x03;

using Checksum = std::array<std::uint8_t, 2>;

Checksum checksumOf(const Bytes &body);

/// The body in its envelope, ready to send.
Bytes enveloped(const Bytes &body);

void appendLittleEndian(Bytes &bytes, std::uint32_t value, std::size_t size);

/// The caller sees to it that the bytes are there.
std::uint32_t littleEndian(const Bytes &bytes, std::size_t offset, std::size_t size);

} // namespace vssim

#endif
