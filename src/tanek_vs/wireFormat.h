/// The bytes of requests and replies, before their DLE bytes are doubled.
///
/// Both stand in one envelope. The receiver finds the end of a frame by a DLE that ETX follows, so a DLE inside the
/// body goes out twice. The checksum covers the body, undoubled.
///
/// | offset | size | envelope                                              |
/// |--------|------|-------------------------------------------------------|
/// | 0      | 2    | DLE STX (10 02)                                       |
/// | 2      | b    | body: from the station to the last data byte          |
/// | 2+b    | 2    | DLE ETX (10 03)                                       |
/// | 4+b    | 2    | checksum: low 8 bits of the body's sum, as ASCII digits |
///
/// A request with n data bytes (none in a read):
///
/// | offset | size | request                                                                          |
/// |--------|------|----------------------------------------------------------------------------------|
/// | 2      | 1    | station                                                                          |
/// | 3      | 2    | length of bytes 5 to 11+n, little-endian                                         |
/// | 5      | 1    | command: 20 read units, 21 read bits, 28 write units, 29 write bits              |
/// | 6      | 1    | device code of the register kind                                                 |
/// | 7      | 3    | wire address, little-endian: a decimal digit of the number in each nibble        |
/// | 10     | 2    | count, little-endian: units or bits to read, units to write, data bytes of bits  |
/// | 12     | n    | data                                                                             |
///
/// Read D100 to D109 of station 1: 10 02 01 07 00 20 A0 00 01 00 0A 00 10 03 44 33
///
/// A reply with m data bytes (none in an acknowledgement):
///
/// | offset | size | reply                                                  |
/// |--------|------|--------------------------------------------------------|
/// | 2      | 1    | station                                                |
/// | 3      | 2    | length of bytes 5 to 5+m, little-endian                |
/// | 5      | 1    | status: 0 accepted, else the controller's error code   |
/// | 6      | m    | data                                                   |
///
/// The data of a read reply, by the width of the kind's units:
///
/// | unit width | size of the data       | unit i                                  |
/// |------------|------------------------|-----------------------------------------|
/// | 1          | count / 8, rounded up  | bit i % 8 of byte i / 8, lowest first   |
/// | 16         | 2 * count              | bytes 2i and 2i+1, low byte first       |
/// | 32         | 4 * count              | bytes 4i to 4i+3, lowest byte first     |
#ifndef TANEK_VS_WIRE_FORMAT_H
#define TANEK_VS_WIRE_FORMAT_H

#include <QtCore/QtGlobal>

const quint8 FRAME_DLE = 0x10;
const quint8 FRAME_STX = 0x02;
const quint8 FRAME_ETX = 0x03;

const int FRAME_BODY_OFFSET = 2;
/// DLE, ETX and the two checksum digits.
const int FRAME_TRAILER_SIZE = 4;

const quint8 COMMAND_READ_UNITS = 0x20;
const quint8 COMMAND_READ_BITS = 0x21;
const quint8 COMMAND_WRITE_UNITS = 0x28;
const quint8 COMMAND_WRITE_BITS = 0x29;

const int REQUEST_LENGTH_OFFSET = 3;
const int REQUEST_COMMAND_OFFSET = 5;
const int REQUEST_DEVICE_CODE_OFFSET = 6;
const int REQUEST_ADDRESS_OFFSET = 7;
const int REQUEST_ADDRESS_SIZE = 3;
const int REQUEST_COUNT_OFFSET = 10;
const int REQUEST_DATA_OFFSET = 12;
const int REQUEST_SIZE_WITHOUT_DATA = REQUEST_DATA_OFFSET + FRAME_TRAILER_SIZE;

const int REPLY_STATUS_OFFSET = 5;
const int REPLY_DATA_OFFSET = 6;
const int REPLY_SIZE_WITHOUT_DATA = REPLY_DATA_OFFSET + FRAME_TRAILER_SIZE;

/// Bytes of the data of a read reply with so many units.
inline qint64 replyDataSize(int unitWidth, int count)
{
    if (unitWidth == 1)
        return (static_cast<qint64>(count) + 7) / 8;
    return static_cast<qint64>(count) * (unitWidth == 16 ? 2 : 4);
}

#endif
