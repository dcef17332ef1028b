/// The pieces that writes and one-time reads are cut into, so that each fits a frame.
#ifndef TANEK_VS_PIECES_H
#define TANEK_VS_PIECES_H

#include "model/registerTable.h"
#include "model/run.h"

#include <QtCore/QList>

/// What a host's count counts.
enum CountedIn { CountedInBits, CountedInWords };

/// The longest piece of a run of that kind, in what it is counted in, from the configuration; a configured limit below
/// 1 counts as 256 bits or 32 words. Kinds of 32-bit units are cut at whole units.
int longestPiece(const RegisterKind &kind, CountedIn counted);

/// Appends the pieces of at most `longest` that a run is cut into, addresses and counts in the run's own terms; a
/// `longest` below 1 cuts nothing.
/// @param mode 1; there is no other.
void groupingKey(const Run &run, int longest, QList<Run> &pieces, int mode);

/// A piece in device units: how far it lies behind the run's address, and its count, are of 16-bit words until then,
/// unless the kind holds bits.
Run inDeviceUnits(const RegisterKind &kind, const Run &run, const Run &piece);

#endif
