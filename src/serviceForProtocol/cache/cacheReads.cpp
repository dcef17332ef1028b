#include "serviceForProtocol/cache/cacheReads.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/cache/dataAreas.h"
#include "serviceForProtocol/identity/addressText.h"

#include <QtCore/QMutexLocker>

#include <cstring>

namespace {

const quint8 *shownBytesAt(const ValueShape &shape, int station, int unit)
{
    return shownBytes(driver.dataAreas.at(getIndexOfDataArea(station, shape.keyName, unit, driver.dataAreas)));
}

void serveBits(const ValueShape &shape, int station, int address, int count, quint8 *values)
{
    for (int i = 0; i < count; ++i) {
        const BitPlace place = placeOfBit(shape, address + i);
        const quint8 byte = shownBytesAt(shape, station, place.unit)[place.bit / 8];
        values[i] = static_cast<quint8>(byte >> (place.bit % 8) & 1U);
    }
}

quint8 hexNibble(const QByteArray &text, qint64 position)
{
    if (position < 0 || position >= text.size())
        return 0;
    const quint8 code = static_cast<quint8>(text.at(static_cast<int>(position)));
    if (code <= '@')
        return static_cast<quint8>(code < '0' || code == '@' ? 0 : code - '0');
    return static_cast<quint8>((code - ('A' - 10)) & 0x0F);
}

} // namespace

void serveUnits(const ValueShape &shape, int station, int address, int count, quint8 *values)
{
    const QMutexLocker lock(&driver.dataAreaMutex);
    if (shape.holdsBits())
        return serveBits(shape, station, address, count, values);
    const qint64 units = shape.unitsOf(count);
    for (int i = 0; i < units; ++i) {
        const quint8 *shown = shownBytesAt(shape, station, wrappingSum(address, i));
        std::memcpy(values + static_cast<qptrdiff>(i) * shape.bytesPerUnit, shown,
                    static_cast<std::size_t>(shape.bytesPerUnit));
    }
}

quint8 asc2hex(const QByteArray &text, int position)
{
    const int high = hexNibble(text, position);
    const int low = hexNibble(text, static_cast<qint64>(position) + 1);
    return static_cast<quint8>(16 * high + low);
}

int intf_getData(int station, const QString &regName, int address, int count, quint8 *values)
{
    if (values && isSensibleRun(regName, address, count))
        serveUnits(shapeOfKind(regName), station, address, count, values);
    return 1;
}
