#include "serviceForProtocol/cache/requestQueue.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"

#include <algorithm>
#include <cstring>

namespace {

const int LAST_QUEUE_INDEX = 512;
const int DEFAULT_WORDS_PER_PIECE = 32;
const int DEFAULT_BITS_PER_PIECE = 256;

} // namespace

int bitsPerPiece() { return driver.maxBitsPerWrite < 1 ? DEFAULT_BITS_PER_PIECE : driver.maxBitsPerWrite; }

int wordsPerPiece() { return driver.maxWordsPerWrite < 1 ? DEFAULT_WORDS_PER_PIECE : driver.maxWordsPerWrite; }

int pieceCount(int count, int longest) { return count <= longest ? 1 : (count - 1) / longest + 1; }

KEY_ADDRESS pieceOf(const KEY_ADDRESS &record, int longest, int number, int bytesPerUnit)
{
    if (record.count <= longest)
        return record;
    const int offset = number * longest;
    KEY_ADDRESS piece = record;
    piece.address = wrappingSum(record.address, offset);
    piece.count = std::min(longest, record.count - offset);
    std::memset(piece.data, 0, sizeof piece.data);
    const int firstByte = std::min(offset * bytesPerUnit, static_cast<int>(RECORD_BUFFER_SIZE));
    const int bytes = std::min(piece.count * bytesPerUnit, RECORD_BUFFER_SIZE - firstByte);
    std::memcpy(piece.data, record.data + firstByte, static_cast<std::size_t>(bytes));
    return piece;
}

bool isSameRequest(const VARIABLE &left, const VARIABLE &right)
{
    return left.address == right.address && left.count == right.count && left.station == right.station &&
           left.regName == right.regName;
}

int queueRequest(QList<VARIABLE> &queue, const VARIABLE &request)
{
    const int size = static_cast<int>(queue.size());
    int index = size - 1;
    while (index >= 1 && !isSameRequest(queue.at(index), request))
        --index;
    if (index < 1)
        index = std::min(size, LAST_QUEUE_INDEX);
    if (index < size)
        queue[index] = request;
    else
        queue.append(request);
    return index;
}
