#include "support/driverTest.h"

#include "serviceForProtocol/cache/dataAreas.h"

namespace {

DriverTest *runningTest = nullptr;

} // namespace

std::vector<std::string> plain(const QList<QString> &texts)
{
    std::vector<std::string> result;
    for (int i = 0; i < texts.size(); ++i)
        result.push_back(plain(texts.at(i)));
    return result;
}

KEY_ADDRESS key(const std::string &regName, int address, int count, int station)
{
    KEY_ADDRESS result;
    result.station = station;
    result.regName = qt(regName);
    result.address = address;
    result.count = count;
    return result;
}

VARIABLE request(const std::string &regName, int address, int count, int station)
{
    VARIABLE result;
    result.station = station;
    result.regName = qt(regName);
    result.address = address;
    result.count = count;
    return result;
}

_RCP_VAR_PRO recipeItem(const std::string &regName, int address, int count, int bufferOffset, int station)
{
    _RCP_VAR_PRO item;
    item.instanceId = INSTANCE;
    item.station = station;
    item.regName = qt(regName);
    item.address = address;
    item.count = count;
    item.bufferOffset = bufferOffset;
    return item;
}

void DriverTest::SetUp()
{
    runningTest = this;
    controlBlock.assign(UPLOAD_BYTE + 1, 0);
    recipeBuffer.assign(4096, 0);
    intf_setAddrValueChangeCallBack(&DriverTest::noteReport);
    configures(3, 16);
    driver.recipeIndex = 0;
    driver.lastConditionRead = VARIABLE();
    plansRecipe({});
}

void DriverTest::TearDown()
{
    intf_setAddrValueChangeCallBack(nullptr);
    runningTest = nullptr;
}

void DriverTest::configures(int retryLimit, int mergeGap, int cacheOnlyWrites)
{
    const std::string property = std::to_string(INSTANCE) + "#" + std::to_string(cacheOnlyWrites) + "#0#" +
                                 std::to_string(retryLimit) + "#" + std::to_string(mergeGap);
    int result = -1;
    intf_initProperty(controlBlock.data(), nullptr, recipeBuffer.data(), &result, property.c_str(), &hostMutex);
}

int DriverTest::polls(const std::vector<KEY_ADDRESS> &keys)
{
    QList<KEY_ADDRESS> list;
    for (const KEY_ADDRESS &wanted : keys)
        list.append(wanted);
    return intf_addrMerge(&list);
}

void DriverTest::writes(const std::string &regName, int address, int count, const Bytes &values, int station)
{
    EXPECT_EQ(intf_setData(station, qt(regName), address, count, values.data(), 0), 1);
}

Bytes DriverTest::reads(const std::string &regName, int address, int count, int station)
{
    const unsigned char untouched = 0xEE;
    Bytes values(static_cast<std::size_t>(count > 0 ? count : 0) * 4 + 4, untouched);
    EXPECT_EQ(intf_getData(station, qt(regName), address, count, values.data()), 1);
    while (!values.empty() && values.back() == untouched)
        values.pop_back();
    return values;
}

int DriverTest::plansRecipe(const std::vector<_RCP_VAR_PRO> &items)
{
    QVector<_RCP_VAR_PRO> vector;
    for (const _RCP_VAR_PRO &item : items)
        vector.append(item);
    return intf_setRcpAddress(&vector);
}

std::string DriverTest::sends()
{
    if (intf_getSendFrame(&frame) == 0)
        return "nothing";
    return (frame.dataOffset == 0 ? "write " : "read ") + text(frame.variable);
}

Bytes DriverTest::sentBytes() const { return Bytes(frame.frame, frame.frame + frame.frameLength); }

int DriverTest::receives(const Bytes &answer)
{
    QByteArray array = arrayOf(answer);
    return intf_dealRcvFrame(array, m_description);
}

std::string DriverTest::exchanges(const Bytes &answer)
{
    const std::string sent = sends();
    receives(answer);
    return sent;
}

std::vector<std::string> DriverTest::exchangesWell(int number)
{
    std::vector<std::string> sent;
    for (int i = 0; i < number; ++i) {
        sent.push_back(sends());
        const int dataSize = frame.replyLength > 10 ? frame.replyLength - 10 : 0;
        receives(reply(Bytes(static_cast<std::size_t>(dataSize), 0)));
    }
    return sent;
}

Reports DriverTest::reports()
{
    Reports noted;
    noted.swap(m_reports);
    return noted;
}

_DATA_ &DriverTest::unit(const std::string &keyName, int address, int station)
{
    return driver.dataAreas[getIndexOfDataArea(station, qt(keyName), address, driver.dataAreas)];
}

int DriverTest::noteReport(int instance, int station, QString &regName, int address)
{
    // No lock may be held here: another thread, or this one, may want it.
    for (QMutex *lock : {&driver.mutex, &driver.dataAreaMutex, &runningTest->hostMutex}) {
        EXPECT_TRUE(lock->tryLock()) << "a lock is held while the callback runs";
        lock->unlock();
    }
    std::string report = plain(regName) + " " + std::to_string(address) + " @" + std::to_string(station);
    if (instance != INSTANCE)
        report += " of " + std::to_string(instance);
    runningTest->m_reports.push_back(report);
    if (runningTest->whenReported)
        runningTest->whenReported(report);
    return 0;
}
