// The quarter hours of a line: the running one brought up to date, and what happens when one ends.
#pragma once

#include <qvr.h>

namespace gfast {

// A line's quarter hour has ended and its counters have been read: its entry is written, and the next one
// begins. The entry bears the number and the time of the quarter hour that begins at the boundary. Runs on
// the notification thread.
void QVR_15minCounterUpdateNotificationHandler(QVR_lineId_t xi_lineId, time_t xi_boundary);

// Reads a line's counters for an interval.
using CounterReader = QVR_retval_t (*)(QVR_lineId_t line, G9972_PM_COUNTERS_S* latest);

// Brings the running quarter hour up to date with what the reader finds, and answers it. A boundary that
// passes meanwhile has written the ring's entry itself; the answer is then of the quarter hour that was
// running when this was called.
//   the reader's result, with the entry's counters left as they are
QVR_retval_t updateRunningInterval(QVR_lineId_t line, CounterReader reader,
                                   QVR_intervalLinkCounterDB_t* interval);

}  // namespace gfast
