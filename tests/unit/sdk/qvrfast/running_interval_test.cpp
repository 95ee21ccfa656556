// Queries of the running quarter hour, also while boundaries pass.
#include "qvrfast/running_interval.h"

#include <gmock/gmock.h>

#include <functional>
#include <utility>

#include "support/records.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

using testing::Each;

using RunningInterval = HistoryTest;

TEST_F(RunningInterval, CountsFromTheStartOfTheRunningInterval) {
  testClock().setNow(at(10, 4, 10));
  const QVR_intervalLinkCounterDB_t interval = running(1, 20);
  expectCounted(interval, 20);
  EXPECT_EQ(interval.intervalNumber, 41U);
  EXPECT_EQ(interval.collectionTime, 250U);
  EXPECT_EQ(interval.timestamp, at(10, 4, 10));
  EXPECT_STREQ(interval.timestampString, "2023-11-15T10:04:10+UTC");
  EXPECT_THAT(invalidFlags(interval), Each(TRUE));
  EXPECT_THAT(times(interval), Each(250));
  for (const QVR_performanceCounterDB_t* end : {&interval.neCounters, &interval.feCounters}) {
    EXPECT_STREQ(end->linePerformanceCounters.timeInterval.STAMP, "2023-11-15T10:04:10+UTC");
    EXPECT_STREQ(end->channelPerformanceCounters.timeInterval.STAMP, "2023-11-15T10:04:10+UTC");
    EXPECT_EQ(end->linePerformanceCounters.timeInterval.intervalNumber, 0U);
  }
}

TEST_F(RunningInterval, CollectionTimeStartsWithinTheInterval) {
  setStartOfCollection(0, 0, 600);
  testClock().setNow(at(10, 6));
  EXPECT_EQ(running(0, 1).collectionTime, 60U);
  testClock().setNow(at(10, 4));  // set back to before the start: counts from the interval's first second
  EXPECT_EQ(running(0, 2).collectionTime, 240U);
}

TEST_F(RunningInterval, HasCollectedNothingInTheSecondInWhichCollectionStarts) {
  setStartOfCollection(0, 0, 600);
  testClock().setNow(at(10, 5));
  EXPECT_EQ(running(0, 1).collectionTime, 0U);
}

TEST_F(RunningInterval, FailedReadKeepsTheEntryMarkedAndItsCounters) {
  testClock().setNow(at(10, 1));
  running(0, 5);
  testClock().setNow(at(10, 2));
  expect(readsPm(0, 6).fails(EIO));
  QVR_intervalLinkCounterDB_t interval{};
  EXPECT_EQ(QVR_getCurr15minCounters(0, &interval), QVR_E_MEMREAD_ERROR);
  EXPECT_TRUE(isZero(interval));
  EXPECT_TRUE(isZero(QVR_lineDescriptorForLine(0).counters.curr15minSnapshot));
  const LockedHistory history(0);
  EXPECT_STREQ(history->quarterHours.running().timestampString, "2023-11-15T10:02:00+UTC");
  expectCounted(history->quarterHours.running(), 5);
}

TEST_F(RunningInterval, RefusesALineWithoutADevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  QVR_intervalLinkCounterDB_t interval{};
  const auto stop = [](QVR_lineId_t, QVR_intervalLinkCounterDB_t*) -> BOOL { return FALSE; };
  EXPECT_EQ(QVR_getCurr15minCounters(1, &interval), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getPrev15minCounters(1, 0, &interval), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getCurr24hrCounters(1, &interval), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getPrev24hrCounters(1, 0, &interval), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_dump15minCounterHistoryDB(1, stop), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_dump24hrCounterHistoryDB(1, stop), QVR_E_NO_DEVICE_FOR_LINE);
}

TEST_F(RunningInterval, KeepsFarEndCountersOfTheRunningIntervalThatTheChipDoesNotHave) {
  {
    const LockedHistory history(0);
    history->quarterHours.running().feCounters.linePerformanceCounters.FULL_INITS = 77;
  }
  EXPECT_EQ(running(0, 1).feCounters.linePerformanceCounters.FULL_INITS, 77U);
}

TEST_F(RunningInterval, LimitsUnavailableSecondsFromTheSecondQueryOn) {
  testClock().setNow(at(10, 0, 30));
  EXPECT_EQ(running(0, 10).neCounters.linePerformanceCounters.UAS, 90U);  // word 8: 9 * 10
  EXPECT_EQ(running(0, 10).neCounters.linePerformanceCounters.UAS, 30U);
  testClock().setNow(at(10, 0, 40));
  EXPECT_EQ(running(0, 11).neCounters.linePerformanceCounters.UAS, 39U);
  endQuarterHour(at(10, 15), 20);
  EXPECT_EQ(previous(0, 1).neCounters.linePerformanceCounters.UAS, 180U - 60U);
  EXPECT_EQ(running(0, 21).neCounters.linePerformanceCounters.UAS, 9U)
      << "the next interval starts at the chip's count";
}

