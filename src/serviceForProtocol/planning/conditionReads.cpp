/// One-time reads: queueing them. Their end is part of the end of a transaction.
#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "serviceForProtocol/cache/requestQueue.h"
#include "serviceForProtocol/identity/addressText.h"
#include "tanek_vs/driver.h"
#include "tanek_vs/registerNames.h"

namespace {

const int UNIT_CODE_BITS = -1;

VARIABLE conditionRead(const KEY_ADDRESS &piece, int unitWidth, std::uintptr_t hostContext)
{
    VARIABLE request;
    request.hostContext = hostContext;
    request.station = piece.station;
    if (namesBitInWord(piece.regName)) {
        // Every word that holds a wanted bit, from the word of the first one on.
        const qint64 bits = static_cast<qint64>(piece.count) + piece.address % unitWidth;
        request.regName = nameOfWords(piece.regName);
        request.address = piece.address / unitWidth;
        request.count = wrap((bits + unitWidth - 1) / unitWidth);
    } else {
        request.regName = piece.regName;
        request.address = piece.address;
        request.count = unitsOfWords(piece.count, unitWidth);
    }
    return request;
}

} // namespace

int intf_addConditionRead(const KEY_ADDRESS *key, std::uintptr_t hostContext)
{
    if (!key || !isSensibleRun(key->regName, key->address, key->count))
        return 1;
    const int unitWidth = unitWidthOf(getIndexFromRegName(key->regName));
    const int longest = key->unitCode == UNIT_CODE_BITS ? bitsPerPiece() : wordsPerPiece();
    const int pieces = pieceCount(key->count, longest);
    for (int i = 0; i < pieces; ++i) {
        const VARIABLE request = conditionRead(pieceOf(*key, longest, i, 0), unitWidth, hostContext);
        queueRequest(driver.conditionReads, request);
        driver.lastConditionRead = request;
    }
    return 1;
}
