/// The cache of device units: looking a unit up, and flagging what the host polls.
///
/// getIndexOfDataArea works under `dataAreaMutex`, held by its caller wherever other threads may be in the driver.
#ifndef TANEK_VS_DATA_AREAS_H
#define TANEK_VS_DATA_AREAS_H

#include "model/dataArea.h"
#include "serviceForProtocol/cache/valueShape.h"

#include <QtCore/QList>
#include <QtCore/QString>

/// Index of the unit's entry in `areas`, the first if there are several. A missing entry is appended, all zero. Costs
/// the same however many units are cached.
int getIndexOfDataArea(int station, const QString &keyName, int address, QList<_DATA_> &areas);

/// The value with that bit (0 to 31) set when `on` is not 0, else cleared.
int _setBitValue(int value, int bit, int on);

/// Flags the units that a polled address covers, count in host terms. Flags nothing when the run makes no sense.
/// @return 0, always.
int _setDataAreaMonitorFlag(int station, const QString &regName, int address, int count);

/// The same for a shape.
void flagUnits(const ValueShape &shape, int station, int address, int count);

/// Takes all flags and counts of outstanding bit writes from all units.
void clearMonitorFlags();

#endif
