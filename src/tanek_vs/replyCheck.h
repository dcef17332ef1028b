/// Is a reply a good answer to the frame in flight?
#ifndef TANEK_VS_REPLY_CHECK_H
#define TANEK_VS_REPLY_CHECK_H

#include <QtCore/QtGlobal>

enum ReplyVerdict {
    ReplyRefused = 0,
    ReplyCarriesData = 1,
    /// The acknowledgement of a write, or silence where none is expected.
    ReplyAcknowledges = 2
};

/// Index of a reply's status byte: 0 accepted, else the controller's error code.
const int REPLY_STATUS_OFFSET = 5;

/// Judges a reply, its doubled DLE bytes already reduced, against the head of the frame queue; a ReplyVerdict.
int check_rcv_data(const quint8 *reply, int length);

#endif
