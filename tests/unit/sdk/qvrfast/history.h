// What the tests of the counters' history share: quarter hours that end, and what an interval must then hold.
#pragma once

#include <limits>

#include "qvrdev/device_table.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/quarter_hours.h"
#include "qvrline/interval_counters.h"
#include "support/devices.h"
#include "support/lines.h"
#include "support/local_time.h"
#include "support/performance_counters.h"
#include "support/test_clock.h"

using namespace gfast;

// The interval counted this many of everything, and of the far end nothing that the chip does not tell.
inline void expectCounted(const QVR_intervalLinkCounterDB_t& interval, uint32_t n) {
  forEachCounter(interval, [n](const char* name, uint32_t counted, size_t word) {
    EXPECT_EQ(counted, (static_cast<uint32_t>(word) + 1) * n) << name;
  });
  const QVR_linePerformance_t& far = interval.feCounters.linePerformanceCounters;
  EXPECT_EQ(far.FULL_INITS + far.FAILEDFULL_INITS + far.FAST_INITS + far.FAILEDFAST_INITS + far.TIGA, 0U);
}

// The INVALID flags: near-end line and channel, far-end line and channel.
inline std::vector<BOOL> invalidFlags(const QVR_intervalLinkCounterDB_t& interval) {
  return {interval.neCounters.linePerformanceCounters.timeInterval.INVALID,
          interval.neCounters.channelPerformanceCounters.timeInterval.INVALID,
          interval.feCounters.linePerformanceCounters.timeInterval.INVALID,
          interval.feCounters.channelPerformanceCounters.timeInterval.INVALID};
}

// The TIME fields in the same order.
inline std::vector<uint32_t> times(const QVR_intervalLinkCounterDB_t& interval) {
  return {interval.neCounters.linePerformanceCounters.timeInterval.TIME,
          interval.neCounters.channelPerformanceCounters.timeInterval.TIME,
          interval.feCounters.linePerformanceCounters.timeInterval.TIME,
          interval.feCounters.channelPerformanceCounters.timeInterval.TIME};
}

// It is 10:00. Both lines are in showtime and have been collected since 10:00; their counters started at 0.
class HistoryTest : public testing::Test {
 protected:
  HistoryTest() {
    setZone("UTC0");
    testClock().setNow(at(10, 0));
    enterBothLines();
    restartHistory();
    QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationHandler);
    for (QVR_deviceId_t device = 0; device < QVR_K_MAX_DEVICES; device++) {
      startDevice(driver_, device, LS_SHOWTIME);
      setStartOfCollection(device, 0, 900);
    }
  }

  void expect(const Script& script) { driver_.expect(script); }
  void verify() { driver_.verify(); }

  // Ends a quarter hour at this time. Both chips have counted n of everything since the start.
  void endQuarterHour(time_t boundary, uint32_t n) {
    testClock().setNow(boundary);
    const bool midnight = isMidnight(boundary);
    for (int device = 0; device < QVR_K_MAX_DEVICES; device++) {
      expect(readsPm(device, n).times(midnight ? 2 : 1));
    }
    QVR_15minCounterEventHandler(boundary);
    verify();
  }

  static bool isMidnight(time_t boundary) {
    tm local{};
    localtime_r(&boundary, &local);
    return local.tm_hour == 0 && local.tm_min < 15;
  }

  // Queries the running quarter hour. The chip has counted n of everything since the start.
  QVR_intervalLinkCounterDB_t running(QVR_lineId_t line, uint32_t n) {
    expect(readsPm(line, n));
    QVR_intervalLinkCounterDB_t interval{};
    EXPECT_EQ(QVR_getCurr15minCounters(line, &interval), QVR_E_STATUS_OK);
    verify();
    return interval;
  }

  static QVR_intervalLinkCounterDB_t previous(QVR_lineId_t line, int8_t k) {
    QVR_intervalLinkCounterDB_t interval{};
    EXPECT_EQ(QVR_getPrev15minCounters(line, k, &interval), QVR_E_STATUS_OK) << int{k};
    return interval;
  }

  static QVR_intervalLinkCounterDB_t previousDay(QVR_lineId_t line, int8_t k) {
    QVR_intervalLinkCounterDB_t interval{};
    EXPECT_EQ(QVR_getPrev24hrCounters(line, k, &interval), QVR_E_STATUS_OK) << int{k};
    return interval;
  }

  ExpectedRequests& driver() { return driver_; }

 private:
  ExpectedRequests driver_{Script()};
};
