#include "serviceForProtocol/transactions/replyDecoding.h"

#include "model/deviceUnits.h"
#include "model/protocol.h"
#include "serviceForProtocol/cache/changeReports.h"
#include "serviceForProtocol/cache/unitStore.h"
#include "serviceForProtocol/transactions/recipeTransfer.h"
#include "tanek_vs/registerNames.h"
#include "tanek_vs/wireFormat.h"

#include <QtCore/QByteArray>
#include <QtCore/QChar>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

const int ERROR_REPLY_SIZE = 10;

const quint8 *bytesOf(const QByteArray &reply) { return reinterpret_cast<const quint8 *>(reply.constData()); }

/// A line of ASCII text, put together without an allocation for each part; longer than any description.
class Line {
public:
    void add(char character) { *m_end++ = character; }
    void add(const char *text)
    {
        while (*text != '\0')
            add(*text++);
    }
    void add(const QString &text)
    {
        for (const QChar *character = text.constBegin(); character != text.constEnd(); ++character)
            add(character->toLatin1());
    }
    void add(int number)
    {
        char digits[DIGITS_OF_INT];
        char *first = digits + DIGITS_OF_INT;
        quint32 rest = static_cast<quint32>(number < 0 ? -static_cast<qint64>(number) : number);
        do {
            *--first = static_cast<char>('0' + rest % 10);
            rest /= 10;
        } while (rest != 0);
        if (number < 0)
            add('-');
        m_end = std::copy(first, digits + DIGITS_OF_INT, m_end);
    }

    QString text() const { return QString::fromLatin1(m_text, static_cast<int>(m_end - m_text)); }

private:
    enum { DIGITS_OF_INT = 10, SIZE = 96 };
    char m_text[SIZE];
    char *m_end = m_text;
};

void addAddress(Line &line, const VARIABLE &request)
{
    const RegisterKind *kind = registerKind(request.regName);
    if (!kind || !kind->isBitInWord)
        return line.add(request.address);
    line.add(request.address / WORD_WIDTH);
    line.add('.');
    line.add(request.address % WORD_WIDTH);
}

/// So many bytes of a reply, zeros for those that it does not have.
class DataBytes {
public:
    DataBytes(const QByteArray &reply, int offset, qint64 size)
    {
        const qint64 there = std::max<qint64>(0, std::min(reply.size() - static_cast<qint64>(offset), size));
        m_bytes = bytesOf(reply) + (there > 0 ? offset : 0);
        if (there >= size)
            return;
        m_padded.assign(m_bytes, m_bytes + there);
        m_padded.resize(static_cast<std::size_t>(size));
        m_bytes = m_padded.data();
    }

    const quint8 *data() const { return m_bytes; }

private:
    const quint8 *m_bytes;
    std::vector<quint8> m_padded;
};

} // namespace

QString getErrorInfo(const QByteArray &reply)
{
    if (driver.frameQueue.isEmpty())
        return QString();
    const VARIABLE &request = driver.frameQueue.at(0).variable;
    Line line;
    line.add(request.station);
    line.add('#');
    line.add(request.regName);
    addAddress(line, request);
    line.add('(');
    line.add(request.count);
    line.add(')');
    const quint8 status = reply.size() == ERROR_REPLY_SIZE ? bytesOf(reply)[REPLY_STATUS_OFFSET] : 0;
    if (status != 0) {
        line.add(",error code:");
        line.add(static_cast<int>(status));
    }
    return line.text();
}

void analyzeFrameOfVal(const QByteArray &reply, int unitCount, int dataOffset, const VARIABLE &request)
{
    const RegisterKind *kind = registerKind(request.regName);
    if (!kind)
        return;
    const DataBytes bytes(reply, dataOffset, replyDataSize(kind->unitWidth, unitCount));
    UnitRun units(shapeOfUnits(*kind), request.station, kind->keyName, request.address, unitCount);
    UnitChange change;
    while (store(units, bytes.data(), change))
        reportRead(units, change);
    if (driver.transactionKind == TransactionRecipeRead && kind->unitWidth != 1)
        fillRecipeBuffer(*kind, request, bytes.data());
}

int dealReadFrameReturnSaveData(const QByteArray &reply)
{
    if (driver.frameQueue.isEmpty())
        return 0;
    const FRAME_PRO &frame = driver.frameQueue.at(0);
    analyzeFrameOfVal(reply, frame.readCount, frame.dataOffset, frame.variable);
    return 0;
}
