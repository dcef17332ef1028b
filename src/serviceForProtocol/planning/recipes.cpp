#include "serviceForProtocol/planning/recipes.h"

#include "model/protocol.h"
#include "serviceForProtocol/identity/addressText.h"
#include "serviceForProtocol/planning/pollPlan.h"
#include "tanek_vs/driver.h"
#include "tanek_vs/registerNames.h"

#include <algorithm>
#include <cstring>

namespace {

/// A count that no request can be built for: negative in device units too, two words of a 32-bit kind being one.
const int COUNT_OF_NO_REQUEST = -2;

QVector<_RCP_VAR_PRO> itemsOfThisInstance(const QVector<_RCP_VAR_PRO> &items)
{
    QVector<_RCP_VAR_PRO> own;
    for (int i = 0; i < items.size(); ++i) {
        if (items.at(i).instanceId == driver.instanceId)
            own.append(items.at(i));
    }
    return sortedByWeight(own);
}

/// An item longer than any kind would be cut into pieces without end; it gets one block that cannot be sent.
int plannedCount(const _RCP_VAR_PRO &item)
{
    return item.count > hostUnitsOfLargestKind() ? COUNT_OF_NO_REQUEST : item.count;
}

KEY_ADDRESS keyOf(const _RCP_VAR_PRO &item)
{
    KEY_ADDRESS key;
    key.station = item.station;
    key.regName = item.regName;
    key.address = item.address;
    key.count = plannedCount(item);
    key.bufferOffset = item.bufferOffset;
    return key;
}

_RCP_VAR_PRO blockOf(const KEY_ADDRESS &key)
{
    _RCP_VAR_PRO block;
    block.station = key.station;
    block.regName = key.regName;
    block.address = key.address;
    block.count = key.count;
    block.bufferOffset = key.bufferOffset;
    return block;
}

} // namespace

int intf_setRcpAddress(const QVector<_RCP_VAR_PRO> *items)
{
    if (!items)
        return static_cast<int>(driver.recipeItems.size());
    driver.recipeItems = itemsOfThisInstance(*items);
    driver.recipeBlocks.clear();
    driver.recipeBlockFirstItem.clear();
    QList<KEY_ADDRESS> keys;
    for (int i = 0; i < driver.recipeItems.size(); ++i)
        keys.append(keyOf(driver.recipeItems.at(i)));
    addrMerge(keys, MergeRecipe);
    for (int i = 0; i < keys.size(); ++i)
        driver.recipeBlocks.append(blockOf(keys.at(i)));
    return static_cast<int>(driver.recipeItems.size());
}

bool takesValuesFromOutside(const _RCP_VAR_PRO &block)
{
    const int kind = getIndexFromRegName(block.regName);
    return block.bufferOffset < 0 && kind >= 0 && unitWidthOf(kind) > 1;
}

void rcpAddrToVar(const _RCP_VAR_PRO &block, VARIABLE &request, int withValues)
{
    request.station = block.station;
    request.regName = block.regName;
    request.address = block.address;
    request.count = block.count;
    std::memset(request.data, 0, sizeof request.data);
    const int kind = getIndexFromRegName(block.regName);
    if (!withValues || !driver.recipeBuffer || kind < 0 || block.count < 1 || block.bufferOffset < 0)
        return;
    const qint64 bytes = static_cast<qint64>(block.count) * (unitWidthOf(kind) / 8);
    const qint64 most = RECORD_BUFFER_SIZE;
    std::memcpy(request.data, driver.recipeBuffer + block.bufferOffset,
                static_cast<std::size_t>(std::min(bytes, most)));
}
