/// Builds request frames: functions of the request alone, and the two calls that queue what they build.
#ifndef TANEK_VS_REQUEST_FRAMES_H
#define TANEK_VS_REQUEST_FRAMES_H

#include <tanek_vs/records.h>

#include <QtCore/QList>

/// Builds the frame that reads the request's units.
/// @param frame an empty one; receives the frame when there is one, else it is left in an undefined state.
/// @return whether there is one: not for an unknown kind, for the broadcast station, which nobody answers, or for a
///         number or count that a request has no room for.
bool buildReadFrame(const VARIABLE &request, FRAME_PRO &frame);

/// Builds the frame that writes the request's values.
/// @param frame as for reads.
/// @return whether there is one: not for an unknown kind, a number or count that a request has no room for, or values
///         that fit neither the request's `data` nor, doubled, a frame.
bool buildWriteFrame(const VARIABLE &request, FRAME_PRO &frame);

/// Appends the frame that reads the first request of the list to the driver's frame queue.
/// @return 1, or 0 when there is no request or none can be built.
int getReadFrame(const QList<VARIABLE> &requests);

/// Appends the frame that writes the request's values to the driver's frame queue, or nothing when there is none.
void getWriteFrame(const VARIABLE &request);

#endif
