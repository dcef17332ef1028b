#include "support/wire.h"
#include "work.h"

#include <tanek_vs/driver.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>

#include <stdexcept>

namespace {

/// Units of "D" that a station may have in a poll list.
const int UNITS_PER_STATION = 8960;
const int REPORTED_WORD = 0;

std::size_t reports = 0;

int countReport(int, int, QString &, int)
{
    ++reports;
    return 0;
}

void expect(bool holds)
{
    if (!holds)
        throw std::runtime_error("the driver did not do its work");
}

/// The objects that a host lends to the driver.
class BenchHost {
public:
    BenchHost()
    {
        intf_setAddrValueChangeCallBack(&countReport);
        intf_initProperty(m_controlBlock.data(), nullptr, m_recipeBuffer.data(), &m_result, "1#0#0#3#16", &m_mutex);
    }

    static QList<KEY_ADDRESS> keys(int units, int unitsPerKey)
    {
        QList<KEY_ADDRESS> list;
        for (int unit = 0; unit < units; unit += unitsPerKey) {
            KEY_ADDRESS key;
            key.station = 1 + unit / UNITS_PER_STATION;
            key.regName = QString::fromLatin1("D");
            key.address = unit % UNITS_PER_STATION;
            key.count = unitsPerKey;
            list.append(key);
        }
        return list;
    }

    void polls(int units)
    {
        const QList<KEY_ADDRESS> list = keys(units, WORDS_PER_BLOCK);
        expect(intf_addrMerge(&list) == units / WORDS_PER_BLOCK);
    }

    const FRAME_PRO &sends()
    {
        expect(intf_getSendFrame(&m_frame) == 1);
        return m_frame;
    }

    void receives(const QByteArray &reply)
    {
        QByteArray received(reply.constData(), reply.size()); // as from a link: bytes of its own
        expect(intf_dealRcvFrame(received, m_description) == 1);
    }

    /// Words 0 to 31 hold that.
    static QByteArray wordsReply(unsigned char contents) { return arrayOf(reply(Bytes(BLOCK_BYTES, contents))); }

private:
    std::vector<quint8> m_controlBlock = std::vector<quint8>(60117);
    std::vector<quint16> m_recipeBuffer = std::vector<quint16>(1);
    QMutex m_mutex;
    int m_result = -1;
    FRAME_PRO m_frame;
    QString m_description;
};

class PollWork final : public Work {
public:
    PollWork(int units, bool isChanging)
        : m_isChanging(isChanging), m_blocks(static_cast<std::size_t>(units / WORDS_PER_BLOCK))
    {
        m_host.polls(units);
        run(2 * m_blocks);
    }

    void run(std::size_t times) override
    {
        const std::size_t reportsBefore = reports;
        for (std::size_t i = 0; i < times; ++i, ++m_done) {
            m_host.sends();
            m_host.receives(m_replies[m_isChanging ? m_done / m_blocks % 2 : 0]);
        }
        if (m_done > 2 * m_blocks)
            expect(reports - reportsBefore == (m_isChanging ? times * WORDS_PER_BLOCK : 0));
    }

private:
    BenchHost m_host;
    const QByteArray m_replies[2] = {BenchHost::wordsReply(1), BenchHost::wordsReply(2)};
    bool m_isChanging;
    std::size_t m_blocks;
    std::size_t m_done = 0;
};

class ReadWork : public Work {
public:
    ReadWork()
    {
        m_host.polls(WORDS_PER_BLOCK);
        m_host.sends();
        m_host.receives(BenchHost::wordsReply(7));
    }

    void run(std::size_t times) override
    {
        quint8 values[2 * WORDS_PER_BLOCK] = {};
        for (std::size_t i = 0; i < times; ++i)
            intf_getData(1, m_regName, 0, WORDS_PER_BLOCK, values);
        expect(values[2 * WORDS_PER_BLOCK - 1] == 7);
    }

private:
    BenchHost m_host;
    const QString m_regName = QString::fromLatin1("D");
};

class WriteWork : public Work {
public:
    /// A burst of ten writes ends in one call that finds nothing to send.
    void run(std::size_t times) override
    {
        FRAME_PRO frame;
        for (std::size_t i = 0; i < times; ++i) {
            const quint8 value[2] = {static_cast<quint8>(i), static_cast<quint8>(i >> 8)};
            intf_setData(1, m_regName, REPORTED_WORD, 1, value, 0);
            if (intf_getSendFrame(&frame) == 0)
                m_host.sends();
            m_host.receives(m_acknowledgement);
        }
    }

private:
    BenchHost m_host;
    const QString m_regName = QString::fromLatin1("D");
    const QByteArray m_acknowledgement = arrayOf(acknowledgement());
};

class PostWork : public Work {
public:
    explicit PostWork(int waiting)
    {
        // The head, the one that is posted again and again, and the others behind it.
        const quint8 value[2] = {};
        for (int i = 0; i <= waiting; ++i)
            intf_setData(1, m_regName, i, 1, value, 0);
        m_address = waiting == 0 ? 0 : 1;
    }

    void run(std::size_t times) override
    {
        for (std::size_t i = 0; i < times; ++i) {
            const quint8 value[2] = {static_cast<quint8>(i), static_cast<quint8>(i >> 8)};
            intf_setData(1, m_regName, m_address, 1, value, 0);
        }
    }

private:
    BenchHost m_host;
    const QString m_regName = QString::fromLatin1("D");
    int m_address;
};

} // namespace

std::unique_ptr<Work> pollWork(int units, bool isChanging) { return std::make_unique<PollWork>(units, isChanging); }

std::unique_ptr<Work> readWork() { return std::make_unique<ReadWork>(); }

std::unique_ptr<Work> writeWork() { return std::make_unique<WriteWork>(); }

std::unique_ptr<Work> postWork(int waiting) { return std::make_unique<PostWork>(waiting); }

PollList::PollList(int words) : m_keys(BenchHost::keys(words, 1)) { BenchHost(); }

void PollList::handOver() const { expect(intf_addrMerge(&m_keys) > 0); }
