#include "serviceForProtocol/cache/changeReports.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"

#include <QtCore/QMutexLocker>

namespace {

/// What a reporter needs of an entry, copied so that the callback can run without the cache's lock.
struct MonitoredUnit {
    int station;
    QString keyName;
    int address;
    quint32 flags;
    quint32 bits;

    bool hasFlag(int flag) const { return (flags >> flag & 1U) != 0; }
    bool hasBit(int bit) const { return (bits >> bit & 1U) != 0; }
    QString viewName(const char *suffix) const { return keyName + QString::fromLatin1(suffix); }
};

MonitoredUnit monitoredUnit(int index)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    if (index < 0 || index >= driver.dataAreas.size())
        return MonitoredUnit{0, QString(), 0, 0, 0};
    const _DATA_ &area = driver.dataAreas.at(index);
    return MonitoredUnit{area.station, area.regName, area.address, area.monitorFlags, area.monitorBits};
}

const quint32 ALL_BITS = 0xFFFFFFFFU;

quint32 changedBits(const int *contents, const int *otherContents)
{
    return contents && otherContents ? static_cast<quint32>(*contents ^ *otherContents) : ALL_BITS;
}

void reportBits(const MonitoredUnit &unit, int bitsPerUnit, quint32 changed, int mode)
{
    if (mode != 0)
        return;
    for (int bit = 0; bit < bitsPerUnit; ++bit) {
        if (unit.hasBit(bit) && (changed >> bit & 1U) != 0)
            reportAddress(unit.station, unit.viewName("_bit"),
                          wrappingSum(wrappingProduct(unit.address, bitsPerUnit), bit));
    }
}

void reportUnit(const MonitoredUnit &unit, const char *suffix)
{
    if (unit.hasFlag(0))
        reportAddress(unit.station, unit.viewName(suffix), unit.address);
}

/// Reports the values of several units of which this is one, each at its first unit.
/// @return false when a value would begin below address 0; nothing further is reported then.
bool reportMultiUnitValues(const MonitoredUnit &unit, int firstFlag, int unitsPerValue, const char *suffix)
{
    for (int place = 0; place < unitsPerValue; ++place) {
        if (!unit.hasFlag(firstFlag + place))
            continue;
        const int firstUnit = wrappingDifference(unit.address, place);
        if (firstUnit < 0)
            return false;
        reportAddress(unit.station, unit.viewName(suffix), firstUnit);
    }
    return true;
}

} // namespace

int uchar2int16(quint8 low, quint8 high) { return low + 256 * high; }

int uchar2int32(quint8 b0, quint8 b1, quint8 b2, quint8 b3)
{
    return static_cast<int>(b0 | static_cast<quint32>(b1) << 8 | static_cast<quint32>(b2) << 16 |
                            static_cast<quint32>(b3) << 24);
}

void _bitDataChange(int index) { reportUnit(monitoredUnit(index), ""); }

void _byteDataChange(const quint8 *contents, const quint8 *otherContents, int index, int mode)
{
    const MonitoredUnit unit = monitoredUnit(index);
    const int value = contents ? *contents : 0;
    const int otherValue = otherContents ? *otherContents : 0;
    reportBits(unit, 8, changedBits(contents ? &value : nullptr, otherContents ? &otherValue : nullptr), mode);
    reportUnit(unit, "_B");
    if (reportMultiUnitValues(unit, 1, 2, "_W"))
        reportMultiUnitValues(unit, 3, 4, "_D");
}

void _wordDataChange(const int *contents, const int *otherContents, int index, int mode)
{
    const MonitoredUnit unit = monitoredUnit(index);
    reportBits(unit, 16, changedBits(contents, otherContents), mode);
    reportUnit(unit, "");
    reportMultiUnitValues(unit, 1, 2, "_D");
}

void _dwordDataChange(const int *contents, const int *otherContents, int index, int mode)
{
    const MonitoredUnit unit = monitoredUnit(index);
    reportBits(unit, 32, changedBits(contents, otherContents), mode);
    reportUnit(unit, "");
}

void unitDataChange(const ValueShape &shape, const int *contents, const int *otherContents, int index)
{
    if (shape.bytesPerUnit == 4)
        return _dwordDataChange(contents, otherContents, index, 0);
    if (shape.bytesPerUnit == 2)
        return _wordDataChange(contents, otherContents, index, 0);
    const quint8 byte = static_cast<quint8>(contents ? *contents : 0);
    const quint8 otherByte = static_cast<quint8>(otherContents ? *otherContents : 0);
    _byteDataChange(contents ? &byte : nullptr, otherContents ? &otherByte : nullptr, index, 0);
}

void callHost(int instance, int station, const QString &regName, int address)
{
    if (!driver.valueChangeCallback)
        return;
    QString name = regName;
    driver.valueChangeCallback(instance, station, name, address);
}

void reportAddress(int station, const QString &regName, int address)
{
    callHost(driver.instanceId, station, regName, address);
}
