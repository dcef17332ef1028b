/// The units of the cache. Nobody else touches `dataAreas`, their index and their lock.
///
/// A verb goes over a run of units. Those that the host has to be told of (mirror, settle, store) stop at each unit
/// that is to be reported: they return its change with all that the report needs, the caller reports it without the
/// lock, and calls again for the rest of the run. So a callback finds every unit up to the reported one changed and
/// none behind it, and a run without reports takes the lock once. A unit that is not cached yet is created, all zero.
#ifndef TANEK_VS_UNIT_STORE_H
#define TANEK_VS_UNIT_STORE_H

#include "model/dataArea.h"
#include "serviceForProtocol/cache/unitIndex.h"
#include "serviceForProtocol/cache/valueShape.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// Units of one shape that follow each other, or single bits of them, and how far a verb has come on them.
struct UnitRun {
    /// @param number of units; of bits where the shape has bits.
    UnitRun(const ValueShape &shapeOfRun, int stationOfRun, const QString &name, int firstAddress, int number);

    ValueShape shape;
    int station;
    QString keyName;
    int address;
    int count;
    /// So many of the run are done.
    int done = 0;
    /// Entries that were found last, and the unit of the first of them.
    Stretch located = {0, 0};
    int firstLocated = 0;
};

/// The run of a host's values of a kind, count in host terms.
UnitRun unitsOfValues(const RegisterKind &kind, int station, int address, int hostCount);

/// A unit of a run that the host has to be told of, as it is after the change.
struct UnitChange {
    qint32 address;
    quint32 monitorFlags;
    quint32 monitorBits;
    /// The bits that count as changed.
    quint32 changedBits;
};

const quint32 ALL_BITS = 0xFFFFFFFFU;

/// The value with that bit (0 to 31) set when `on` is not 0, else cleared.
int _setBitValue(int value, int bit, int on);

/// A copy of the entry at that index; all zero when there is none.
_DATA_ entryAt(int index);

/// Flags the units that a polled address covers.
void flag(UnitRun run);

/// The same for an address as the host polls it, count in host terms. Flags nothing when the run makes no sense.
/// @return 0, always.
int _setDataAreaMonitorFlag(int station, const QString &regName, int address, int count);

/// Takes all flags and counts of outstanding bit writes from all units.
void forgetFlags();

/// Copies what the host sees of the units: the written bytes while a write is outstanding, else those read; of bits one
/// byte each, 0 or 1.
void show(UnitRun run, quint8 *values);

/// Counts a queued request for these bits; settle() discounts it.
void awaitBits(UnitRun run);

/// Makes written values the ones shown, and the units pending.
/// @param values those of the whole run, a byte for each bit.
/// @param hasTwin whether exactly two requests for this run of bits wait to be sent.
/// @return whether the shown contents of a unit have changed, with `change` saying how.
bool mirror(UnitRun &run, const quint8 *values, bool hasTwin, UnitChange &change);

/// Ends the write of units: accepted, the written contents are those read from now on; given up, the ones that were
/// read are shown again.
/// @return whether a unit is to be reported: accepted, if what is shown has changed; given up, always; a unit of
///         written bits once none is outstanding.
bool settle(UnitRun &run, bool accepted, UnitChange &change);

/// Stores the units that a read has brought, each of as many bits as a unit has, bits packed eight to a byte. One that
/// differs from what was read before ends the showing of a write, unless writes of its bits are outstanding.
/// @return whether a unit differed from what was read before.
bool store(UnitRun &run, const quint8 *data, UnitChange &change);

/// Drops all units.
void forgetUnits();

#endif
