/// Bytes of units as numbers, least significant byte first.
#ifndef TANEK_VS_BYTE_ASSEMBLY_H
#define TANEK_VS_BYTE_ASSEMBLY_H

#include <QtCore/QtGlobal>

/// low + 256 * high.
inline int uchar2int16(quint8 low, quint8 high) { return low + 256 * high; }

inline int uchar2int32(quint8 b0, quint8 b1, quint8 b2, quint8 b3)
{
    return static_cast<int>(b0 | static_cast<quint32>(b1) << 8 | static_cast<quint32>(b2) << 16 |
                            static_cast<quint32>(b3) << 24);
}

/// The first `size` bytes (1, 2 or 4) as a number.
inline quint32 contentsOf(const quint8 *bytes, int size)
{
    if (size == 4)
        return static_cast<quint32>(uchar2int32(bytes[0], bytes[1], bytes[2], bytes[3]));
    return static_cast<quint32>(size == 2 ? uchar2int16(bytes[0], bytes[1]) : bytes[0]);
}

#endif
