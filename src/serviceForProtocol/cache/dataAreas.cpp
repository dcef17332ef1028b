#include "serviceForProtocol/cache/dataAreas.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/identity/addressText.h"

#include <QtCore/QMutexLocker>

namespace {

const int BITS_OF_INT = 32;

DataAreaKey keyOf(const _DATA_ &area) { return DataAreaKey{area.station, area.regName, area.address}; }

bool isUnit(const _DATA_ &area, const DataAreaKey &key)
{
    return area.address == key.address && area.station == key.station && area.regName == key.regName;
}

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
    const bool isThere = position >= 0 && position < areas.size() && isUnit(areas.at(position), key);
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

void flagUnit(const ValueShape &shape, int station, int address, int flag)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    _DATA_ &area = driver.dataAreas[getIndexOfDataArea(station, shape.keyName, address, driver.dataAreas)];
    area.monitorFlags |= 1U << flag;
}

void flagBit(const ValueShape &shape, int station, int bitAddress)
{
    const BitPlace place = placeOfBit(shape, bitAddress);
    const QMutexLocker lock(&driver.dataAreaMutex);
    _DATA_ &area = driver.dataAreas[getIndexOfDataArea(station, shape.keyName, place.unit, driver.dataAreas)];
    area.monitorBits |= 1U << place.bit;
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

int _setBitValue(int value, int bit, int on)
{
    if (bit < 0 || bit >= BITS_OF_INT)
        return value;
    const unsigned mask = 1U << bit;
    const unsigned bits = static_cast<unsigned>(value);
    return static_cast<int>(on ? bits | mask : bits & ~mask);
}

int _setDataAreaMonitorFlag(int station, const QString &regName, int address, int count)
{
    if (isSensibleRun(regName, address, count))
        flagUnits(shapeOfKind(regName), station, address, count);
    return 0;
}

void flagUnits(const ValueShape &shape, int station, int address, int count)
{
    if (shape.holdsBits()) {
        for (int i = 0; i < count; ++i)
            flagBit(shape, station, address + i);
        return;
    }
    const qint64 units = shape.unitsOf(count);
    for (int i = 0; i < units; ++i)
        flagUnit(shape, station, wrappingSum(address, i), shape.firstFlag + i % shape.unitsPerValue);
}

void clearMonitorFlags()
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        _DATA_ &area = driver.dataAreas[i];
        area.pendingBitWrites = 0;
        area.monitorFlags = 0;
        area.monitorBits = 0;
    }
}
