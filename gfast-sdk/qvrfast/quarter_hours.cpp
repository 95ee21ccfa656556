#include "qvrfast/quarter_hours.h"

#include <cstring>

#include "qvrdev/device_table.h"
#include "qvrfast/days.h"
#include "qvrfast/interval_delta.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/time_stamp.h"
#include "qvrline/line_table.h"
#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

constexpr uint32_t kWholeInterval = QVR_K_SECS_IN_15MIN_COLLECTION_INTERVAL;
constexpr uint32_t kFirstOfDay = 1;

// What the device layer knows of a line for its counters.
struct Collection {
  QVR_lineState_t state = LS_IDLE;
  uint32_t start = 0;  // seconds before the end of the quarter hour
};

Collection collectionOf(const QVR_lineDescriptor_t& line) {
  if (line.deviceId == QVR_K_DEVICE_NULL) {
    return {};
  }
  const QVR_deviceInfo_t record = deviceRecord(line.deviceId);
  return {record.lineState[line.narrowLineID],
          record.counterCollectionInterval[line.narrowLineID].startOfCollectionPeriodInInterval};
}

struct Headers {
  QVR_TimeInterval_t* line;
  QVR_TimeInterval_t* channel;
};

Headers headersOf(QVR_performanceCounterDB_t& counters) {
  return {&counters.linePerformanceCounters.timeInterval, &counters.channelPerformanceCounters.timeInterval};
}

void setInvalid(QVR_performanceCounterDB_t& counters, bool invalid) {
  const Headers headers = headersOf(counters);
  headers.line->INVALID = headers.channel->INVALID = invalid ? TRUE : FALSE;
}

void setTime(QVR_performanceCounterDB_t& counters, uint32_t seconds) {
  const Headers headers = headersOf(counters);
  headers.line->TIME = headers.channel->TIME = seconds;
}

void setStamp(QVR_performanceCounterDB_t& counters, const G9972_timeStamp_t& stamp) {
  const Headers headers = headersOf(counters);
  std::memcpy(headers.line->STAMP, stamp, sizeof stamp);
  std::memcpy(headers.channel->STAMP, stamp, sizeof stamp);
}

// A start before the present look began in this quarter hour; any other was in one before.
constexpr uint32_t collectedSoFar(uint32_t start, uint32_t secondsLeft) {
  return (start >= secondsLeft ? start : kWholeInterval) - secondsLeft;
}

// The deltas of an interval; where they moved the start of the unavailable seconds, the line's moves too.
void fillCounters(QVR_lineId_t lineId, QVR_intervalCounterDB_t snapshots,
                  QVR_intervalLinkCounterDB_t* interval) {
  const uint32_t start = snapshots.prev15minSnapshot.ne.UAS;
  QVR_update15minPeformanceCounters(&snapshots, interval);
  if (snapshots.prev15minSnapshot.ne.UAS != start) {
    moveUnavailableSecondsStart(lineId, start, snapshots.prev15minSnapshot.ne.UAS);
  }
}

// The running quarter hour's entry as it was found, and by how many boundaries.
struct Look {
  QVR_intervalLinkCounterDB_t entry;
  uint32_t boundaries;
};

// Whoever looks leaves a mark, also when no counters can be read then: what is in the entry is not complete.
Look lookAtRunning(QVR_lineId_t lineId, uint32_t collected, time_t now) {
  G9972_timeStamp_t stamp;
  formatTimeStamp(now, stamp);
  const LockedHistory history(lineId);
  QVR_intervalLinkCounterDB_t& running = history->quarterHours.running();
  setInvalid(running.neCounters, true);
  setInvalid(running.feCounters, true);
  running.collectionTime = collected;
  running.timestamp = now;
  std::memcpy(running.timestampString, stamp, sizeof stamp);
  return {running, history->boundaries};
}

QVR_retval_t readForQuery(QVR_lineId_t lineId, G9972_PM_COUNTERS_S* latest) {
  const QVR_retval_t status = QVR_readPerformanceMonitoringCounters(lineId, latest);
  storeLatestCounters(lineId, *latest);
  return status;
}

// The entry of the quarter hour that ended, as its closing read has it. An idle line's keeps zero counters.
QVR_intervalLinkCounterDB_t closedInterval(QVR_lineId_t lineId) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(lineId);
  const Collection collection = collectionOf(line);
  const bool partial = collection.start != kWholeInterval;
  QVR_intervalLinkCounterDB_t interval{};
  interval.collectionTime = collection.start;
  setInvalid(interval.neCounters, true);
  setInvalid(interval.feCounters, true);
  if (collection.state == LS_IDLE) {
    return interval;
  }
  setTime(interval.neCounters, interval.collectionTime);
  setInvalid(interval.neCounters, partial);
  fillCounters(lineId, line.counters, &interval);
  if (collection.state == LS_SHOWTIME) {
    setTime(interval.feCounters, interval.collectionTime);
    setInvalid(interval.feCounters, partial);
  }
  return interval;
}

// The next quarter hour begins, with an empty entry: what a round before left there is no count of it.
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
  history->boundaries++;
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
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (line.deviceId != QVR_K_DEVICE_NULL) {
    setStartOfCollection(line.deviceId, static_cast<int>(line.narrowLineID), kWholeInterval);
  }
}

QVR_retval_t gfast::updateRunningInterval(QVR_lineId_t line, CounterReader reader,
                                          QVR_intervalLinkCounterDB_t* interval) {
  time_t now = 0;
  const uint32_t secondsLeft = QVR_secsTo15minBoundary(&now);
  const QVR_lineDescriptor_t descriptor = QVR_lineDescriptorForLine(line);
  const uint32_t collected = collectedSoFar(collectionOf(descriptor).start, secondsLeft);
  const Look look = lookAtRunning(line, collected, now);
  QVR_intervalLinkCounterDB_t entry = look.entry;
  QVR_intervalCounterDB_t snapshots = descriptor.counters;
  if (const QVR_retval_t status = reader(line, &snapshots.curr15minSnapshot); QVR_STATUS_ERROR(status)) {
    return status;
  }
  for (QVR_performanceCounterDB_t* counters : {&entry.neCounters, &entry.feCounters}) {
    setTime(*counters, entry.collectionTime);
    setStamp(*counters, entry.timestampString);
  }
  entry.intervalNumber = intervalNumberAt(now);
  fillCounters(line, snapshots, &entry);
  *interval = entry;
  const LockedHistory history(line);
  if (history->boundaries == look.boundaries) {
    history->quarterHours.running() = entry;
  }
  return QVR_E_STATUS_OK;
}

uint8_t QVR_numberOf15minHistoryIntervals(QVR_lineId_t xi_lineId) {
  return LockedHistory(xi_lineId)->quarterHours.count();
}

QVR_retval_t QVR_getCurr15minCounters(QVR_lineId_t xi_lineId, QVR_intervalLinkCounterDB_t* xo_interval) {
  return updateRunningInterval(xi_lineId, readForQuery, xo_interval);
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
