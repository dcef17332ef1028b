// What a host asks of a station, decoded from a request frame and checked against the register kinds.
#pragma once

#include "simulator/frameReader.h"
#include "simulator/registerKinds.h"

#include <variant>

namespace vssim {

constexpr std::uint8_t broadcastStation = 255;

enum class Command : std::uint8_t {
    readUnits = 0x20,
    readBits = 0x21,
    writeUnits = 0x28,
    writeBits = 0x29,
};

/// The status byte of a reply.
enum class Status : std::uint8_t {
    ok = 0,
    unknownKind = 1,   ///< no register kind has the device code
    wrongChecksum = 2, ///<
    outOfRange = 3,    ///< the address, or the run of units from it, lies outside the kind
    wrongCommand = 4,  ///< unknown, or not for this register kind
    wrongLength = 5,   ///< the length field, the count and the data do not fit each other
    wrongAddress = 6,  ///< a nibble of the address is no decimal digit
    faulty = 9,        ///< what the fault "error" answers unless told otherwise
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
