/// The pieces of work that are measured, each to be repeated as often as a measurement wants.
#ifndef BENCH_WORK_H
#define BENCH_WORK_H

#include <tanek_vs/driver.h>

#include <QtCore/QList>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class Work {
public:
    virtual ~Work() = default;
    virtual void run(std::size_t times) = 0;
};

struct WorkRow {
    std::string name;
    /// For people.
    std::string words;
    std::function<std::unique_ptr<Work>()> prepare;
};

/// Everything that is compared in one table: the driver's work, and equal work of others.
const std::vector<WorkRow> &allWork();

// ---- The driver ----

/// Words of a transaction, and their bytes.
const int WORDS_PER_BLOCK = 32;
const std::size_t BLOCK_BYTES = std::size_t{2} * WORDS_PER_BLOCK;

/// A poll list over so many units of one kind is read block by block; each reply brings the same contents, or others
/// for every word, which are all polled and so reported.
std::unique_ptr<Work> pollWork(int units, bool isChanging);

/// 32 words out of the cache.
std::unique_ptr<Work> readWork();

/// One word posted, sent and acknowledged.
std::unique_ptr<Work> writeWork();

/// One word posted for a place that waits already, in front of so many others.
std::unique_ptr<Work> postWork(int waiting);

/// A poll list of single words, one behind the other.
class PollList {
public:
    explicit PollList(int words);

    void handOver() const;

private:
    QList<KEY_ADDRESS> m_keys;
};

// ---- Others ----

/// A request to read 32 words built and its reply taken apart: by libmodbus as RTU over a socket, by Qt SerialBus as a
/// PDU, without a link.
std::unique_ptr<Work> modbusWork();
std::unique_ptr<Work> serialBusWork();

#endif
