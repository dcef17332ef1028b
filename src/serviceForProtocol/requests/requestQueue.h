/// How a queue takes a request that it may hold already: the same for writes and one-time reads.
#ifndef TANEK_VS_REQUEST_QUEUE_H
#define TANEK_VS_REQUEST_QUEUE_H

#include <tanek_vs/records.h>

#include <QtCore/QList>

/// The place that a request takes in a queue.
struct QueuePlace {
    enum Kind {
        AtEnd,
        /// In place of a request for the same run that waits behind the head. The head, perhaps in flight, keeps its.
        OfSameRun,
        /// In place of entry 512, the queue being full: that one is displaced.
        OfDisplaced
    };
    Kind kind;
    int index;
};

/// The place for a request in a queue, which holds 513 at most.
QueuePlace placeInQueue(const QList<VARIABLE> &queue, const VARIABLE &request);

void putInQueue(QList<VARIABLE> &queue, const VARIABLE &request, const QueuePlace &place);

#endif
