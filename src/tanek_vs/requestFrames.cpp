/// A request frame before its DLE bytes are doubled, with n data bytes (none in a read):
///
/// | offset | size | content                                                                              |
/// |--------|------|--------------------------------------------------------------------------------------|
/// | 0      | 2    | DLE STX                                                                              |
/// | 2      | 1    | station                                                                              |
/// | 3      | 2    | length of bytes 5 to 11+n, little-endian                                             |
/// | 5      | 1    | command: 20 read units, 21 read bits, 28 write units, 29 write bits                  |
/// | 6      | 1    | device code of the register kind                                                     |
/// | 7      | 3    | wire address, little-endian: a decimal digit of the number in each nibble            |
/// | 10     | 2    | count, little-endian: units or bits to read, units to write, data bytes of bits      |
/// | 12     | n    | data                                                                                 |
/// | 12+n   | 2    | DLE ETX                                                                              |
/// | 14+n   | 2    | checksum of bytes 2 to 11+n, ASCII digits                                            |
///
/// Read D100 to D109 of station 1: 10 02 01 07 00 20 A0 00 01 00 0A 00 10 03 44 33
#include "tanek_vs/requestFrames.h"

#include "model/protocol.h"
#include "model/registerTable.h"
#include "model/wrappingInt.h"
#include "tanek_vs/frameCodec.h"
#include "tanek_vs/registerNames.h"

#include <cstring>

namespace {

const quint8 COMMAND_READ_UNITS = 0x20;
const quint8 COMMAND_READ_BITS = 0x21;
const quint8 COMMAND_WRITE_UNITS = 0x28;
const quint8 COMMAND_WRITE_BITS = 0x29;

const int LENGTH_OFFSET = 3;
const int COMMAND_OFFSET = 5;
const int DEVICE_CODE_OFFSET = 6;
const int ADDRESS_OFFSET = 7;
const int ADDRESS_SIZE = 3;
const int COUNT_OFFSET = 10;
const int DATA_OFFSET = 12;
const int FRAME_SIZE_WITHOUT_DATA = 16;

/// A reply has DLE STX, station, length and status in front of its data, and the trailer behind.
const int REPLY_DATA_OFFSET = 6;
const int REPLY_SIZE_WITHOUT_DATA = 10;

const int LAST_NUMBER_BEFORE_SPECIAL = 8999;
const int FIRST_SPECIAL_NUMBER = 9000;

void putLittleEndian(quint8 *place, qint64 value, int size)
{
    for (int i = 0; i < size; ++i)
        place[i] = static_cast<quint8>(value >> (8 * i));
}

/// The special registers are numbered from 9000 on by their users and from 0 on by the controller.
int deviceAddress(const VARIABLE &request)
{
    const bool isSpecial = request.regName == QString::fromLatin1("SD") || request.regName == QString::fromLatin1("SM");
    return isSpecial && request.address > LAST_NUMBER_BEFORE_SPECIAL ? request.address - FIRST_SPECIAL_NUMBER
                                                                     : request.address;
}

/// The nibbles of a wire address are digits: the text of the number, read as a hexadecimal one.
qint64 wireAddress(const QString &digits) { return digits.toLongLong(nullptr, 16); }

QString readAddressDigits(const VARIABLE &request) { return QString::number(deviceAddress(request)); }

/// Writes to bits inside words name the bit by one hexadecimal digit behind the word number; reads do not.
QString writeAddressDigits(const VARIABLE &request)
{
    if (!namesBitInWord(request.regName))
        return readAddressDigits(request);
    return QString::number(request.address / 16) + QString::number(request.address % 16, 16);
}

/// Completes a frame whose data bytes stand in place, and queues it unless its doubled form is too long.
void queueFrame(FRAME_PRO &frame, const VARIABLE &request, quint8 command, int kind, const QString &addressDigits,
                int countField, int dataSize)
{
    quint8 *bytes = frame.frame;
    bytes[0] = FRAME_DLE;
    bytes[1] = FRAME_STX;
    bytes[FRAME_BODY_OFFSET] = static_cast<quint8>(request.station);
    putLittleEndian(bytes + LENGTH_OFFSET, DATA_OFFSET - COMMAND_OFFSET + dataSize, 2);
    bytes[COMMAND_OFFSET] = command;
    bytes[DEVICE_CODE_OFFSET] = static_cast<quint8>(ADDRESS_RANGE_FUNC[kind]);
    putLittleEndian(bytes + ADDRESS_OFFSET, wireAddress(addressDigits), ADDRESS_SIZE);
    putLittleEndian(bytes + COUNT_OFFSET, countField, 2);

    quint8 *trailer = bytes + DATA_OFFSET + dataSize;
    const int bodySize = DATA_OFFSET + dataSize - FRAME_BODY_OFFSET;
    trailer[0] = FRAME_DLE;
    trailer[1] = FRAME_ETX;
    putLittleEndian(trailer + 2, computate_check(bytes + FRAME_BODY_OFFSET, static_cast<quint16>(bodySize)), 2);

    frame.frameLength = FRAME_SIZE_WITHOUT_DATA + dataSize;
    frame.variable = request;
    if (dealFrameSend_0x10(bytes, frame.frameLength))
        driver.frameQueue.append(frame);
}

int replyDataSize(int unitWidth, int count)
{
    if (unitWidth == 1)
        return static_cast<int>((static_cast<qint64>(count) + 7) / 8);
    return wrappingProduct(count, unitWidth == 16 ? 2 : 4);
}

/// Eight bits a byte, the first bit lowest.
void packBits(const VARIABLE &request, quint8 *packed)
{
    for (int i = 0; i < request.count; ++i)
        packed[i / 8] = static_cast<quint8>(packed[i / 8] + (request.data[i] << (i % 8)));
}

} // namespace

