/// Any sequence of the nineteen calls with any arguments. After each call the driver's state is sound; after all of
/// them it still serves a host that behaves.
#include "fuzzSupport.h"
#include "model/protocol.h"
#include "replyCollector.h"
#include "simulator/frameReader.h"

namespace {

const int MOST_UNITS_PER_BLOCK = 32;
const int MOST_QUEUED = 513;
const std::size_t RECIPE_WORDS = 1024;

/// A host's objects, and the arguments it makes up.
class Host {
public:
    explicit Host(FuzzedDataProvider &any) : m_any(any)
    {
        driver.recipeIndex = 0;
        writesFromReports = true;
        reports = 0;
        intf_setAddrValueChangeCallBack(&Host::changed);
        configures("1#0#0#3#16");
        const QVector<_RCP_VAR_PRO> none;
        intf_setRcpAddress(&none);
    }

    void callsAnything();
    void findsTheStateSound();
    void isServedStill();

private:
    /// Reads what has changed, and now and then writes something, as a host may.
    static int changed(int, int station, QString &regName, int address)
    {
        findsNoLockHeld();
        quint8 values[4] = {};
        intf_getData(station, regName, address, 1, values);
        if (writesFromReports && ++reports % 3 == 0) {
            writesFromReports = false;
            intf_setData(1, QString::fromLatin1(reports % 2 ? "D" : "D_bit"), address % 64, 1, values, 0);
            writesFromReports = true;
        }
        return 0;
    }

    static void findsNoLockHeld()
    {
        for (QMutex *lock : {&driver.mutex, &driver.dataAreaMutex, &hostMutex}) {
            require(lock->tryLock(), "no lock is held");
            lock->unlock();
        }
    }

    static void configures(const std::string &property, bool withBuffer = true)
    {
        int result = -1;
        intf_initProperty(controlBlock.data(), nullptr, withBuffer ? recipeBuffer.data() : nullptr, &result,
                          property.c_str(), &hostMutex);
    }

    int station() { return m_any.ConsumeBool() ? 1 : m_any.PickValueInArray({2, 16, 255, 0, -1, 256, 1 << 30}); }
    KEY_ADDRESS key();
    Bytes replyTo(const FRAME_PRO &frame);
    void reconfigures();
    void polls();
    void plansRecipe();
    void asksOnce();
    void writes();
    void reads();
    void requestsTransfer();
    void exchanges();
    void asksWithoutArguments();
    void edits();
    bool exchangesWell();

