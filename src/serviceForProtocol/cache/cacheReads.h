/// Serves values to the host from the cache.
#ifndef TANEK_VS_CACHE_READS_H
#define TANEK_VS_CACHE_READS_H

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

/// The two hexadecimal digits at `position` and behind it as a byte; what stands outside the text counts as 0.
quint8 asc2hex(const QByteArray &text, int position);

#endif
