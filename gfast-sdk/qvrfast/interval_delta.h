// Arithmetic on the counters of intervals: what was counted between two snapshots, and sums of intervals.
#pragma once

#include <qvr.h>

#include "qvrline/line_table.h"

namespace gfast {

// Each counter of the interval becomes the latest snapshot's minus the start's, 32 bits that wrap. The chip
// keeps no initialisation counts and no TIGA of the far end: those stay as they are. When more unavailable
// seconds have passed than were collected, the start's are moved up for the next look at this interval.
void QVR_update15minPeformanceCounters(QVR_intervalCounterDB_t* xio_snapshots,
                                       QVR_intervalLinkCounterDB_t* xio_interval);

// Adds the 18 line counters and the 4 channel counters; the headers stay as they are.
void QVR_accumulateIntervalCounters(QVR_performanceCounterDB_t* xio_sum,
                                    const QVR_performanceCounterDB_t* xi_added);

}  // namespace gfast
