#include "qvrfast/quarter_hours.h"

#include <cstring>

#include "qvrdev/device_table.h"
#include "qvrfast/days.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/running_interval.h"
#include "qvrfast/time_stamp.h"
#include "qvrline/line_table.h"
#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

constexpr uint32_t kFirstOfDay = 1;

// Begins the next quarter hour, with an empty entry: the ring may still hold an old one there. The history
// and the line's start move under one lock, so a query never sees one before the boundary and the other
// behind it.
void writeAndAdvance(QVR_lineId_t lineId, const QVR_intervalLinkCounterDB_t& interval) {
  const LockedHistory history(lineId);
  QVR_15minCounterHistoryDB_t& ring = history->quarterHours;
  ring.currentIntervalNumber = static_cast<uint8_t>(interval.intervalNumber);
  ring.running() = interval;
  if (interval.intervalNumber == kFirstOfDay) {
    ring.head = 0;
    ring.tail = 0;
  } else {
    ring.head = ring.after(ring.head);
    ring.tail = ring.head == ring.tail ? ring.after(ring.tail) : ring.tail;
  }
  ring.running() = {};
  startQuarterHour(lineId);
  history->boundaries++;
}

// The next quarter hour is collected from its first second.
void collectWholeIntervals(QVR_lineId_t lineId) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(lineId);
  if (line.deviceId != QVR_K_DEVICE_NULL) {
    setStartOfCollection(line.deviceId, static_cast<int>(line.narrowLineID),
                         QVR_K_SECS_IN_15MIN_COLLECTION_INTERVAL);
  }
}

}  // namespace

void gfast::QVR_15minCounterUpdateNotificationHandler(QVR_lineId_t xi_lineId, time_t xi_boundary) {
  requireLine(xi_lineId);
  const uint32_t number = intervalNumberAt(xi_boundary);
  G9972_timeStamp_t stamp;
  formatTimeStamp(xi_boundary, stamp);
  TRACE_LOG(QVRLOG_DEBUG, "timestamp = %u timestampstring=%s interval = %1d\n",
            static_cast<unsigned>(xi_boundary), stamp, static_cast<int>(number));
  if (number == kFirstOfDay) {
    TRACE_LOG(QVRLOG_DEBUG, "Updating 24 hour database at time %s...\n", stamp);
    QVR_update24hrHistoryDatabase(xi_lineId, xi_boundary);
    notify24hrEvent(xi_lineId, stamp, xi_boundary);
  }
  QVR_intervalLinkCounterDB_t interval = closedInterval(xi_lineId);
  interval.intervalNumber = number;
  interval.timestamp = xi_boundary;
  std::memcpy(interval.timestampString, stamp, sizeof stamp);
  writeAndAdvance(xi_lineId, interval);
  collectWholeIntervals(xi_lineId);
}

uint8_t QVR_numberOf15minHistoryIntervals(QVR_lineId_t xi_lineId) {
  return LockedHistory(xi_lineId)->quarterHours.count();
}

QVR_retval_t QVR_getPrev15minCounters(QVR_lineId_t xi_lineId, int8_t xi_interval,
                                      QVR_intervalLinkCounterDB_t* xo_interval) {
  {
    const LockedHistory history(xi_lineId);
    const QVR_15minCounterHistoryDB_t& ring = history->quarterHours;
    if (!ring.reaches(xi_interval)) {
      return QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE;
    }
    if (const uint8_t index = ring.indexOf(xi_interval); index != ring.head) {
      *xo_interval = ring.counterHistory[index];
      return QVR_E_STATUS_OK;
    }
  }
  return QVR_getCurr15minCounters(xi_lineId, xo_interval);
}