// The boundary passes while the query waits for the chip. The chip answers the query after it.
TEST_F(RunningInterval, KeepsTheEntryOfABoundaryThatPassesDuringTheRead) {
  testClock().setNow(at(10, 14, 59));
  expect(readsPm(0, 50));
  QVR_intervalLinkCounterDB_t interval{};
  const auto passes = [](QVR_lineId_t line, G9972_PM_COUNTERS_S* latest) -> QVR_retval_t {
    testClock().setNow(at(10, 15));
    const QVR_retval_t status = QVR_readPerformanceMonitoringCounters(line, latest);
    latest->ne.LOS = 40;
    storeClosingCounters(line, *latest);
    QVR_15minCounterUpdateNotificationHandler(line, at(10, 15));
    storeCounters(line, {*latest, *latest});
    latest->ne.LOS = 45;
    return status;
  };
  ASSERT_EQ(updateRunningInterval(0, passes, &interval), QVR_E_STATUS_OK);
  EXPECT_EQ(interval.neCounters.linePerformanceCounters.LOS, 45U)
      << "since the start of the interval that was queried";
  EXPECT_EQ(interval.collectionTime, 899U);
  EXPECT_EQ(previous(0, 1).neCounters.linePerformanceCounters.LOS, 40U);
  EXPECT_EQ(previous(0, 1).collectionTime, 900U);
  EXPECT_THAT(invalidFlags(previous(0, 1)), Each(FALSE));
  EXPECT_TRUE(isZero(LockedHistory(0)->quarterHours.running()));
}

// Lets a boundary pass in the middle of now(), which still returns the time before it.
class BoundaryClock final : public Clock {
 public:
  BoundaryClock() { installClock(*this); }

  void onNextNow(std::function<void()> boundary) { boundary_ = std::move(boundary); }

  time_t now() override {
    const time_t before = testClock().now();
    if (const auto boundary = std::exchange(boundary_, nullptr)) {
      boundary();
    }
    return before;
  }
  std::chrono::microseconds steady() override { return {}; }
  void sleep(std::chrono::microseconds /*duration*/) override {}
  int waitReadable(fd_set& /*descriptors*/, int /*limit*/, std::chrono::microseconds /*duration*/) override {
    return 0;
  }

 private:
  std::function<void()> boundary_;
};

TEST_F(RunningInterval, StartsTheQueryAgainWhenABoundaryPassesBeforeTheRead) {
  testClock().setNow(at(10, 14, 59));
  static auto& clock = *new BoundaryClock;
  clock.onNextNow([] {
    testClock().setNow(at(10, 15));
    QVR_15minCounterEventHandler(at(10, 15));
  });
  expect(readsPm(0, 40) + readsPm(1, 40) + readsPm(0, 45));
  QVR_intervalLinkCounterDB_t interval{};
  ASSERT_EQ(QVR_getCurr15minCounters(0, &interval), QVR_E_STATUS_OK);
  expectCounted(interval, 5);
  EXPECT_EQ(interval.collectionTime, 0U);
  EXPECT_EQ(interval.timestamp, at(10, 15));
  EXPECT_EQ(interval.intervalNumber, 42U);
  expectCounted(LockedHistory(0)->quarterHours.running(), 5);
  EXPECT_EQ(LockedHistory(0)->quarterHours.running().timestamp, at(10, 15));
  expectCounted(previous(0, 1), 40);
  EXPECT_EQ(previous(0, 1).collectionTime, 900U);
}

TEST_F(RunningInterval, CountsFromTheNewStartWhileABoundaryIsHandled) {
  static QVR_intervalLinkCounterDB_t interval{};
  QVR_register15minCounterUpdateNotificationCB([](QVR_lineId_t line, time_t boundary) {
    QVR_15minCounterUpdateNotificationHandler(line, boundary);
    EXPECT_EQ(QVR_getCurr15minCounters(line, &interval), QVR_E_STATUS_OK);
  });
  testClock().setNow(at(10, 15));
  expect(readsPm(0, 40) + readsPm(0, 43) + readsPm(1, 40).fails(EIO));
  QVR_15minCounterEventHandler(at(10, 15));
  expectCounted(interval, 3);
  expectCounted(LockedHistory(0)->quarterHours.running(), 3);
}

}  // namespace
