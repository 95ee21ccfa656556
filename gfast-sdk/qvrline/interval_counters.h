// The counters of each line's quarter hour: the chip's counts at its start and now.
#pragma once

#include <qvr.h>

#include "qvrline/line_table.h"

namespace gfast {

// Makes the latest read the start of the running quarter hour.
void QVR_resetIntervalCounters(QVR_intervalCounterDB_t* xio_counters);

using QVR_15minCounterUpdateNotificationCB = void (*)(QVR_lineId_t xi_lineId, time_t xi_boundary);

// Registers what is called for each line whose counters were read at a boundary, before its next quarter hour
// starts.
void QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationCB xi_callback);

// Ends the quarter hour of every line. A line that cannot be read is skipped, and its next quarter hour
// covers both. Runs on the notification thread.
void QVR_15minCounterEventHandler(time_t xi_boundary);

}  // namespace gfast
