#include "serviceForProtocol/requests/writeMirror.h"

#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "serviceForProtocol/cache/changeReports.h"
#include "tanek_vs/registerNames.h"

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace {

const int ACCEPTED = 1;

} // namespace

void mirrorUnits(UnitRun units, const quint8 *values, QueuedTwins twins)
{
    UnitChange change;
    while (mirror(units, values, units.shape.holdsBits() && twins.areTwo(), change))
        reportWrite(units, change);
}

void settleUnits(UnitRun units, bool accepted)
{
    UnitChange change;
    while (settle(units, accepted, change))
        reportWrite(units, change);
}

void write_saveDataToArea(int station, const QString &regName, int address, int count, const quint8 *values)
{
    const RegisterKind *kind = registerKind(regName);
    const Run run = {station, regName, address, count};
    if (isSensible(kind, address, count))
        mirrorUnits(unitsOfValues(*kind, station, address, count), values, QueuedTwins(run));
}

void _write_FailOrSuc(int station, const QString &regName, int address, int count, int result)
{
    const RegisterKind *kind = registerKind(regName);
    if (kind)
        settleUnits(UnitRun(shapeOfValues(*kind), station, kind->keyName, address, count), result == ACCEPTED);
}
