#include "serviceForProtocol/cache/changeReports.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace {

/// Under which names the host sees units of a width: suffixes of the key name, null for a view that there is not.
struct Views {
    int bits;
    const char *ofUnit;
    const char *ofTwoUnits;
    const char *ofFourUnits;
};

const Views BIT_VIEWS = {0, "", nullptr, nullptr};
const Views BYTE_VIEWS = {8, "_B", "_W", "_D"};
const Views WORD_VIEWS = {16, "", "_D", nullptr};
const Views DOUBLE_WORD_VIEWS = {32, "", nullptr, nullptr};

const quint32 UNIT_FLAG = 1;
const int FIRST_FLAG_OF_TWO_UNITS = 1;
const int FIRST_FLAG_OF_FOUR_UNITS = 3;

const Views &viewsOf(const ValueShape &shape)
{
    if (shape.isPlain)
        return BIT_VIEWS;
    if (shape.bytesPerUnit == 4)
        return DOUBLE_WORD_VIEWS;
    return shape.bytesPerUnit == 2 ? WORD_VIEWS : BYTE_VIEWS;
}

void reportAddress(const UnitRun &units, const QString &regName, int address)
{
    callHost(driver.instanceId, units.station, regName, address);
}

void reportView(const UnitRun &units, const char *suffix, int address)
{
    reportAddress(units, units.keyName + QString::fromLatin1(suffix), address);
}

void reportUnit(const UnitRun &units, const char *suffix, int address)
{
    if (*suffix == '\0')
        reportAddress(units, units.keyName, address);
    else
        reportView(units, suffix, address);
}

void reportBits(const UnitRun &units, int unit, quint32 bits, int bitsPerUnit)
{
    const QString name = units.keyName + QString::fromLatin1("_bit");
    const int firstBit = wrappingProduct(unit, bitsPerUnit);
    for (int bit = 0; bit < bitsPerUnit; ++bit)
        if ((bits >> bit & 1U) != 0)
            reportAddress(units, name, wrappingSum(firstBit, bit));
}

/// Reports the values of several units of which this is one.
/// @return false when a value would begin below address 0; nothing further is reported then.
bool reportMultiUnitValues(const UnitRun &units, const UnitChange &change, int firstFlag, int unitsPerValue,
                           const char *suffix)
{
    for (int place = 0; place < unitsPerValue; ++place) {
        if ((change.monitorFlags >> (firstFlag + place) & 1U) == 0)
            continue;
        const int firstUnit = wrappingDifference(change.address, place);
        if (firstUnit < 0)
            return false;
        reportView(units, suffix, firstUnit);
    }
    return true;
}

void reportLargerValues(const UnitRun &units, const UnitChange &change, const Views &views)
{
    if (views.ofTwoUnits && !reportMultiUnitValues(units, change, FIRST_FLAG_OF_TWO_UNITS, 2, views.ofTwoUnits))
        return;
    if (views.ofFourUnits)
        reportMultiUnitValues(units, change, FIRST_FLAG_OF_FOUR_UNITS, 4, views.ofFourUnits);
}

template <typename Contents>
void reportEntry(int index, const Contents *contents, const Contents *otherContents, int mode, const ValueShape &shape)
{
    const _DATA_ area = entryAt(index);
    quint32 changedBits = mode == 0 ? ALL_BITS : 0;
    if (contents && otherContents)
        changedBits &= static_cast<quint32>(*contents ^ *otherContents);
    const UnitChange change = {area.address, area.monitorFlags, area.monitorBits, changedBits};
    reportRead(UnitRun(shape, area.station, area.regName, area.address, 1), change);
}

} // namespace

void reportRead(const UnitRun &units, const UnitChange &change)
{
    const Views &views = viewsOf(units.shape);
    if ((change.monitorBits & change.changedBits) != 0)
        reportBits(units, change.address, change.monitorBits & change.changedBits, views.bits);
    if ((change.monitorFlags & UNIT_FLAG) != 0)
        reportUnit(units, views.ofUnit, change.address);
    if ((change.monitorFlags & ~UNIT_FLAG) != 0)
        reportLargerValues(units, change, views);
}

void reportWrite(const UnitRun &units, const UnitChange &change)
{
    if (units.shape.isPlain)
        reportAddress(units, units.keyName, change.address);
    else
        reportRead(units, change);
}

void _bitDataChange(int index) { reportEntry<int>(index, nullptr, nullptr, 0, valueShape(1, 1, false)); }

void _byteDataChange(const quint8 *contents, const quint8 *otherContents, int index, int mode)
{
    reportEntry(index, contents, otherContents, mode, valueShape(16, 8, false));
}

void _wordDataChange(const int *contents, const int *otherContents, int index, int mode)
{
    reportEntry(index, contents, otherContents, mode, valueShape(16, 16, false));
}

void _dwordDataChange(const int *contents, const int *otherContents, int index, int mode)
{
    reportEntry(index, contents, otherContents, mode, valueShape(32, 32, false));
}

void callHost(int instance, int station, const QString &regName, int address)
{
    if (!driver.valueChangeCallback)
        return;
    QString name = regName;
    driver.valueChangeCallback(instance, station, name, address);
}
