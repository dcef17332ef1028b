#include "tanek_vs/frameCodec.h"

#include "tanek_vs/wireFormat.h"

#include <tanek_vs/records.h>

#include <QtCore/QByteArray>
#include <QtCore/QtGlobal>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

/// Header, trailer and the least of a body: shorter ones have nothing to double.
const int SHORTEST_FRAME = 7;

quint8 hexDigit(unsigned nibble) { return static_cast<quint8>(nibble < 10 ? '0' + nibble : 'A' + (nibble - 10)); }

} // namespace

quint16 computate_check(const quint8 *bytes, quint16 length)
{
    quint8 sum = 0;
    for (int i = 0; i < length; ++i)
        sum = static_cast<quint8>(sum + bytes[i]);
    const unsigned high = hexDigit(sum >> 4);
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
    if (!std::memchr(frame + FRAME_BODY_OFFSET, FRAME_DLE, static_cast<std::size_t>(bodyEnd - FRAME_BODY_OFFSET)))
        return true;
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
    char *const bytes = reply.data();
    char *kept = bytes + FRAME_BODY_OFFSET;
    const char *next = kept;
    // A DLE as the last body byte stands before the trailer's DLE, which is not its double.
    const char *const last = bytes + length - FRAME_TRAILER_SIZE - 1;
    while (next < last) {
        const char *dle =
            static_cast<const char *>(std::memchr(next, FRAME_DLE, static_cast<std::size_t>(last - next)));
        if (!dle)
            break;
        const std::size_t upToDle = static_cast<std::size_t>(dle + 1 - next);
        std::memmove(kept, next, upToDle);
        kept += upToDle;
        next = dle + (dle[1] == *dle ? 2 : 1);
    }
    if (kept == next)
        return;
    const std::size_t rest = static_cast<std::size_t>(bytes + length - next);
    std::memmove(kept, next, rest);
    reply.resize(static_cast<int>(kept + rest - bytes));
}
