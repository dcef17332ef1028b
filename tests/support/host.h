/// The vocabulary of the tests: what a host asks of the driver, what goes over the wire, and what the host is told.
#ifndef TESTS_HOST_H
#define TESTS_HOST_H

#include "support/calls.h"
#include "support/wire.h"

#include <QtCore/QMutex>
#include <QtCore/QString>

#include <functional>
#include <string>
#include <vector>

inline QString qt(const std::string &text) { return QString::fromStdString(text); }

/// gtest prints texts that differ only as std::string.
inline std::string plain(const QString &text) { return text.toStdString(); }
std::vector<std::string> plain(const QList<QString> &texts);

/// The property text's instance, and the control block's bytes that ask for a transfer.
const int INSTANCE = 3;
const int DOWNLOAD_BYTE = 60115;
const int UPLOAD_BYTE = 60116;

KEY_ADDRESS key(const std::string &regName, int address, int count, int station = 1);
VARIABLE request(const std::string &regName, int address, int count, int station = 1);
_RCP_VAR_PRO recipeItem(const std::string &regName, int address, int count, int bufferOffset, int station = 1);

/// The runs that such a text lists, each with its place in the recipe buffer: "D 100 10 from 0, M 0 1 @2 from 10".
std::vector<_RCP_VAR_PRO> runsOf(const std::string &listText);

/// "a, b".
std::string joined(const std::vector<std::string> &texts);

/// " @2" behind what belongs to another station than 1, that of nearly all tests.
inline std::string ofStation(int station) { return station == 1 ? "" : " @" + std::to_string(station); }

/// "D 100 10": kind, address, count and station, for comparing plans and queues as texts.
template <typename Record> std::string text(const Record &record)
{
    return plain(record.regName) + " " + std::to_string(record.address) + " " + std::to_string(record.count) +
           ofStation(record.station);
}

/// "D 100 10, M 0 1".
template <typename List> std::string texts(const List &records)
{
    std::vector<std::string> all;
    for (const auto &record : records)
        all.push_back(text(record));
    return joined(all);
}

/// One call of the callback.
struct Report {
    int instance;
    int station;
    std::string regName;
    int address;

    /// "D 100", "RWI 5" of a recipe word, "condition 0" of the end of a condition read; anything else in full.
    std::string text() const;
};

/// The objects that a host lends to the driver, and everything that it does. The driver tells its callback to the one
/// that was made last.
class Host {
public:
    explicit Host(const Calls &table);
    ~Host();
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    void configures(int retryLimit, int mergeGap, int cacheOnlyWrites = 0);
    void configures(const char *property);
    int polls(const std::vector<KEY_ADDRESS> &keys);
    /// As runsOf reads them.
    int polls(const std::string &keys);
    void writes(const std::string &regName, int address, int count, const Bytes &values, int station = 1,
                std::uintptr_t number = 0);
    Bytes reads(const std::string &regName, int address, int count, int station = 1);
    int word(int address, int station = 1);
    void asksForCondition(const KEY_ADDRESS &wanted) { calls.intf_addConditionRead(&wanted, 0); }
    int plansRecipe(const std::vector<_RCP_VAR_PRO> &items);
    /// As runsOf reads them.
    int plansRecipe(const std::string &items);
    /// Asks for a transfer, or tells whether one is still asked for.
    void asks(int requestByte) { controlBlock[static_cast<std::size_t>(requestByte)] = 1; }
    bool isAsked(int requestByte) const { return controlBlock[static_cast<std::size_t>(requestByte)] != 0; }

    /// What intf_getSendFrame hands out: "read D 100 10", "write ..."; "nothing" when there is nothing to send.
    std::string sends();
    /// The bytes of the frame that was handed out last.
    Bytes sentBytes() const { return Bytes(frame.frame, frame.frame + frame.frameLength); }
    int receives(const Bytes &answer);
    /// Sends what comes next and gives it that answer.
    std::string exchanges(const Bytes &answer);
    /// Sends as many requests, each answered well: reads with zeros. "read D 0 1, write M 5 1".
    std::string exchangesWell(int number);
    std::string description() const { return plain(m_description); }

    /// The reports since the last call: "D 100, M 5".
    std::string reports();
    /// Called from inside the callback, after the report was noted.
    std::function<void(const Report &report)> whenReported;
    /// Not for sessions of many threads or of any length.
    bool notesReports = true;
    /// Locks that nobody may hold while the callback runs.
    std::vector<QMutex *> freeInCallback;

    const Calls calls;
    std::vector<quint8> controlBlock = std::vector<quint8>(UPLOAD_BYTE + 1);
    std::vector<quint16> recipeBuffer = std::vector<quint16>(4096);
    QMutex hostMutex;
    FRAME_PRO frame;

private:
    static int changed(int instance, int station, QString &regName, int address);

    static Host *sReportedTo;
    std::vector<std::string> m_reports;
    QString m_description;
};

#endif
