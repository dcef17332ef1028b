#include "serviceForProtocol/planning/pollPlan.h"

#include "model/protocol.h"
#include "model/registerTable.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/cache/dataAreas.h"
#include "serviceForProtocol/identity/addressText.h"
#include "tanek_vs/joinTest.h"
#include "tanek_vs/registerNames.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

const int WORD_WIDTH = 16;
const quint32 WEIGHT_OF_KIND = 65535;
/// What poll blocks carry in place of a host's value.
const std::uintptr_t POLL_CONTEXT = 4;

enum JoinMode { JoinTouching = 0, JoinAcrossGap = 1 };

int unitsOfWords(int words, int unitWidth) { return wrap(static_cast<qint64>(words) * WORD_WIDTH / unitWidth); }

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

void sortByWeight(QList<KEY_ADDRESS> &keys)
{
    typedef std::pair<quint32, int> WeightAndPlace; // ordered by weight, then place: keys of one weight keep theirs
    std::vector<WeightAndPlace> order;
    order.reserve(static_cast<std::size_t>(keys.size()));
    for (int i = 0; i < keys.size(); ++i) {
        const KEY_ADDRESS &key = keys.at(i);
        order.push_back(WeightAndPlace(getRegAddressWeight(key.station, key.regName, key.address), i));
    }
    std::sort(order.begin(), order.end());
    QList<KEY_ADDRESS> sorted;
    for (const WeightAndPlace &entry : order)
        sorted.append(keys.at(entry.second));
    keys = sorted;
}

/// Lengthens the block to the end of the key, if it stays within the limit. A block's start never moves: what a key
/// has before it was covered by the pieces that the block's own key was cut into.
bool lengthen(KEY_ADDRESS &block, const KEY_ADDRESS &key)
{
    const int span = wrappingDifference(wrappingSum(key.address, key.count), block.address);
    if (span > BLOCK_LIMIT)
        return false;
    block.count = std::max(block.count, span);
    return true;
}

bool join(KEY_ADDRESS &block, const KEY_ADDRESS &key, JoinMode mode)
{
    return judgeAddrMerge(block, key, mode) == 0 && lengthen(block, key);
}

/// The first pass: keys that touch or overlap become one block, long ones are cut.
class BlockBuilder {
public:
    explicit BlockBuilder(bool forRecipe) : m_forRecipe(forRecipe) {}

    void add(const KEY_ADDRESS &key, int index)
    {
        if (m_hasBlock) {
            cutLongBlock();
            if (mayJoin(key) && join(m_block, key, JoinTouching))
                return;
            finishBlock();
        }
        m_block = key;
        m_firstKey = index;
        m_hasBlock = true;
    }

    QList<KEY_ADDRESS> finish()
    {
        cutLongBlock();
        finishBlock();
        return m_blocks;
    }

private:
    /// A recipe's block takes its values from one run of the buffer, so nothing can join it from before its start;
    /// and a key whose count makes no sense must not pass as part of a good block.
    bool mayJoin(const KEY_ADDRESS &key) const
    {
        return !m_forRecipe || (key.address >= m_block.address && key.count >= 0);
    }

    void cutLongBlock()
    {
        while (m_block.count > BLOCK_LIMIT) {
            const int rest = m_block.count - BLOCK_LIMIT;
            m_block.count = BLOCK_LIMIT;
            finishBlock();
            m_block.address = wrappingSum(m_block.address, BLOCK_LIMIT);
            m_block.count = rest;
            if (m_forRecipe)
                m_block.bufferOffset = wrappingSum(m_block.bufferOffset, bufferWordsOfFullBlock());
        }
    }

    /// Bits have no place of their own in the buffer.
    int bufferWordsOfFullBlock() const
    {
        const int kind = getIndexFromRegName(m_block.regName);
        if (kind < 0 || valueWidthOf(kind) == 1)
            return 0;
        return BLOCK_LIMIT * unitWidthOf(kind) / WORD_WIDTH;
    }

    void finishBlock()
    {
        m_blocks.append(m_block);
        if (m_forRecipe)
            driver.recipeBlockFirstItem.append(m_firstKey);
    }

    bool m_forRecipe;
    bool m_hasBlock = false;
    KEY_ADDRESS m_block;
    int m_firstKey = 0;
    QList<KEY_ADDRESS> m_blocks;
};

/// The second pass: blocks close to each other become one that covers the gap too.
QList<KEY_ADDRESS> bridgeGaps(const QList<KEY_ADDRESS> &blocks)
{
    QList<KEY_ADDRESS> bridged;
    KEY_ADDRESS block = blocks.at(0);
    for (int i = 1; i < blocks.size(); ++i) {
        if (join(block, blocks.at(i), JoinAcrossGap))
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
        sortByWeight(keys);

    BlockBuilder builder(forRecipe);
    for (int i = 0; i < keys.size(); ++i)
        builder.add(keys.at(i), i);
    const QList<KEY_ADDRESS> blocks = builder.finish();
    keys = forRecipe ? blocks : bridgeGaps(blocks);
}

int intf_addrMerge(const QList<KEY_ADDRESS> *keys)
{
    clearMonitorFlags();
    QList<KEY_ADDRESS> blocks;
    for (int i = 0; keys && i < keys->size(); ++i) {
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
