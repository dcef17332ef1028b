#include "serviceForProtocol/requests/writeQueue.h"

#include "model/requestRecords.h"
#include "serviceForProtocol/requests/requestQueue.h"

#include <QtCore/QList>
#include <QtCore/QMutexLocker>

namespace {

/// Moves the requests that are no longer being mirrored from `from` to the end of `ended`. The caller holds the lock.
void takeMirrored(QList<DisplacedWrite> &from, QList<VARIABLE> &ended)
{
    for (int i = 0; i < from.size();) {
        if (driver.writesBeingMirrored.contains(from.at(i).number)) {
            ++i;
            continue;
        }
        ended.append(from.at(i).request);
        from.removeAt(i);
    }
}

} // namespace

bool PostedWrite::queue(const VARIABLE &request)
{
    const QMutexLocker lock(&driver.mutex);
    const QueuePlace place = placeInQueue(driver.writeQueue, request);
    if (place.kind == QueuePlace::OfDisplaced) {
        m_displaced.append(DisplacedWrite{driver.writeNumbers.at(place.index), driver.writeQueue.at(place.index)});
        driver.writeNumbers.removeAt(place.index);
    }
    putInQueue(driver.writeQueue, request, place);
    if (place.kind != QueuePlace::OfSameRun)
        driver.writeNumbers.append(++driver.lastWriteNumber);
    const quint32 number = driver.writeNumbers.at(place.index);
    m_numbers.append(number);
    driver.writesBeingMirrored.append(number);
    return place.kind != QueuePlace::OfSameRun;
}

QList<VARIABLE> PostedWrite::isShown()
{
    QList<VARIABLE> ended;
    const QMutexLocker lock(&driver.mutex);
    for (int i = 0; i < m_numbers.size(); ++i)
        driver.writesBeingMirrored.removeOne(m_numbers.at(i));
    takeMirrored(m_displaced, ended);
    takeMirrored(driver.displacedWrites, ended);
    driver.displacedWrites += m_displaced;
    return ended;
}

bool QueuedTwins::areTwo()
{
    const QMutexLocker lock(&driver.mutex);
    const int size = static_cast<int>(driver.writeQueue.size());
    if (m_size == size && m_lastNumber == driver.lastWriteNumber)
        return m_count == 2;
    m_size = size;
    m_lastNumber = driver.lastWriteNumber;
    m_count = 0;
    for (int i = 0; i < size; ++i)
        m_count += isSameRun(driver.writeQueue.at(i), m_run) ? 1 : 0;
    return m_count == 2;
}

bool nextWrite(VARIABLE &request)
{
    const QMutexLocker lock(&driver.mutex);
    if (driver.writeQueue.isEmpty() || driver.writesBeingMirrored.contains(driver.writeNumbers.at(0)))
        return false;
    copyRequest(driver.writeQueue.at(0), request);
    return true;
}

void removeFinishedWrite()
{
    const QMutexLocker lock(&driver.mutex);
    if (driver.writeQueue.isEmpty())
        return;
    driver.writeQueue.removeFirst();
    driver.writeNumbers.removeFirst();
}

void forgetWrites()
{
    const QMutexLocker lock(&driver.mutex);
    driver.writeQueue.clear();
    driver.writeNumbers.clear();
    driver.writesBeingMirrored.clear();
    driver.displacedWrites.clear();
}
