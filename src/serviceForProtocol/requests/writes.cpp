/// Takes the host's writes: cuts them into requests, queues those, and shows the values.
#include "model/protocol.h"
#include "model/run.h"
#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "serviceForProtocol/cache/unitStore.h"
#include "serviceForProtocol/requests/pieces.h"
#include "serviceForProtocol/requests/writeMirror.h"
#include "serviceForProtocol/requests/writeQueue.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace {

const int BYTES_PER_BIT = 1;
const int BYTES_PER_WORD = 2;
const int GIVEN_UP = 0;

int bytesPerCount(const RegisterKind &kind) { return kind.holdsBits() ? BYTES_PER_BIT : BYTES_PER_WORD; }

/// Bits as they are written and shown: 1 is on, every other byte off.
std::vector<quint8> switched(const quint8 *values, int count)
{
    std::vector<quint8> bits(values, values + count);
    std::transform(bits.begin(), bits.end(), bits.begin(),
                   [](quint8 value) { return static_cast<quint8>(value == 1 ? 1 : 0); });
    return bits;
}

/// The request for a piece of a write.
/// @param values those of the piece.
VARIABLE requestFor(const Run &units, const quint8 *values, int bytes, std::uintptr_t hostContext)
{
    VARIABLE request;
    request.hostContext = hostContext;
    setRun(request, units);
    std::memcpy(request.data, values, static_cast<std::size_t>(bytes));
    return request;
}

void queue(PostedWrite &write, const RegisterKind &kind, const Run &run, const quint8 *values,
           std::uintptr_t hostContext)
{
    QList<Run> pieces;
    groupingKey(run, longestPiece(kind, kind.holdsBits() ? CountedInBits : CountedInWords), pieces, 1);
    for (int i = 0; i < pieces.size(); ++i) {
        const Run units = inDeviceUnits(kind, run, pieces.at(i));
        const int bytes = pieces.at(i).count * bytesPerCount(kind);
        const bool isAdded = write.queue(requestFor(units, values, bytes, hostContext));
        if (isAdded && kind.isBitInWord)
            awaitBits(UnitRun(shapeOfValues(kind), units.station, kind.keyName, units.address, units.count));
        values += bytes;
    }
}

void giveUp(const QList<VARIABLE> &requests)
{
    for (int i = 0; i < requests.size(); ++i) {
        const VARIABLE &request = requests.at(i);
        _write_FailOrSuc(request.station, request.regName, request.address, request.count, GIVEN_UP);
    }
}

void post(const RegisterKind &kind, const Run &run, const quint8 *values, std::uintptr_t hostContext)
{
    if (driver.cacheOnlyWrites != 0)
        return write_saveDataToArea(run.station, run.regName, run.address, run.count, values);
    if (run.count * bytesPerCount(kind) > RECORD_BUFFER_SIZE)
        return;
    PostedWrite write;
    queue(write, kind, run, values, hostContext);
    write_saveDataToArea(run.station, run.regName, run.address, run.count, values);
    giveUp(write.isShown());
}

} // namespace

int intf_setData(int station, const QString &regName, int address, int count, const quint8 *values,
                 std::uintptr_t hostContext)
{
    const RegisterKind *kind = registerKind(regName);
    if (!values || !isSensible(kind, address, count))
        return 1;
    const Run run = {station, kind->name, address, count};
    if (kind->holdsBits())
        post(*kind, run, switched(values, count).data(), hostContext);
    else
        post(*kind, run, values, hostContext);
    return 1;
}
