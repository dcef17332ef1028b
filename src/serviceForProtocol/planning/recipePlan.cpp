/// The plan of recipe transfers: which items are carried in which blocks.
#include "model/protocol.h"
#include "model/run.h"
#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "serviceForProtocol/planning/pollPlan.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QVector>

#include <vector>

namespace {

/// A count that no request can be built for: negative in device units too, two words of a 32-bit kind being one.
const int COUNT_OF_NO_REQUEST = -2;

QVector<_RCP_VAR_PRO> itemsOfThisInstance(const QVector<_RCP_VAR_PRO> &items)
{
    QVector<_RCP_VAR_PRO> own;
    for (const _RCP_VAR_PRO &item : items)
        if (item.instanceId == driver.instanceId)
            own.append(item);
    return sortedByWeight(own);
}

/// An item longer than its kind would be cut into pieces without end; it gets one block that cannot be sent.
PlannedRun keyOf(const _RCP_VAR_PRO &item)
{
    Run run = runOf(item);
    if (item.count > hostUnitsOf(registerKind(item.regName)))
        run.count = COUNT_OF_NO_REQUEST;
    return plannedRun(run, item.bufferOffset);
}

_RCP_VAR_PRO blockOf(const PlannedRun &planned)
{
    _RCP_VAR_PRO block;
    setRun(block, planned);
    block.bufferOffset = planned.bufferOffset;
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
    driver.recipePlanReplaced = true;
    std::vector<PlannedRun> keys;
    keys.reserve(static_cast<std::size_t>(driver.recipeItems.size()));
    for (int i = 0; i < driver.recipeItems.size(); ++i)
        keys.push_back(keyOf(driver.recipeItems.at(i)));
    addrMerge(keys, MergeRecipe);
    for (const PlannedRun &block : keys)
        driver.recipeBlocks.append(blockOf(block));
    return static_cast<int>(driver.recipeItems.size());
}
