#include "serviceForProtocol/cache/writes.h"

#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "serviceForProtocol/cache/requestQueue.h"
#include "serviceForProtocol/cache/writeMirror.h"
#include "serviceForProtocol/identity/addressText.h"
#include "tanek_vs/driver.h"
#include "tanek_vs/registerNames.h"

#include <QtCore/QMutexLocker>

#include <cstring>

namespace {

const int BYTES_PER_BIT = 1;
const int BYTES_PER_WORD = 2;

void appendPieces(const KEY_ADDRESS &record, int longest, int bytesPerUnit, QList<KEY_ADDRESS> &pieces)
{
    const int number = longest < 1 ? 1 : pieceCount(record.count, longest);
    for (int i = 0; i < number; ++i)
        pieces.append(longest < 1 ? record : pieceOf(record, longest, i, bytesPerUnit));
}

QList<KEY_ADDRESS> piecesOf(const KEY_ADDRESS &record, bool bits)
{
    QList<KEY_ADDRESS> pieces;
    if (bits)
        groupingKey(record, bitsPerPiece(), pieces, 1);
    else
        appendPieces(record, wordsPerPiece(), BYTES_PER_WORD, pieces);
    return pieces;
}

VARIABLE requestOf(const KEY_ADDRESS &piece, std::uintptr_t hostContext)
{
    VARIABLE request;
    request.hostContext = hostContext;
    request.station = piece.station;
    request.regName = piece.regName;
    request.address = piece.address;
    request.count = piece.count;
    std::memcpy(request.data, piece.data, sizeof request.data);
    return request;
}

/// The requests of a write, in device units. Pieces are cut in words: where a unit is not a word, the address of each
/// further piece moves by what the counts of those before it shrank or grew.
QList<VARIABLE> requestsOf(const KEY_ADDRESS &record, int valueWidth, int unitWidth, std::uintptr_t hostContext)
{
    const bool bits = valueWidth == 1;
    const QList<KEY_ADDRESS> pieces = piecesOf(record, bits);
    QList<VARIABLE> requests;
    int shift = 0;
    for (int i = 0; i < pieces.size(); ++i) {
        VARIABLE request = requestOf(pieces.at(i), hostContext);
        if (!bits) {
            request.address = wrappingDifference(request.address, shift);
            request.count = unitsOfWords(request.count, unitWidth);
            shift += pieces.at(i).count - request.count;
        }
        requests.append(request);
    }
    return requests;
}

/// Requests in the queue; while it lives, the communication thread does not send them.
class QueuedWrites {
public:
    explicit QueuedWrites(const QList<VARIABLE> &requests)
    {
        const QMutexLocker lock(&driver.mutex);
        for (int i = 0; i < requests.size(); ++i) {
            const int index = queueRequest(driver.writeQueue, requests.at(i));
            m_numbers.append(driver.finishedWrites + static_cast<quint32>(index));
        }
        driver.writesBeingMirrored += m_numbers;
    }

    ~QueuedWrites()
    {
        const QMutexLocker lock(&driver.mutex);
        for (int i = 0; i < m_numbers.size(); ++i)
            driver.writesBeingMirrored.removeOne(m_numbers.at(i));
    }

    QueuedWrites(const QueuedWrites &) = delete;
    QueuedWrites &operator=(const QueuedWrites &) = delete;

private:
    QList<quint32> m_numbers;
};

} // namespace

void groupingKey(const KEY_ADDRESS &record, int longest, QList<KEY_ADDRESS> &pieces, int)
{
    appendPieces(record, longest, BYTES_PER_BIT, pieces);
}

int intf_setData(int station, const QString &regName, int address, int count, const quint8 *values,
                 std::uintptr_t hostContext)
{
    if (!values || !isSensibleRun(regName, address, count))
        return 1;
    if (driver.cacheOnlyWrites) {
        write_saveDataToArea(station, regName, address, count, values);
        return 1;
    }

    const int kind = getIndexFromRegName(regName);
    const int valueWidth = valueWidthOf(kind);
    const int bytes = count * (valueWidth == 1 ? BYTES_PER_BIT : BYTES_PER_WORD);
    if (bytes > RECORD_BUFFER_SIZE)
        return 1;
    KEY_ADDRESS record;
    record.station = station;
    record.regName = regName;
    record.address = address;
    record.count = count;
    std::memcpy(record.data, values, static_cast<std::size_t>(bytes));

    const QueuedWrites queued(requestsOf(record, valueWidth, unitWidthOf(kind), hostContext));
    write_saveDataToArea(station, regName, address, count, values);
    return 1;
}
