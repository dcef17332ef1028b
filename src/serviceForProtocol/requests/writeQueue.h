/// The queue of writes. Nobody else changes `writeQueue`, its numbers and what is guarded with them by `mutex`.
///
/// A write is queued before its values are shown. Until they are, its requests are neither sent nor settled; others
/// that stand behind them wait, no others do.
#ifndef TANEK_VS_WRITE_QUEUE_H
#define TANEK_VS_WRITE_QUEUE_H

#include "model/protocol.h"
#include "model/run.h"

#include <tanek_vs/records.h>

#include <QtCore/QList>
#include <QtCore/QtGlobal>

/// A write that is being posted, from the queueing of its requests to the moment when all of its values are shown.
class PostedWrite {
public:
    PostedWrite() = default;
    PostedWrite(const PostedWrite &) = delete;
    PostedWrite &operator=(const PostedWrite &) = delete;

    /// Queues a request of the write.
    /// @return whether it got a place of its own, and not that of a request for the same run.
    bool queue(const VARIABLE &request);

    /// Says that the values are shown, and so lets the requests be sent. To be called once.
    /// @return the requests that found their end with that, in the order of their displacement: the ones this write
    ///         displaced, and displaced ones whose own values are shown only now.
    QList<VARIABLE> isShown();

private:
    QList<quint32> m_numbers;
    QList<DisplacedWrite> m_displaced;
};

/// Whether a run stands in the queue exactly twice: once in flight and once behind it. Counts anew only when the queue
/// has moved.
class QueuedTwins {
public:
    explicit QueuedTwins(const Run &run) : m_run(run) {}

    bool areTwo();

private:
    Run m_run;
    int m_size = -1;
    quint32 m_lastNumber = 0;
    int m_count = 0;
};

/// Copies the head of the queue.
/// @return false when the queue is empty or the head's values are not shown yet.
bool nextWrite(VARIABLE &request);

/// Takes the head, whose write has ended, out of the queue.
void removeFinishedWrite();

/// Drops all requests.
void forgetWrites();

#endif
