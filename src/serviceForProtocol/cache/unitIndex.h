/// Finds a unit's entry in the cache, at the same cost however many there are.
///
/// The index beside the list notices when the list was cleared or filled anew behind its back.
#ifndef TANEK_VS_UNIT_INDEX_H
#define TANEK_VS_UNIT_INDEX_H

#include "model/dataArea.h"
#include "model/registerTable.h"

#include <QtCore/QList>
#include <QtCore/QString>

/// Whether the entry is that of this unit.
inline bool isUnit(const _DATA_ &area, int station, const QString &keyName, int address)
{
    return area.address == address && area.station == station && isSameName(area.regName, keyName);
}

/// Index of the unit's entry in `areas`, the first if there are several. A missing entry is appended, all zero. The
/// caller holds `dataAreaMutex` wherever other threads may be in the driver.
int getIndexOfDataArea(int station, const QString &keyName, int address, QList<_DATA_> &areas);

/// Entries of units that lie one behind the other.
struct Stretch {
    int index;
    int length;
};

/// The entry of a unit, and of those behind it that are the following units of the kind: `most` in all.
Stretch entriesOfUnits(int station, const QString &keyName, int address, int most, QList<_DATA_> &areas);

#endif
