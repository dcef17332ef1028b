#include "replyCollector.h"

namespace vshost {

namespace {

constexpr std::uint8_t DLE = 0x10;
constexpr std::uint8_t STX = 0x02;
constexpr std::uint8_t ETX = 0x03;

/// Index of the station byte; a station number equal to DLE is followed by its double and still begins here.
constexpr std::size_t STATION_OFFSET = 2;

} // namespace

std::size_t ReplyCollector::take(const std::uint8_t *bytes, std::size_t size)
{
    std::size_t taken = 0;
    while (taken < size && !complete())
        takeByte(bytes[taken++]);
    return taken;
}

bool ReplyCollector::isFrom(std::uint8_t station) const
{
    return m_bytes.size() > STATION_OFFSET && m_bytes[STATION_OFFSET] == station;
}

void ReplyCollector::reset()
{
    m_state = State::Outside;
    m_bytes.clear();
}

void ReplyCollector::takeByte(std::uint8_t byte)
{
    const bool wasAfterDle = m_state == State::OutsideAfterDle || m_state == State::BodyAfterDle;
    if (wasAfterDle && byte == STX) {
        begin();
        return;
    }
    const bool outside = m_state == State::Outside || m_state == State::OutsideAfterDle;
    m_state = nextState(byte);
    if (!outside)
        m_bytes.push_back(byte);
}

void ReplyCollector::begin()
{
    m_bytes = {DLE, STX};
    m_state = State::Body;
}

ReplyCollector::State ReplyCollector::nextState(std::uint8_t byte) const
{
    switch (m_state) {
    case State::Outside:
    case State::OutsideAfterDle:
        return byte == DLE ? State::OutsideAfterDle : State::Outside;
    case State::Body:
        return byte == DLE ? State::BodyAfterDle : State::Body;
    case State::BodyAfterDle:
        return byte == ETX ? State::FirstCheck : State::Body;
    case State::FirstCheck:
        return State::SecondCheck;
    case State::SecondCheck:
    case State::Complete:
        break;
    }
    return State::Complete;
}

} // namespace vshost
