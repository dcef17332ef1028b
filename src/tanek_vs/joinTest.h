/// May two runs of addresses be read by one request?
#ifndef TANEK_VS_JOIN_TEST_H
#define TANEK_VS_JOIN_TEST_H

#include "tanek_vs/records.h"

/// 0 when `key` may join `block`, 1 when they must stay separate: they differ in station or kind, or lie further
/// apart than mode 0 (touching) or any other mode (`mergeGap` units) allows.
int judgeAddrMerge(const KEY_ADDRESS &block, const KEY_ADDRESS &key, int mode);

#endif
