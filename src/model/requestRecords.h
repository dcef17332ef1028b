/// Copies of the large records into ones that stand already.
///
/// The assignment that a compiler makes for a record with a string and an array copies the array byte by byte, at ten
/// times the cost of the rest of a transaction; these copy it as a block.
#ifndef TANEK_VS_REQUEST_RECORDS_H
#define TANEK_VS_REQUEST_RECORDS_H

#include "model/run.h"

#include <tanek_vs/records.h>

#include <cstring>

/// Copies a request to read, which carries no data; the data of `to` stay.
inline void copyRead(const VARIABLE &from, VARIABLE &to)
{
    to.hostContext = from.hostContext;
    setRun(to, from);
}

inline void copyRequest(const VARIABLE &from, VARIABLE &to)
{
    copyRead(from, to);
    std::memcpy(to.data, from.data, sizeof to.data);
}

inline void copyFrame(const FRAME_PRO &from, FRAME_PRO &to)
{
    std::memcpy(to.frame, from.frame, sizeof to.frame);
    to.frameLength = from.frameLength;
    to.replyLength = from.replyLength;
    to.dataOffset = from.dataOffset;
    to.readCount = from.readCount;
    to.reserved = from.reserved;
    copyRequest(from.variable, to.variable);
}

#endif
