#include "serviceForProtocol/cache/unitStore.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "serviceForProtocol/cache/byteAssembly.h"
#include "serviceForProtocol/cache/unitIndex.h"
#include "tanek_vs/registerNames.h"

#include <QtCore/QMutexLocker>
#include <QtCore/QString>

#include <cstddef>
#include <cstring>

namespace {

const int BITS_OF_INT = 32;

// ---- Places in a run ----

/// Which bit of its unit a run's bit is.
int bitInUnit(const UnitRun &run, int position) { return wrappingSum(run.address, position) % run.shape.bitsPerUnit; }

bool isLastOfUnit(const UnitRun &run, int position)
{
    return position == run.count - 1 || bitInUnit(run, position) == run.shape.bitsPerUnit - 1;
}

int unitOf(const UnitRun &run, int position)
{
    const int number = wrappingSum(run.address, position);
    return run.shape.holdsBits() ? number / run.shape.bitsPerUnit : number;
}

/// The high units of a value are mirrored first: a host told about its low unit finds the value complete.
int highUnitFirst(const ValueShape &shape, int position)
{
    const int place = position % shape.unitsPerValue;
    return position - place + shape.unitsPerValue - 1 - place;
}

// ---- Finding units; the caller holds the lock ----

/// The entries of a unit and of those behind it. The units of a run nearly always lie one behind the other, as they
/// were first touched, and stay where they are, so that most runs look one unit up.
Stretch entriesFrom(UnitRun &run, int unit)
{
    int offset = wrappingDifference(unit, run.firstLocated);
    if (offset < 0 || offset >= run.located.length) {
        const int most = wrappingDifference(unitOf(run, run.count - 1), unit) + 1;
        run.located = entriesOfUnits(run.station, run.keyName, unit, most, driver.dataAreas);
        run.firstLocated = unit;
        offset = 0;
    }
    return Stretch{run.located.index + offset, run.located.length - offset};
}

_DATA_ &find(UnitRun &run, int position) { return driver.dataAreas[entriesFrom(run, unitOf(run, position)).index]; }

// ---- Contents of a unit ----

std::size_t sizeOf(const ValueShape &shape) { return static_cast<std::size_t>(shape.bytesPerUnit); }

const quint8 *shownBytes(const _DATA_ &area) { return area.writePending ? area.writeValue : area.readValue; }

quint32 shownContents(const _DATA_ &area, const ValueShape &shape)
{
    return contentsOf(shownBytes(area), shape.bytesPerUnit);
}

bool isBitSet(quint32 bits, int bit) { return (bits >> bit & 1U) != 0; }

bool bitOf(const quint8 *bytes, int bit) { return isBitSet(bytes[bit / 8], bit % 8); }

void setBitOf(quint8 *bytes, int bit, bool on)
{
    bytes[bit / 8] = static_cast<quint8>(_setBitValue(bytes[bit / 8], bit % 8, on ? 1 : 0));
}

UnitChange changeOf(const _DATA_ &area, quint32 changedBits)
{
    const UnitChange change = {area.address, area.monitorFlags, area.monitorBits, changedBits};
    return change;
}

/// Copies 1, 2 or 4 bytes.
void copyBytes(const quint8 *from, int size, quint8 *to)
{
    if (size == 2)
        std::memcpy(to, from, 2);
    else
        std::memcpy(to, from, static_cast<std::size_t>(size));
}

/// What a read has brought for a place in the run: a packed bit, or the bytes of a unit.
quint32 readContents(const ValueShape &shape, const quint8 *data, int position)
{
    if (shape.isPlain)
        return bitOf(data, position) ? 1 : 0;
    return contentsOf(data + static_cast<std::ptrdiff_t>(position) * shape.bytesPerUnit, shape.bytesPerUnit);
}

// ---- Outstanding writes of single bits ----

/// The two bits of `pendingBitWrites` that stand for a bit of the unit.
int firstPendingBit(int bit) { return 2 * bit; }
int secondPendingBit(int bit) { return 2 * bit + 1; }

void setPending(_DATA_ &area, int pendingBit, bool on)
{
    area.pendingBitWrites =
        static_cast<quint32>(_setBitValue(static_cast<int>(area.pendingBitWrites), pendingBit, on ? 1 : 0));
}

void countBitWrite(_DATA_ &area, int bit, bool hasTwin)
{
    if (!isBitSet(area.pendingBitWrites, firstPendingBit(bit)))
        setPending(area, firstPendingBit(bit), true);
    else if (hasTwin)
        setPending(area, secondPendingBit(bit), true);
}

void discountBitWrite(_DATA_ &area, int bit)
{
    const int first = firstPendingBit(bit);
    setPending(area, isBitSet(area.pendingBitWrites, first) ? first : secondPendingBit(bit), false);
}

/// What is left of the counts when no request for bits of the unit waits any more is of writes that were replaced.
void discountBitRequest(_DATA_ &area)
{
    if (area.bitRequests > 0)
        --area.bitRequests;
    if (area.bitRequests == 0)
        area.pendingBitWrites = 0;
}

// ---- What the verbs do to one unit ----

void showBits(UnitRun &run, quint8 *values)
{
    for (; run.done < run.count; ++run.done)
        *values++ = bitOf(shownBytes(find(run, run.done)), bitInUnit(run, run.done)) ? 1 : 0;
}

void mirrorUnit(_DATA_ &area, const ValueShape &shape, const quint8 *bytes)
{
    std::memcpy(area.writeValue, bytes, sizeOf(shape));
    area.writePending = 1;
}

void mirrorBit(_DATA_ &area, const ValueShape &shape, int bit, bool on, bool hasTwin)
{
    if (!area.writePending)
        std::memcpy(area.writeValue, area.readValue, sizeOf(shape));
    setBitOf(area.writeValue, bit, on);
    area.writePending = 1;
    if (shape.bitsPerUnit == 16)
        countBitWrite(area, bit, hasTwin);
}

/// @return whether the unit is to be reported.
bool settleUnit(_DATA_ &area, const ValueShape &shape, bool accepted, quint32 &changedBits)
{
    const quint32 shown = shownContents(area, shape);
    const quint32 written = contentsOf(area.writeValue, shape.bytesPerUnit);
    area.writePending = 0;
    if (accepted)
        std::memcpy(area.readValue, area.writeValue, sizeOf(shape));
    const quint32 read = contentsOf(area.readValue, shape.bytesPerUnit);
    if (accepted)
        changedBits = shown ^ read;
    else
        changedBits = shape.bytesPerUnit == 4 ? ALL_BITS : written ^ read;
    return !accepted || changedBits != 0;
}

/// @return whether the unit is to be reported.
bool settleBit(_DATA_ &area, int bit, bool isLast, bool accepted)
{
    discountBitWrite(area, bit);
    if (isLast)
        discountBitRequest(area);
    if (area.pendingBitWrites == 0)
        area.writePending = 0;
    if (accepted)
        setBitOf(area.readValue, bit, bitOf(area.writeValue, bit));
    return area.writePending == 0;
}

UnitChange storeUnit(_DATA_ &area, const ValueShape &shape, quint32 contents)
{
    // Counts without a request are those of writes to the cache alone, which nobody settles.
    const bool endsShowing = area.pendingBitWrites == 0 || area.bitRequests == 0;
    const quint32 before = endsShowing ? shownContents(area, shape) : contentsOf(area.readValue, shape.bytesPerUnit);
    for (int i = 0; i < shape.bytesPerUnit; ++i)
        area.readValue[i] = static_cast<quint8>(contents >> (8 * i));
    if (endsShowing)
        area.writePending = 0;
    return changeOf(area, before ^ contents);
}

} // namespace

