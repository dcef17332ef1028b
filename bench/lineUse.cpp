#include "lineUse.h"

#include "support/wire.h"

#include <tanek_vs/driver.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>

#include <fmt/format.h>

#include <random>
#include <string>
#include <vector>

namespace {

/// Start, eight data bits and stop.
const int BITS_PER_BYTE = 10;
const int BAUD_RATES[] = {9600, 19200, 115200};
const int HIGHEST_MERGE_GAP = 64;

struct PollList {
    std::string name;
    std::vector<KEY_ADDRESS> keys;

    void add(int station, const char *regName, int address, int count)
    {
        KEY_ADDRESS key;
        key.station = station;
        key.regName = QString::fromLatin1(regName);
        key.address = address;
        key.count = count;
        keys.push_back(key);
    }
};

/// The screens of one machine: 120 words and 64 bits in groups, 1 to 19 apart.
PollList denseList()
{
    PollList list = {"dense", {}};
    for (int group = 0, address = 100; group < 24; ++group, address += 5 + 1 + 7 * group % 19)
        list.add(1, "D", address, 5);
    for (int group = 0, address = 0; group < 8; ++group, address += 8 + 1 + 5 * group % 17)
        list.add(1, "M", address, 8);
    return list;
}

/// 200 single words and bits anywhere in 2,000 of each.
PollList scatteredList()
{
    PollList list = {"scattered", {}};
    std::mt19937 random(7);
    for (int item = 0; item < 200; ++item)
        list.add(1, item % 4 == 3 ? "M" : "D", static_cast<int>(random() % 2000), 1);
    return list;
}

/// Eight stations with 20 words, 3 counters and 16 bits each.
PollList severalStations()
{
    PollList list = {"stations", {}};
    for (int station = 1; station <= 8; ++station) {
        for (int group = 0, address = 0; group < 5; ++group, address += 4 + 3 * group + station % 3)
            list.add(station, "D", address, 4);
        list.add(station, "32C", 200, 2);
        list.add(station, "32C", 204, 4);
        list.add(station, "Y", 0, 16);
    }
    return list;
}

struct Cycle {
    int requests = 0;
    int bytes = 0;

    double milliseconds(int baudRate) const { return 1000.0 * bytes * BITS_PER_BYTE / baudRate; }
};

/// One turn of the list, every reply being as long as it has to be.
Cycle cycleOf(const std::vector<KEY_ADDRESS> &keys, int mergeGap)
{
    std::vector<quint8> controlBlock(60117);
    quint16 recipeWord = 0;
    int result = 0;
    QMutex mutex;
    intf_initProperty(controlBlock.data(), nullptr, &recipeWord, &result, fmt::format("1#0#0#3#{}", mergeGap).c_str(),
                      &mutex);
    QList<KEY_ADDRESS> list;
    for (const KEY_ADDRESS &key : keys)
        list.append(key);
    Cycle cycle;
    cycle.requests = intf_addrMerge(&list);
    for (int i = 0; i < cycle.requests; ++i) {
        FRAME_PRO frame;
        QString description;
        intf_getSendFrame(&frame);
        QByteArray received = arrayOf(reply(Bytes(static_cast<std::size_t>(frame.replyLength - 10))));
        cycle.bytes += frame.frameLength + static_cast<int>(received.size());
        intf_dealRcvFrame(received, description);
    }
    return cycle;
}

Cycle cycleOfSingleItems(const std::vector<KEY_ADDRESS> &keys)
{
    Cycle sum;
    for (const KEY_ADDRESS &key : keys) {
        const Cycle one = cycleOf({key}, 0);
        sum.requests += one.requests;
        sum.bytes += one.bytes;
    }
    return sum;
}

void printRow(const std::string &list, const std::string &merging, const Cycle &cycle)
{
    fmt::print("{}\t{}\t{}\t{}", list, merging, cycle.requests, cycle.bytes);
    for (const int baudRate : BAUD_RATES)
        fmt::print("\t{:.0f}", cycle.milliseconds(baudRate));
    fmt::print("\n");
}

} // namespace

void printLineUse()
{
    for (const PollList &list : {denseList(), scatteredList(), severalStations()}) {
        printRow(list.name, "none", cycleOfSingleItems(list.keys));
        for (int mergeGap = 0; mergeGap <= HIGHEST_MERGE_GAP; ++mergeGap)
            printRow(list.name, std::to_string(mergeGap), cycleOf(list.keys, mergeGap));
    }
}
