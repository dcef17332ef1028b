/// The driver's whole state, in one object.
#ifndef TANEK_VS_PROTOCOL_H
#define TANEK_VS_PROTOCOL_H

#include "model/dataArea.h"
#include "tanek_vs/driver.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>
#include <QtCore/QVector>

/// Values of Protocol::transactionKind.
enum TransactionKind {
    TransactionIdle = 0,
    TransactionWrite = 2,
    TransactionConditionRead = 3,
    TransactionBlockRead = 4,
    TransactionRecipeWrite = 5,
    TransactionRecipeRead = 6
};

class Protocol {
public:
    Protocol();
    ~Protocol();

    ValueChangeCallback valueChangeCallback = nullptr;

    // Settings of the property text.
    int instanceId = 0;
    int cacheOnlyWrites = 0;
    int retryLimit = 0;
    int mergeGap = 0;

    // The host's objects; null until the host has configured the driver.
    quint8 *hostControlBlock = nullptr;
    quint16 *recipeBuffer = nullptr;
    QMutex *hostMutex = nullptr;

    /// Blocks of the poll list; the head is read next and then goes to the end.
    QList<VARIABLE> readBlocks;
    /// Pending writes, the head in flight. Guarded by `mutex`.
    QList<VARIABLE> writeQueue;
    /// Pending one-time reads, the head next or in flight.
    QList<VARIABLE> conditionReads;
    /// The cache. Entries are only ever appended, so that an index stays good until the cache is cleared. Guarded by
    /// `dataAreaMutex`.
    QList<_DATA_> dataAreas;

    /// This instance's recipe items, sorted by weight.
    QVector<_RCP_VAR_PRO> recipeItems;
    /// The blocks of a transfer, one transaction each.
    QVector<_RCP_VAR_PRO> recipeBlocks;
    /// For each block, the index of its first item.
    QList<int> recipeBlockFirstItem;
    /// The request that intf_addConditionRead queued last.
    VARIABLE lastConditionRead;
    QList<QString> regNames;

    // The transaction in progress.
    VARIABLE currentVariable;
    QList<VARIABLE> currentReadList;
    int transactionKind = TransactionIdle;
    /// Writes and condition reads since the last block read.
    int burstCount = 0;
    /// Bad replies to the frame in flight.
    int retryCount = 0;

    // The longest piece of a write or condition read.
    int maxBitsPerWrite = 0;
    int maxWordsPerWrite = 0;

    int lastTransactionFailed = 0;
    /// The frames of the transaction in progress, the head in flight.
    QList<FRAME_PRO> frameQueue;
    QMutex mutex;
    /// The recipe block that is transferred next.
    int recipeIndex = 0;
    QString propertyPageText;

    /// Guards `dataAreas` and `dataAreaIndex` between the communication thread and threads that post writes or read
    /// values. It is never held together with another lock, nor while the callback runs.
    QMutex dataAreaMutex;
    /// Where in `dataAreas` a unit is.
    QHash<DataAreaKey, int> dataAreaIndex;
    /// Requests that have left `writeQueue`, and so the number of its head: each request has the number of its place
    /// in the order of all. Guarded by `mutex`.
    quint32 finishedWrites = 0;
    /// Numbers of the requests that stand in `writeQueue` but not yet, in full, in the cache. Guarded by `mutex`. The
    /// communication thread does not send them: settled before it is mirrored, a write would stay outstanding in the
    /// cache for good.
    QList<quint32> writesBeingMirrored;
};

extern Protocol driver;

#endif
