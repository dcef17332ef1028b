/// The values that are polled, with what was last shown of each. Changes are gathered while a driver call runs and
/// taken afterwards, so that a value of several words is told once, and whole.
#ifndef VSHOST_VALUE_BOARD_H
#define VSHOST_VALUE_BOARD_H

#include "registerKinds.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <map>
#include <mutex>
#include <set>
#include <tuple>

namespace vshost {

/// Bytes of the values at `place` as the driver shows them now.
ValueBytes shownBytes(const DriverCalls &calls, const Value &value);

class ValueBoard {
public:
    enum class State { Unread, Read, Failed };

    /// `calls` must outlive the board.
    ValueBoard(const DriverCalls &calls, std::vector<Value> values);

    const std::vector<Value> &values() const { return m_values; }

    /// The poll list that covers all values.
    QList<KEY_ADDRESS> pollKeys() const;

    /// The driver's report of a change. Called on any thread, inside calls of the driver too.
    void markChanged(int station, const QString &regName, int address);

    /// A block has been read, or given up. A value counts as read once every unit of it has been; the driver reports
    /// no change for what was 0 from the start.
    void blockRead(const VARIABLE &block);
    void blockFailed(const VARIABLE &block);

    struct Change {
        std::size_t index;
        ValueBytes bytes;
    };

    /// What differs from what was taken last, in the order of the values; values not read yet are left for later.
    std::vector<Change> takeChanges();

    State state(std::size_t index) const { return m_entries[index].state; }
    /// Whether each value has been read or has failed.
    bool settled() const { return m_unsettled == 0; }

private:
    /// Station, register name and address number of one unit.
    using Unit = std::tuple<int, std::string, int>;

    struct Entry {
        State state = State::Unread;
        std::set<Unit> unread;
        std::vector<std::uint8_t> taken;
    };

    void watchReports(std::size_t index);
    void watchUnits(std::size_t index);
    template <typename Handle> void forUnits(const VARIABLE &block, Handle handle);
    void settle(std::size_t index, State state);

    const DriverCalls &m_calls;
    std::vector<Value> m_values;
    std::vector<Entry> m_entries;
    std::size_t m_unsettled;
    /// Addresses as the driver reports them, and units as blocks carry them; they differ for bits inside words.
    std::multimap<Unit, std::size_t> m_byReport;
    std::multimap<Unit, std::size_t> m_byUnit;
    /// Guards `m_changed` alone; held for no other call.
    std::mutex m_mutex;
    std::set<std::size_t> m_changed;
};

} // namespace vshost

#endif
