/// What queued writes and queued one-time reads have in common: the pieces they are cut into, and how a queue takes a
/// request that it may hold already.
#ifndef TANEK_VS_REQUEST_QUEUE_H
#define TANEK_VS_REQUEST_QUEUE_H

#include "tanek_vs/records.h"

#include <QtCore/QList>

/// The longest piece in bits or words, from the configuration; a configured limit below 1 counts as 256 or 32.
int bitsPerPiece();
int wordsPerPiece();

/// Pieces that a run of `count` is cut into; 1 when it is not longer than `longest`.
int pieceCount(int count, int longest);

/// Piece `number` of a record: a copy with the piece's own address, count and values, `bytesPerUnit` to a unit.
KEY_ADDRESS pieceOf(const KEY_ADDRESS &record, int longest, int number, int bytesPerUnit);

/// Whether two requests are for the same place: station, kind, address and count.
bool isSameRequest(const VARIABLE &left, const VARIABLE &right);

/// Puts a request in a queue. One for the same place that is waiting behind the head is replaced where it stands; the
/// head, perhaps in flight, never is. A queue of more than 512 requests has its entry 512 replaced.
/// @return the request's index in the queue.
int queueRequest(QList<VARIABLE> &queue, const VARIABLE &request);

#endif
