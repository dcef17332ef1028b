#include "serviceForProtocol/cache/writeMirror.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/cache/changeReports.h"
#include "serviceForProtocol/cache/dataAreas.h"
#include "serviceForProtocol/cache/requestQueue.h"
#include "serviceForProtocol/identity/addressText.h"

#include <QtCore/QMutexLocker>

#include <cstring>

namespace {

const int ACCEPTED = 1;

/// A unit before and after a change, in numbers, and its place in the cache.
struct UnitChange {
    int index;
    int before;
    int after;

    bool isVisible() const { return before != after; }
};

std::size_t sizeOfUnit(const ValueShape &shape) { return static_cast<std::size_t>(shape.bytesPerUnit); }

/// Index of the unit's entry; the caller holds the cache's lock.
int lookUp(const ValueShape &shape, int station, int unit)
{
    return getIndexOfDataArea(station, shape.keyName, unit, driver.dataAreas);
}

UnitChange mirrorUnit(const ValueShape &shape, int station, int unit, const quint8 *bytes)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    const int index = lookUp(shape, station, unit);
    _DATA_ &area = driver.dataAreas[index];
    const UnitChange change = {index, unitContents(shape, shownBytes(area)), unitContents(shape, bytes)};
    std::memcpy(area.writeValue, bytes, sizeOfUnit(shape));
    area.writePending = 1;
    return change;
}

void mirrorWholeUnits(const ValueShape &shape, int station, const QString &regName, int address, int count,
                      const quint8 *values)
{
    const int units = static_cast<int>(shape.unitsOf(count));
    for (int i = 0; i < units; ++i) {
        // The high units of a value come first: a host told about its low unit finds the value complete.
        const int value = i / shape.unitsPerValue;
        const int place = shape.unitsPerValue - 1 - i % shape.unitsPerValue;
        const int offset = value * shape.unitsPerValue + place;
        const int unit = wrappingSum(address, offset);
        const UnitChange change =
            mirrorUnit(shape, station, unit, values + static_cast<std::size_t>(offset) * sizeOfUnit(shape));
        if (!change.isVisible())
            continue;
        if (shape.isPlain)
            reportAddress(station, regName, unit);
        else
            unitDataChange(shape, &change.before, &change.after, change.index);
    }
}

void setBitOfByte(quint8 &byte, int bit, bool on) { byte = static_cast<quint8>(_setBitValue(byte, bit, on ? 1 : 0)); }

bool bitOfByte(unsigned byte, int bit) { return (byte >> bit & 1U) != 0; }

/// The two bits of `pendingBitWrites` that stand for a bit of the unit.
int firstPendingBit(int bit) { return 2 * bit; }
int secondPendingBit(int bit) { return 2 * bit + 1; }

bool isPendingBit(const _DATA_ &area, int pendingBit) { return (area.pendingBitWrites >> pendingBit & 1U) != 0; }

void setPendingBit(_DATA_ &area, int pendingBit, bool on)
{
    area.pendingBitWrites =
        static_cast<quint32>(_setBitValue(static_cast<int>(area.pendingBitWrites), pendingBit, on ? 1 : 0));
}

/// Shows the bit.
/// @param isFirstPending receives whether no write of this bit was outstanding before.
UnitChange mirrorBit(const ValueShape &shape, int station, int bitAddress, bool on, bool &isFirstPending)
{
    const BitPlace place = placeOfBit(shape, bitAddress);
    const QMutexLocker lock(&driver.dataAreaMutex);
    const int index = lookUp(shape, station, place.unit);
    _DATA_ &area = driver.dataAreas[index];
    const int before = unitContents(shape, shownBytes(area));
    if (!area.writePending)
        std::memcpy(area.writeValue, area.readValue, sizeOfUnit(shape));
    setBitOfByte(area.writeValue[place.bit / 8], place.bit % 8, on);
    area.writePending = 1;
    isFirstPending = !isPendingBit(area, firstPendingBit(place.bit));
    if (shape.bitsPerUnit == 16)
        setPendingBit(area, firstPendingBit(place.bit), true);
    const UnitChange change = {index, before, unitContents(shape, area.writeValue)};
    return change;
}

/// How often a request stands in the queue, counted anew only when the queue has moved.
class QueuedCount {
public:
    explicit QueuedCount(const VARIABLE &request) : m_request(request) {}

    int now()
    {
        const QMutexLocker lock(&driver.mutex);
        const int size = static_cast<int>(driver.writeQueue.size());
        if (m_size == size && m_finishedWrites == driver.finishedWrites)
            return m_count;
        m_size = size;
        m_finishedWrites = driver.finishedWrites;
        m_count = 0;
        for (int i = 0; i < size; ++i)
            m_count += isSameRequest(driver.writeQueue.at(i), m_request) ? 1 : 0;
        return m_count;
    }

private:
    const VARIABLE &m_request;
    int m_size = -1;
    quint32 m_finishedWrites = 0;
    int m_count = 0;
};

