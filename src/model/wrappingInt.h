/// Sums and products of host numbers that wrap around instead of overflowing, which for a signed type is undefined.
#ifndef TANEK_VS_WRAPPING_INT_H
#define TANEK_VS_WRAPPING_INT_H

#include <QtCore/QtGlobal>

inline qint32 wrap(qint64 value) { return static_cast<qint32>(static_cast<quint32>(value)); }

inline qint32 wrappingSum(qint32 left, qint32 right) { return wrap(static_cast<qint64>(left) + right); }

inline qint32 wrappingDifference(qint32 left, qint32 right) { return wrap(static_cast<qint64>(left) - right); }

inline qint32 wrappingProduct(qint32 left, qint32 right) { return wrap(static_cast<qint64>(left) * right); }

#endif
