#include "tanek_vs/replyCheck.h"

#include "model/protocol.h"
#include "tanek_vs/frameCodec.h"
#include "tanek_vs/wireFormat.h"

#include <QtCore/QtGlobal>

namespace {

bool hasGoodChecksum(const quint8 *reply, int length)
{
    const int bodySize = length - FRAME_BODY_OFFSET - FRAME_TRAILER_SIZE;
    const quint16 check = computate_check(reply + FRAME_BODY_OFFSET, static_cast<quint16>(bodySize));
    return reply[length - 2] == (check & 0xFFU) && reply[length - 1] == (check >> 8);
}

} // namespace

ReplyVerdict verdictOn(const FRAME_PRO &frame, const quint8 *reply, int length)
{
    if (length == 0 && frame.replyLength == 0)
        return ReplyAcknowledges;
    const bool isValid = length > REPLY_STATUS_OFFSET && length == frame.replyLength &&
                         reply[REPLY_STATUS_OFFSET] == 0 && hasGoodChecksum(reply, length);
    if (!isValid)
        return ReplyRefused;
    return frame.readCount != 0 ? ReplyCarriesData : ReplyAcknowledges;
}

int check_rcv_data(const quint8 *reply, int length)
{
    return driver.frameQueue.isEmpty() ? ReplyRefused : verdictOn(driver.frameQueue.at(0), reply, length);
}
