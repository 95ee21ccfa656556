// How the line layer reacts to events of the device layer. These run on the notification thread.
#pragma once

#include <qvr.h>

namespace gfast {

// A line, by its internal number, changed its state: calls the observer, and reads the framing of a line that
// reached showtime.
void QVR_linkStateChangeEventHandler(QVR_lineId_t internalId, G9701_linkState_t oldState,
                                     G9701_linkState_t newState);

// A device rebooted: reads the framing of every line again and restarts its counters.
void QVR_rebootNotificationHandler();

// Reads and stores how the line is framed; with TRUE it then restarts the line's counters. Runs on either
// thread.
//   as QVR_readGfastFramerInitCounters
QVR_retval_t QVR_refreshLineInfo(QVR_lineId_t lineId, BOOL reinitCounters);

}  // namespace gfast
