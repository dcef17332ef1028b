#include "simulator/frameReader.h"

#include <utility>

namespace vssim {

namespace {

// A host sends at most 1024 bytes a request; twice that is no request any more.
constexpr std::size_t LONGEST_BODY = 2048;

} // namespace

std::vector<Frame> FrameReader::feed(const std::uint8_t *bytes, std::size_t size)
{
    std::vector<Frame> complete;
    for (std::size_t i = 0; i < size; ++i)
        take(bytes[i], complete);
    return complete;
}

void FrameReader::take(std::uint8_t byte, std::vector<Frame> &complete)
{
    switch (m_state) {
    case State::Outside:
    case State::OutsideDle:
        return takeOutside(byte);
    case State::Body:
        return takeBody(byte);
    case State::BodyDle:
        return takeBehindDle(byte);
    case State::FirstDigit:
    case State::SecondDigit:
        return takeDigit(byte, complete);
    }
}

void FrameReader::takeOutside(std::uint8_t byte)
{
    if (m_state == State::OutsideDle && byte == STX)
        return start();
    m_state = byte == DLE ? State::OutsideDle : State::Outside;
}

void FrameReader::takeBody(std::uint8_t byte)
{
    if (byte == DLE)
        m_state = State::BodyDle;
    else
        append(byte);
}

void FrameReader::takeBehindDle(std::uint8_t byte)
{
    switch (byte) {
    case DLE:
        m_state = State::Body;
        return append(byte);
    case ETX:
        m_state = State::FirstDigit;
        return;
    case STX: // the sender gave up what it had begun
        return start();
    default: // a lone DLE stands in no body
        return abandon();
    }
}

// A DLE here is no checksum digit: the request lost its end, and the next one may begin.
void FrameReader::takeDigit(std::uint8_t byte, std::vector<Frame> &complete)
{
    if (byte == DLE) {
        abandon();
        m_state = State::OutsideDle;
        return;
    }
    m_frame.checksum[m_state == State::FirstDigit ? 0 : 1] = byte;
    if (m_state == State::FirstDigit) {
        m_state = State::SecondDigit;
        return;
    }
    complete.push_back(std::exchange(m_frame, Frame{}));
    m_state = State::Outside;
}

void FrameReader::append(std::uint8_t byte)
{
    m_frame.body.push_back(byte);
    if (m_frame.body.size() > LONGEST_BODY)
        abandon();
}

void FrameReader::start()
{
    m_frame = Frame{};
    m_state = State::Body;
}

void FrameReader::abandon()
{
    m_frame = Frame{};
    m_state = State::Outside;
}

} // namespace vssim
