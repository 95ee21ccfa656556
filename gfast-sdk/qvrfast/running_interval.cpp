#include "qvrfast/running_interval.h"

#include <cstring>

#include "qvrdev/device_table.h"
#include "qvrfast/interval_delta.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/time_stamp.h"
#include "qvrline/line_table.h"
#include "std/observing.h"

using namespace gfast;

namespace {

constexpr uint32_t kWholeInterval = QVR_K_SECS_IN_15MIN_COLLECTION_INTERVAL;

// What the device layer knows of a line for its counters.
struct Collection {
  QVR_lineState_t state = LS_IDLE;
  uint32_t start = 0;  // of collection, seconds before the end of the quarter hour
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

// A start that lies ahead of now was set in an earlier quarter hour: then this one is collected from its
// first second.
constexpr uint32_t collectedSoFar(uint32_t start, uint32_t secondsLeft) {
  return (start >= secondsLeft ? start : kWholeInterval) - secondsLeft;
}

// Fills in what was counted between the snapshots. If that moves the start of the unavailable seconds, the
// line's start moves too.
void fillCounters(QVR_lineId_t lineId, QVR_intervalCounterDB_t snapshots,
                  QVR_intervalLinkCounterDB_t* interval) {
  const uint32_t start = snapshots.prev15minSnapshot.ne.UAS;
  QVR_update15minPeformanceCounters(&snapshots, interval);
  if (!observing && snapshots.prev15minSnapshot.ne.UAS != start) {
    moveUnavailableSecondsStart(lineId, start, snapshots.prev15minSnapshot.ne.UAS);
  }
}

// What a query knows before it reads the counters. No boundary passed while this was collected.
struct Query {
  uint32_t boundaries;  // that had passed
  QVR_lineDescriptor_t line;
  time_t now;
  QVR_intervalLinkCounterDB_t entry;  // of the running quarter hour
};

// Marks the running entry as incomplete, even if the counters cannot be read afterwards; for who only looks,
// a copy of it. Returns false and marks nothing if a boundary has passed since the query began.
bool markIncomplete(QVR_lineId_t lineId, uint32_t collected, Query* query) {
  G9972_timeStamp_t stamp;
  formatTimeStamp(query->now, stamp);
  const LockedHistory history(lineId);
  if (history->boundaries != query->boundaries) {
    return false;
  }
  query->entry = history->quarterHours.running();
  QVR_intervalLinkCounterDB_t& running = query->entry;
  setInvalid(running.neCounters, true);
  setInvalid(running.feCounters, true);
  running.collectionTime = collected;
  running.timestamp = query->now;
  std::memcpy(running.timestampString, stamp, sizeof stamp);
  if (!observing) {
    history->quarterHours.running() = running;
  }
  return true;
}

Query beginQuery(QVR_lineId_t lineId) {
  Query query{};
  uint32_t collected = 0;
  do {
    // The count comes first: a boundary that passes after it has changed the count when the entry is marked.
    query.boundaries = LockedHistory(lineId)->boundaries;
    query.line = QVR_lineDescriptorForLine(lineId);
    const uint32_t secondsLeft = QVR_secsTo15minBoundary(&query.now);
    collected = collectedSoFar(collectionOf(query.line).start, secondsLeft);
  } while (!markIncomplete(lineId, collected, &query));
  return query;
}

void storeRunning(QVR_lineId_t lineId, const Query& query) {
  if (observing) {
    return;
  }
  const LockedHistory history(lineId);
  if (history->boundaries == query.boundaries) {
    history->quarterHours.running() = query.entry;
  }
}

QVR_retval_t readForQuery(QVR_lineId_t lineId, G9972_PM_COUNTERS_S* latest) {
  const QVR_retval_t status = QVR_readPerformanceMonitoringCounters(lineId, latest);
  if (!observing) {
    storeLatestCounters(lineId, *latest);
  }
  return status;
}

}  // namespace

QVR_retval_t gfast::updateRunningInterval(QVR_lineId_t line, CounterReader reader,
                                          QVR_intervalLinkCounterDB_t* interval) {
  Query query = beginQuery(line);
  QVR_intervalCounterDB_t snapshots = query.line.counters;
  if (const QVR_retval_t status = reader(line, &snapshots.curr15minSnapshot); QVR_STATUS_ERROR(status)) {
    return status;
  }
  QVR_intervalLinkCounterDB_t& entry = query.entry;
  for (QVR_performanceCounterDB_t* counters : {&entry.neCounters, &entry.feCounters}) {
    setTime(*counters, entry.collectionTime);
    setStamp(*counters, entry.timestampString);
  }
  entry.intervalNumber = intervalNumberAt(query.now);
  fillCounters(line, snapshots, &entry);
  storeRunning(line, query);
  *interval = entry;
  return QVR_E_STATUS_OK;
}

QVR_intervalLinkCounterDB_t gfast::closedInterval(QVR_lineId_t line) {
  const QVR_lineDescriptor_t descriptor = QVR_lineDescriptorForLine(line);
  const Collection collection = collectionOf(descriptor);
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
  fillCounters(line, descriptor.counters, &interval);
  if (collection.state == LS_SHOWTIME) {
    setTime(interval.feCounters, interval.collectionTime);
    setInvalid(interval.feCounters, partial);
  }
  return interval;
}

QVR_retval_t QVR_getCurr15minCounters(QVR_lineId_t xi_lineId, QVR_intervalLinkCounterDB_t* xo_interval) {
  return updateRunningInterval(xi_lineId, readForQuery, xo_interval);
}
