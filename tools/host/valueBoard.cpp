#include "valueBoard.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <algorithm>

namespace vshost {

namespace {

constexpr int BITS_PER_WORD = 16;

/// Kinds of bits inside words are read as words of the kind whose name stands before this.
const char BIT_SUFFIX[] = "_bit";

bool isBitOfWord(const std::string &regName)
{
    const std::size_t at = regName.rfind(BIT_SUFFIX);
    return at != std::string::npos && at + sizeof BIT_SUFFIX - 1 == regName.size();
}

/// Addresses that a value occupies: a 32-bit counter is one, though it counts as two words.
int addressesOf(const Value &value) { return value.format.wideKind ? 1 : value.place.count; }

} // namespace

ValueBytes shownBytes(const DriverCalls &calls, const Value &value)
{
    ValueBytes bytes = {};
    calls.getData(value.place.station, value.place.regName, value.place.address, value.place.count, bytes.data());
    return bytes;
}

ValueBoard::ValueBoard(const DriverCalls &calls, std::vector<Value> values)
    : m_calls(calls), m_values(std::move(values)), m_entries(m_values.size()), m_unsettled(m_values.size())
{
    for (std::size_t index = 0; index < m_values.size(); ++index) {
        watchReports(index);
        watchUnits(index);
    }
}

void ValueBoard::watchReports(std::size_t index)
{
    const Place &place = m_values[index].place;
    for (int i = 0; i < addressesOf(m_values[index]); ++i)
        m_byReport.emplace(Unit(place.station, place.regName.toStdString(), place.address + i), index);
}

void ValueBoard::watchUnits(std::size_t index)
{
    const Place &place = m_values[index].place;
    std::string regName = place.regName.toStdString();
    int address = place.address;
    if (isBitOfWord(regName)) {
        regName.resize(regName.size() - (sizeof BIT_SUFFIX - 1));
        address /= BITS_PER_WORD;
    }
    for (int i = 0; i < addressesOf(m_values[index]); ++i) {
        const Unit unit(place.station, regName, address + i);
        m_byUnit.emplace(unit, index);
        m_entries[index].unread.insert(unit);
    }
}

QList<KEY_ADDRESS> ValueBoard::pollKeys() const
{
    QList<KEY_ADDRESS> keys;
    for (const Value &value : m_values) {
        KEY_ADDRESS key;
        key.station = value.place.station;
        key.regName = value.place.regName;
        key.address = value.place.address;
        key.count = value.place.count;
        key.unitCode = value.format.type == ValueType::Bit ? -1 : 0;
        keys.append(key);
    }
    return keys;
}

void ValueBoard::markChanged(int station, const QString &regName, int address)
{
    const auto range = m_byReport.equal_range(Unit(station, regName.toStdString(), address));
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::for_each(range.first, range.second, [this](const auto &entry) { m_changed.insert(entry.second); });
}

template <typename Handle> void ValueBoard::forUnits(const VARIABLE &block, Handle handle)
{
    const std::string regName = block.regName.toStdString();
    for (int i = 0; i < block.count; ++i) {
        const Unit unit(block.station, regName, block.address + i);
        const auto range = m_byUnit.equal_range(unit);
        std::for_each(range.first, range.second, [&](const auto &entry) { handle(entry.second, unit); });
    }
}

void ValueBoard::blockRead(const VARIABLE &block)
{
    forUnits(
        block,
        [this](std::size_t index, const Unit &unit) {
            m_entries[index].unread.erase(unit);
            if (m_entries[index].unread.empty())
                settle(index, State::Read);
        });
}

void ValueBoard::blockFailed(const VARIABLE &block)
{
    forUnits(
        block,
        [this](std::size_t index, const Unit &) {
            if (m_entries[index].state == State::Unread)
                settle(index, State::Failed);
        });
}

void ValueBoard::settle(std::size_t index, State state)
{
    Entry &entry = m_entries[index];
    m_unsettled -= entry.state == State::Unread ? 1 : 0;
    if (state == State::Read && entry.state != State::Read) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_changed.insert(index);
    }
    entry.state = state;
}

std::vector<ValueBoard::Change> ValueBoard::takeChanges()
{
    std::set<std::size_t> changed;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        changed.swap(m_changed);
    }
    std::vector<Change> changes;
    for (const std::size_t index : changed) {
        if (m_entries[index].state != State::Read)
            continue;
        const ValueBytes bytes = shownBytes(m_calls, m_values[index]);
        const std::vector<std::uint8_t> relevant(bytes.begin(), bytes.begin() + byteCount(m_values[index].format));
        if (m_entries[index].taken != relevant) {
            m_entries[index].taken = relevant;
            changes.push_back({index, bytes});
        }
    }
    return changes;
}

} // namespace vshost
