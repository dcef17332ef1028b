/// Is a reply a good answer to a request?
#ifndef TANEK_VS_REPLY_CHECK_H
#define TANEK_VS_REPLY_CHECK_H

#include <tanek_vs/records.h>

#include <QtCore/QtGlobal>

enum ReplyVerdict {
    ReplyRefused = 0,
    ReplyCarriesData = 1,
    /// The acknowledgement of a write, or silence where none is expected.
    ReplyAcknowledges = 2
};

/// Judges a reply to that frame, its doubled DLE bytes already reduced. Which station it names is not looked at.
ReplyVerdict verdictOn(const FRAME_PRO &frame, const quint8 *reply, int length);

/// The verdict on a reply to the frame in flight; ReplyRefused when there is none.
int check_rcv_data(const quint8 *reply, int length);

#endif
