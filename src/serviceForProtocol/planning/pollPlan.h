/// Plans which device memory is read in which blocks.
#ifndef TANEK_VS_POLL_PLAN_H
#define TANEK_VS_POLL_PLAN_H

#include "tanek_vs/records.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <utility>
#include <vector>

/// Modes of addrMerge.
enum MergeMode { MergePoll = 1, MergeRecipe = 2 };

/// Units of a block at most.
const int BLOCK_LIMIT = 32;

/// The place of an address in the order of keys: by station, kind and address. Wraps at 32 bits.
quint32 getRegAddressWeight(int station, const QString &regName, int address);

/// Replaces keys, at least one and in host terms, by blocks in device units. Every unit of every key lies in a block.
///
/// MergePoll sorts the keys, reads bits inside words as words, and bridges gaps of up to `mergeGap` units. MergeRecipe
/// keeps order, names and gaps, and appends to `recipeBlockFirstItem` the index of each block's first key.
void addrMerge(QList<KEY_ADDRESS> &keys, int mode);

/// Keys or recipe items in the order of their weights; those of one weight keep the order they had.
template <typename Records> Records sortedByWeight(const Records &records)
{
    typedef std::pair<quint32, int> WeightAndPlace;
    std::vector<WeightAndPlace> order;
    for (int i = 0; i < records.size(); ++i) {
        const quint32 weight = getRegAddressWeight(records.at(i).station, records.at(i).regName, records.at(i).address);
        order.push_back(WeightAndPlace(weight, i));
    }
    std::sort(order.begin(), order.end());
    Records sorted;
    for (const WeightAndPlace &entry : order)
        sorted.append(records.at(entry.second));
    return sorted;
}

#endif
