#include "serviceForProtocol/planning/pollPlan.h"

#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "model/registerTable.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "serviceForProtocol/cache/unitStore.h"
#include "tanek_vs/addressJoin.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>

namespace {

const quint32 WEIGHT_OF_KIND = 65535;
/// What poll blocks carry in place of a host's value.
const std::uintptr_t POLL_CONTEXT = 4;

void convertPollKey(PlannedRun &key)
{
    const RegisterKind *kind = registerKind(key.regName);
    if (kind && kind->isBitInWord) {
        key.count = unitsOfBits(key.count, kind->unitWidth);
        key.address /= kind->unitWidth;
        key.regName = kind->keyName;
    } else if (kind && !kind->holdsBits()) {
        key.count = unitsOfWords(key.count, kind->unitWidth);
    }
}

void convertRecipeKey(PlannedRun &key)
{
    const RegisterKind *kind = registerKind(key.regName);
    if (kind && !kind->holdsBits())
        key.count = unitsOfWords(key.count, kind->unitWidth);
}

/// A block of the plan, in the making.
struct Block {
    PlannedRun run;
    /// Every unit from here to the run's start is read by blocks before this one.
    int coveredFrom;
};

/// Makes the key part of the block, if it lies within the gap and the block stays within the limit. A block's start
/// never moves: a key that starts before it may join only if what it has there is covered. A recipe item whose count
/// makes no sense must not pass as part of a good block.
bool join(Block &block, const Run &key, int gap)
{
    if (key.address < block.coveredFrom || key.count < 0 || !liesWithinGap(block.run, key, gap))
        return false;
    const int span = wrappingDifference(wrappingSum(key.address, key.count), block.run.address);
    if (span > BLOCK_LIMIT)
        return false;
    block.run.count = std::max(block.run.count, span);
    return true;
}

/// The first pass: keys that touch or overlap become one block, long ones are cut.
class BlockBuilder {
public:
    explicit BlockBuilder(MergeMode mode) : m_mode(mode) {}

    void add(const PlannedRun &key, int index)
    {
        if (m_hasBlock) {
            cutLongBlock();
            if (join(m_block, key, 0))
                return;
            m_blocks.push_back(m_block);
        }
        m_block.run = key;
        m_block.run.firstKey = index;
        m_block.coveredFrom = key.address;
        m_hasBlock = true;
    }

    std::vector<Block> finish()
    {
        cutLongBlock();
        m_blocks.push_back(m_block);
        return m_blocks;
    }

private:
    void cutLongBlock()
    {
        PlannedRun &run = m_block.run;
        while (run.count > BLOCK_LIMIT) {
            const int rest = run.count - BLOCK_LIMIT;
            run.count = BLOCK_LIMIT;
            m_blocks.push_back(m_block);
            run.address = wrappingSum(run.address, BLOCK_LIMIT);
            run.count = rest;
            if (m_mode == MergeRecipe) {
                run.bufferOffset = wrappingSum(run.bufferOffset, bufferWordsOfFullBlock());
                m_block.coveredFrom = run.address; // a recipe's block takes its values from one run of the buffer
            }
        }
    }

    /// Bits have no place of their own in the buffer.
    int bufferWordsOfFullBlock() const
    {
        const RegisterKind *kind = registerKind(m_block.run.regName);
        return !kind || kind->holdsBits() ? 0 : BLOCK_LIMIT * kind->unitWidth / WORD_WIDTH;
    }

    MergeMode m_mode;
    bool m_hasBlock = false;
    Block m_block = {};
    std::vector<Block> m_blocks;
};

/// The second pass: blocks close to each other become one that covers the gap too.
std::vector<Block> bridgeGaps(const std::vector<Block> &blocks, int mergeGap)
{
    std::vector<Block> bridged;
    for (const Block &block : blocks)
        if (bridged.empty() || !join(bridged.back(), block.run, mergeGap))
            bridged.push_back(block);
    return bridged;
}

VARIABLE pollRequest(const Run &block)
{
    VARIABLE request;
    request.hostContext = POLL_CONTEXT;
    setRun(request, block);
    return request;
}

} // namespace

PlannedRun plannedRun(const Run &run, int bufferOffset)
{
    PlannedRun planned;
    setRun(planned, run);
    planned.bufferOffset = bufferOffset;
    planned.firstKey = 0;
    return planned;
}

std::vector<PlannedRun> mergedBlocks(std::vector<PlannedRun> keys, MergeMode mode, int mergeGap)
{
    if (keys.empty())
        return keys;
    for (PlannedRun &key : keys)
        (mode == MergeRecipe ? convertRecipeKey : convertPollKey)(key);
    if (mode != MergeRecipe)
        keys = sortedByWeight(keys);

    BlockBuilder builder(mode);
    int index = 0;
    for (const PlannedRun &key : keys)
        builder.add(key, index++);
    const std::vector<Block> blocks = mode == MergeRecipe ? builder.finish() : bridgeGaps(builder.finish(), mergeGap);
    keys.clear();
    for (const Block &block : blocks)
        keys.push_back(block.run);
    return keys;
}

void addrMerge(std::vector<PlannedRun> &keys, int mode)
{
    keys = mergedBlocks(keys, mode == MergeRecipe ? MergeRecipe : MergePoll, driver.mergeGap);
    for (std::size_t i = 0; mode == MergeRecipe && i < keys.size(); ++i)
        driver.recipeBlockFirstItem.append(keys[i].firstKey);
}

quint32 getRegAddressWeight(int station, const QString &regName, int address)
{
    const quint32 kinds = static_cast<quint32>(driver.regNames.size());
    const quint32 kind = static_cast<quint32>(driver.regNames.indexOf(regName));
    return static_cast<quint32>(station) * (kinds * WEIGHT_OF_KIND) + kind * WEIGHT_OF_KIND +
           static_cast<quint32>(address);
}

int intf_addrMerge(const QList<KEY_ADDRESS> *keys)
{
    if (!keys)
        return static_cast<int>(driver.readBlocks.size());
    forgetFlags();
    std::vector<PlannedRun> plan;
    for (int i = 0; i < keys->size(); ++i) {
        const KEY_ADDRESS &key = keys->at(i);
        _setDataAreaMonitorFlag(key.station, key.regName, key.address, key.count);
        const RegisterKind *kind = registerKind(key.regName);
        if (isSensible(kind, key.address, key.count))
            plan.push_back(plannedRun(Run{key.station, kind->name, key.address, key.count}, 0));
    }
    driver.readBlocks.clear();
    driver.nextReadBlock = 0;
    addrMerge(plan, MergePoll);
    for (const PlannedRun &block : plan)
        driver.readBlocks.append(pollRequest(block));
    return static_cast<int>(driver.readBlocks.size());
}
