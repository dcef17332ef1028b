/// Any bytes as the reply to a frame in flight: what is not a good reply changes nothing, and the driver goes on.
///
/// The last bytes of an input choose the request; the rest is the reply as it comes from the link.
#include "fuzzSupport.h"
#include "model/protocol.h"

#include <numeric>

namespace {

/// Length, status and checksum, judged apart from the driver.
bool isGood(const FRAME_PRO &frame, const QByteArray &reply)
{
    if (frame.replyLength == 0)
        return reply.isEmpty();
    const int size = static_cast<int>(reply.size());
    if (size != frame.replyLength || reply.at(5) != 0)
        return false;
    const int sum = std::accumulate(reply.begin() + 2, reply.end() - 4, 0) & 0xff;
    static const char DIGITS[] = "0123456789ABCDEF";
    return reply.at(size - 2) == DIGITS[sum >> 4] && reply.at(size - 1) == DIGITS[sum & 15];
}

Bytes readContents()
{
    Bytes contents;
    for (const _DATA_ &area : driver.dataAreas)
        contents.insert(contents.end(), area.readValue, area.readValue + 4);
    return contents;
}

/// Asks the driver for something of that kind.
void asks(Host &host, FuzzedDataProvider &input)
{
    const std::string regName = anyRegName(input);
    const int station = input.PickValueInArray({1, 16, 255});
    const int address = input.ConsumeIntegralInRange<int>(0, 300);
    const int count = input.ConsumeIntegralInRange<int>(1, 40);
    const int way = input.ConsumeIntegralInRange<int>(0, 4);
    host.configures(2, 200);
    host.plansRecipe({recipeItem(regName, address, std::min(count, 32), 0, station)});
    if (way == 0)
        host.polls({key(regName, address, count, station)});
    else if (way == 1)
        host.writes(regName, address, count, Bytes(static_cast<std::size_t>(count) * 2, 1), station);
    else if (way == 2)
        host.asksForCondition(key(regName, address, count, station));
    else
        host.asks(way == 3 ? DOWNLOAD_BYTE : UPLOAD_BYTE);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    FuzzedDataProvider input(bytes, size);
    Host host(linkedCalls());
    asks(host, input);
    const bool isInFlight = host.sends() != "nothing";
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
    } else if (isGood(host.frame, array)) {
        require(result == 1, "a good reply is accepted");
    } else {
        const Bytes sent = host.sentBytes();
        require(result == 8, "a bad reply is refused");
        require(readContents() == before, "a refused reply leaves the cache");
        require(host.sends() != "nothing" && host.sentBytes() == sent, "the frame goes out again");
    }
    return 0;
}
