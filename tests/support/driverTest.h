/// The vocabulary of the tests: what a host asks of the driver, what goes over the wire, and what the host is told.
#ifndef TESTS_DRIVER_TEST_H
#define TESTS_DRIVER_TEST_H

#include "model/protocol.h"
#include "support/wire.h"
#include "tanek_vs/driver.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

inline QString qt(const std::string &text) { return QString::fromStdString(text); }

/// gtest prints texts that differ only as std::string.
inline std::string plain(const QString &text) { return text.toStdString(); }
std::vector<std::string> plain(const QList<QString> &texts);

KEY_ADDRESS key(const std::string &regName, int address, int count, int station = 1);
VARIABLE request(const std::string &regName, int address, int count, int station = 1);

/// "D 100 10 @1": kind, address, count and station, for comparing plans and queues as texts.
template <typename Record> std::string text(const Record &record)
{
    return plain(record.regName) + " " + std::to_string(record.address) + " " + std::to_string(record.count) + " @" +
           std::to_string(record.station);
}

template <typename List> std::vector<std::string> texts(const List &records)
{
    std::vector<std::string> result;
    for (int i = 0; i < records.size(); ++i)
        result.push_back(text(records.at(i)));
    return result;
}

/// One call of the host's callback, as "D 100 @1"; of another instance than the test's as "D 100 @1 of 0".
using Reports = std::vector<std::string>;

const int INSTANCE = 3;

/// Starts every test with a driver that is configured, empty, and reports to `reports()`.
class DriverTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // What the host does.
    void configures(int retryLimit, int mergeGap, int cacheOnlyWrites = 0);
    int polls(const std::vector<KEY_ADDRESS> &keys);
    void writes(const std::string &regName, int address, int count, const Bytes &values, int station = 1);
    Bytes reads(const std::string &regName, int address, int count, int station = 1);
    int word(int address) { return reads("D", address, 1)[0] + 256 * reads("D", address, 1)[1]; }
    void asksForCondition(const KEY_ADDRESS &wanted) { intf_addConditionRead(&wanted, 0); }
    int plansRecipe(const std::vector<_RCP_VAR_PRO> &items);

    /// Called from inside the callback, after the report is noted.
    std::function<void(const std::string &report)> whenReported;

    // The link.
    /// What intf_getSendFrame hands out: "read D 100 10 @1", "write ..."; "nothing" when there is nothing to send.
    std::string sends();
    /// The frame that was handed out last.
    Bytes sentBytes() const;
    int receives(const Bytes &answer);
    /// Sends what comes next and gives it that answer.
    std::string exchanges(const Bytes &answer);
    /// Sends as many requests, each answered well: reads with zeros.
    std::vector<std::string> exchangesWell(int number);

    // What the host finds.
    /// The reports since the last call.
    Reports reports();
    std::string description() const { return plain(m_description); }

    /// The cache entry of a unit, created if missing.
    static _DATA_ &unit(const std::string &keyName, int address, int station = 1);

    std::vector<quint8> controlBlock;
    std::vector<quint16> recipeBuffer;
    QMutex hostMutex;
    FRAME_PRO frame;

private:
    static int noteReport(int instance, int station, QString &regName, int address);

    Reports m_reports;
    QString m_description;
};

_RCP_VAR_PRO recipeItem(const std::string &regName, int address, int count, int bufferOffset, int station = 1);

const int DOWNLOAD_BYTE = 60115;
const int UPLOAD_BYTE = 60116;

#endif
