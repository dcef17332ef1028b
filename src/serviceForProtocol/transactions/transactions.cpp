#include "serviceForProtocol/transactions/transactions.h"

#include "model/protocol.h"
#include "model/requestRecords.h"
#include "model/run.h"
#include "serviceForProtocol/cache/changeReports.h"
#include "serviceForProtocol/requests/writeMirror.h"
#include "serviceForProtocol/requests/writeQueue.h"
#include "serviceForProtocol/transactions/recipeTransfer.h"
#include "serviceForProtocol/transactions/replyDecoding.h"
#include "tanek_vs/frameCodec.h"
#include "tanek_vs/replyCheck.h"
#include "tanek_vs/requestFrames.h"

#include <tanek_vs/driver.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <cstring>

namespace {

/// Writes in a row while poll blocks wait.
const int LONGEST_WRITE_BURST = 10;
/// Condition reads only fill up a burst to this length.
const int LONGEST_CONDITION_READ_BURST = 3;

const int WRITE_ACCEPTED = 1;
const int WRITE_GIVEN_UP = 0;

/// What intf_dealRcvFrame returns.
enum ReplyResult { ReplyToNothing = 0, ReplyAccepted = 1, ReplyGivenUp = 2, ReplyRetry = 8 };

/// Arguments of the callback at the end of the condition reads.
const int NOTIFICATION_INSTANCE = -1;
const int NOTIFICATION_STATION = -1;
const int CONDITION_READ_DONE = 0;
const int CONDITION_READ_GIVEN_UP = -1;

/// Builds the frame that reads the current request.
void buildReadFrame()
{
    if (driver.currentReadList.isEmpty())
        driver.currentReadList.append(VARIABLE());
    copyRead(driver.currentVariable, driver.currentReadList[0]);
    getReadFrame(driver.currentReadList);
}

void beginRead(const VARIABLE &request, TransactionKind kind)
{
    copyRead(request, driver.currentVariable);
    std::memset(driver.currentVariable.data, 0, sizeof driver.currentVariable.data);
    driver.transactionKind = kind;
    buildReadFrame();
}

/// @return false when no recipe block is to be transferred.
bool beginRecipeBlock()
{
    const TransactionKind transfer = requestedTransfer();
    if (transfer == TransactionIdle || !nextRecipeBlock(transfer))
        return false;
    if (transfer == TransactionRecipeRead)
        buildReadFrame();
    else if (hasValuesInBuffer())
        getWriteFrame(driver.currentVariable);
    return true;
}

bool beginWrite()
{
    if (driver.burstCount >= LONGEST_WRITE_BURST || !nextWrite(driver.currentVariable))
        return false;
    driver.transactionKind = TransactionWrite;
    ++driver.burstCount;
    getWriteFrame(driver.currentVariable);
    return true;
}

bool beginConditionRead()
{
    if (driver.conditionReads.isEmpty() || driver.burstCount >= LONGEST_CONDITION_READ_BURST)
        return false;
    ++driver.burstCount;
    beginRead(driver.conditionReads.at(0), TransactionConditionRead);
    return true;
}

bool beginBlockRead()
{
    driver.burstCount = 0;
    if (driver.readBlocks.isEmpty()) {
        driver.transactionKind = TransactionIdle;
        driver.frameQueue.clear();
        return false;
    }
    beginRead(driver.readBlocks.at(driver.nextReadBlock), TransactionBlockRead);
    return true;
}

void settleWrite(const VARIABLE &request, int result)
{
    if (driver.transactionKind == TransactionWrite)
        _write_FailOrSuc(request.station, request.regName, request.address, request.count, result);
}

void giveUp(const VARIABLE &request)
{
    driver.lastTransactionFailed = 1;
    settleWrite(request, WRITE_GIVEN_UP);
    driver.frameQueue.clear();
    driver.retryCount = 0;
    dealListWhenFinish();
}

/// Chooses the next transaction and builds its frame.
/// @return whether there is a frame. A request that no frame can be built for is given up; a poll block stays.
bool beginTransaction()
{
    if (!beginRecipeBlock() && !beginWrite() && !beginConditionRead() && !beginBlockRead())
        return false;
    if (!driver.frameQueue.isEmpty())
        return true;
    if (driver.transactionKind != TransactionBlockRead) {
        const VARIABLE request = driver.currentVariable;
        giveUp(request);
    }
    return false;
}

void finishFrame()
{
    driver.frameQueue.removeFirst();
    if (driver.frameQueue.isEmpty())
        dealListWhenFinish();
    driver.retryCount = 0;
}

ReplyResult refuseReply(const VARIABLE &request)
{
    ++driver.retryCount;
    if (driver.retryCount < driver.retryLimit)
        return ReplyRetry;
    giveUp(request);
    return ReplyGivenUp;
}

void finishConditionRead()
{
    const bool failed = driver.lastTransactionFailed == 1;
    if (!driver.conditionReads.isEmpty() && isSameRun(driver.conditionReads.at(0), driver.lastConditionRead))
        callHost(NOTIFICATION_INSTANCE, NOTIFICATION_STATION, QString::fromLatin1("-1"),
                 failed ? CONDITION_READ_GIVEN_UP : CONDITION_READ_DONE);
    if (failed)
        driver.conditionReads.clear();
    else if (!driver.conditionReads.isEmpty())
        driver.conditionReads.removeFirst();
}

void finishBlockRead()
{
    ++driver.nextReadBlock;
    if (driver.nextReadBlock >= driver.readBlocks.size())
        driver.nextReadBlock = 0;
}

} // namespace

void dealListWhenFinish()
{
    switch (driver.transactionKind) {
    case TransactionWrite:
        return removeFinishedWrite();
    case TransactionConditionRead:
        return finishConditionRead();
    case TransactionBlockRead:
        return finishBlockRead();
    case TransactionRecipeWrite:
    case TransactionRecipeRead:
        return finishRecipeBlock();
    default:
        return;
    }
}

int intf_getSendFrame(FRAME_PRO *hostFrame)
{
    if (!hostFrame || (driver.frameQueue.isEmpty() && !beginTransaction()))
        return 0;
    copyFrame(driver.frameQueue.at(0), *hostFrame);
    return 1;
}

int intf_dealRcvFrame(QByteArray &reply, QString &description)
{
    description.clear();
    if (driver.frameQueue.isEmpty())
        return ReplyToNothing;
    dealFrameRead_0x10(reply);
    description = getErrorInfo(reply);
    const VARIABLE &request = driver.frameQueue.at(0).variable;
    const int verdict =
        check_rcv_data(reinterpret_cast<const quint8 *>(reply.constData()), static_cast<int>(reply.size()));
    if (verdict == ReplyRefused)
        return refuseReply(request);
    driver.lastTransactionFailed = 0;
    if (verdict == ReplyCarriesData)
        dealReadFrameReturnSaveData(reply);
    else
        settleWrite(request, WRITE_ACCEPTED);
    finishFrame();
    return ReplyAccepted;
}
