// Arithmetic on the counters of intervals: what was counted between two snapshots, and sums of intervals.
#pragma once

#include <qvr.h>

#include "qvrline/line_table.h"

namespace gfast {

// Sets each counter of the interval to the latest snapshot minus the start, in 32 bits that wrap around. The
// chip counts no initialisations and no TIGA of the far end: those counters stay as they are. If there are
// more unavailable seconds than collected seconds, moves the start up for the next query of this interval.
void QVR_update15minPeformanceCounters(QVR_intervalCounterDB_t* xio_snapshots,
                                       QVR_intervalLinkCounterDB_t* xio_interval);

// Adds the 18 line counters and the 4 channel counters; the headers stay as they are.
void QVR_accumulateIntervalCounters(QVR_performanceCounterDB_t* xio_sum,
                                    const QVR_performanceCounterDB_t* xi_added);

}  // namespace gfast
