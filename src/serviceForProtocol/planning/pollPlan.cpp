#include "serviceForProtocol/planning/pollPlan.h"

#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "model/registerTable.h"
#include "serviceForProtocol/cache/dataAreas.h"
#include "serviceForProtocol/identity/addressText.h"
#include "tanek_vs/joinTest.h"
#include "tanek_vs/registerNames.h"

#include <algorithm>

namespace {

const quint32 WEIGHT_OF_KIND = 65535;
/// What poll blocks carry in place of a host's value.
const std::uintptr_t POLL_CONTEXT = 4;

enum JoinMode { JoinTouching = 0, JoinAcrossGap = 1 };

void convertPollKey(KEY_ADDRESS &key)
{
    const int kind = getIndexFromRegName(key.regName);
    if (kind < 0)
        return;
    const int unitWidth = unitWidthOf(kind);
    if (namesBitInWord(key.regName)) {
        key.count = wrap((static_cast<qint64>(key.count) + unitWidth - 1) / unitWidth);
        key.address /= unitWidth;
        key.regName = nameOfWords(key.regName);
    } else if (unitWidth != 1) {
        key.count = unitsOfWords(key.count, unitWidth);
    }
}

void convertRecipeKey(KEY_ADDRESS &key)
{
    const int kind = getIndexFromRegName(key.regName);
    if (kind >= 0 && valueWidthOf(kind) != 1)
        key.count = unitsOfWords(key.count, unitWidthOf(kind));
}

/// A block of the plan, in the making.
struct Block {
    KEY_ADDRESS run;
    /// Every unit from here to the run's start is read by blocks before this one.
    int coveredFrom;
    /// Index of the key that it begins with.
    int firstKey;
};

/// Makes the key part of the block, if it touches it or lies within the gap of the mode, and the block stays within
/// the limit. A block's start never moves: a key that starts before it may join only if what it has there is covered.
/// A recipe item whose count makes no sense must not pass as part of a good block.
bool join(Block &block, const KEY_ADDRESS &key, JoinMode mode)
{
    if (key.address < block.coveredFrom || key.count < 0 || judgeAddrMerge(block.run, key, mode) != 0)
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
    explicit BlockBuilder(bool forRecipe) : m_forRecipe(forRecipe) {}

    void add(const KEY_ADDRESS &key, int index)
    {
        if (m_hasBlock) {
            cutLongBlock();
            if (join(m_block, key, JoinTouching))
                return;
            m_blocks.append(m_block);
        }
        m_block.run = key;
        m_block.coveredFrom = key.address;
        m_block.firstKey = index;
        m_hasBlock = true;
    }

    QList<Block> finish()
    {
        cutLongBlock();
        m_blocks.append(m_block);
        return m_blocks;
    }

private:
    void cutLongBlock()
    {
        KEY_ADDRESS &run = m_block.run;
        while (run.count > BLOCK_LIMIT) {
            const int rest = run.count - BLOCK_LIMIT;
            run.count = BLOCK_LIMIT;
            m_blocks.append(m_block);
            run.address = wrappingSum(run.address, BLOCK_LIMIT);
            run.count = rest;
            if (m_forRecipe) {
                run.bufferOffset = wrappingSum(run.bufferOffset, bufferWordsOfFullBlock());
                m_block.coveredFrom = run.address; // a recipe's block takes its values from one run of the buffer
            }
        }
    }

    /// Bits have no place of their own in the buffer.
    int bufferWordsOfFullBlock() const
    {
        const int kind = getIndexFromRegName(m_block.run.regName);
        if (kind < 0 || valueWidthOf(kind) == 1)
            return 0;
        return BLOCK_LIMIT * unitWidthOf(kind) / WORD_WIDTH;
    }

    bool m_forRecipe;
    bool m_hasBlock = false;
    Block m_block = {};
    QList<Block> m_blocks;
};

/// The second pass: blocks close to each other become one that covers the gap too.
QList<Block> bridgeGaps(const QList<Block> &blocks)
{
    QList<Block> bridged;
    Block block = blocks.at(0);
    for (int i = 1; i < blocks.size(); ++i) {
        if (join(block, blocks.at(i).run, JoinAcrossGap))
            continue;
        bridged.append(block);
        block = blocks.at(i);
    }
    bridged.append(block);
    return bridged;
}

VARIABLE pollRequest(const KEY_ADDRESS &block)
{
    VARIABLE request;
    request.hostContext = POLL_CONTEXT;
    request.station = block.station;
    request.regName = block.regName;
    request.address = block.address;
    request.count = block.count;
    return request;
}

} // namespace

quint32 getRegAddressWeight(int station, const QString &regName, int address)
{
    const quint32 kinds = static_cast<quint32>(driver.regNames.size());
    const quint32 kind = static_cast<quint32>(driver.regNames.indexOf(regName));
    return static_cast<quint32>(station) * (kinds * WEIGHT_OF_KIND) + kind * WEIGHT_OF_KIND +
           static_cast<quint32>(address);
}

void addrMerge(QList<KEY_ADDRESS> &keys, int mode)
{
    if (keys.isEmpty())
        return;
    const bool forRecipe = mode == MergeRecipe;
    for (int i = 0; i < keys.size(); ++i)
        (forRecipe ? convertRecipeKey : convertPollKey)(keys[i]);
    if (!forRecipe)
        keys = sortedByWeight(keys);

    BlockBuilder builder(forRecipe);
    for (int i = 0; i < keys.size(); ++i)
        builder.add(keys.at(i), i);
    const QList<Block> blocks = forRecipe ? builder.finish() : bridgeGaps(builder.finish());
    keys.clear();
    for (int i = 0; i < blocks.size(); ++i) {
        keys.append(blocks.at(i).run);
        if (forRecipe)
            driver.recipeBlockFirstItem.append(blocks.at(i).firstKey);
    }
}

int intf_addrMerge(const QList<KEY_ADDRESS> *keys)
{
    if (!keys)
        return static_cast<int>(driver.readBlocks.size());
    clearMonitorFlags();
    QList<KEY_ADDRESS> blocks;
    for (int i = 0; i < keys->size(); ++i) {
        const KEY_ADDRESS &key = keys->at(i);
        _setDataAreaMonitorFlag(key.station, key.regName, key.address, key.count);
        if (isSensibleRun(key.regName, key.address, key.count))
            blocks.append(key);
    }
    driver.readBlocks.clear();
    addrMerge(blocks, MergePoll);
    for (int i = 0; i < blocks.size(); ++i)
        driver.readBlocks.append(pollRequest(blocks.at(i)));
    return static_cast<int>(driver.readBlocks.size());
}
