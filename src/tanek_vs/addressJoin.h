/// May two runs of addresses be read by one request?
#ifndef TANEK_VS_ADDRESS_JOIN_H
#define TANEK_VS_ADDRESS_JOIN_H

#include "model/run.h"

/// Whether `next` is of the block's station and kind and begins at most `gap` units behind its end.
bool liesWithinGap(const Run &block, const Run &next, int gap);

/// 0 when `key` may join `block`, 1 when they must stay separate. Mode 0 joins what touches or overlaps, any other mode
/// also what lies up to the configured merge gap apart.
int judgeAddrMerge(const Run &block, const Run &key, int mode);

#endif
