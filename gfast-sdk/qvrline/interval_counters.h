// The quarter hour's counters of each line: what the chip has counted at its start and now.
#pragma once

#include <qvr.h>

#include "qvrline/line_table.h"

namespace gfast {

// The running quarter hour starts at the latest read.
void QVR_resetIntervalCounters(QVR_intervalCounterDB_t* xio_counters);

using QVR_15minCounterUpdateNotificationCB = void (*)(QVR_lineId_t xi_lineId, time_t xi_boundary);

// Called for each line whose counters were read at a boundary, before its next quarter hour starts.
void QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationCB xi_callback);

// A quarter hour ends. Runs on the notification thread. A line that cannot be read is skipped: its next
// quarter hour then spans both.
void QVR_15minCounterEventHandler(time_t xi_boundary);

}  // namespace gfast
