/// Finds requests in a stream of bytes that comes in pieces of any size. Knows the envelope, not what is inside.
#ifndef VSSIM_FRAME_READER_H
#define VSSIM_FRAME_READER_H

#include "simulator/wireFormat.h"

namespace vssim {

/// A complete request as it was received; whether the checksum is right is for the decoder to say.
struct Frame {
    Bytes body; ///< from the station byte to the last data byte, doubling undone
    Checksum checksum;
};

/// Bytes outside an envelope, and envelopes that break off, are passed over; a new DLE STX always starts afresh. Holds
/// one unfinished request of bounded size and nothing else.
class FrameReader {
public:
    /// The requests that these bytes complete, in order.
    std::vector<Frame> feed(const std::uint8_t *bytes, std::size_t size);
    std::vector<Frame> feed(const Bytes &bytes) { return feed(bytes.data(), bytes.size()); }

private:
    enum class State { Outside, OutsideDle, Body, BodyDle, FirstDigit, SecondDigit };

    void take(std::uint8_t byte, std::vector<Frame> &complete);
    void takeOutside(std::uint8_t byte);
    void takeBody(std::uint8_t byte);
    void takeBehindDle(std::uint8_t byte);
    void takeDigit(std::uint8_t byte, std::vector<Frame> &complete);
    void append(std::uint8_t byte);
    void start();
    void abandon();

    State m_state = State::Outside;
    Frame m_frame{};
};

} // namespace vssim

#endif
