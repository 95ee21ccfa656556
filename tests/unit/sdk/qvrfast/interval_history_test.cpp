// Quarter hours: the running one, what a boundary writes, and how the ring keeps them.
#include "qvrfast/interval_delta.h"
#include "qvrfast/time_stamp.h"
#include "qvrline/line_module.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(IntervalDelta, IsEachWordsOwnDifference) {
  QVR_intervalCounterDB_t snapshots{};
  const auto fill = [](G9972_PM_COUNTERS_S& block, uint32_t n) {
    const Bytes bytes = pmBlock(n);
    std::memcpy(&block, bytes.data(), bytes.size());
    QVR_NTOHGfastCounters(&block, sizeof block);
  };
  fill(snapshots.prev15minSnapshot, 100);
  fill(snapshots.curr15minSnapshot, 107);
  QVR_intervalLinkCounterDB_t interval{};
  interval.collectionTime = 900;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  expectCounted(interval, 7);
}

TEST(IntervalDelta, GoesOnWhereACounterWraps) {
  QVR_intervalCounterDB_t snapshots{};
  snapshots.prev15minSnapshot.ne.EFB = 0xFFFFFFF0;
  snapshots.curr15minSnapshot.ne.EFB = 0x10;
  snapshots.prev15minSnapshot.fe.CV = 1000;  // and where the chip began anew
  snapshots.curr15minSnapshot.fe.CV = 10;
  QVR_intervalLinkCounterDB_t interval{};
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(interval.neCounters.channelPerformanceCounters.EFB, 0x20U);
  EXPECT_EQ(interval.feCounters.channelPerformanceCounters.CV, 4294966306U);
}

TEST(IntervalDelta, LeavesWhatTheChipDoesNotTellOfTheFarEnd) {
  QVR_intervalCounterDB_t snapshots{};
  QVR_intervalLinkCounterDB_t interval{};
  QVR_linePerformance_t& far = interval.feCounters.linePerformanceCounters;
  far.FULL_INITS = 1;
  far.FAILEDFULL_INITS = 2;
  far.FAST_INITS = 3;
  far.FAILEDFAST_INITS = 4;
  far.TIGA = 5;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(far.FULL_INITS, 1U);
  EXPECT_EQ(far.FAILEDFULL_INITS, 2U);
  EXPECT_EQ(far.FAST_INITS, 3U);
  EXPECT_EQ(far.FAILEDFAST_INITS, 4U);
  EXPECT_EQ(far.TIGA, 5U);
}

TEST(IntervalDelta, LimitsUnavailableSecondsForTheNextLook) {
  QVR_intervalCounterDB_t snapshots{};
  snapshots.prev15minSnapshot.ne.UAS = 100;
  snapshots.curr15minSnapshot.ne.UAS = 150;
  QVR_intervalLinkCounterDB_t interval{};
  interval.collectionTime = 50;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(snapshots.prev15minSnapshot.ne.UAS, 100U) << "as many as were collected are not too many";
  interval.collectionTime = 49;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(interval.neCounters.linePerformanceCounters.UAS, 50U);
  EXPECT_EQ(snapshots.prev15minSnapshot.ne.UAS, 101U);
  EXPECT_EQ(snapshots.curr15minSnapshot.ne.UAS, 150U);
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(interval.neCounters.linePerformanceCounters.UAS, 49U);
}

TEST(IntervalDelta, TracesWhatItFound) {
  const TraceLog trace;
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  QVR_intervalCounterDB_t snapshots{};
  const auto count = [](G9972_NEAR_END_COUNTERS_S& ne, uint32_t uas, uint32_t rpa, uint32_t bsw,
                        uint32_t efb) {
    ne.UAS = uas;
    ne.RPA = rpa;
    ne.BSW = bsw;
    ne.EFB = efb;
  };
  count(snapshots.prev15minSnapshot.ne, 5, 1, 30, 7000);
  count(snapshots.curr15minSnapshot.ne, 25, 3, 34, 7005);
  QVR_intervalLinkCounterDB_t interval{};
  interval.collectionTime = 15;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  const auto traced = [](const std::string& text) {
    return testing::MatchesRegex("\\[LOG_DEBUG\\] QVR_update15minPeformanceCounters:[0-9]+ " + text + "\n");
  };
  EXPECT_THAT(
      TraceLog::lines(),
      ElementsAre(traced("UAS=20 > collectionTime=15"),
                  traced("pCurrDerivedCounters->unavailableSeconds = 25 xi_collection time = 15"),
                  traced("pPrevDerivedCounters->unavailableSeconds = 5 xi_collection time = 15"),
                  traced("RPA = 2 prev RPA=1 curr RPA=3"), traced("UAS = 20 prev UAS=10 curr=UAS=25"),
                  traced("EFB = 5 prev EFB=7000 curr EFB=7005"), traced("BSW = 4 prev BSW=30 curr BSW=34")));
}

