/// Plans which device memory is read in which blocks.
#ifndef TANEK_VS_POLL_PLAN_H
#define TANEK_VS_POLL_PLAN_H

#include "model/run.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <utility>
#include <vector>

/// Modes of merging.
enum MergeMode { MergePoll = 1, MergeRecipe = 2 };

/// Units of a block at most.
const int BLOCK_LIMIT = 32;

/// A key of a plan, in host terms, or a block of one, in device units.
struct PlannedRun : Run {
    /// Of recipes: the place of the first value, in 16-bit words from the start of the recipe buffer.
    int bufferOffset;
    /// Of a block: index of the key that it begins with.
    int firstKey;
};

PlannedRun plannedRun(const Run &run, int bufferOffset);

/// The blocks of at most BLOCK_LIMIT units that hold every unit of every key.
///
/// MergePoll sorts the keys, reads bits inside words as words, and bridges gaps of up to `mergeGap` units. MergeRecipe
/// keeps order, names and gaps; the items of a block are those from its first key to that of the next.
std::vector<PlannedRun> mergedBlocks(std::vector<PlannedRun> keys, MergeMode mode, int mergeGap);

/// Replaces keys by blocks, with the configured merge gap; for recipes, appends to `recipeBlockFirstItem` the index of
/// each block's first key.
void addrMerge(std::vector<PlannedRun> &keys, int mode);

/// The place of an address in the order of keys: by station, kind and address. Wraps at 32 bits.
quint32 getRegAddressWeight(int station, const QString &regName, int address);

/// Keys or recipe items in the order of their weights; those of one weight keep the order they had.
template <typename Records> Records sortedByWeight(const Records &records)
{
    typedef std::pair<quint32, int> WeightAndPlace;
    std::vector<WeightAndPlace> order;
    order.reserve(static_cast<std::size_t>(records.size()));
    int place = 0;
    for (const auto &record : records)
        order.push_back(WeightAndPlace(getRegAddressWeight(record.station, record.regName, record.address), place++));
    std::sort(order.begin(), order.end());
    Records sorted;
    sorted.reserve(records.size());
    for (const WeightAndPlace &entry : order)
        sorted.push_back(*(records.begin() + entry.second));
    return sorted;
}

#endif
