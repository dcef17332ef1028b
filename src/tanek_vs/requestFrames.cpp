#include "tanek_vs/requestFrames.h"

#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "model/requestRecords.h"
#include "tanek_vs/frameCodec.h"
#include "tanek_vs/registerNames.h"
#include "tanek_vs/wireFormat.h"

#include <QtCore/QList>
#include <QtCore/QtGlobal>

#include <cstring>

namespace {

/// What the fields of address and count have room for.
const qint64 HIGHEST_WIRE_ADDRESS = 0xFFFFFF;
const int HIGHEST_COUNT = 0xFFFF;

const FRAME_PRO EMPTY_FRAME;

void putLittleEndian(quint8 *place, qint64 value, int size)
{
    for (int i = 0; i < size; ++i)
        place[i] = static_cast<quint8>(value >> (8 * i));
}

/// The decimal digits of a number, one to a nibble: 1234 gives 0x1234.
qint64 digitsInNibbles(int number)
{
    qint64 nibbles = 0;
    int shift = 0;
    for (qint64 rest = number < 0 ? -static_cast<qint64>(number) : number; rest != 0; rest /= 10, shift += 4)
        nibbles |= rest % 10 << shift;
    return number < 0 ? -nibbles : nibbles;
}

qint64 wireAddress(const RegisterKind &kind, int address)
{
    return digitsInNibbles(address >= kind.firstNumber ? address - kind.firstNumber : address);
}

/// Writes to bits inside words name the bit by one hexadecimal digit behind the word's number; reads do not.
qint64 wireAddressOfBit(int address)
{
    return digitsInNibbles(address / WORD_WIDTH) * WORD_WIDTH + address % WORD_WIDTH;
}

/// A request frame without its data.
struct Head {
    quint8 command;
    qint64 wireAddress;
    int countField;

    bool fits() const
    {
        return wireAddress <= HIGHEST_WIRE_ADDRESS && -wireAddress <= HIGHEST_WIRE_ADDRESS && countField >= 0 &&
               countField <= HIGHEST_COUNT;
    }
};

/// Completes a frame whose data bytes stand in place.
/// @return false when its doubled form is too long.
bool complete(FRAME_PRO &frame, int station, const RegisterKind &kind, const Head &head, int dataSize)
{
    quint8 *bytes = frame.frame;
    bytes[0] = FRAME_DLE;
    bytes[1] = FRAME_STX;
    bytes[FRAME_BODY_OFFSET] = static_cast<quint8>(station);
    putLittleEndian(bytes + REQUEST_LENGTH_OFFSET, REQUEST_DATA_OFFSET - REQUEST_COMMAND_OFFSET + dataSize, 2);
    bytes[REQUEST_COMMAND_OFFSET] = head.command;
    bytes[REQUEST_DEVICE_CODE_OFFSET] = kind.deviceCode;
    putLittleEndian(bytes + REQUEST_ADDRESS_OFFSET, head.wireAddress, REQUEST_ADDRESS_SIZE);
    putLittleEndian(bytes + REQUEST_COUNT_OFFSET, head.countField, 2);

    quint8 *trailer = bytes + REQUEST_DATA_OFFSET + dataSize;
    const int bodySize = REQUEST_DATA_OFFSET + dataSize - FRAME_BODY_OFFSET;
    trailer[0] = FRAME_DLE;
    trailer[1] = FRAME_ETX;
    putLittleEndian(trailer + 2, computate_check(bytes + FRAME_BODY_OFFSET, static_cast<quint16>(bodySize)), 2);

    frame.frameLength = REQUEST_SIZE_WITHOUT_DATA + dataSize;
    return dealFrameSend_0x10(bytes, frame.frameLength);
}

/// Eight bits a byte, the first bit lowest.
void packBits(const VARIABLE &request, quint8 *packed)
{
    for (int i = 0; i < request.count; ++i)
        packed[i / 8] = static_cast<quint8>(packed[i / 8] + (request.data[i] << (i % 8)));
}

bool buildBitWrite(const VARIABLE &request, const RegisterKind &kind, FRAME_PRO &frame)
{
    const int dataSize = unitsOfBits(request.count, 8);
    const qint64 address = kind.isBitInWord ? wireAddressOfBit(request.address) : wireAddress(kind, request.address);
    const Head head = {COMMAND_WRITE_BITS, address, dataSize};
    if (request.count > RECORD_BUFFER_SIZE || !head.fits())
        return false;
    packBits(request, frame.frame + REQUEST_DATA_OFFSET);
    return complete(frame, request.station, kind, head, dataSize);
}

bool buildUnitWrite(const VARIABLE &request, const RegisterKind &kind, FRAME_PRO &frame)
{
    const qint64 dataSize = static_cast<qint64>(request.count) * (kind.valueWidth == 16 ? 2 : 4);
    const Head head = {COMMAND_WRITE_UNITS, wireAddress(kind, request.address), request.count};
    if (dataSize > RECORD_BUFFER_SIZE - REQUEST_SIZE_WITHOUT_DATA || !head.fits())
        return false;
    const int size = static_cast<int>(dataSize);
    std::memcpy(frame.frame + REQUEST_DATA_OFFSET, request.data, static_cast<std::size_t>(size));
    return complete(frame, request.station, kind, head, size);
}

/// Builds a frame where it is to stand: at the end of the frame queue.
/// @return whether there is one.
bool queueFrame(const VARIABLE &request, bool (*build)(const VARIABLE &, FRAME_PRO &))
{
    driver.frameQueue.append(EMPTY_FRAME);
    const bool isBuilt = build(request, driver.frameQueue.last());
    if (!isBuilt)
        driver.frameQueue.removeLast();
    return isBuilt;
}

} // namespace

bool buildReadFrame(const VARIABLE &request, FRAME_PRO &frame)
{
    const RegisterKind *kind = registerKind(request.regName);
    if (!kind || request.station == BROADCAST_STATION)
        return false;
    const quint8 command = kind->unitWidth == 1 ? COMMAND_READ_BITS : COMMAND_READ_UNITS;
    const Head head = {command, wireAddress(*kind, request.address), request.count};
    if (!head.fits())
        return false;
    frame.replyLength = static_cast<int>(replyDataSize(kind->unitWidth, request.count)) + REPLY_SIZE_WITHOUT_DATA;
    frame.dataOffset = REPLY_DATA_OFFSET;
    frame.readCount = request.count;
    copyRead(request, frame.variable);
    return complete(frame, request.station, *kind, head, 0);
}

bool buildWriteFrame(const VARIABLE &request, FRAME_PRO &frame)
{
    const RegisterKind *kind = registerKind(request.regName);
    if (!kind || request.count < 0)
        return false;
    frame.replyLength = request.station == BROADCAST_STATION ? 0 : REPLY_SIZE_WITHOUT_DATA;
    frame.dataOffset = 0;
    frame.readCount = 0;
    copyRequest(request, frame.variable);
    return (kind->holdsBits() ? buildBitWrite : buildUnitWrite)(request, *kind, frame);
}

int getReadFrame(const QList<VARIABLE> &requests)
{
    return !requests.isEmpty() && queueFrame(requests.at(0), buildReadFrame) ? 1 : 0;
}

void getWriteFrame(const VARIABLE &request) { queueFrame(request, buildWriteFrame); }
