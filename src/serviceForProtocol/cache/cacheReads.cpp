#include "serviceForProtocol/cache/cacheReads.h"

#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "serviceForProtocol/cache/unitStore.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace {

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

quint8 asc2hex(const QByteArray &text, int position)
{
    const int high = hexNibble(text, position);
    const int low = hexNibble(text, static_cast<qint64>(position) + 1);
    return static_cast<quint8>(16 * high + low);
}

int intf_getData(int station, const QString &regName, int address, int count, quint8 *values)
{
    const RegisterKind *kind = registerKind(regName);
    if (values && isSensible(kind, address, count))
        show(unitsOfValues(*kind, station, address, count), values);
    return 1;
}
