// The running quarter hour of a line: brought up to date when somebody asks for it, and closed at a boundary.
#pragma once

#include <qvr.h>

namespace gfast {

// Reads a line's counters for an interval.
using CounterReader = QVR_retval_t (*)(QVR_lineId_t line, G9972_PM_COUNTERS_S* latest);

// Brings the running quarter hour up to date with the counters that the reader returns, and returns it. If a
// boundary passes while the counters are read, the history keeps what the boundary wrote, and the caller gets
// the quarter hour that was running before.
//   the reader's result; if that is an error, the counters in the history stay as they are
QVR_retval_t updateRunningInterval(QVR_lineId_t line, CounterReader reader,
                                   QVR_intervalLinkCounterDB_t* interval);

// The entry of the quarter hour that has just ended, from its last read; the number and the time are for the
// caller to fill in. An idle line has no counts. Runs on the notification thread.
QVR_intervalLinkCounterDB_t closedInterval(QVR_lineId_t line);

}  // namespace gfast
