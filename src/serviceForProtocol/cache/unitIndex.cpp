#include "serviceForProtocol/cache/unitIndex.h"

#include "model/protocol.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <algorithm>

namespace {

DataAreaKey keyOf(const _DATA_ &area) { return DataAreaKey{area.station, area.regName, area.address}; }

void buildIndex(const QList<_DATA_> &areas)
{
    driver.dataAreaIndex.clear();
    for (int i = 0; i < areas.size(); ++i) {
        const DataAreaKey key = keyOf(areas.at(i));
        if (!driver.dataAreaIndex.contains(key))
            driver.dataAreaIndex.insert(key, i);
    }
}

bool isIndexed(const QList<_DATA_> &areas, int position)
{
    return driver.dataAreaIndex.value(keyOf(areas.at(position)), -1) == position;
}

/// Whether the index still describes the list. Whoever clears the list or fills it anew changes its length, its first
/// entry or its last one.
bool describes(const QList<_DATA_> &areas)
{
    const int size = static_cast<int>(areas.size());
    return driver.dataAreaIndex.size() == size && (size == 0 || (isIndexed(areas, 0) && isIndexed(areas, size - 1)));
}

int indexedPosition(const DataAreaKey &key, const QList<_DATA_> &areas)
{
    const int position = driver.dataAreaIndex.value(key, -1);
    const bool isThere =
        position >= 0 && position < areas.size() && isUnit(areas.at(position), key.station, key.regName, key.address);
    return isThere ? position : -1;
}

int appendUnit(const DataAreaKey &key, QList<_DATA_> &areas)
{
    _DATA_ area;
    area.station = key.station;
    area.regName = key.regName;
    area.address = key.address;
    areas.append(area);
    const int position = static_cast<int>(areas.size()) - 1;
    driver.dataAreaIndex.insert(key, position);
    return position;
}

} // namespace

int getIndexOfDataArea(int station, const QString &keyName, int address, QList<_DATA_> &areas)
{
    const DataAreaKey key = {station, keyName, address};
    int position = indexedPosition(key, areas);
    if (position >= 0)
        return position;
    if (!describes(areas)) {
        buildIndex(areas);
        position = indexedPosition(key, areas);
    }
    return position >= 0 ? position : appendUnit(key, areas);
}

Stretch entriesOfUnits(int station, const QString &keyName, int address, int most, QList<_DATA_> &areas)
{
    const int index = getIndexOfDataArea(station, keyName, address, areas);
    const int end = static_cast<int>(std::min(static_cast<qint64>(areas.size()), static_cast<qint64>(index) + most));
    int next = index + 1;
    while (next < end && areas.at(next).address == address + (next - index) && areas.at(next).station == station &&
           sharesText(areas.at(next).regName, keyName))
        ++next;
    return Stretch{index, next - index};
}
