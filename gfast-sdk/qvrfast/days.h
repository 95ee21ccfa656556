// The days of a line: sums of its quarter hours.
#pragma once

#include <qvr.h>

namespace gfast {

// A line's day is over: stores the sum of the running day in the history. Runs on the notification thread,
// before the last quarter hour of the day is closed.
void QVR_update24hrHistoryDatabase(QVR_lineId_t xi_lineId, time_t xi_boundary);

// Calls the registered callback: a line's day is over.
void notify24hrEvent(QVR_lineId_t line, const char* stamp, time_t time);

}  // namespace gfast
