#include "support/memory.h"

namespace {

Bytes littleEndian(std::uint32_t value, int size)
{
    Bytes bytes;
    for (int i = 0; i < size; ++i)
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    return bytes;
}

int wordOf(int bitAddress) { return bitAddress >> 4; }
int bitOf(int bitAddress) { return bitAddress & 15; }

} // namespace

std::uint32_t &Memory::unit(int station, const std::string &unitName, int address)
{
    return m_units[{station, unitName, address}];
}

Bytes Memory::bytesOf(const Place &place)
{
    const Kind &kind = kindNamed(place.regName);
    if (kind.isBitInWord())
        return {static_cast<unsigned char>(
            unit(place.station, kind.unitName, wordOf(place.address)) >> bitOf(place.address) & 1)};
    return littleEndian(unit(place.station, kind.unitName, place.address), kind.bytes());
}

Bytes Memory::answer(const FRAME_PRO &frame)
{
    const VARIABLE &request = frame.variable;
    if (frame.dataOffset != 0)
        return reply(readUnits(request));
    const Kind &kind = kindNamed(request.regName.toStdString());
    for (int i = 0; i < request.count; ++i)
        writeValue(kind, request, i);
    return frame.replyLength == 0 ? Bytes() : acknowledgement();
}

Bytes Memory::readUnits(const VARIABLE &request)
{
    const Kind &kind = kindNamed(request.regName.toStdString());
    Bytes data;
    for (int i = 0; i < request.count; ++i) {
        const std::uint32_t contents = unit(request.station, kind.name, request.address + i);
        if (kind.unitWidth != 1) {
            for (unsigned char byte : littleEndian(contents, kind.unitWidth / 8))
                data.push_back(byte);
            continue;
        }
        if (i % 8 == 0)
            data.push_back(0);
        data.back() = static_cast<unsigned char>(data.back() | (contents & 1U) << (i % 8));
    }
    return data;
}

void Memory::writeValue(const Kind &kind, const VARIABLE &request, int offset)
{
    const int address = request.address + offset;
    const quint8 *data = request.data + offset * kind.bytes();
    if (kind.isBitInWord()) {
        std::uint32_t &word = unit(request.station, kind.unitName, wordOf(address));
        const std::uint32_t mask = 1U << bitOf(address);
        word = data[0] != 0 ? word | mask : word & ~mask;
        return;
    }
    std::uint32_t value = 0;
    for (int i = 0; i < kind.bytes(); ++i)
        value |= static_cast<std::uint32_t>(data[i]) << (8 * i);
    unit(request.station, kind.unitName, address) = value;
}
