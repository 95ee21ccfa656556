// What the device layer's events lead to in the line layer. These run on the notification thread.
#pragma once

#include <qvr.h>

// A line, by its internal number, changed its state: tells the observer, and takes the framing of a line that
// reached showtime.
void QVR_linkStateChangeEventHandler(QVR_lineId_t internalId, G9701_linkState_t oldState,
                                     G9701_linkState_t newState);

// A device rebooted: framing and counters of every line start afresh.
void QVR_rebootNotificationHandler();