UnitRun::UnitRun(const ValueShape &shapeOfRun, int stationOfRun, const QString &name, int firstAddress, int number)
    : shape(shapeOfRun), station(stationOfRun), keyName(name), address(firstAddress),
      count(shapeOfRun.unitsPerValue == 0 ? 0 : number)
{
}

UnitRun unitsOfValues(const RegisterKind &kind, int station, int address, int hostCount)
{
    const ValueShape shape = shapeOfValues(kind);
    return UnitRun(shape, station, kind.keyName, address, hostCount / shape.hostCountPerValue * shape.unitsPerValue);
}

int _setBitValue(int value, int bit, int on)
{
    if (bit < 0 || bit >= BITS_OF_INT)
        return value;
    const unsigned mask = 1U << bit;
    const unsigned bits = static_cast<unsigned>(value);
    return static_cast<int>(on ? bits | mask : bits & ~mask);
}

_DATA_ entryAt(int index)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    return index >= 0 && index < driver.dataAreas.size() ? driver.dataAreas.at(index) : _DATA_();
}

void flag(UnitRun run)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    for (; run.done < run.count; ++run.done) {
        _DATA_ &area = find(run, run.done);
        if (run.shape.holdsBits())
            area.monitorBits |= 1U << bitInUnit(run, run.done);
        else
            area.monitorFlags |= 1U << (run.shape.firstFlag + run.done % run.shape.unitsPerValue);
    }
}

