/// The envelope of request and reply frames: checksum and the doubling of DLE bytes.
#ifndef TANEK_VS_FRAME_CODEC_H
#define TANEK_VS_FRAME_CODEC_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

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