TEST(IntervalDelta, SumsAddTheCountersAndLeaveTheHeaders) {
  QVR_performanceCounterDB_t sum{};
  QVR_performanceCounterDB_t added{};
  for (const auto& row : kNearLineWords) {
    sum.linePerformanceCounters.*row.counter = 0xFFFFFFF0;
    added.linePerformanceCounters.*row.counter = static_cast<uint32_t>(row.word) + 1;
  }
  for (const auto& row : kNearChannelWords) {
    sum.channelPerformanceCounters.*row.counter = 5;
    added.channelPerformanceCounters.*row.counter = static_cast<uint32_t>(row.word) + 1;
  }
  added.linePerformanceCounters.timeInterval = {7, 900, TRUE, "then"};
  added.channelPerformanceCounters.timeInterval = {7, 900, TRUE, "then"};
  QVR_accumulateIntervalCounters(&sum, &added);
  for (const auto& row : kNearLineWords) {
    EXPECT_EQ(sum.linePerformanceCounters.*row.counter, static_cast<uint32_t>(row.word) + 1 - 16) << row.name;
  }
  for (const auto& row : kNearChannelWords) {
    EXPECT_EQ(sum.channelPerformanceCounters.*row.counter, static_cast<uint32_t>(row.word) + 6) << row.name;
  }
  EXPECT_TRUE(isZero(sum.linePerformanceCounters.timeInterval));
  EXPECT_TRUE(isZero(sum.channelPerformanceCounters.timeInterval));
}

