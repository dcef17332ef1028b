/// What a host asks of a station, decoded from a request frame and checked against the register kinds.
#ifndef VSSIM_REQUEST_H
#define VSSIM_REQUEST_H

#include "simulator/frameReader.h"
#include "simulator/registerKinds.h"

#include <variant>

namespace vssim {

constexpr std::uint8_t BROADCAST_STATION = 255;

enum class Command : std::uint8_t {
    ReadUnits = 0x20,
    ReadBits = 0x21,
    WriteUnits = 0x28,
    WriteBits = 0x29,
};

/// The status byte of a reply.
enum class Status : std::uint8_t {
    Ok = 0,
    UnknownKind = 1,   ///< no register kind has the device code
    WrongChecksum = 2, ///<
    OutOfRange = 3,    ///< the address, or the run of units from it, lies outside the kind
    WrongCommand = 4,  ///< unknown, or not for this register kind
    WrongLength = 5,   ///< the length field, the count and the data do not fit each other
    WrongAddress = 6,  ///< a nibble of the address is no decimal digit
    Faulty = 9,        ///< what the fault "error" answers unless told otherwise
};

const char *statusText(Status status);

struct Request {
    std::uint8_t station;
    Command command;
    const RegisterKind *kind; ///< never null, never owned
    std::uint32_t number;     ///< first unit or bit; for a read of a word.bit kind the first word
    std::uint32_t count;      ///< units or bits to read, units to write; data bytes to write for writeBits
    Bytes data;               ///< writes only: two or four bytes a unit, or eight bits a byte, least significant first
};

/// Why a station cannot carry out a request.
struct Refusal {
    std::uint8_t station;
    Status status;
};

/// A request as a station may carry it out, a refusal for the station that was meant, or nothing where the frame is too
/// short to name a station.
using Decoded = std::variant<std::monostate, Request, Refusal>;

Decoded decode(const Frame &frame);

} // namespace vssim

#endif
