#include "simulator/frameReader.h"

#include <utility>

namespace vssim {

namespace {

// A host sends at most 1024 bytes a request; twice that is no request any more.
constexpr std::size_t longestBody = 2048;

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
    switch (state) {
    case State::outside:
    case State::outsideDle:
        return takeOutside(byte);
    case State::body:
        return takeBody(byte);
    case State::bodyDle:
        return takeBehindDle(byte);
    case State::firstDigit:
    case State::secondDigit:
        return takeDigit(byte, complete);
    }
}

void FrameReader::takeOutside(std::uint8_t byte)
{
    if (state == State::outsideDle && byte == stx)
        return start();
    state = byte == dle ? State::outsideDle : State::outside;
}

void FrameReader::takeBody(std::uint8_t byte)
{
    if (byte == dle)
        state = State::bodyDle;
    else
        append(byte);
}

void FrameReader::takeBehindDle(std::uint8_t byte)
{
    switch (byte) {
    case dle:
        state = State::body;
        return append(byte);
    case etx:
        state = State::firstDigit;
        return;
    case stx: // the sender gave up what it had begun
        return start();
    default: // a lone DLE stands in no body
        return abandon();
    }
}

// A DLE here is no checksum digit: the request lost its end, and the next one may begin.
void FrameReader::takeDigit(std::uint8_t byte, std::vector<Frame> &complete)
{
    if (byte == dle) {
        abandon();
        state = State::outsideDle;
        return;
    }
    frame.checksum[state == State::firstDigit ? 0 : 1] = byte;
    if (state == State::firstDigit) {
        state = State::secondDigit;
        return;
    }
    complete.push_back(std::exchange(frame, Frame{}));
    state = State::outside;
}

void FrameReader::append(std::uint8_t byte)
{
    frame.body.push_back(byte);
    if (frame.body.size() > longestBody)
        abandon();
}

void FrameReader::start()
{
    frame = Frame{};
    state = State::body;
}

void FrameReader::abandon()
{
    frame = Frame{};
    state = State::outside;
}

} // namespace vssim
