#include "qvrfast/days.h"

#include "clock/clock.h"
#include "qvrdev/callbacks.h"
#include "qvrfast/interval_delta.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/running_interval.h"
#include "qvrfast/time_stamp.h"
#include "qvrline/line_table.h"
#include "std/observing.h"

using namespace gfast;

namespace {

constinit CallbackSlot<QVR_24hrEventCB> periodic24hrEventCB;

// Reads the closing quarter hour again, so that the day includes everything counted until it is summed up;
// the next quarter hour starts at this read. If it fails, the first closing read is used.
QVR_retval_t readForClosing(QVR_lineId_t lineId, G9972_PM_COUNTERS_S* latest) {
  if (QVR_STATUS_OK(QVR_readPerformanceMonitoringCounters(lineId, latest))) {
    storeClosingCounters(lineId, *latest);
  } else {
    *latest = QVR_lineDescriptorForLine(lineId).counters.curr15minSnapshot;
  }
  return QVR_E_STATUS_OK;
}

// Makes the running day the sum of the quarter hours in the history.
QVR_intervalLinkCounterDB_t& sumUpDay(LineHistory& history, time_t time) {
  QVR_intervalLinkCounterDB_t& day = history.days.running();
  day.collectionTime = 0;
  day.timestamp = time;
  formatTimeStamp(time, day.timestampString);
  day.neCounters = {};
  day.feCounters = {};
  const QVR_15minCounterHistoryDB_t& ring = history.quarterHours;
  for (uint8_t index = ring.head;; index = ring.before(index)) {
    const QVR_intervalLinkCounterDB_t& interval = ring.counterHistory[index];
    day.collectionTime += interval.collectionTime;
    QVR_accumulateIntervalCounters(&day.neCounters, &interval.neCounters);
    QVR_accumulateIntervalCounters(&day.feCounters, &interval.feCounters);
    if (index == ring.tail) {
      return day;
    }
  }
}

// The same without keeping it, with a running quarter hour that is not kept either.
QVR_intervalLinkCounterDB_t sumOfDay(const LineHistory& history, const QVR_intervalLinkCounterDB_t& running,
                                     time_t time) {
  LineHistory copy = history;
  copy.quarterHours.running() = running;
  return sumUpDay(copy, time);
}

}  // namespace

void gfast::QVR_update24hrHistoryDatabase(QVR_lineId_t xi_lineId, time_t xi_boundary) {
  QVR_intervalLinkCounterDB_t last;
  updateRunningInterval(xi_lineId, readForClosing, &last);
  const LockedHistory history(xi_lineId);
  QVR_intervalLinkCounterDB_t& day = sumUpDay(*history.operator->(), xi_boundary);
  // The opposite of a quarter hour: a complete day is marked invalid. Programs that read the history rely on
  // it.
  const BOOL whole = day.collectionTime == QVR_K_SECS_IN_24HR_COLLECTION_INTERVAL ? TRUE : FALSE;
  day.neCounters.linePerformanceCounters.timeInterval.INVALID = whole;
  day.neCounters.channelPerformanceCounters.timeInterval.INVALID = whole;
  QVR_24hrCounterHistoryDB_t& ring = history->days;
  ring.head = ring.after(ring.head);
  // Compares with the tail of the quarter hours, not of the days. This decides how many days are kept and
  // shown.
  if (ring.head == history->quarterHours.tail) {
    ring.tail = ring.after(ring.tail);
  }
}

void gfast::notify24hrEvent(QVR_lineId_t line, const char* stamp, time_t time) {
  periodic24hrEventCB.notify(line, stamp, time);
}

void QVR_register24hrEventCB(QVR_24hrEventCB xi_callback) {
  periodic24hrEventCB.store(xi_callback);
}

uint8_t QVR_numberOf24hrHistoryIntervals(QVR_lineId_t xi_lineId) {
  return LockedHistory(xi_lineId)->days.count();
}

QVR_retval_t QVR_getCurr24hrCounters(QVR_lineId_t xi_lineId, QVR_intervalLinkCounterDB_t* xo_interval) {
  QVR_intervalLinkCounterDB_t running;
  if (const QVR_retval_t status = QVR_getCurr15minCounters(xi_lineId, &running); QVR_STATUS_ERROR(status)) {
    return status;
  }
  const time_t now = clockSource().now();
  const LockedHistory history(xi_lineId);
  if (observing) {
    *xo_interval = sumOfDay(*history.operator->(), running, now);
  } else {
    *xo_interval = sumUpDay(*history.operator->(), now);
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_getPrev24hrCounters(QVR_lineId_t xi_lineId, int8_t xi_interval,
                                     QVR_intervalLinkCounterDB_t* xo_interval) {
  {
    const LockedHistory history(xi_lineId);
    const QVR_24hrCounterHistoryDB_t& ring = history->days;
    if (!ring.reaches(xi_interval)) {
      return QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE;
    }
    if (const uint8_t index = ring.indexOf(xi_interval); index != ring.head) {
      *xo_interval = ring.counterHistory[index];
      return QVR_E_STATUS_OK;
    }
  }
  return QVR_getCurr24hrCounters(xi_lineId, xo_interval);
}
