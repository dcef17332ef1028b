#include "tanek_vs/joinTest.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"

int judgeAddrMerge(const KEY_ADDRESS &block, const KEY_ADDRESS &key, int mode)
{
    if (block.station != key.station || block.regName != key.regName)
        return 1;
    const int gap = wrappingDifference(key.address, wrappingSum(block.address, block.count));
    const int bridgedGap = mode == 0 ? 0 : driver.mergeGap;
    return gap > bridgedGap ? 1 : 0;
}
