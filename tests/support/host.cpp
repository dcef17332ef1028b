#include "support/host.h"

#include "support/require.h"

#include <sstream>
#include <utility>

Host *Host::sReportedTo = nullptr;

std::vector<std::string> plain(const QList<QString> &texts)
{
    std::vector<std::string> result;
    for (const QString &text : texts)
        result.push_back(plain(text));
    return result;
}

std::string joined(const std::vector<std::string> &texts)
{
    std::string result;
    for (const std::string &text : texts)
        result += (result.empty() ? "" : ", ") + text;
    return result;
}

namespace {

template <typename Record> Record withRun(const std::string &regName, int address, int count, int station)
{
    Record record;
    record.station = station;
    record.regName = qt(regName);
    record.address = address;
    record.count = count;
    return record;
}

} // namespace

KEY_ADDRESS key(const std::string &regName, int address, int count, int station)
{
    return withRun<KEY_ADDRESS>(regName, address, count, station);
}

VARIABLE request(const std::string &regName, int address, int count, int station)
{
    return withRun<VARIABLE>(regName, address, count, station);
}

_RCP_VAR_PRO recipeItem(const std::string &regName, int address, int count, int bufferOffset, int station)
{
    _RCP_VAR_PRO item = withRun<_RCP_VAR_PRO>(regName, address, count, station);
    item.instanceId = INSTANCE;
    item.bufferOffset = bufferOffset;
    return item;
}

std::vector<_RCP_VAR_PRO> runsOf(const std::string &listText)
{
    std::vector<_RCP_VAR_PRO> runs;
    std::istringstream texts(listText);
    for (std::string text; std::getline(texts, text, ',');) {
        std::istringstream words(text);
        std::string regName, word;
        int address = 0, count = 0, station = 1, offset = 0;
        require(static_cast<bool>(words >> regName >> address >> count), "a run has kind, address and count");
        while (words >> word)
            word == "from" ? static_cast<void>(words >> offset)
                           : static_cast<void>(station = std::stoi(word.substr(1)));
        runs.push_back(recipeItem(regName, address, count, offset, station));
    }
    return runs;
}

std::string Report::text() const
{
    if (instance == 0 && station == -1 && regName == "RWI")
        return "RWI " + std::to_string(address);
    if (instance == -1 && station == -1 && regName == "-1")
        return "condition " + std::to_string(address);
    const std::string place = regName + " " + std::to_string(address) + ofStation(station);
    return instance == INSTANCE ? place : place + " of instance " + std::to_string(instance);
}

Host::Host(const Calls &table) : calls(table)
{
    sReportedTo = this;
    calls.intf_setAddrValueChangeCallBack(&Host::changed);
    configures(3, 16);
    plansRecipe("");
}

Host::~Host()
{
    calls.intf_setAddrValueChangeCallBack(nullptr);
    sReportedTo = nullptr;
}

void Host::configures(int retryLimit, int mergeGap, int cacheOnlyWrites)
{
    const std::string property = std::to_string(INSTANCE) + "#" + std::to_string(cacheOnlyWrites) + "#0#" +
                                 std::to_string(retryLimit) + "#" + std::to_string(mergeGap);
    configures(property.c_str());
}

void Host::configures(const char *property)
{
    int result = -1;
    const int returned =
        calls.intf_initProperty(controlBlock.data(), nullptr, recipeBuffer.data(), &result, property, &hostMutex);
    require(returned == 1 && result == 0, "the configuration is taken");
}

int Host::polls(const std::vector<KEY_ADDRESS> &keys)
{
    QList<KEY_ADDRESS> list;
    for (const KEY_ADDRESS &wanted : keys)
        list.append(wanted);
    return calls.intf_addrMerge(&list);
}

int Host::polls(const std::string &keys)
{
    std::vector<KEY_ADDRESS> list;
    for (const _RCP_VAR_PRO &run : runsOf(keys))
        list.push_back(withRun<KEY_ADDRESS>(plain(run.regName), run.address, run.count, run.station));
    return polls(list);
}

int Host::plansRecipe(const std::string &items) { return plansRecipe(runsOf(items)); }

void Host::writes(const std::string &regName, int address, int count, const Bytes &values, int station,
                  std::uintptr_t number)
{
    require(calls.intf_setData(station, qt(regName), address, count, values.data(), number) == 1, "setData gives 1");
}

Bytes Host::reads(const std::string &regName, int address, int count, int station)
{
    const unsigned char untouched = 0xEE;
    Bytes values(static_cast<std::size_t>(count > 0 ? count : 0) * 4 + 4, untouched);
    require(calls.intf_getData(station, qt(regName), address, count, values.data()) == 1, "getData gives 1");
    while (!values.empty() && values.back() == untouched)
        values.pop_back();
    return values;
}

int Host::word(int address, int station)
{
    quint8 bytes[2] = {};
    calls.intf_getData(station, qt("D"), address, 1, bytes);
    return bytes[0] + 256 * bytes[1];
}

int Host::plansRecipe(const std::vector<_RCP_VAR_PRO> &items)
{
    QVector<_RCP_VAR_PRO> vector;
    for (const _RCP_VAR_PRO &item : items)
        vector.append(item);
    return calls.intf_setRcpAddress(&vector);
}

std::string Host::sends()
{
    if (calls.intf_getSendFrame(&frame) == 0)
        return "nothing";
    return (frame.dataOffset == 0 ? "write " : "read ") + text(frame.variable);
}

int Host::receives(const Bytes &answer)
{
    QByteArray array = arrayOf(answer);
    return calls.intf_dealRcvFrame(array, m_description);
}

std::string Host::exchanges(const Bytes &answer)
{
    std::string sent = sends();
    receives(answer);
    return sent;
}

std::string Host::exchangesWell(int number)
{
    std::vector<std::string> sent;
    for (int i = 0; i < number; ++i) {
        sent.push_back(sends());
        const int dataSize = frame.replyLength > 10 ? frame.replyLength - 10 : 0;
        receives(reply(Bytes(static_cast<std::size_t>(dataSize), 0)));
    }
    return joined(sent);
}

std::string Host::reports() { return joined(std::exchange(m_reports, {})); }

int Host::changed(int instance, int station, QString &regName, int address)
{
    Host &host = *sReportedTo;
    for (QMutex *lock : host.freeInCallback) {
        require(lock->tryLock(), "no lock is held while the callback runs");
        lock->unlock();
    }
    const Report report = {instance, station, plain(regName), address};
    if (host.notesReports)
        host.m_reports.push_back(report.text());
    if (host.whenReported)
        host.whenReported(report);
    return 0;
}
