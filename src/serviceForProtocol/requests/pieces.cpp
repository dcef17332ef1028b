#include "serviceForProtocol/requests/pieces.h"

#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "model/wrappingInt.h"

#include <QtCore/QList>

#include <algorithm>

namespace {

const int DEFAULT_BITS_PER_PIECE = 256;
const int DEFAULT_WORDS_PER_PIECE = 32;

} // namespace

int longestPiece(const RegisterKind &kind, CountedIn counted)
{
    const bool bits = counted == CountedInBits;
    const int configured = bits ? driver.maxBitsPerWrite : driver.maxWordsPerWrite;
    const int fallback = bits ? DEFAULT_BITS_PER_PIECE : DEFAULT_WORDS_PER_PIECE;
    const int longest = configured < 1 ? fallback : configured;
    const int wordsPerUnit = std::max(kind.unitWidth / WORD_WIDTH, 1);
    return std::max(longest - longest % wordsPerUnit, wordsPerUnit);
}

void groupingKey(const Run &run, int longest, QList<Run> &pieces, int)
{
    if (longest < 1 || run.count <= longest) {
        pieces.append(run);
        return;
    }
    for (int offset = 0; offset < run.count; offset += longest) {
        Run piece = run;
        piece.address = wrappingSum(run.address, offset);
        piece.count = std::min(longest, run.count - offset);
        pieces.append(piece);
    }
}

Run inDeviceUnits(const RegisterKind &kind, const Run &run, const Run &piece)
{
    if (kind.holdsBits())
        return piece;
    Run units = piece;
    units.address = wrappingSum(run.address, unitsOfWords(piece.address - run.address, kind.unitWidth));
    units.count = unitsOfWords(piece.count, kind.unitWidth);
    return units;
}