    FuzzedDataProvider &m_any;
    static QMutex hostMutex;
    static std::vector<quint8> controlBlock;
    static std::vector<quint16> recipeBuffer;
    static bool writesFromReports;
    static unsigned reports;
};

bool Host::writesFromReports = true;
unsigned Host::reports = 0;

QMutex Host::hostMutex;
std::vector<quint8> Host::controlBlock(60117);
std::vector<quint16> Host::recipeBuffer(RECIPE_WORDS);

KEY_ADDRESS Host::key()
{
    KEY_ADDRESS key;
    key.station = station();
    key.regName = anyRegName(m_any);
    key.address = anyNumber(m_any);
    key.count = anyNumber(m_any);
    key.unitCode = m_any.ConsumeIntegralInRange(-1, 1);
    return key;
}

void Host::reconfigures()
{
    if (m_any.ConsumeIntegralInRange(0, 3) == 0) {
        intf_setAddrValueChangeCallBack(m_any.ConsumeBool() ? &Host::changed : nullptr);
        return configures(m_any.ConsumeRandomLengthString(20), m_any.ConsumeBool());
    }
    const int gap = m_any.PickValueInArray({16, 1, 2, 7, 200, 0, -1, 600, 1 << 29});
    configures("1#" + std::to_string(m_any.ConsumeIntegralInRange(0, 1)) + "#0#" +
               std::to_string(m_any.ConsumeIntegralInRange(-1, 3)) + "#" + std::to_string(gap));
}

void Host::polls()
{
    QList<KEY_ADDRESS> keys;
    for (int i = m_any.ConsumeIntegralInRange(0, 6); i > 0; --i)
        keys.append(key());
    // A long key over a whole kind is as good as ten, and slow.
    for (int i = 0; i < keys.size(); ++i)
        keys[i].count = keys.at(i).count > 3000 ? keys.at(i).count % 3000 : keys.at(i).count;
    intf_addrMerge(&keys);
}

void Host::plansRecipe()
{
    QVector<_RCP_VAR_PRO> items;
    int offset = 0;
    for (int i = m_any.ConsumeIntegralInRange(0, 5); i > 0 && offset < 700; --i) {
        const KEY_ADDRESS wanted = key();
        _RCP_VAR_PRO item;
        item.instanceId = m_any.ConsumeIntegralInRange(0, 7) == 0 ? 2 : 1;
        item.station = wanted.station;
        item.regName = wanted.regName;
        item.address = wanted.address;
        item.count = wanted.count > 300 && wanted.count <= 416000 ? wanted.count % 90 : wanted.count;
        item.bufferOffset = m_any.ConsumeIntegralInRange(0, 15) == 0 ? -offset : offset;
        offset += item.count > 0 && item.count <= 300 ? item.count : 0;
        items.append(item);
    }
    intf_setRcpAddress(&items);
}

void Host::asksOnce()
{
    const KEY_ADDRESS wanted = key();
    intf_addConditionRead(&wanted, m_any.ConsumeIntegral<std::uintptr_t>());
}

void Host::writes()
{
    const KEY_ADDRESS place = key();
    // Now and then more writes than the queue holds, short ones.
    const int number = m_any.ConsumeIntegralInRange(0, 500) == 0 ? 520 : 1;
    const int longest = number == 1 ? 1100 : 8;
    const int count = place.count > longest ? place.count % longest : place.count;
    const Bytes values(static_cast<std::size_t>(std::max(count, 0)) * 2 + 1,
                       m_any.PickValueInArray<quint8>({0, 1, 16}));
    for (int i = number; i > 0; --i)
        intf_setData(place.station, place.regName, i == 1 ? place.address : i, count, values.data(), 0);
}

void Host::reads()
{
    const KEY_ADDRESS place = key();
    const int count = place.count > 5000 ? place.count % 5000 : place.count;
    Bytes values(static_cast<std::size_t>(std::max(count, 0)) * 2 + 1);
    intf_getData(place.station, place.regName, place.address, count, values.data());
}

void Host::requestsTransfer()
{
    controlBlock[m_any.PickValueInArray<std::size_t>({60115, 60116})] = m_any.ConsumeIntegral<quint8>() & 1;
}

Bytes Host::replyTo(const FRAME_PRO &frame)
{
    if (frame.replyLength == 0)
        return {};
    return reply(Bytes(static_cast<std::size_t>(frame.replyLength - 10), m_any.ConsumeIntegral<quint8>()));
}

void Host::exchanges()
{
    FRAME_PRO frame;
    const bool hasFrame = intf_getSendFrame(&frame) == 1;
    Bytes answer;
    if (hasFrame && m_any.ConsumeBool())
        answer = replyTo(frame);
    else if (m_any.ConsumeBool())
        answer = m_any.ConsumeBytes<quint8>(m_any.ConsumeIntegralInRange<std::size_t>(0, 40));
    QByteArray array = arrayOf(answer);
    QString description;
    const int result = intf_dealRcvFrame(array, description);
    require(hasFrame ? result == 1 || result == 2 || result == 8 : result == 0, "a known result");
    require(hasFrame || description.isEmpty(), "nothing in flight, nothing described");
}

void Host::asksWithoutArguments()
{
    QString text;
    QByteArray none;
    intf_getProtocolType(nullptr);
    intf_checkAddr(anyRegName(m_any), text, nullptr, 0, anyNumber(m_any), 0);
    intf_checkAddrValidity(anyRegName(m_any), text, nullptr, anyNumber(m_any), 0);
    intf_getDriverParameter(text);
    intf_getDriverPropertyPage(text);
    require(intf_getVersion() == QString::fromLatin1("2.0.0.0"), "the version");
    intf_addrMerge(nullptr);
    intf_addConditionRead(nullptr, 0);
    intf_setRcpAddress(nullptr);
    require(intf_getSendFrame(nullptr) == 0, "no record, no frame");
    intf_setData(1, anyRegName(m_any), 0, 1, nullptr, 0);
    intf_getData(1, anyRegName(m_any), 0, 1, nullptr);
}

void Host::edits()
{
    QStringList texts;
    intf_getRegListByType(anyNumber(m_any), texts);
    intf_getRegDiscription(anyRegName(m_any), texts);
    QVector<QString> addressTexts;
    QVector<int> numbers;
    intf_multiCopy(anyRegName(m_any), anyNumber(m_any), std::min(anyNumber(m_any), 100), anyNumber(m_any), addressTexts,
                   numbers);
    require(addressTexts.size() == numbers.size(), "a text for each number");
    intf_SetDriverPropertyPage(QString::fromStdString(m_any.ConsumeRandomLengthString(9)));
}

void Host::callsAnything()
{
    switch (m_any.ConsumeIntegralInRange(0, 14)) {
    case 0:
        return reconfigures();
    case 1:
        return polls();
    case 2:
        return plansRecipe();
    case 3:
        return asksOnce();
    case 4:
    case 5:
        return writes();
    case 6:
        return reads();
    case 7:
        return requestsTransfer();
    case 8:
        return m_any.ConsumeBool() ? asksWithoutArguments() : edits();
    default:
        return exchanges();
    }
}

void Host::findsTheStateSound()
{
    require(driver.writeQueue.size() <= MOST_QUEUED && driver.conditionReads.size() <= MOST_QUEUED, "queue limits");
    require(driver.writesBeingMirrored.isEmpty(), "every write is mirrored");
    require(driver.dataAreaIndex.size() == driver.dataAreas.size(), "the index has every unit");
    require(driver.recipeBlocks.size() == driver.recipeBlockFirstItem.size(), "a first item for each recipe block");
    for (int i = 0; i < driver.readBlocks.size(); ++i)
        require(driver.readBlocks.at(i).count <= MOST_UNITS_PER_BLOCK, "the longest block");
    for (int i = 0; i < driver.frameQueue.size(); ++i) {
        const FRAME_PRO &frame = driver.frameQueue.at(i);
        require(frame.frameLength > 0 && frame.frameLength <= RECORD_BUFFER_SIZE, "the frame fits its buffer");
        const auto seen = vssim::FrameReader().feed(frame.frame, static_cast<std::size_t>(frame.frameLength));
        require(seen.size() == 1, "the request is one whole frame");
        require(seen.at(0).body.at(0) == static_cast<quint8>(frame.variable.station), "for the station it names");
    }
    findsNoLockHeld();
}

/// @return whether there was a frame.
bool Host::exchangesWell()
{
    FRAME_PRO frame;
    if (intf_getSendFrame(&frame) == 0)
        return false;
    QByteArray array = arrayOf(replyTo(frame));
    QString description;
    require(intf_dealRcvFrame(array, description) == 1, "a good reply is accepted");
    return true;
}

/// A host that asks for one word, and answers all that comes, has the word within as many calls as there is work.
void Host::isServedStill()
{
    writesFromReports = false;
    QList<KEY_ADDRESS> keys;
    KEY_ADDRESS wanted;
    wanted.station = 1;
    wanted.regName = QString::fromLatin1("D");
    wanted.address = 77;
    wanted.count = 1;
    keys.append(wanted);
    require(intf_addrMerge(&keys) == 1, "a plan of one block");
    const int work = static_cast<int>(2 * (driver.writeQueue.size() + driver.conditionReads.size()) +
                                      2 * driver.recipeBlocks.size() + driver.frameQueue.size() + 20);
    for (int i = 0; i < work; ++i)
        exchangesWell();
    require(driver.writeQueue.isEmpty() && driver.conditionReads.isEmpty(), "all queued work gets done");
    require(controlBlock[60115] == 0 && controlBlock[60116] == 0, "transfers end");

    quint8 shown[2] = {};
    intf_getData(1, wanted.regName, wanted.address, 1, shown);
    const Bytes value = words({shown[0] + 256 * shown[1] + 1});
    FRAME_PRO frame;
    require(intf_getSendFrame(&frame) == 1 && frame.variable.address == 77, "the block's turn");
    QByteArray array = arrayOf(reply(value));
    QString description;
    require(intf_dealRcvFrame(array, description) == 1, "the block is read");
    intf_getData(1, wanted.regName, wanted.address, 1, shown);
    require(Bytes(shown, shown + 2) == value, "the word is shown");

    const bool isQueued = driver.cacheOnlyWrites == 0;
    intf_setData(1, wanted.regName, wanted.address, 1, words({4711}).data(), 0);
    for (int i = 0; i < 2 && !driver.writeQueue.isEmpty(); ++i)
        exchangesWell();
    require(!isQueued || driver.writeQueue.isEmpty(), "a write goes out");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    Host host(input);
    for (int i = 0; i < 120 && input.remaining_bytes() > 0; ++i) {
        host.callsAnything();
        host.findsTheStateSound();
    }
    host.isServedStill();
    return 0;
}
