/// One-time reads: queueing them. Their end is part of the end of a transaction.
#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "model/run.h"
#include "serviceForProtocol/addresses/sensibleRuns.h"
#include "serviceForProtocol/requests/pieces.h"
#include "serviceForProtocol/requests/requestQueue.h"
#include "tanek_vs/registerNames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QList>
#include <QtCore/QtGlobal>

namespace {

const int UNIT_CODE_BITS = -1;

/// Every word that holds one of these bits, from the word of the first one on.
Run wordsOfBits(const RegisterKind &kind, const Run &bits)
{
    const qint64 fromWordsFirstBit = static_cast<qint64>(bits.count) + bits.address % kind.unitWidth;
    Run words = {bits.station, kind.keyName, bits.address / kind.unitWidth,
                 unitsOfBits(fromWordsFirstBit, kind.unitWidth)};
    return words;
}

/// What is read for a piece. A count of plain bits counts words here too, so that sixteen bits are read for each.
Run runToRead(const RegisterKind &kind, const Run &run, const Run &piece)
{
    if (kind.isBitInWord)
        return wordsOfBits(kind, piece);
    Run units = inDeviceUnits(kind, run, piece);
    units.count = unitsOfWords(piece.count, kind.unitWidth);
    return units;
}

} // namespace

int intf_addConditionRead(const KEY_ADDRESS *key, std::uintptr_t hostContext)
{
    const RegisterKind *kind = key ? registerKind(key->regName) : nullptr;
    if (!key || !isSensible(kind, key->address, key->count))
        return 1;
    const Run run = {key->station, kind->name, key->address, key->count};
    QList<Run> pieces;
    groupingKey(run, longestPiece(*kind, key->unitCode == UNIT_CODE_BITS ? CountedInBits : CountedInWords), pieces, 1);
    for (int i = 0; i < pieces.size(); ++i) {
        VARIABLE request;
        request.hostContext = hostContext;
        setRun(request, runToRead(*kind, run, pieces.at(i)));
        putInQueue(driver.conditionReads, request, placeInQueue(driver.conditionReads, request));
        driver.lastConditionRead = request;
    }
    return 1;
}
