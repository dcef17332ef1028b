#include "tanek_vs/frameCodec.h"

#include "tanek_vs/records.h"

#include <algorithm>
#include <cstring>

namespace {

/// Header, trailer and the least of a body: shorter ones have nothing to double.
const int SHORTEST_FRAME = 7;

quint8 hexDigit(unsigned nibble) { return static_cast<quint8>(nibble < 10 ? '0' + nibble : 'A' + (nibble - 10)); }

} // namespace

quint16 computate_check(const quint8 *bytes, quint16 length)
{
    unsigned sum = 0;
    for (int i = 0; i < length; ++i)
        sum += bytes[i];
    const unsigned high = hexDigit((sum >> 4) & 0x0FU);
    const unsigned low = hexDigit(sum & 0x0FU);
    return static_cast<quint16>(high | (low << 8));
}

bool dealFrameSend_0x10(quint8 *frame, int &length)
{
    if (length < SHORTEST_FRAME)
        return true;
    if (length > RECORD_BUFFER_SIZE)
        return false;
    const int bodyEnd = length - FRAME_TRAILER_SIZE;
    int doubled = static_cast<int>(std::count(frame + FRAME_BODY_OFFSET, frame + bodyEnd, FRAME_DLE));
    if (length + doubled > RECORD_BUFFER_SIZE)
        return false;
    std::memmove(frame + bodyEnd + doubled, frame + bodyEnd, FRAME_TRAILER_SIZE);
    length += doubled;
    // Backwards, so that no byte is overwritten before it has moved.
    for (int i = bodyEnd - 1; doubled > 0; --i) {
        frame[i + doubled] = frame[i];
        if (frame[i] == FRAME_DLE)
            frame[i + --doubled] = FRAME_DLE;
    }
    return true;
}

void dealFrameRead_0x10(QByteArray &reply)
{
    const int length = static_cast<int>(reply.size());
    if (length < SHORTEST_FRAME)
        return;
    char *bytes = reply.data();
    const char dle = static_cast<char>(FRAME_DLE);
    int kept = FRAME_BODY_OFFSET;
    int next = FRAME_BODY_OFFSET;
    // A DLE as the last body byte stands before the trailer's DLE, which is not its double.
    while (length - next > FRAME_TRAILER_SIZE + 1) {
        const bool isDoubled = bytes[next] == dle && bytes[next + 1] == dle;
        bytes[kept++] = bytes[next];
        next += isDoubled ? 2 : 1;
    }
    std::memmove(bytes + kept, bytes + next, static_cast<std::size_t>(length - next));
    reply.resize(kept + length - next);
}
