#include "serviceForProtocol/requests/requestQueue.h"

#include "model/requestRecords.h"

#include <QtCore/QList>

namespace {

const int LAST_QUEUE_INDEX = 512;

} // namespace

QueuePlace placeInQueue(const QList<VARIABLE> &queue, const VARIABLE &request)
{
    const int size = static_cast<int>(queue.size());
    for (int index = size - 1; index >= 1; --index)
        if (isSameRun(queue.at(index), request))
            return QueuePlace{QueuePlace::OfSameRun, index};
    return size > LAST_QUEUE_INDEX ? QueuePlace{QueuePlace::OfDisplaced, LAST_QUEUE_INDEX}
                                   : QueuePlace{QueuePlace::AtEnd, size};
}

void putInQueue(QList<VARIABLE> &queue, const VARIABLE &request, const QueuePlace &place)
{
    if (place.kind == QueuePlace::AtEnd)
        queue.append(request);
    else
        copyRequest(request, queue[place.index]);
}
