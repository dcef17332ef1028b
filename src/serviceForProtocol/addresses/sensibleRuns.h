/// Which runs of addresses make sense for a call that works on the controller's memory.
#ifndef TANEK_VS_SENSIBLE_RUNS_H
#define TANEK_VS_SENSIBLE_RUNS_H

#include "model/registerTable.h"
#include "model/run.h"

/// Bits or 16-bit words that the kind holds in all; 0 for no kind.
int hostUnitsOf(const RegisterKind *kind);

/// The same of the kind that holds the most.
int hostUnitsOfLargestKind();

/// Does this run, its count in host terms, make sense? It does when there is such a kind, the count is at least 1 and
/// no more than the kind holds, the address is not negative, and a request has room for the number of the last unit.
/// Addresses above the kind's highest pass: they are the address checks' business.
bool isSensible(const RegisterKind *kind, int address, int count);

#endif
