/// One entry of the cache: a device unit, what was read from it, and what was written to it.
#ifndef TANEK_VS_DATA_AREA_H
#define TANEK_VS_DATA_AREA_H

#include "model/registerTable.h"

#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

struct _DATA_ {
    /// 1 while a written value is outstanding; the host is then shown `writeValue`, else `readValue`.
    quint8 writePending = 0;
    /// Two bits for each bit k of a unit whose bits are written one by one. Bit 2k: a write of that bit is
    /// outstanding; bit 2k+1: a second one, for the very same request, is queued behind it.
    quint32 pendingBitWrites = 0;
    /// Which polled values use the whole unit. Bit 0: it is the value; bits 1 and 2: first and second of two units;
    /// bits 3 to 6: first to fourth of four units.
    quint32 monitorFlags = 0;
    /// Bit k: bit k of the unit is polled as an address of its own.
    quint32 monitorBits = 0;
    qint32 station = 0;
    /// The key name, under which a kind's units are cached: the bits of "D_bit" lie in the units of "D".
    QString regName;
    qint32 address = 0;
    /// Both least significant byte first; narrow units use the first bytes.
    quint8 readValue[4] = {};
    quint8 writeValue[4] = {};
    /// Requests in the write queue that write single bits of this unit.
    quint32 bitRequests = 0;
};

/// What identifies a device unit.
struct DataAreaKey {
    qint32 station;
    QString regName;
    qint32 address;
};

inline bool operator==(const DataAreaKey &left, const DataAreaKey &right)
{
    return left.address == right.address && left.station == right.station && isSameName(left.regName, right.regName);
}

/// Neighbouring addresses of one kind must not collide: the address is mixed in by a multiplication that spreads it.
inline uint qHash(const DataAreaKey &key)
{
    const uint addressSpread = 2654435761U;
    const uint stationSpread = 40503U;
    return static_cast<uint>(qHash(key.regName)) ^ (static_cast<uint>(key.address) * addressSpread) ^
           (static_cast<uint>(key.station) * stationSpread);
}

#endif