/// A second write of the same bit counts only when the very same request waits behind the first. The first may have
/// been settled while the queue was looked at; then this one is the first.
void countFurtherWrite(const ValueShape &shape, bool waitsBehindFirst, int bitAddress, int index)
{
    const int bit = placeOfBit(shape, bitAddress).bit;
    const QMutexLocker lock(&driver.dataAreaMutex);
    _DATA_ &area = driver.dataAreas[index];
    area.writePending = 1;
    if (!isPendingBit(area, firstPendingBit(bit)))
        setPendingBit(area, firstPendingBit(bit), true);
    else if (waitsBehindFirst)
        setPendingBit(area, secondPendingBit(bit), true);
}

void mirrorBits(const ValueShape &shape, const VARIABLE &request, const quint8 *values)
{
    QueuedCount queued(request);
    for (int i = 0; i < request.count; ++i) {
        const int bitAddress = request.address + i;
        bool isFirstPending = true;
        const UnitChange change = mirrorBit(shape, request.station, bitAddress, values[i] == 1, isFirstPending);
        if (shape.bitsPerUnit == 16 && !isFirstPending)
            countFurtherWrite(shape, queued.now() == 2, bitAddress, change.index);
        if (change.isVisible())
            unitDataChange(shape, &change.before, &change.after, change.index);
    }
}

/// @return the unit as written and as read after settling.
UnitChange settleUnit(const ValueShape &shape, int station, int unit, bool accepted)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    const int index = lookUp(shape, station, unit);
    _DATA_ &area = driver.dataAreas[index];
    area.writePending = 0;
    if (accepted)
        std::memcpy(area.readValue, area.writeValue, sizeOfUnit(shape));
    const UnitChange change = {index, unitContents(shape, area.writeValue), unitContents(shape, area.readValue)};
    return change;
}

void settleWholeUnits(const ValueShape &shape, int station, const QString &regName, int address, int count,
                      bool accepted)
{
    for (int i = 0; i < count; ++i) {
        const int unit = wrappingSum(address, i);
        const UnitChange change = settleUnit(shape, station, unit, accepted);
        if (accepted)
            continue;
        if (shape.isPlain)
            reportAddress(station, regName, unit);
        else if (shape.bytesPerUnit == 4)
            unitDataChange(shape, nullptr, nullptr, change.index);
        else
            unitDataChange(shape, &change.before, &change.after, change.index);
    }
}

struct SettledBit {
    int index;
    /// No write of any bit of the unit is outstanding any more.
    bool isUnitSettled;
};

SettledBit settleBit(const ValueShape &shape, int station, int bitAddress, bool accepted)
{
    const BitPlace place = placeOfBit(shape, bitAddress);
    const QMutexLocker lock(&driver.dataAreaMutex);
    const int index = lookUp(shape, station, place.unit);
    _DATA_ &area = driver.dataAreas[index];
    const int first = firstPendingBit(place.bit);
    setPendingBit(area, isPendingBit(area, first) ? first : secondPendingBit(place.bit), false);
    if (area.pendingBitWrites == 0)
        area.writePending = 0;
    const int byte = place.bit / 8;
    if (accepted)
        setBitOfByte(area.readValue[byte], place.bit % 8, bitOfByte(area.writeValue[byte], place.bit % 8));
    const SettledBit settled = {index, area.writePending == 0};
    return settled;
}

void settleBits(const ValueShape &shape, int station, int address, int count, bool accepted)
{
    for (int i = 0; i < count; ++i) {
        const SettledBit settled = settleBit(shape, station, address + i, accepted);
        if (settled.isUnitSettled)
            unitDataChange(shape, nullptr, nullptr, settled.index);
    }
}

} // namespace

void mirrorUnits(const ValueShape &shape, int station, const QString &regName, int address, int count,
                 const quint8 *values)
{
    if (!shape.holdsBits())
        return mirrorWholeUnits(shape, station, regName, address, count, values);
    VARIABLE request;
    request.station = station;
    request.regName = regName;
    request.address = address;
    request.count = count;
    mirrorBits(shape, request, values);
}

void settleUnits(const ValueShape &shape, int station, const QString &regName, int address, int count, bool accepted)
{
    if (shape.holdsBits())
        settleBits(shape, station, address, count, accepted);
    else if (shape.unitsPerValue != 0)
        settleWholeUnits(shape, station, regName, address, count, accepted);
}

void write_saveDataToArea(int station, const QString &regName, int address, int count, const quint8 *values)
{
    if (isSensibleRun(regName, address, count))
        mirrorUnits(shapeOfKind(regName), station, regName, address, count, values);
}

void _write_FailOrSuc(int station, const QString &regName, int address, int count, int result)
{
    settleUnits(shapeOfKind(regName), station, regName, address, count, result == ACCEPTED);
}
