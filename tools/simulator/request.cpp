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
constexpr std::size_t STATION_OFFSET = 0;
constexpr std::size_t LENGTH_OFFSET = 1;
constexpr std::size_t COMMAND_OFFSET = 3;
constexpr std::size_t KIND_OFFSET = 4;
constexpr std::size_t ADDRESS_OFFSET = 5;
constexpr std::size_t COUNT_OFFSET = 8;
constexpr std::size_t DATA_OFFSET = 10;
constexpr std::size_t LENGTH_SIZE = 2;
constexpr std::size_t ADDRESS_SIZE = 3;
constexpr std::size_t COUNT_SIZE = 2;

constexpr unsigned BITS_PER_NIBBLE = 4;
constexpr unsigned BITS_PER_BYTE = 8;
constexpr std::uint32_t NIBBLE_MASK = 0xF;

std::optional<Command> commandOf(std::uint8_t byte)
{
    switch (const auto command = static_cast<Command>(byte)) {
    case Command::ReadUnits:
    case Command::ReadBits:
    case Command::WriteUnits:
    case Command::WriteBits:
        return command;
    }
    return std::nullopt;
}

bool isWrite(Command command) { return command == Command::WriteUnits || command == Command::WriteBits; }

bool suits(Command command, const RegisterKind &kind)
{
    switch (command) {
    case Command::ReadUnits:
        return kind.unitBits > 1;
    case Command::ReadBits:
        return kind.unitBits == 1;
    case Command::WriteUnits:
        return !isBitKind(kind);
    case Command::WriteBits:
        return isBitKind(kind);
    }
    return false;
}

std::optional<std::uint32_t> decimalOf(std::uint32_t nibbles)
{
    std::uint32_t value = 0;
    std::uint32_t weight = 1;
    for (; nibbles != 0; nibbles >>= BITS_PER_NIBBLE, weight *= 10) {
        const std::uint32_t digit = nibbles & NIBBLE_MASK;
        if (digit > 9)
            return std::nullopt;
        value += digit * weight;
    }
    return value;
}

std::optional<std::uint32_t> numberOf(std::uint32_t wireAddress, const RegisterKind &kind, Command command)
{
    const bool bitInWord = isWordBitKind(kind) && command == Command::WriteBits;
    if (!bitInWord) {
        const auto number = decimalOf(wireAddress);
        return number ? std::optional(*number + kind.wireOffset) : std::nullopt;
    }
    const auto word = decimalOf(wireAddress >> BITS_PER_NIBBLE);
    return word ? std::optional(*word * BITS_PER_WORD + (wireAddress & NIBBLE_MASK)) : std::nullopt;
}

std::size_t dataSizeOf(const Request &request)
{
    if (!isWrite(request.command))
        return 0;
    const std::size_t bytesPerUnit =
        request.command == Command::WriteBits ? 1 : request.kind->valueBits / BITS_PER_BYTE;
    return request.count * bytesPerUnit;
}

// Bits of a word.bit kind are read as the words that hold them.
const RegisterKind &unitKindOf(const Request &request)
{
    return request.command == Command::ReadUnits ? *findKind(request.kind->memory) : *request.kind;
}

// A bit write may run past the kind's end with the last bits of its last byte: the sender fills bytes.
bool isInRange(const Request &request)
{
    const RegisterKind &kind = unitKindOf(request);
    if (request.number < kind.lowest || request.number > kind.highest)
        return false;
    const std::uint32_t room = kind.highest - request.number + 1;
    const bool bytesOfBits = request.command == Command::WriteBits;
    return request.count <= (bytesOfBits ? (room + BITS_PER_BYTE - 1) / BITS_PER_BYTE : room);
}

Status check(const Request &request, std::size_t dataSize)
{
    if (dataSize != dataSizeOf(request))
        return Status::WrongLength;
    return isInRange(request) ? Status::Ok : Status::OutOfRange;
}

Status checkEnvelope(const Frame &frame)
{
    if (frame.checksum != checksumOf(frame.body))
        return Status::WrongChecksum;
    const bool fits = frame.body.size() >= DATA_OFFSET &&
                      littleEndian(frame.body, LENGTH_OFFSET, LENGTH_SIZE) == frame.body.size() - COMMAND_OFFSET;
    return fits ? Status::Ok : Status::WrongLength;
}

Decoded decodeFields(const Bytes &body)
{
    const std::uint8_t station = body[STATION_OFFSET];
    const auto command = commandOf(body[COMMAND_OFFSET]);
    if (!command)
        return Refusal{station, Status::WrongCommand};
    const RegisterKind *kind = findKindOfCode(body[KIND_OFFSET]);
    if (!kind)
        return Refusal{station, Status::UnknownKind};
    if (!suits(*command, *kind))
        return Refusal{station, Status::WrongCommand};
    const auto number = numberOf(littleEndian(body, ADDRESS_OFFSET, ADDRESS_SIZE), *kind, *command);
    if (!number)
        return Refusal{station, Status::WrongAddress};
    Request request{station, *command, kind, *number, littleEndian(body, COUNT_OFFSET, COUNT_SIZE), {}};
    request.data.assign(body.begin() + DATA_OFFSET, body.end());
    const Status status = check(request, request.data.size());
    if (status != Status::Ok)
        return Refusal{station, status};
    return request;
}

} // namespace

const char *statusText(Status status)
{
    switch (status) {
    case Status::Ok:
        return "ok";
    case Status::UnknownKind:
        return "unknown device code";
    case Status::WrongChecksum:
        return "wrong checksum";
    case Status::OutOfRange:
        return "out of range";
    case Status::WrongCommand:
        return "wrong command";
    case Status::WrongLength:
        return "wrong length";
    case Status::WrongAddress:
        return "wrong address";
    case Status::Faulty:
        break;
    }
    return "faulty";
}

Decoded decode(const Frame &frame)
{
    if (frame.body.empty())
        return std::monostate{};
    const Status status = checkEnvelope(frame);
    if (status != Status::Ok)
        return Refusal{frame.body[STATION_OFFSET], status};
    return decodeFields(frame.body);
}

} // namespace vssim
