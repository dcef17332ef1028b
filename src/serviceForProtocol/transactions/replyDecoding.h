/// Turns a good reply into cache contents, and any transaction into a line of text.
#ifndef TANEK_VS_REPLY_DECODING_H
#define TANEK_VS_REPLY_DECODING_H

#include <tanek_vs/records.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// The transaction in flight in words, such as 1#D100(10), with the error code of a reply that refuses it.
QString getErrorInfo(const QByteArray &reply);

/// Stores the units that a reply carries, from its byte `dataOffset` on, and reports those that changed; what is
/// missing of the reply reads as 0. During a recipe upload the words go into the host's recipe buffer as well.
void analyzeFrameOfVal(const QByteArray &reply, int unitCount, int dataOffset, const VARIABLE &request);

/// The same for the frame in flight.
/// @return 0, always.
int dealReadFrameReturnSaveData(const QByteArray &reply);

#endif
