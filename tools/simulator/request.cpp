#include "simulator/request.h"

#include <optional>

namespace vssim {

namespace {

// The body of a request; n is the number of data bytes, 0 for reads. Offsets in the frame are two higher.
//
//   offset  size  content
//   0       1     station; 255 for all
//   1       2     length of what follows, 7 + n
//   3       1     command
//   4       1     device code of the register kind
//   5       3     address
//   8       2     count: units or bits to read, units to write, data bytes to write as bits
//   10      n     data
//
// Numbers of more than one byte go least significant byte first. The address holds a decimal digit in each nibble (1234
// is 34 12 00); SD and SM count from 0 on the wire. A write to a bit inside a word holds the word in decimal digits and
// the bit as the lowest nibble: word 7 bit 12 is 7C 00 00.
constexpr std::size_t stationOffset = 0;
constexpr std::size_t lengthOffset = 1;
constexpr std::size_t commandOffset = 3;
constexpr std::size_t kindOffset = 4;
constexpr std::size_t addressOffset = 5;
constexpr std::size_t countOffset = 8;
constexpr std::size_t dataOffset = 10;
constexpr std::size_t lengthSize = 2;
constexpr std::size_t addressSize = 3;
constexpr std::size_t countSize = 2;

constexpr unsigned bitsPerNibble = 4;
constexpr unsigned bitsPerByte = 8;
constexpr std::uint32_t nibbleMask = 0xF;

std::optional<Command> commandOf(std::uint8_t byte)
{
    switch (const auto command = static_cast<Command>(byte)) {
    case Command::readUnits:
    case Command::readBits:
    case Command::writeUnits:
    case Command::writeBits:
        return command;
    }
    return std::nullopt;
}

bool isWrite(Command command) { return command == Command::writeUnits || command == Command::writeBits; }

bool suits(Command command, const RegisterKind &kind)
{
    switch (command) {
    case Command::readUnits:
        return kind.unitBits > 1;
    case Command::readBits:
        return kind.unitBits == 1;
    case Command::writeUnits:
        return !isBitKind(kind);
    case Command::writeBits:
        return isBitKind(kind);
    }
    return false;
}

std::optional<std::uint32_t> decimalOf(std::uint32_t nibbles)
{
    std::uint32_t value = 0;
    std::uint32_t weight = 1;
    for (; nibbles != 0; nibbles >>= bitsPerNibble, weight *= 10) {
        const std::uint32_t digit = nibbles & nibbleMask;
        if (digit > 9)
            return std::nullopt;
        value += digit * weight;
    }
    return value;
}

std::optional<std::uint32_t> numberOf(std::uint32_t wireAddress, const RegisterKind &kind, Command command)
{
    const bool bitInWord = isWordBitKind(kind) && command == Command::writeBits;
    if (!bitInWord) {
        const auto number = decimalOf(wireAddress);
        return number ? std::optional(*number + kind.wireOffset) : std::nullopt;
    }
    const auto word = decimalOf(wireAddress >> bitsPerNibble);
    return word ? std::optional(*word * bitsPerWord + (wireAddress & nibbleMask)) : std::nullopt;
}

std::size_t dataSizeOf(const Request &request)
{
    if (!isWrite(request.command))
        return 0;
    const std::size_t bytesPerUnit = request.command == Command::writeBits ? 1 : request.kind->valueBits / bitsPerByte;
    return request.count * bytesPerUnit;
}

// Bits of a word.bit kind are read as the words that hold them.
const RegisterKind &unitKindOf(const Request &request)
{
    return request.command == Command::readUnits ? *findKind(request.kind->memory) : *request.kind;
}

// A bit write may run past the kind's end with the last bits of its last byte: the sender fills bytes.
bool isInRange(const Request &request)
{
    const RegisterKind &kind = unitKindOf(request);
    if (request.number < kind.lowest || request.number > kind.highest)
        return false;
    const std::uint32_t room = kind.highest - request.number + 1;
    const bool bytesOfBits = request.command == Command::writeBits;
    return request.count <= (bytesOfBits ? (room + bitsPerByte - 1) / bitsPerByte : room);
}

Status check(const Request &request, std::size_t dataSize)
{
    if (dataSize != dataSizeOf(request))
        return Status::wrongLength;
    return isInRange(request) ? Status::ok : Status::outOfRange;
}

Status checkEnvelope(const Frame &frame)
{
    if (frame.checksum != checksumOf(frame.body))
        return Status::wrongChecksum;
    const bool fits = frame.body.size() >= dataOffset &&
                      littleEndian(frame.body, lengthOffset, lengthSize) == frame.body.size() - commandOffset;
    return fits ? Status::ok : Status::wrongLength;
}

Decoded decodeFields(const Bytes &body)
{
    const std::uint8_t station = body[stationOffset];
    const auto command = commandOf(body[commandOffset]);
    if (!command)
        return Refusal{station, Status::wrongCommand};
    const RegisterKind *kind = findKindOfCode(body[kindOffset]);
    if (!kind)
        return Refusal{station, Status::unknownKind};
    if (!suits(*command, *kind))
        return Refusal{station, Status::wrongCommand};
    const auto number = numberOf(littleEndian(body, addressOffset, addressSize), *kind, *command);
    if (!number)
        return Refusal{station, Status::wrongAddress};
    Request request{station, *command, kind, *number, littleEndian(body, countOffset, countSize), {}};
    request.data.assign(body.begin() + dataOffset, body.end());
    const Status status = check(request, request.data.size());
    if (status != Status::ok)
        return Refusal{station, status};
    return request;
}

} // namespace

const char *statusText(Status status)
{
    switch (status) {
    case Status::ok:
        return "ok";
    case Status::unknownKind:
        return "unknown device code";
    case Status::wrongChecksum:
        return "wrong checksum";
    case Status::outOfRange:
        return "out of range";
    case Status::wrongCommand:
        return "wrong command";
    case Status::wrongLength:
        return "wrong length";
    case Status::wrongAddress:
        return "wrong address";
    case Status::faulty:
        break;
    }
    return "faulty";
}

Decoded decode(const Frame &frame)
{
    if (frame.body.empty())
        return std::monostate{};
    const Status status = checkEnvelope(frame);
    if (status != Status::ok)
        return Refusal{frame.body[stationOffset], status};
    return decodeFields(frame.body);
}

} // namespace vssim