TEST(IntervalRing, CountsFromHeadToTailRoundItsIntervals) {
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

TEST(IntervalRing, NeverLooksOutsideForAnyIntervalFromAnyHead) {
  expectInsideForEveryInterval<QVR_15minCounterHistoryDB_t>(96);
  expectInsideForEveryInterval<QVR_24hrCounterHistoryDB_t>(7);
}

TEST(TimeStamp, IsLocalTimeWithItsZone) {
  setZone("CET-1");
  G9972_timeStamp_t stamp;
  formatTimeStamp(at(10, 15, 7), stamp);
  EXPECT_STREQ(stamp, "2023-11-15T11:15:07+CET");
}

TEST(TimeStamp, CutsALongZoneName) {
  setZone("<ABCDEFGHIJKLMNOPQRSTUVWXYZ>0");
  G9972_timeStamp_t stamp;
  formatTimeStamp(at(10, 15, 7), stamp);
  // A C library may refuse such a name, and the time is then UTC's.
  const bool known = std::string(tzname[0]) == "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  EXPECT_STREQ(stamp, known ? "2023-11-15T10:15:07+ABCDEFGHI" : "2023-11-15T10:15:07+UTC");
}

TEST(TimeStamp, OfATimeThatTheCalendarCannotNameEndsInItsRoom) {
  setZone("UTC0");
  for (const time_t time :
       {std::numeric_limits<time_t>::max(), std::numeric_limits<time_t>::min(), time_t{-1}}) {
    G9972_timeStamp_t stamp;
    std::memset(stamp, 'x', sizeof stamp);
    formatTimeStamp(time, stamp);
    EXPECT_NE(std::memchr(stamp, '\0', sizeof stamp), nullptr);
    EXPECT_GE(intervalNumberAt(time), 1U);
    EXPECT_LE(intervalNumberAt(time), 96U);
  }
}

TEST(TimeStamp, NumbersTheQuarterHoursOfTheLocalDay) {
  setZone("UTC0");
  EXPECT_EQ(intervalNumberAt(at(0, 0)), 1U);
  EXPECT_EQ(intervalNumberAt(at(0, 14, 59)), 1U);
  EXPECT_EQ(intervalNumberAt(at(0, 15)), 2U);
  EXPECT_EQ(intervalNumberAt(at(23, 59, 59)), 96U);
  setZone("<+0545>-5:45");
  EXPECT_EQ(intervalNumberAt(at(18, 15)), 1U);
  EXPECT_EQ(intervalNumberAt(at(18, 0)), 96U);
}

TEST_F(HistoryTest, HoldsTheRunningIntervalOnlyAfterTheStart) {
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

TEST_F(HistoryTest, TheRunningIntervalIsWhatWasCountedSinceItBegan) {
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

TEST_F(HistoryTest, CollectionThatBeganWithinTheIntervalCountsFromThere) {
  setStartOfCollection(0, 0, 600);
  testClock().setNow(at(10, 6));
  EXPECT_EQ(running(0, 1).collectionTime, 60U);
  testClock().setNow(at(10, 4));  // a clock set back to before it: as if it had begun with the interval
  EXPECT_EQ(running(0, 2).collectionTime, 240U);
}

TEST_F(HistoryTest, ALineThatCannotBeReadKeepsTheMarkOfTheLook) {
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

TEST_F(HistoryTest, AnAbsentDeviceIsAnswered) {
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

TEST_F(HistoryTest, ARunningReadLeavesWhatItDoesNotCount) {
  {
    const LockedHistory history(0);
    history->quarterHours.running().feCounters.linePerformanceCounters.FULL_INITS = 77;
  }
  EXPECT_EQ(running(0, 1).feCounters.linePerformanceCounters.FULL_INITS, 77U);
}

TEST_F(HistoryTest, MoreUnavailableSecondsThanCollectedLowerTheNextLook) {
  testClock().setNow(at(10, 0, 30));
  EXPECT_EQ(running(0, 10).neCounters.linePerformanceCounters.UAS, 90U);  // word 8: 9 * 10
  EXPECT_EQ(running(0, 10).neCounters.linePerformanceCounters.UAS, 30U);
  testClock().setNow(at(10, 0, 40));
  EXPECT_EQ(running(0, 11).neCounters.linePerformanceCounters.UAS, 39U);
  endQuarterHour(at(10, 15), 20);
  EXPECT_EQ(previous(0, 1).neCounters.linePerformanceCounters.UAS, 180U - 60U);
  EXPECT_EQ(running(0, 21).neCounters.linePerformanceCounters.UAS, 9U) << "the next one starts at the chip's";
}

TEST_F(HistoryTest, ABoundaryWritesWhatWasCountedUnderTheNumberThatBegins) {
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

TEST_F(HistoryTest, AfterThreeBoundariesThreeIntervalsFollowTheRunningOne) {
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

TEST_F(HistoryTest, CollectionWithinTheIntervalMakesItsEntryInvalid) {
  setStartOfCollection(0, 0, 600);
  endQuarterHour(at(10, 15), 1);
  EXPECT_EQ(previous(0, 1).collectionTime, 600U);
  EXPECT_THAT(invalidFlags(previous(0, 1)), Each(TRUE));
  EXPECT_THAT(times(previous(0, 1)), Each(600));
  EXPECT_THAT(invalidFlags(previous(1, 1)), Each(FALSE));
  endQuarterHour(at(10, 30), 2);
  EXPECT_EQ(previous(0, 1).collectionTime, 900U) << "the next interval is collected whole";
  EXPECT_THAT(invalidFlags(previous(0, 1)), Each(FALSE));
}

TEST_F(HistoryTest, AnIdleLinesEntryIsEmptyAndInvalid) {
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

TEST_F(HistoryTest, OfALineThatIsUpButNotInShowtimeOnlyTheNearEndIsValid) {
  setLineState(0, 0, LS_INIT_TRAIN);
  endQuarterHour(at(10, 15), 4);
  EXPECT_THAT(invalidFlags(previous(0, 1)), ElementsAre(FALSE, FALSE, TRUE, TRUE));
  EXPECT_THAT(times(previous(0, 1)), ElementsAre(900, 900, 0, 0));
  expectCounted(previous(0, 1), 4);
}

TEST_F(HistoryTest, ALineThatCannotBeReadIsSkippedAndItsNextIntervalSpansBoth) {
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

TEST_F(HistoryTest, AChipThatBeganAnewIsCountedByItsRestartedCounters) {
  endQuarterHour(at(10, 15), 1000);
  // Nobody has told of the restart yet: the arithmetic goes on.
  endQuarterHour(at(10, 30), 10);
  expectCounted(previous(0, 1), 10U - 1000U);
  // Now they have: framing and counters of each line are taken afresh.
  for (const int device : {0, 1}) {
    expect(reads(device, 0xE2400000, Bytes(72)) + readsPm(device, 12));
  }
  QVR_rebootNotificationHandler();
  endQuarterHour(at(10, 45), 15);
  expectCounted(previous(0, 1), 3);
}

TEST_F(HistoryTest, ADayHasNinetySixIntervals) {
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

TEST_F(HistoryTest, WithoutAMidnightTheOldestOfNinetySixGivesWay) {
  // A clock that shows the same morning over and over.
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
  EXPECT_TRUE(isZero(history->quarterHours.counterHistory[96])) << "nothing goes round there";
}

TEST_F(HistoryTest, ANegativeIntervalLooksAheadOfTheRunningOne) {
  for (uint32_t i = 1; i <= 97; i++) {
    endQuarterHour(at(10, 15), i * (i + 1) / 2);
  }
  // Head 1, tail 2: ahead lie the oldest, 95 back and so on.
  expectCounted(previous(0, -1), previous(0, 95).neCounters.linePerformanceCounters.LOS);
  expectCounted(previous(0, -94), previous(0, 2).neCounters.linePerformanceCounters.LOS);
  EXPECT_TRUE(isZero(previous(0, -95))) << "the entry that nothing reaches";
  expect(readsPm(0, 5000));
  previous(0, -96);
  verify();
  for (int k = -128; k < -96; k++) {
    previous(0, static_cast<int8_t>(k));
  }
}

TEST_F(HistoryTest, IsDumpedNewestFirstAfterTheRunningOneWasRead) {
  static std::vector<std::pair<QVR_lineId_t, uint32_t>> seen;
  const QVR_intervalCounterHistoryCB note = [](QVR_lineId_t line,
                                               QVR_intervalLinkCounterDB_t* interval) -> BOOL {
    seen.emplace_back(line, interval->neCounters.linePerformanceCounters.LOS);
    return TRUE;
  };
  endQuarterHour(at(10, 15), 10);
  endQuarterHour(at(10, 30), 30);
  expect(readsPm(1, 35));
  EXPECT_EQ(QVR_dump15minCounterHistoryDB(1, note), QVR_E_STATUS_OK);
  EXPECT_THAT(seen, ElementsAre(std::pair(1, 5U), std::pair(1, 20U), std::pair(1, 10U)));
  verify();
  seen.clear();
  expect(readsPm(1, 36).fails(EIO));
  EXPECT_EQ(QVR_dump15minCounterHistoryDB(1, note), QVR_E_MEMREAD_ERROR);
  EXPECT_THAT(seen, IsEmpty());
}

TEST_F(HistoryTest, IsDumpedRoundTheRingToTheOldest) {
  static std::vector<uint32_t> seen;
  for (uint32_t i = 1; i <= 100; i++) {
    endQuarterHour(at(10, 15), i * (i + 1) / 2);
  }
  expect(readsPm(0, 5050));
  QVR_dump15minCounterHistoryDB(0, [](QVR_lineId_t, QVR_intervalLinkCounterDB_t* interval) -> BOOL {
    seen.push_back(interval->neCounters.linePerformanceCounters.LOS);
    return TRUE;
  });
  ASSERT_EQ(seen.size(), 96U);
  for (uint32_t i = 1; i < 96; i++) {
    EXPECT_EQ(seen[i], 101 - i);
  }
}

TEST_F(HistoryTest, ADumpEndsWhenTheCallbackHasSeenEnough) {
  static int calls = 0;
  endQuarterHour(at(10, 15), 1);
  endQuarterHour(at(10, 30), 2);
  expect(readsPm(0, 3));
  EXPECT_EQ(
      QVR_dump15minCounterHistoryDB(
          0, [](QVR_lineId_t, QVR_intervalLinkCounterDB_t*) -> BOOL { return ++calls < 2 ? TRUE : FALSE; }),
      QVR_E_STATUS_OK);
  EXPECT_EQ(calls, 2);
}

TEST_F(HistoryTest, ADumpsCallbackMayLookAndBoundariesMayPass) {
  endQuarterHour(at(10, 15), 10);
  static ExpectedRequests* chips = nullptr;
  chips = &driver();
  static std::vector<uint32_t> seen;
  expect(readsPm(0, 11));
  QVR_dump15minCounterHistoryDB(0, [](QVR_lineId_t line, QVR_intervalLinkCounterDB_t* interval) -> BOOL {
    seen.push_back(interval->neCounters.linePerformanceCounters.LOS);
    chips->expect(readsPm(0, 12) + readsPm(1, 12));
    QVR_15minCounterEventHandler(at(10, 30));
    return QVR_numberOf15minHistoryIntervals(line) > 1 ? TRUE : FALSE;
  });
  EXPECT_THAT(seen, ElementsAre(1, 10)) << "the walk goes by what was there when it began";
}

// A boundary that passes while a look waits for the chip: the chip answers the look after it.
TEST_F(HistoryTest, ABoundaryDuringALookKeepsItsOwnEntry) {
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
  EXPECT_EQ(interval.neCounters.linePerformanceCounters.LOS, 45U) << "since the start that it knew";
  EXPECT_EQ(interval.collectionTime, 899U);
  EXPECT_EQ(previous(0, 1).neCounters.linePerformanceCounters.LOS, 40U);
  EXPECT_EQ(previous(0, 1).collectionTime, 900U);
  EXPECT_THAT(invalidFlags(previous(0, 1)), Each(FALSE));
  EXPECT_TRUE(isZero(LockedHistory(0)->quarterHours.running()));
}

TEST_F(HistoryTest, TracesABoundary) {
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
