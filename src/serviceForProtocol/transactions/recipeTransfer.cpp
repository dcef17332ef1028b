#include "serviceForProtocol/transactions/recipeTransfer.h"

#include "model/run.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/cache/byteAssembly.h"
#include "serviceForProtocol/cache/changeReports.h"
#include "tanek_vs/registerNames.h"

#include <QtCore/QMutexLocker>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

const int DOWNLOAD_REQUEST_BYTE = 60115;
const int UPLOAD_REQUEST_BYTE = 60116;
const quint8 TRANSFER_REQUESTED = 1;
const quint8 TRANSFER_ENDED = 0;

/// What the callback is told for a word of the recipe buffer that an upload has filled.
const int UPLOAD_INSTANCE = 0;
const int UPLOAD_STATION = -1;

void endTransfer(int kind)
{
    driver.recipeIndex = 0;
    if (!driver.hostControlBlock || !driver.hostMutex)
        return;
    const QMutexLocker lock(driver.hostMutex);
    driver.hostControlBlock[kind == TransactionRecipeWrite ? DOWNLOAD_REQUEST_BYTE : UPLOAD_REQUEST_BYTE] =
        TRANSFER_ENDED;
}

void reportUploadedWord(int bufferWord)
{
    callHost(UPLOAD_INSTANCE, UPLOAD_STATION, QString::fromLatin1("RWI"), bufferWord);
}

void fillBufferWord(int bufferWord, const quint8 *bytes)
{
    driver.recipeBuffer[bufferWord] = static_cast<quint16>(uchar2int16(bytes[0], bytes[1]));
}

/// Of an item of 16-bit words, those that the block carries: all, unless the item is longer than a block.
void uploadWords(const _RCP_VAR_PRO &item, const VARIABLE &block, const quint8 *data)
{
    const qint64 firstUnit = std::max(item.address, block.address);
    const qint64 itemEnd = static_cast<qint64>(item.address) + item.count;
    const qint64 blockEnd = static_cast<qint64>(block.address) + block.count;
    for (qint64 unit = firstUnit; unit < std::min(itemEnd, blockEnd); ++unit) {
        const int bufferWord = wrap(item.bufferOffset + (unit - item.address));
        if (bufferWord < 0)
            continue;
        fillBufferWord(bufferWord, data + 2 * static_cast<std::ptrdiff_t>(unit - block.address));
        reportUploadedWord(bufferWord);
    }
}

/// An item of 32-bit units stands for one value, its first.
void uploadDoubleWord(const _RCP_VAR_PRO &item, const VARIABLE &block, const quint8 *data)
{
    const qint64 unit = static_cast<qint64>(item.address) - block.address;
    const int highWord = wrappingSum(item.bufferOffset, 1);
    if (unit < 0 || unit >= block.count || item.bufferOffset < 0 || highWord < 0)
        return;
    const quint8 *bytes = data + 4 * static_cast<std::ptrdiff_t>(unit);
    fillBufferWord(item.bufferOffset, bytes);
    fillBufferWord(highWord, bytes + 2);
    reportUploadedWord(item.bufferOffset);
    reportUploadedWord(highWord);
}

/// Index behind the last item of the current block. A piece of a long item that another piece follows holds that item
/// alone.
int endOfBlockItems(int firstItem)
{
    const int items = static_cast<int>(driver.recipeItems.size());
    if (driver.recipeIndex + 1 >= driver.recipeBlockFirstItem.size())
        return items;
    return std::min(std::max(driver.recipeBlockFirstItem.at(driver.recipeIndex + 1), firstItem + 1), items);
}

} // namespace

TransactionKind requestedTransfer()
{
    if (!driver.hostControlBlock || !driver.hostMutex)
        return TransactionIdle;
    const QMutexLocker lock(driver.hostMutex);
    if (driver.hostControlBlock[DOWNLOAD_REQUEST_BYTE] == TRANSFER_REQUESTED)
        return TransactionRecipeWrite;
    return driver.hostControlBlock[UPLOAD_REQUEST_BYTE] == TRANSFER_REQUESTED ? TransactionRecipeRead : TransactionIdle;
}

bool nextRecipeBlock(TransactionKind transfer)
{
    if (driver.transactionKind != transfer || driver.recipePlanReplaced)
        driver.recipeIndex = 0;
    driver.recipePlanReplaced = false;
    if (driver.recipeIndex >= driver.recipeBlocks.size() || !driver.recipeBuffer) {
        endTransfer(transfer);
        return false;
    }
    driver.transactionKind = transfer;
    rcpAddrToVar(driver.recipeBlocks.at(driver.recipeIndex), driver.currentVariable,
                 transfer == TransactionRecipeWrite ? 1 : 0);
    return true;
}

bool hasValuesInBuffer()
{
    const _RCP_VAR_PRO &block = driver.recipeBlocks.at(driver.recipeIndex);
    const RegisterKind *kind = registerKind(block.regName);
    return block.bufferOffset >= 0 || !kind || kind->unitWidth == 1;
}

void finishRecipeBlock()
{
    const bool isCarried = driver.lastTransactionFailed == 0;
    if (isCarried && (driver.recipePlanReplaced || ++driver.recipeIndex < driver.recipeBlocks.size()))
        return;
    endTransfer(driver.transactionKind);
}

void rcpAddrToVar(const _RCP_VAR_PRO &block, VARIABLE &request, int withValues)
{
    setRun(request, block);
    std::memset(request.data, 0, sizeof request.data);
    const RegisterKind *kind = registerKind(block.regName);
    if (!withValues || !driver.recipeBuffer || !kind || block.count < 1 || block.bufferOffset < 0)
        return;
    const qint64 bytes = static_cast<qint64>(block.count) * (kind->unitWidth / 8);
    const qint64 most = RECORD_BUFFER_SIZE;
    std::memcpy(request.data, driver.recipeBuffer + block.bufferOffset,
                static_cast<std::size_t>(std::min(bytes, most)));
}

void fillRecipeBuffer(const RegisterKind &kind, const VARIABLE &block, const quint8 *data)
{
    if (!driver.recipeBuffer || driver.recipePlanReplaced)
        return;
    const int firstItem = driver.recipeBlockFirstItem.at(driver.recipeIndex);
    const int itemsEnd = endOfBlockItems(firstItem);
    for (int i = firstItem; i < itemsEnd; ++i) {
        const _RCP_VAR_PRO item = driver.recipeItems.at(i);
        (kind.unitWidth == 16 ? uploadWords : uploadDoubleWord)(item, block, data);
    }
}
