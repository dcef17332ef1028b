#include "tanek_vs/addressJoin.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"

bool liesWithinGap(const Run &block, const Run &next, int gap)
{
    return block.station == next.station && block.regName == next.regName &&
           wrappingDifference(next.address, wrappingSum(block.address, block.count)) <= gap;
}

int judgeAddrMerge(const Run &block, const Run &key, int mode)
{
    return liesWithinGap(block, key, mode == 0 ? 0 : driver.mergeGap) ? 0 : 1;
}
