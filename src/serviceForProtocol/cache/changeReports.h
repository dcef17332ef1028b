/// Tells the host which of its addresses depend on a changed unit, through the host's callback.
///
/// A reporter is called for a unit whose contents changed or whose write has ended; it decides by the unit's flags
/// what to report, changes nothing in the cache, and holds no lock while the callback runs. The two contents of a
/// unit, before and after the change in either order, tell which polled bits differ; when either is null, every
/// polled bit counts as changed. Mode 0 asks for reports of bits, any other mode leaves them out.
#ifndef TANEK_VS_CHANGE_REPORTS_H
#define TANEK_VS_CHANGE_REPORTS_H

#include "serviceForProtocol/cache/valueShape.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

/// low + 256 * high.
int uchar2int16(quint8 low, quint8 high);

/// Four bytes, least significant first.
int uchar2int32(quint8 b0, quint8 b1, quint8 b2, quint8 b3);

/// For units of one bit.
void _bitDataChange(int index);

void _byteDataChange(const quint8 *contents, const quint8 *otherContents, int index, int mode);
void _wordDataChange(const int *contents, const int *otherContents, int index, int mode);
void _dwordDataChange(const int *contents, const int *otherContents, int index, int mode);

/// The reporter for units of the shape's width, with bits.
void unitDataChange(const ValueShape &shape, const int *contents, const int *otherContents, int index);

/// One call of the callback; none while no callback is registered.
void callHost(int instance, int station, const QString &regName, int address);

/// One call of the callback for an address of this instance.
void reportAddress(int station, const QString &regName, int address);

#endif
