/// The driver's whole state, in one object.
#ifndef TANEK_VS_PROTOCOL_H
#define TANEK_VS_PROTOCOL_H

#include "model/dataArea.h"

#include <tanek_vs/driver.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtCore/QtGlobal>

/// Values of Protocol::transactionKind.
enum TransactionKind {
    TransactionIdle = 0,
    TransactionWrite = 2,
    TransactionConditionRead = 3,
    TransactionBlockRead = 4,
    TransactionRecipeWrite = 5,
    TransactionRecipeRead = 6
};

/// A request that has left the write queue unsent, for another that found it full.
struct DisplacedWrite {
    quint32 number;
    VARIABLE request;
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

    /// Blocks of the poll list, read in turn; `nextReadBlock` is the one whose turn it is.
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

    // Guarded by `mutex`.
    /// The number of each place in `writeQueue`, given when a request is appended or displaces another; a request that
    /// replaces one for the same run takes over its number.
    QList<quint32> writeNumbers;
    quint32 lastWriteNumber = 0;
    /// Numbers of the requests whose values the cache does not show in full yet, one for each call that is at it. They
    /// are neither sent nor settled: settled before it is shown, a write would stay outstanding in the cache for good.
    QList<quint32> writesBeingMirrored;
    /// Requests that were displaced from `writeQueue` while they were being mirrored.
    QList<DisplacedWrite> displacedWrites;

    /// Index in `readBlocks`. The list itself stays as it is: to turn it would cost the more the longer it is.
    int nextReadBlock = 0;

    /// The recipe was planned anew since the last recipe block was begun.
    bool recipePlanReplaced = false;
};

extern Protocol driver;

#endif
