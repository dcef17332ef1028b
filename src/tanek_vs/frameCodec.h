/// The envelope of request and reply frames: checksum and the doubling of DLE bytes.
///
/// The receiver finds the end of a frame by a DLE that is followed by ETX, so a DLE inside the body goes out twice.
/// The body reaches from the station byte to the last data byte; the checksum covers it undoubled.
///
/// | offset | size | content               |
/// |--------|------|-----------------------|
/// | 0      | 2    | DLE STX (10 02)       |
/// | 2      | b    | body, DLE doubled     |
/// | 2+b    | 2    | DLE ETX (10 03)       |
/// | 4+b    | 2    | checksum, ASCII digits |
#ifndef TANEK_VS_FRAME_CODEC_H
#define TANEK_VS_FRAME_CODEC_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

const quint8 FRAME_DLE = 0x10;
const quint8 FRAME_STX = 0x02;
const quint8 FRAME_ETX = 0x03;

const int FRAME_BODY_OFFSET = 2;
/// DLE, ETX and the two checksum digits.
const int FRAME_TRAILER_SIZE = 4;

/// The sum of the bytes, to 8 bits, as two upper-case hexadecimal digits: that of the high nibble in the result's low
/// byte, that of the low nibble in its high byte.
quint16 computate_check(const quint8 *bytes, quint16 length);

/// Doubles every DLE of the body in place and updates `length`.
/// @param frame a buffer of RECORD_BUFFER_SIZE bytes.
/// @return false when the doubled frame does not fit the buffer; nothing is changed then.
bool dealFrameSend_0x10(quint8 *frame, int &length);

/// Reduces doubled DLE bytes of a reply's body to one, in place.
void dealFrameRead_0x10(QByteArray &reply);

#endif