int _setDataAreaMonitorFlag(int station, const QString &regName, int address, int count)
{
    const RegisterKind *kind = registerKind(regName);
    if (isSensible(kind, address, count))
        flag(unitsOfValues(*kind, station, address, count));
    return 0;
}

void forgetFlags()
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        _DATA_ &area = driver.dataAreas[i];
        area.pendingBitWrites = 0;
        area.monitorFlags = 0;
        area.monitorBits = 0;
    }
}

void show(UnitRun run, quint8 *values)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    if (run.shape.holdsBits())
        return showBits(run, values);
    const int size = run.shape.bytesPerUnit;
    while (run.done < run.count) {
        const Stretch entries = entriesFrom(run, unitOf(run, run.done));
        for (int i = 0; i < entries.length; ++i, values += size)
            copyBytes(shownBytes(driver.dataAreas.at(entries.index + i)), size, values);
        run.done += entries.length;
    }
}

void awaitBits(UnitRun run)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    for (; run.done < run.count; ++run.done)
        if (isLastOfUnit(run, run.done))
            ++find(run, run.done).bitRequests;
}

bool mirror(UnitRun &run, const quint8 *values, bool hasTwin, UnitChange &change)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    while (run.done < run.count) {
        const int position = highUnitFirst(run.shape, run.done++);
        _DATA_ &area = find(run, position);
        const quint32 before = shownContents(area, run.shape);
        if (run.shape.holdsBits())
            mirrorBit(area, run.shape, bitInUnit(run, position), values[position] == 1, hasTwin);
        else
            mirrorUnit(area, run.shape, values + static_cast<std::size_t>(position) * sizeOf(run.shape));
        change = changeOf(area, before ^ shownContents(area, run.shape));
        if (change.changedBits != 0)
            return true;
    }
    return false;
}

bool settle(UnitRun &run, bool accepted, UnitChange &change)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    while (run.done < run.count) {
        const int position = run.done++;
        _DATA_ &area = find(run, position);
        quint32 changedBits = ALL_BITS;
        const bool isReported = run.shape.holdsBits()
                                    ? settleBit(area, bitInUnit(run, position), isLastOfUnit(run, position), accepted)
                                    : settleUnit(area, run.shape, accepted, changedBits);
        if (isReported) {
            change = changeOf(area, changedBits);
            return true;
        }
    }
    return false;
}

bool store(UnitRun &run, const quint8 *data, UnitChange &change)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    const ValueShape shape = run.shape;
    while (run.done < run.count) {
        const Stretch entries = entriesFrom(run, unitOf(run, run.done));
        const int position = run.done;
        for (int i = 0; i < entries.length; ++i) {
            const _DATA_ &area = driver.dataAreas.at(entries.index + i);
            const quint32 contents = readContents(shape, data, position + i);
            if (contents == contentsOf(area.readValue, shape.bytesPerUnit))
                continue;
            run.done = position + i + 1;
            change = storeUnit(driver.dataAreas[entries.index + i], shape, contents);
            return true;
        }
        run.done = position + entries.length;
    }
    return false;
}

void forgetUnits()
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    driver.dataAreas.clear();
    driver.dataAreaIndex.clear();
}
