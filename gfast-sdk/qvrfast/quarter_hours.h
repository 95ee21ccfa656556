// The quarter hours of a line: what happens when one ends, and the ones that are kept.
#pragma once

#include <qvr.h>

namespace gfast {

// A line's quarter hour has ended and its counters have been read: writes its entry into the history and
// begins the next one. The entry has the number and the time of the quarter hour that begins at the boundary.
// Runs on the notification thread.
void QVR_15minCounterUpdateNotificationHandler(QVR_lineId_t xi_lineId, time_t xi_boundary);

}  // namespace gfast
