/// Takes the host's writes: cuts them into requests, queues those, and mirrors the values into the cache.
#ifndef TANEK_VS_WRITES_H
#define TANEK_VS_WRITES_H

#include "tanek_vs/records.h"

#include <QtCore/QList>

/// Appends the pieces of at most `longest` bits that a write of bits is cut into, values included; a `longest` below 1
/// cuts nothing.
/// @param mode 1; there is no other.
void groupingKey(const KEY_ADDRESS &record, int longest, QList<KEY_ADDRESS> &pieces, int mode);

#endif
