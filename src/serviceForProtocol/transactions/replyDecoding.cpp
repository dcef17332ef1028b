/// The data of a read reply, by the width of the kind's units:
///
/// | unit width | size of the data       | unit i                                  |
/// |------------|------------------------|-----------------------------------------|
/// | 1          | count / 8, rounded up  | bit i % 8 of byte i / 8, lowest first   |
/// | 16         | 2 * count              | bytes 2i and 2i+1, low byte first       |
/// | 32         | 4 * count              | bytes 4i to 4i+3, lowest byte first     |
#include "serviceForProtocol/transactions/replyDecoding.h"

#include "model/protocol.h"
#include "model/wrappingInt.h"
#include "serviceForProtocol/cache/changeReports.h"
#include "serviceForProtocol/cache/dataAreas.h"
#include "tanek_vs/bitAddress.h"
#include "tanek_vs/registerNames.h"
#include "tanek_vs/replyCheck.h"

#include <QtCore/QMutexLocker>

#include <algorithm>
#include <cstring>

namespace {

const int ERROR_REPLY_SIZE = 10;

/// What the callback is told for a word of the recipe buffer that an upload has filled.
const int UPLOAD_INSTANCE = 0;
const int UPLOAD_STATION = -1;

quint8 byteAt(const QByteArray &reply, qint64 position)
{
    return position >= 0 && position < reply.size() ? static_cast<quint8>(reply.at(static_cast<int>(position))) : 0;
}

QString addressText(const VARIABLE &request)
{
    if (request.regName.endsWith(QString::fromLatin1("_bit")))
        return addr_int2str(request.address, request.regName);
    return QString::number(request.address);
}

void storeBit(const VARIABLE &request, int unit, quint8 bit)
{
    int index = 0;
    {
        const QMutexLocker lock(&driver.dataAreaMutex);
        index = getIndexOfDataArea(request.station, request.regName, unit, driver.dataAreas);
        _DATA_ &area = driver.dataAreas[index];
        if (area.readValue[0] == bit)
            return;
        area.readValue[0] = bit;
        area.writePending = 0;
    }
    _bitDataChange(index);
}

bool isWriteQueueEmpty()
{
    const QMutexLocker lock(&driver.mutex);
    return driver.writeQueue.isEmpty();
}

/// Stores a unit of `shape.bytesPerUnit` bytes. While writes of single bits of it are outstanding, it goes on showing
/// what was written.
void storeUnit(const ValueShape &shape, int station, int unit, const quint8 *bytes)
{
    const int after = unitContents(shape, bytes);
    int index = 0;
    int before = 0;
    quint32 pendingBits = 0;
    {
        const QMutexLocker lock(&driver.dataAreaMutex);
        index = getIndexOfDataArea(station, shape.keyName, unit, driver.dataAreas);
        const _DATA_ &area = driver.dataAreas.at(index);
        before = unitContents(shape, area.readValue);
        pendingBits = area.pendingBitWrites;
    }
    if (before == after)
        return;
    // The queue is looked at after the unit: a write stands in the queue before its bits are counted as pending, so
    // bits that become pending from now on are those of a write that is just being posted.
    const bool pendingBitsAreLeftOver = pendingBits != 0 && isWriteQueueEmpty();
    {
        const QMutexLocker lock(&driver.dataAreaMutex);
        _DATA_ &area = driver.dataAreas[index];
        std::memcpy(area.readValue, bytes, static_cast<std::size_t>(shape.bytesPerUnit));
        if (area.pendingBitWrites == 0 || (pendingBitsAreLeftOver && area.pendingBitWrites == pendingBits))
            area.writePending = 0;
    }
    unitDataChange(shape, &before, &after, index);
}

void storeBits(const QByteArray &reply, int unitCount, int dataOffset, const VARIABLE &request)
{
    for (int i = 0; i < unitCount; ++i) {
        const quint8 byte = byteAt(reply, static_cast<qint64>(dataOffset) + i / 8);
        storeBit(request, wrappingSum(request.address, i), byte >> (i % 8) & 1U);
    }
}

void storeUnits(const QByteArray &reply, int unitCount, int dataOffset, const VARIABLE &request, int unitWidth)
{
    // A unit is stored whole, be the kind one of whole units or of bits inside them.
    const ValueShape shape = valueShape(unitWidth, unitWidth, nameOfWords(request.regName));
    for (int i = 0; i < unitCount; ++i) {
        const qint64 position = dataOffset + static_cast<qint64>(i) * shape.bytesPerUnit;
        quint8 bytes[4] = {};
        for (int k = 0; k < shape.bytesPerUnit; ++k)
            bytes[k] = byteAt(reply, position + k);
        storeUnit(shape, request.station, wrappingSum(request.address, i), bytes);
    }
}

void reportUploadedWord(int bufferWord)
{
    callHost(UPLOAD_INSTANCE, UPLOAD_STATION, QString::fromLatin1("RWI"), bufferWord);
}

void fillBufferWord(int bufferWord, const QByteArray &reply, qint64 position)
{
    driver.recipeBuffer[bufferWord] =
        static_cast<quint16>(uchar2int16(byteAt(reply, position), byteAt(reply, position + 1)));
}

/// Of an item of 16-bit words, those that the block carries: all, unless the item is longer than a block.
void uploadWords(const _RCP_VAR_PRO &item, const VARIABLE &block, const QByteArray &reply, int dataOffset)
{
    const qint64 firstUnit = std::max(item.address, block.address);
    const qint64 itemEnd = static_cast<qint64>(item.address) + item.count;
    const qint64 blockEnd = static_cast<qint64>(block.address) + block.count;
    for (qint64 unit = firstUnit; unit < std::min(itemEnd, blockEnd); ++unit) {
        const int bufferWord = wrap(item.bufferOffset + (unit - item.address));
        if (bufferWord < 0)
            continue;
        fillBufferWord(bufferWord, reply, dataOffset + 2 * (unit - block.address));
        reportUploadedWord(bufferWord);
    }
}

/// An item of 32-bit units stands for one value, its first.
void uploadDoubleWord(const _RCP_VAR_PRO &item, const VARIABLE &block, const QByteArray &reply, int dataOffset)
{
    const qint64 unit = static_cast<qint64>(item.address) - block.address;
    const int highWord = wrappingSum(item.bufferOffset, 1);
    if (unit < 0 || unit >= block.count || item.bufferOffset < 0 || highWord < 0)
        return;
    fillBufferWord(item.bufferOffset, reply, dataOffset + 4 * unit);
    fillBufferWord(highWord, reply, dataOffset + 4 * unit + 2);
    reportUploadedWord(item.bufferOffset);
    reportUploadedWord(highWord);
}

/// Whether the plan's current block is still the one that was asked for: the host may have handed over a new plan.
bool isPlannedBlock(const VARIABLE &request)
{
    if (driver.recipeIndex < 0 || driver.recipeIndex >= driver.recipeBlocks.size() ||
        driver.recipeIndex >= driver.recipeBlockFirstItem.size())
        return false;
    const _RCP_VAR_PRO &block = driver.recipeBlocks.at(driver.recipeIndex);
    return block.station == request.station && block.regName == request.regName && block.address == request.address &&
           block.count == request.count;
}

/// Index behind the last item of the current block. A piece of a long item that another piece follows holds that item
/// alone.
int endOfBlockItems(int firstItem)
{
    if (driver.recipeIndex + 1 >= driver.recipeBlockFirstItem.size())
        return static_cast<int>(driver.recipeItems.size());
    const int nextFirstItem = driver.recipeBlockFirstItem.at(driver.recipeIndex + 1);
    return std::min(std::max(nextFirstItem, firstItem + 1), static_cast<int>(driver.recipeItems.size()));
}

void fillRecipeBuffer(const QByteArray &reply, int dataOffset, const VARIABLE &block, int unitWidth)
{
    if (!driver.recipeBuffer || !isPlannedBlock(block))
        return;
    const int firstItem = driver.recipeBlockFirstItem.at(driver.recipeIndex);
    const int itemsEnd = endOfBlockItems(firstItem);
    for (int i = firstItem; i < itemsEnd; ++i) {
        const _RCP_VAR_PRO item = driver.recipeItems.at(i);
        if (unitWidth == 16)
            uploadWords(item, block, reply, dataOffset);
        else
            uploadDoubleWord(item, block, reply, dataOffset);
    }
}

} // namespace