int getReadFrame(const QList<VARIABLE> &requests)
{
    if (requests.isEmpty())
        return 0;
    const VARIABLE &request = requests.at(0);
    const int kind = getIndexFromRegName(request.regName);
    if (request.station == BROADCAST_STATION || kind < 0 || request.count < 0)
        return 0;

    const int unitWidth = unitWidthOf(kind);
    FRAME_PRO frame;
    frame.replyLength = wrappingSum(replyDataSize(unitWidth, request.count), REPLY_SIZE_WITHOUT_DATA);
    frame.dataOffset = REPLY_DATA_OFFSET;
    frame.readCount = request.count;
    queueFrame(frame, request, unitWidth == 1 ? COMMAND_READ_BITS : COMMAND_READ_UNITS, kind,
               readAddressDigits(request), request.count, 0);
    return 1;
}

void getWriteFrame(const VARIABLE &request)
{
    const int kind = getIndexFromRegName(request.regName);
    if (kind < 0 || request.count < 0)
        return;
    const int valueWidth = valueWidthOf(kind);
    const bool bits = valueWidth == 1;
    const qint64 valueBytes = bits ? request.count : static_cast<qint64>(request.count) * (valueWidth == 16 ? 2 : 4);
    const qint64 dataSize = bits ? (valueBytes + 7) / 8 : valueBytes;
    if (valueBytes > RECORD_BUFFER_SIZE || dataSize > RECORD_BUFFER_SIZE - FRAME_SIZE_WITHOUT_DATA)
        return;

    FRAME_PRO frame;
    const int size = static_cast<int>(dataSize);
    if (bits)
        packBits(request, frame.frame + DATA_OFFSET);
    else
        std::memcpy(frame.frame + DATA_OFFSET, request.data, static_cast<std::size_t>(size));
    frame.replyLength = request.station == BROADCAST_STATION ? 0 : REPLY_SIZE_WITHOUT_DATA;
    queueFrame(frame, request, bits ? COMMAND_WRITE_BITS : COMMAND_WRITE_UNITS, kind, writeAddressDigits(request),
               bits ? size : request.count, size);
}
