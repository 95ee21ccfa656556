// What the device layer's events lead to in the line layer. These run on the notification thread.
#pragma once

#include <qvr.h>

namespace gfast {

// A line, by its internal number, changed its state: tells the observer, and takes the framing of a line that
// reached showtime.
void QVR_linkStateChangeEventHandler(QVR_lineId_t internalId, G9701_linkState_t oldState,
                                     G9701_linkState_t newState);

// A device rebooted: framing and counters of every line start afresh.
void QVR_rebootNotificationHandler();

// Reads how the line is framed, and unless it fails stores it; with TRUE the counters of the line start
// afresh too. Runs on either thread.
//   as QVR_readGfastFramerInitCounters
QVR_retval_t QVR_refreshLineInfo(QVR_lineId_t lineId, BOOL reinitCounters);

}  // namespace gfast
