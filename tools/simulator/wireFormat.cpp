#include "simulator/wireFormat.h"

#include <numeric>

namespace vssim {

namespace {

std::uint8_t hexDigit(unsigned nibble) { return static_cast<std::uint8_t>("0123456789ABCDEF"[nibble & 0xFU]); }

} // namespace

Checksum checksumOf(const Bytes &body)
{
    const unsigned sum = std::accumulate(body.begin(), body.end(), 0U);
    return {hexDigit(sum >> 4U), hexDigit(sum)};
}

Bytes enveloped(const Bytes &body)
{
    Bytes wire{DLE, STX};
    for (const std::uint8_t byte : body) {
        wire.push_back(byte);
        if (byte == DLE)
            wire.push_back(DLE);
    }
    const Checksum checksum = checksumOf(body);
    wire.insert(wire.end(), {DLE, ETX, checksum[0], checksum[1]});
    return wire;
}

void appendLittleEndian(Bytes &bytes, std::uint32_t value, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::uint32_t littleEndian(const Bytes &bytes, std::size_t offset, std::size_t size)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value |= static_cast<std::uint32_t>(bytes[offset + i]) << (8 * i);
    return value;
}

} // namespace vssim