QString getErrorInfo(const QByteArray &reply)
{
    if (driver.frameQueue.isEmpty())
        return QString();
    const VARIABLE &request = driver.frameQueue.at(0).variable;
    QString text = QString::number(request.station) + QLatin1Char('#') + request.regName + addressText(request) +
                   QLatin1Char('(') + QString::number(request.count) + QLatin1Char(')');
    const quint8 status = byteAt(reply, REPLY_STATUS_OFFSET);
    if (reply.size() == ERROR_REPLY_SIZE && status != 0)
        text += QString::fromLatin1(",error code:") + QString::number(status);
    return text;
}

void analyzeFrameOfVal(const QByteArray &reply, int unitCount, int dataOffset, const VARIABLE &request)
{
    const int kind = getIndexFromRegName(request.regName);
    if (kind < 0)
        return;
    const int unitWidth = unitWidthOf(kind);
    if (unitWidth == 1)
        return storeBits(reply, unitCount, dataOffset, request);
    storeUnits(reply, unitCount, dataOffset, request, unitWidth);
    if (driver.transactionKind == TransactionRecipeRead)
        fillRecipeBuffer(reply, dataOffset, request, unitWidth);
}

int dealReadFrameReturnSaveData(const QByteArray &reply)
{
    if (driver.frameQueue.isEmpty())
        return 0;
    const FRAME_PRO frame = driver.frameQueue.at(0);
    analyzeFrameOfVal(reply, frame.readCount, frame.dataOffset, frame.variable);
    return 0;
}
