/// A reply with its DLE bytes undoubled, and m data bytes (none in an acknowledgement):
///
/// | offset | size | content                                             |
/// |--------|------|-----------------------------------------------------|
/// | 0      | 2    | DLE STX                                             |
/// | 2      | 3    | station and length, not examined                    |
/// | 5      | 1    | status                                              |
/// | 6      | m    | data                                                |
/// | 6+m    | 2    | DLE ETX                                             |
/// | 8+m    | 2    | checksum of bytes 2 to 5+m, ASCII digits            |
#include "tanek_vs/replyCheck.h"

#include "model/protocol.h"
#include "tanek_vs/frameCodec.h"

namespace {

bool hasGoodChecksum(const quint8 *reply, int length)
{
    const int bodySize = length - FRAME_BODY_OFFSET - FRAME_TRAILER_SIZE;
    const quint16 check = computate_check(reply + FRAME_BODY_OFFSET, static_cast<quint16>(bodySize));
    return reply[length - 2] == (check & 0xFFU) && reply[length - 1] == (check >> 8);
}

} // namespace

int check_rcv_data(const quint8 *reply, int length)
{
    if (driver.frameQueue.isEmpty())
        return ReplyRefused;
    const FRAME_PRO &frame = driver.frameQueue.at(0);
    if (length == 0 && frame.replyLength == 0)
        return ReplyAcknowledges;
    const bool isValid = length > REPLY_STATUS_OFFSET && length == frame.replyLength &&
                         reply[REPLY_STATUS_OFFSET] == 0 && hasGoodChecksum(reply, length);
    if (!isValid)
        return ReplyRefused;
    return frame.readCount != 0 ? ReplyCarriesData : ReplyAcknowledges;
}
