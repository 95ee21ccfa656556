// Days: the running day, what midnight writes, and how the ring keeps the days.
#include "qvrfast/days.h"
#include "support/records.h"
#include "support/trace_log.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

using testing::Each;
using testing::ElementsAre;

// Runs days in which every quarter hour counts one of everything.
class DayHistory : public HistoryTest {
 protected:
  void runDay(time_t midnight) {
    for (int i = 0; i < 96; i++) {
      endQuarterHour(midnight + i * kQuarter, ++n_);
    }
  }

  uint32_t counted() const { return n_; }
  uint32_t count() { return ++n_; }

 private:
  uint32_t n_ = 0;
};

TEST_F(DayHistory, SumsTheQuarterHoursForTheRunningDay) {
  endQuarterHour(at(10, 15), 10);
  endQuarterHour(at(10, 30), 40);
  testClock().setNow(at(10, 31));
  expect(readsPm(0, 45));
  QVR_intervalLinkCounterDB_t day{};
  ASSERT_EQ(QVR_getCurr24hrCounters(0, &day), QVR_E_STATUS_OK);
  expectCounted(day, 45);
  EXPECT_EQ(day.collectionTime, 900U + 900U + 60U);
  EXPECT_EQ(day.timestamp, at(10, 31));
  EXPECT_STREQ(day.timestampString, "2023-11-15T10:31:00+UTC");
  EXPECT_EQ(day.intervalNumber, 0U);
  EXPECT_THAT(invalidFlags(day), Each(FALSE));
  EXPECT_TRUE(isZero(day.neCounters.linePerformanceCounters.timeInterval));
  EXPECT_TRUE(isZero(day.feCounters.channelPerformanceCounters.timeInterval));
  expect(readsPm(0, 46));
  day = previousDay(0, 0);
  expectCounted(day, 46);
  EXPECT_EQ(day.collectionTime, 900U + 900U + 60U) << "summed up anew";
}

TEST_F(DayHistory, FailsWhenTheLineCannotBeRead) {
  expect(readsPm(1, 1).fails(EIO).times(2));
  QVR_intervalLinkCounterDB_t day{};
  EXPECT_EQ(QVR_getCurr24hrCounters(1, &day), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(QVR_getPrev24hrCounters(1, 0, &day), QVR_E_MEMREAD_ERROR);
  EXPECT_TRUE(isZero(day));
}

TEST_F(DayHistory, AddsADayAndRestartsTheQuarterHoursAtMidnight) {
  endQuarterHour(at(23, 15), 10);
  endQuarterHour(at(23, 30), 30);
  endQuarterHour(at(23, 45), 60);
  endQuarterHour(at(24, 0), 100);
  for (const QVR_lineId_t line : {0, 1}) {
    EXPECT_EQ(QVR_numberOf24hrHistoryIntervals(line), 2);
    EXPECT_EQ(QVR_numberOf15minHistoryIntervals(line), 1);
    const QVR_intervalLinkCounterDB_t day = previousDay(line, 1);
    expectCounted(day, 100);
    // At midnight the last quarter hour is summed up with a collection time of 0 seconds.
    EXPECT_EQ(day.collectionTime, 3U * 900U);
    EXPECT_EQ(day.timestamp, at(24, 0));
    EXPECT_STREQ(day.timestampString, "2023-11-16T00:00:00+UTC");
    EXPECT_THAT(invalidFlags(day), Each(FALSE));
  }
}

TEST_F(DayHistory, MarksOnlyTheNearEndOfACompleteDay) {
  runDay(kMidnight);
  // A longer collection time makes up for the last quarter hour, which has 0 seconds at midnight.
  setStartOfCollection(0, 0, 1800);
  endQuarterHour(kMidnight + kDay, count());
  EXPECT_EQ(previousDay(0, 1).collectionTime, 86400U);
  EXPECT_THAT(invalidFlags(previousDay(0, 1)), ElementsAre(TRUE, TRUE, FALSE, FALSE));
  EXPECT_EQ(previousDay(1, 1).collectionTime, 95U * 900U);
  EXPECT_THAT(invalidFlags(previousDay(1, 1)), Each(FALSE));
}

TEST_F(DayHistory, IncludesCountsOfTheSecondReadAtMidnight) {
  testClock().setNow(at(24, 0));
  expect(readsPm(0, 50) + readsPm(0, 52) + readsPm(1, 50) + readsPm(1, 50));
  QVR_15minCounterEventHandler(at(24, 0));
  expectCounted(previousDay(0, 1), 52);
  testClock().setNow(at(24, 1));
  expectCounted(running(0, 60), 8);
}

TEST_F(DayHistory, UsesTheFirstReadWhenTheSecondFailsAtMidnight) {
  endQuarterHour(at(23, 45), 30);
  testClock().setNow(at(24, 0));
  expect(readsPm(0, 50) + readsPm(0, 50).fails(EIO) + readsPm(1, 50) + readsPm(1, 50));
  QVR_15minCounterEventHandler(at(24, 0));
  expectCounted(previousDay(0, 1), 50);
  testClock().setNow(at(24, 1));
  expectCounted(running(0, 60), 10);
}

TEST_F(DayHistory, SkipsMidnightWhenTheFirstReadFails) {
  endQuarterHour(at(23, 45), 30);
  testClock().setNow(at(24, 0));
  expect(readsPm(0, 50).fails(EIO) + readsPm(1, 50).times(2));
  QVR_15minCounterEventHandler(at(24, 0));
  EXPECT_EQ(QVR_numberOf24hrHistoryIntervals(0), 1);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 2);
  EXPECT_EQ(QVR_numberOf24hrHistoryIntervals(1), 2);
  endQuarterHour(at(24, 15), 60);
  expectCounted(previous(0, 1), 30);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 3);
}

