// Quarter hours: what a boundary writes, and how the ring keeps the intervals.
#include "qvrline/line_module.h"
#include "support/records.h"
#include "support/trace_log.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

using testing::Each;
using testing::ElementsAre;

TEST(IntervalRing, CountsFromTailToHead) {
  QVR_15minCounterHistoryDB_t ring{};
  EXPECT_EQ(ring.count(), 1);
  ring.head = 95;
  EXPECT_EQ(ring.count(), 96);
  ring.head = 0;
  ring.tail = 1;
  EXPECT_EQ(ring.count(), 96);
  ring.head = 3;
  ring.tail = 90;
  EXPECT_EQ(ring.count(), 10);
  QVR_24hrCounterHistoryDB_t days{};
  days.head = 0;
  days.tail = 1;
  EXPECT_EQ(days.count(), 7);
}

template <typename Ring>
void expectInsideForEveryInterval(int intervals) {
  Ring ring{};
  for (int head = 0; head < intervals; head++) {
    ring.head = static_cast<uint8_t>(head);
    for (int k = -128; k <= 127; k++) {
      const size_t index = ring.indexOf(static_cast<int8_t>(k));
      ASSERT_LT(index, ring.counterHistory.size()) << head << ' ' << k;
      if (k <= head && head - k <= intervals) {
        ASSERT_EQ(index, static_cast<size_t>(head - k)) << head << ' ' << k;
      } else if (k > head && k < intervals) {
        ASSERT_EQ(index, static_cast<size_t>(head - k + intervals)) << head << ' ' << k;
      }
    }
  }
}

TEST(IntervalRing, IndexStaysInTheArrayForEveryHeadAndInterval) {
  expectInsideForEveryInterval<QVR_15minCounterHistoryDB_t>(96);
  expectInsideForEveryInterval<QVR_24hrCounterHistoryDB_t>(7);
}

TEST_F(HistoryTest, HasOnlyTheRunningIntervalAfterTheStart) {
  for (const QVR_lineId_t line : {0, 1}) {
    EXPECT_EQ(QVR_numberOf15minHistoryIntervals(line), 1);
    EXPECT_EQ(QVR_numberOf24hrHistoryIntervals(line), 1);
    QVR_intervalLinkCounterDB_t interval;
    std::memset(&interval, 0x5A, sizeof interval);
    const QVR_intervalLinkCounterDB_t before = interval;
    for (const int k : {1, 2, 95, 96, 127}) {
      const auto interval8 = static_cast<int8_t>(k);
      EXPECT_EQ(QVR_getPrev15minCounters(line, interval8, &interval), QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE);
      EXPECT_EQ(QVR_getPrev24hrCounters(line, interval8, &interval), QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE);
    }
    EXPECT_EQ(std::memcmp(&interval, &before, sizeof before), 0);
    testClock().setNow(at(10, 5));
    expect(readsPm(line, 3));
    expectCounted(previous(line, 0), 3);
  }
}

TEST_F(HistoryTest, BoundaryWritesTheIntervalWithTheNextNumber) {
  endQuarterHour(at(10, 15), 40);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 2);
  const QVR_intervalLinkCounterDB_t interval = previous(0, 1);
  expectCounted(interval, 40);
  EXPECT_EQ(interval.intervalNumber, 42U);
  EXPECT_EQ(interval.timestamp, at(10, 15));
  EXPECT_STREQ(interval.timestampString, "2023-11-15T10:15:00+UTC");
  EXPECT_EQ(interval.collectionTime, 900U);
  EXPECT_THAT(invalidFlags(interval), Each(FALSE));
  EXPECT_THAT(times(interval), Each(900));
  EXPECT_EQ(LockedHistory(0)->quarterHours.currentIntervalNumber, 42);
}

TEST_F(HistoryTest, KeepsThreeIntervalsAfterThreeBoundaries) {
  endQuarterHour(at(10, 15), 10);
  endQuarterHour(at(10, 30), 30);
  endQuarterHour(at(10, 45), 60);
  for (const QVR_lineId_t line : {0, 1}) {
    EXPECT_EQ(QVR_numberOf15minHistoryIntervals(line), 4);
    expectCounted(previous(line, 1), 30);
    expectCounted(previous(line, 2), 20);
    expectCounted(previous(line, 3), 10);
    EXPECT_EQ(previous(line, 1).intervalNumber, 44U);
    EXPECT_EQ(previous(line, 3).intervalNumber, 42U);
    QVR_intervalLinkCounterDB_t interval{};
    EXPECT_EQ(QVR_getPrev15minCounters(line, 4, &interval), QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE);
    testClock().setNow(at(10, 46));
    expect(readsPm(line, 61));
    expectCounted(previous(line, 0), 1);
  }
}

TEST_F(HistoryTest, MarksAPartlyCollectedIntervalInvalid) {
  setStartOfCollection(0, 0, 600);
  endQuarterHour(at(10, 15), 1);
  EXPECT_EQ(previous(0, 1).collectionTime, 600U);
  EXPECT_THAT(invalidFlags(previous(0, 1)), Each(TRUE));
  EXPECT_THAT(times(previous(0, 1)), Each(600));
  EXPECT_THAT(invalidFlags(previous(1, 1)), Each(FALSE));
  endQuarterHour(at(10, 30), 2);
  EXPECT_EQ(previous(0, 1).collectionTime, 900U) << "the next interval is collected completely";
  EXPECT_THAT(invalidFlags(previous(0, 1)), Each(FALSE));
}

