/// Host terms and device units: a host counts words of 16 bits, the device counts units as wide as the kind has them.
#ifndef TANEK_VS_DEVICE_UNITS_H
#define TANEK_VS_DEVICE_UNITS_H

#include "model/wrappingInt.h"

#include <QtCore/QtGlobal>

const int WORD_WIDTH = 16;

/// Whole units in so many words; what is left over is dropped.
inline int unitsOfWords(int words, int unitWidth) { return wrap(static_cast<qint64>(words) * WORD_WIDTH / unitWidth); }

/// Units that it takes to hold so many bits from a unit's first bit on.
inline int unitsOfBits(qint64 bits, int unitWidth) { return wrap((bits + unitWidth - 1) / unitWidth); }

#endif