// The oldest day is dropped when the head of the days meets the tail of the quarter hours. That tail is 0
// after every midnight.
TEST_F(DayHistory, DropsTheOldestDayByTheTailOfTheQuarterHours) {
  const std::vector<int> kept{2, 3, 4, 5, 6, 7, 7, 1, 2, 3, 4, 5, 6, 6, 7, 1};
  for (size_t day = 0; day < kept.size(); day++) {
    const time_t midnight = kMidnight + static_cast<time_t>(day + 1) * kDay;
    endQuarterHour(midnight - kQuarter, count());
    endQuarterHour(midnight, count());
    EXPECT_EQ(QVR_numberOf24hrHistoryIntervals(0), kept[day]) << "day " << day + 1;
    QVR_intervalLinkCounterDB_t interval{};
    for (int k = 1; k < kept[day]; k++) {
      expectCounted(previousDay(0, static_cast<int8_t>(k)), 2);
      EXPECT_EQ(previousDay(0, static_cast<int8_t>(k)).timestamp, midnight - (k - 1) * kDay);
    }
    EXPECT_EQ(QVR_getPrev24hrCounters(0, static_cast<int8_t>(kept[day]), &interval),
              QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE);
  }
}

TEST_F(DayHistory, KeepsDaysWhenTheTailOfTheQuarterHoursIsElsewhere) {
  {
    const LockedHistory history(0);
    history->quarterHours.head = 4;
    history->quarterHours.tail = 4;
  }
  for (int day = 1; day <= 4; day++) {
    endQuarterHour(kMidnight + day * kDay, count());
    const LockedHistory history(0);
    history->quarterHours.head = 4;
    history->quarterHours.tail = 4;
    EXPECT_EQ(history->days.head, day);
    EXPECT_EQ(history->days.tail, day == 4 ? 1 : 0);
  }
}

TEST_F(DayHistory, CountsNegativeDaysForward) {
  for (int day = 1; day <= 2; day++) {
    endQuarterHour(kMidnight + day * kDay, count());
  }
  // The head is 2: entries 0 and 1 hold days, entries 3 to 7 are empty.
  for (const int k : {-1, -4, -5}) {
    EXPECT_TRUE(isZero(previousDay(0, static_cast<int8_t>(k)))) << k;
  }
  EXPECT_EQ(previousDay(0, -6).timestamp, kMidnight + 2 * kDay) << "entry 8 is entry 1 again";
  for (int k = -128; k < 0; k++) {
    if (static_cast<uint8_t>(2 - k) > 7 && (2 - k) % 7 == 2) {
      expect(readsPm(0, count()));
    }
    previousDay(0, static_cast<int8_t>(k));
    verify();
  }
}

TEST_F(DayHistory, CallsTheDayCallbackOncePerLine) {
  struct Told {
    QVR_lineId_t line;
    std::string stamp;
    time_t time;
    int days;
    int quarterHours;
    bool operator==(const Told&) const = default;
  };
  static std::vector<Told> told;
  QVR_register24hrEventCB([](QVR_lineId_t line, const char* stamp, time_t time) {
    told.push_back(
        {line, stamp, time, QVR_numberOf24hrHistoryIntervals(line), QVR_numberOf15minHistoryIntervals(line)});
  });
  endQuarterHour(at(23, 45), 30);
  EXPECT_THAT(told, testing::IsEmpty());
  endQuarterHour(at(24, 0), 40);
  EXPECT_THAT(told, ElementsAre(Told{0, "2023-11-16T00:00:00+UTC", at(24, 0), 2, 2},
                                Told{1, "2023-11-16T00:00:00+UTC", at(24, 0), 2, 2}));
  QVR_register24hrEventCB(nullptr);
  endQuarterHour(at(48, 0), 50);
  EXPECT_EQ(told.size(), 2U);
}

TEST_F(DayHistory, LogsMidnight) {
  const TraceLog trace;
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  expect(readsPm(0, 0).times(2) + readsPm(1, 0).fails(EIO));
  QVR_15minCounterEventHandler(at(24, 0));
  ASSERT_GE(TraceLog::lines().size(), 2U);
  EXPECT_THAT(
      TraceLog::lines()[1],
      testing::MatchesRegex("\\[LOG_DEBUG\\] QVR_15minCounterUpdateNotificationHandler:[0-9]+ Updating 24 "
                            "hour database at time 2023-11-16T00:00:00.UTC\\.\\.\\.\n"));
}

TEST_F(DayHistory, DumpReadsTheRunningQuarterHourAndWalksTheDays) {
  static std::vector<time_t> seen;
  const QVR_intervalCounterHistoryCB note = [](QVR_lineId_t, QVR_intervalLinkCounterDB_t* interval) -> BOOL {
    seen.push_back(interval->timestamp);
    return TRUE;
  };
  endQuarterHour(at(24, 0), 40);
  endQuarterHour(at(48, 0), 80);
  expect(readsPm(0, 90));
  EXPECT_EQ(QVR_dump24hrCounterHistoryDB(0, note), QVR_E_STATUS_OK);
  EXPECT_THAT(seen, ElementsAre(0, at(48, 0), at(24, 0))) << "the running day is not summed up first";
  verify();
  seen.clear();
  expect(readsPm(0, 90).fails(EIO));
  EXPECT_EQ(QVR_dump24hrCounterHistoryDB(0, note), QVR_E_MEMREAD_ERROR);
  EXPECT_THAT(seen, testing::IsEmpty());
}

}  // namespace
