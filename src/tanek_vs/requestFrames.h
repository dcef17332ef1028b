/// Builds the request frames and appends them to the driver's frame queue.
#ifndef TANEK_VS_REQUEST_FRAMES_H
#define TANEK_VS_REQUEST_FRAMES_H

#include "tanek_vs/records.h"

#include <QtCore/QList>

/// Builds the frame that reads the first request of the list.
/// @return 1, or 0 when no frame can be built: no request, an unknown kind, a negative count, or the broadcast
///         station, which nobody answers.
int getReadFrame(const QList<VARIABLE> &requests);

/// Builds the frame that writes the request's values. Appends nothing for an unknown kind, a negative count, or values
/// that fit neither the request's `data` nor, doubled, a frame.
void getWriteFrame(const VARIABLE &request);

#endif