TEST_F(HistoryTest, WritesAnEmptyInvalidEntryForAnIdleLine) {
  setLineState(1, 0, LS_IDLE);
  setStartOfCollection(1, 0, 0);
  endQuarterHour(at(10, 15), 1);
  const QVR_intervalLinkCounterDB_t interval = previous(1, 1);
  expectCounted(interval, 0);
  EXPECT_EQ(interval.collectionTime, 0U);
  EXPECT_THAT(invalidFlags(interval), Each(TRUE));
  EXPECT_THAT(times(interval), Each(0));
  EXPECT_EQ(interval.intervalNumber, 42U);
  endQuarterHour(at(10, 30), 2);
  EXPECT_EQ(previous(1, 1).collectionTime, 900U);
  EXPECT_THAT(invalidFlags(previous(1, 1)), Each(TRUE));
  expectCounted(previous(1, 1), 0);
}

TEST_F(HistoryTest, MarksTheFarEndInvalidOutsideShowtime) {
  setLineState(0, 0, LS_INIT_TRAIN);
  endQuarterHour(at(10, 15), 4);
  EXPECT_THAT(invalidFlags(previous(0, 1)), ElementsAre(FALSE, FALSE, TRUE, TRUE));
  EXPECT_THAT(times(previous(0, 1)), ElementsAre(900, 900, 0, 0));
  expectCounted(previous(0, 1), 4);
}

TEST_F(HistoryTest, SkipsALineThatCannotBeReadAtABoundary) {
  endQuarterHour(at(10, 15), 10);
  testClock().setNow(at(10, 30));
  expect(readsPm(0, 20).fails(EIO) + readsPm(1, 20));
  QVR_15minCounterEventHandler(at(10, 30));
  verify();
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 2);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(1), 3);
  endQuarterHour(at(10, 45), 35);
  expectCounted(previous(0, 1), 25);
  expectCounted(previous(0, 2), 10);
  expectCounted(previous(1, 1), 15);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 3);
}

TEST_F(HistoryTest, RestartsCountingAfterARebootNotification) {
  endQuarterHour(at(10, 15), 1000);
  // No reboot has been reported yet, so the difference wraps around.
  endQuarterHour(at(10, 30), 10);
  expectCounted(previous(0, 1), 10U - 1000U);
  // The reboot is reported: framing and counters of each line are read again.
  for (const int device : {0, 1}) {
    expect(reads(device, 0xE2400000, Bytes(72)) + readsPm(device, 12));
  }
  QVR_rebootNotificationHandler();
  endQuarterHour(at(10, 45), 15);
  expectCounted(previous(0, 1), 3);
}

TEST_F(HistoryTest, KeepsNinetySixIntervalsADay) {
  testClock().setNow(at(0, 0));
  endQuarterHour(at(0, 0), 1);
  for (uint32_t i = 1; i < 96; i++) {
    endQuarterHour(kMidnight + static_cast<time_t>(i) * kQuarter, 1 + i * (i + 1) / 2);
    EXPECT_EQ(QVR_numberOf15minHistoryIntervals(1), static_cast<int>(i) + 1);
  }
  for (int8_t k = 1; k < 96; k++) {
    expectCounted(previous(1, k), 96U - static_cast<uint32_t>(k));
    EXPECT_EQ(previous(1, k).intervalNumber, 97U - static_cast<uint32_t>(k));
  }
  endQuarterHour(kMidnight + kDay, 5000);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(1), 1);
  QVR_intervalLinkCounterDB_t interval{};
  EXPECT_EQ(QVR_getPrev15minCounters(1, 1, &interval), QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE);
  expectCounted(running(1, 5001), 1);
}

TEST_F(HistoryTest, DropsTheOldestIntervalWhenTheRingIsFull) {
  // The clock shows the same time at every boundary, so midnight never comes.
  for (uint32_t i = 1; i <= 300; i++) {
    endQuarterHour(at(10, 15), i * (i + 1) / 2);
    EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), static_cast<int>(std::min(i + 1, 96U)));
  }
  for (int8_t k = 1; k < 96; k++) {
    expectCounted(previous(0, k), 301U - static_cast<uint32_t>(k));
  }
  QVR_intervalLinkCounterDB_t interval{};
  EXPECT_EQ(QVR_getPrev15minCounters(0, 96, &interval), QVR_E_HISTORY_INTERVAL_OUT_OF_RANGE);
  const LockedHistory history(0);
  EXPECT_TRUE(isZero(history->quarterHours.counterHistory[96])) << "the last entry is never written";
}

TEST_F(HistoryTest, CountsNegativeIntervalsForward) {
  for (uint32_t i = 1; i <= 97; i++) {
    endQuarterHour(at(10, 15), i * (i + 1) / 2);
  }
  // Head 1, tail 2: one forward is the oldest interval, 95 back.
  expectCounted(previous(0, -1), previous(0, 95).neCounters.linePerformanceCounters.LOS);
  expectCounted(previous(0, -94), previous(0, 2).neCounters.linePerformanceCounters.LOS);
  EXPECT_TRUE(isZero(previous(0, -95))) << "the last entry is never written";
  expect(readsPm(0, 5000));
  previous(0, -96);
  verify();
  for (int k = -128; k < -96; k++) {
    previous(0, static_cast<int8_t>(k));
  }
}

TEST_F(HistoryTest, LogsABoundary) {
  const TraceLog trace;
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  setLineState(0, 0, LS_IDLE);
  expect(readsPm(0, 0) + readsPm(1, 0).fails(EIO));
  QVR_15minCounterEventHandler(at(10, 15));
  ASSERT_EQ(TraceLog::lines().size(), 2U);
  EXPECT_THAT(
      TraceLog::lines().front(),
      testing::MatchesRegex("\\[LOG_DEBUG\\] QVR_15minCounterUpdateNotificationHandler:[0-9]+ "
                            "timestamp = 1700043300 timestampstring=2023-11-15T10:15:00.UTC interval = "
                            "42\n"));
}

}  // namespace
