/// Tells the host which of its addresses depend on a changed unit, through the host's callback.
///
/// A unit's flags decide what is reported: first its polled bits that count as changed, then the unit itself, then the
/// values of two and of four units that it is part of, each at its first unit. Nothing in the cache is touched, and no
/// lock is held while the callback runs.
#ifndef TANEK_VS_CHANGE_REPORTS_H
#define TANEK_VS_CHANGE_REPORTS_H

#include "serviceForProtocol/cache/unitStore.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// Reports what a read has changed in one of these units.
void reportRead(const UnitRun &units, const UnitChange &change);

/// Reports what the posting or the end of a write has changed: plain units by one call, polled or not.
void reportWrite(const UnitRun &units, const UnitChange &change);

/// The reporters by the width of units, for the entry at an index of the cache. The two contents, before and after the
/// change in either order, tell which bits differ; where either is null, all count as changed. Mode 0 asks for reports
/// of bits, any other mode leaves them out.
void _bitDataChange(int index);
void _byteDataChange(const quint8 *contents, const quint8 *otherContents, int index, int mode);
void _wordDataChange(const int *contents, const int *otherContents, int index, int mode);
void _dwordDataChange(const int *contents, const int *otherContents, int index, int mode);

/// One call of the callback; none while no callback is registered.
void callHost(int instance, int station, const QString &regName, int address);

#endif
