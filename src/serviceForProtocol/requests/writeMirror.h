/// Shows written values in the cache at once, and settles them when their write has ended.
///
/// A unit is changed before it is reported, so that a callback that reads sees the new contents.
#ifndef TANEK_VS_WRITE_MIRROR_H
#define TANEK_VS_WRITE_MIRROR_H

#include "serviceForProtocol/cache/unitStore.h"
#include "serviceForProtocol/requests/writeQueue.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// Mirrors a write into the cache: its arguments are those of intf_setData. Each unit becomes pending, and those whose
/// shown contents changed are reported.
void write_saveDataToArea(int station, const QString &regName, int address, int count, const quint8 *values);

/// Settles the units of a write request that has ended, address and count in device units. With `result` 1, accepted,
/// the written values become those last read; with any other, given up, the units show again what was read.
void _write_FailOrSuc(int station, const QString &regName, int address, int count, int result);

/// The same for units of any shape.
/// @param twins of the run as the host wrote it.
void mirrorUnits(UnitRun units, const quint8 *values, QueuedTwins twins);
void settleUnits(UnitRun units, bool accepted);

#endif
