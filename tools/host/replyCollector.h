/// Finds one reply in the bytes of a link.
///
/// | part    | bytes                                                                    |
/// |---------|--------------------------------------------------------------------------|
/// | start   | DLE STX                                                                  |
/// | body    | station, length (2), status, data; a DLE in it is sent as DLE DLE        |
/// | end     | DLE ETX                                                                  |
/// | trailer | two checksum characters                                                  |
///
/// A byte machine without clock or link. It finds where a reply begins and ends and judges nothing: length, status
/// and checksum are the driver's matter, which takes the bytes as they came, doubled DLEs included.
#ifndef VSHOST_REPLY_COLLECTOR_H
#define VSHOST_REPLY_COLLECTOR_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vshost {

class ReplyCollector {
public:
    /// Takes bytes up to the end of the reply and returns how many it took; the rest is not this reply's. Bytes before
    /// DLE STX are dropped. A DLE STX inside a body begins a new reply, since a body's own DLE would be doubled.
    std::size_t take(const std::uint8_t *bytes, std::size_t size);

    bool complete() const { return m_state == State::Complete; }

    /// The bytes from DLE STX on, as they came; what there is so far when not complete.
    const std::vector<std::uint8_t> &bytes() const { return m_bytes; }

    /// Whether the reply names `station` as its sender.
    bool isFrom(std::uint8_t station) const;

    void reset();

private:
    enum class State { Outside, OutsideAfterDle, Body, BodyAfterDle, FirstCheck, SecondCheck, Complete };

    void takeByte(std::uint8_t byte);
    void begin();
    State nextState(std::uint8_t byte) const;

    State m_state = State::Outside;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace vshost

#endif
