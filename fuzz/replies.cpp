/// Any bytes as the reply to a frame in flight: what is not a good reply changes nothing, and the driver goes on.
///
/// The last bytes of an input choose the request; the rest is the reply as it comes from the link.
#include "fuzzSupport.h"
#include "model/protocol.h"

#include <numeric>

namespace {

QMutex hostMutex;
std::vector<quint8> controlBlock(60117);
std::vector<quint16> recipeBuffer(64);

/// Length, status and checksum, judged apart from the driver.
bool isGood(const FRAME_PRO &frame, const Bytes &reply)
{
    if (frame.replyLength == 0)
        return reply.empty();
    const std::size_t size = reply.size();
    if (size != static_cast<std::size_t>(frame.replyLength) || reply[5] != 0)
        return false;
    const int sum = std::accumulate(reply.begin() + 2, reply.end() - 4, 0) & 0xff;
    static const char digits[] = "0123456789ABCDEF";
    return reply[size - 2] == digits[sum >> 4] && reply[size - 1] == digits[sum & 15];
}

Bytes readContents()
{
    Bytes contents;
    for (int i = 0; i < driver.dataAreas.size(); ++i)
        contents.insert(contents.end(), driver.dataAreas.at(i).readValue, driver.dataAreas.at(i).readValue + 4);
    return contents;
}

void plansTransfer(const KEY_ADDRESS &key)
{
    _RCP_VAR_PRO item;
    item.instanceId = 1;
    item.station = key.station;
    item.regName = key.regName;
    item.address = key.address;
    item.count = std::min(key.count, 32);
    const QVector<_RCP_VAR_PRO> items = QVector<_RCP_VAR_PRO>() << item;
    intf_setRcpAddress(&items);
}

/// @return whether a frame is in flight.
bool asks(FuzzedDataProvider &input, FRAME_PRO &frame)
{
    KEY_ADDRESS key;
    key.regName = anyRegName(input);
    key.station = input.PickValueInArray({1, 16, 255});
    key.address = input.ConsumeIntegralInRange<int>(0, 300);
    key.count = input.ConsumeIntegralInRange<int>(1, 40);
    int result = 0;
    intf_initProperty(controlBlock.data(), nullptr, recipeBuffer.data(), &result, "1#0#0#2#200", &hostMutex);
    switch (input.ConsumeIntegralInRange<int>(0, 4)) {
    case 0: {
        const QList<KEY_ADDRESS> keys = QList<KEY_ADDRESS>() << key;
        intf_addrMerge(&keys);
        break;
    }
    case 1: {
        const Bytes values(static_cast<std::size_t>(key.count) * 2, 1);
        intf_setData(key.station, key.regName, key.address, key.count, values.data(), 0);
        break;
    }
    case 2:
        intf_addConditionRead(&key, 0);
        break;
    case 3:
        plansTransfer(key);
        controlBlock[60115] = 1;
        break;
    default:
        plansTransfer(key);
        controlBlock[60116] = 1;
    }
    return intf_getSendFrame(&frame) == 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    FRAME_PRO frame;
    driver.recipeIndex = 0;
    const bool isInFlight = asks(input, frame);
    const bool wraps = input.ConsumeBool();
    Bytes wire = input.ConsumeRemainingBytes<unsigned char>();
    if (wraps)
        wire = reply(wire);

    const Bytes before = readContents();
    QByteArray array = arrayOf(wire);
    QString description;
    const int result = intf_dealRcvFrame(array, description);
    if (!isInFlight) {
        require(result == 0, "a reply to nothing is ignored");
    } else if (isGood(frame, bytesOf(array))) {
        require(result == 1, "a good reply is accepted");
    } else {
        require(result == 8, "a bad reply is refused");
        require(readContents() == before, "a refused reply leaves the cache");
        FRAME_PRO again;
        require(intf_getSendFrame(&again) == 1 && again.frameLength == frame.frameLength, "the frame goes out again");
    }
    controlBlock[60115] = 0;
    controlBlock[60116] = 0;
    return 0;
}
