// What the tests of the counter history share: chips with known counters, quarter hours that end, and checks
// of intervals.
#pragma once

#include <cstdlib>
#include <limits>

#include "qvrdev/device_table.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/quarter_hours.h"
#include "qvrline/interval_counters.h"
#include "support/test_clock.h"
#include "unit/sdk/lines.h"

using namespace gfast;

constexpr size_t kPmWords = 39;
constexpr time_t kMidnight = 1700006400;  // 2023-11-15 00:00:00 UTC
constexpr time_t kQuarter = 900;
constexpr time_t kDay = 86400;

constexpr time_t at(int hour, int minute, int second = 0) {
  return kMidnight + (hour * 60 + minute) * 60 + second;
}

inline void setZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

// The chip's counters after it counted n of everything: word i is (i + 1) * n, so no two counters are equal.
inline Bytes pmBlock(uint32_t n) {
  Bytes bytes(kPmWords * 4);
  for (uint32_t i = 0; i < kPmWords; i++) {
    store_le32(&bytes[size_t{i} * 4], (i + 1) * n);
  }
  return bytes;
}

inline Script readsPm(int device, uint32_t n) {
  return reads(device, 0xF0000000, pmBlock(n));
}

// A counter of an interval, and the index of the chip's word that it comes from.
template <typename Group>
struct WordOf {
  const char* name;
  uint32_t Group::*counter;
  size_t word;
};

using LineGroup = QVR_linePerformance_t;
using ChannelGroup = QVR_ChannelPerformance_t;

constexpr WordOf<LineGroup> kNearLineWords[] = {
    {"LOS", &LineGroup::LOS, 0},
    {"LOM", &LineGroup::LOM, 1},
    {"LOR", &LineGroup::LOR, 2},
    {"LPR", &LineGroup::LPR, 3},
    {"ES", &LineGroup::ES, 4},
    {"SES", &LineGroup::SES, 5},
    {"LOSS", &LineGroup::LOSS, 6},
    {"LORS", &LineGroup::LORS, 7},
    {"UAS", &LineGroup::UAS, 8},
    {"FULL_INITS", &LineGroup::FULL_INITS, 9},
    {"FAILEDFULL_INITS", &LineGroup::FAILEDFULL_INITS, 10},
    {"FAST_INITS", &LineGroup::FAST_INITS, 11},
    {"FAILEDFAST_INITS", &LineGroup::FAILEDFAST_INITS, 12},
    {"SRA", &LineGroup::SRA, 13},
    {"FRA", &LineGroup::FRA, 14},
    {"RPA", &LineGroup::RPA, 15},
    {"BSW", &LineGroup::BSW, 16},
    {"TIGA", &LineGroup::TIGA, 17},
};
constexpr WordOf<ChannelGroup> kNearChannelWords[] = {
    {"CV", &ChannelGroup::CV, 18},
    {"RTXUC", &ChannelGroup::RTXUC, 19},
    {"RTXTX", &ChannelGroup::RTXTX, 20},
    {"EFB", &ChannelGroup::EFB, 21},
};
constexpr WordOf<LineGroup> kFarLineWords[] = {
    {"FE-LOS", &LineGroup::LOS, 22},   {"FE-LOM", &LineGroup::LOM, 23},   {"FE-LOR", &LineGroup::LOR, 24},
    {"FE-LPR", &LineGroup::LPR, 25},   {"FE-ES", &LineGroup::ES, 26},     {"FE-SES", &LineGroup::SES, 27},
    {"FE-LOSS", &LineGroup::LOSS, 28}, {"FE-LORS", &LineGroup::LORS, 29}, {"FE-UAS", &LineGroup::UAS, 30},
    {"FE-SRA", &LineGroup::SRA, 32},   {"FE-FRA", &LineGroup::FRA, 33},   {"FE-RPA", &LineGroup::RPA, 34},
    {"FE-BSW", &LineGroup::BSW, 35},
};
constexpr WordOf<ChannelGroup> kFarChannelWords[] = {
    {"FE-CV", &ChannelGroup::CV, 31},
    {"FE-RTXUC", &ChannelGroup::RTXUC, 36},
    {"FE-RTXTX", &ChannelGroup::RTXTX, 37},
    {"FE-EFB", &ChannelGroup::EFB, 38},
};

// Calls compare(name, counter, word) for each of the 22 near-end and the 17 far-end counters of an interval.
template <typename Compare>
void forEachCounter(const QVR_intervalLinkCounterDB_t& interval, const Compare& compare) {
  for (const auto& row : kNearLineWords) {
    compare(row.name, interval.neCounters.linePerformanceCounters.*row.counter, row.word);
  }
  for (const auto& row : kNearChannelWords) {
    compare(row.name, interval.neCounters.channelPerformanceCounters.*row.counter, row.word);
  }
  for (const auto& row : kFarLineWords) {
    compare(row.name, interval.feCounters.linePerformanceCounters.*row.counter, row.word);
  }
  for (const auto& row : kFarChannelWords) {
    compare(row.name, interval.feCounters.channelPerformanceCounters.*row.counter, row.word);
  }
}

// The interval counted n of everything. Far-end counters that the chip does not have are 0.
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
