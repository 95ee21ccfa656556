// Arithmetic on interval counters: differences of snapshots, and sums of intervals.
#include "qvrfast/interval_delta.h"

#include <cstring>

#include "support/records.h"
#include "support/trace_log.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

using testing::ElementsAre;

TEST(IntervalDelta, SubtractsEachWord) {
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

TEST(IntervalDelta, WrapsAround) {
  QVR_intervalCounterDB_t snapshots{};
  snapshots.prev15minSnapshot.ne.EFB = 0xFFFFFFF0;
  snapshots.curr15minSnapshot.ne.EFB = 0x10;
  snapshots.prev15minSnapshot.fe.CV = 1000;  // the chip has restarted
  snapshots.curr15minSnapshot.fe.CV = 10;
  QVR_intervalLinkCounterDB_t interval{};
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(interval.neCounters.channelPerformanceCounters.EFB, 0x20U);
  EXPECT_EQ(interval.feCounters.channelPerformanceCounters.CV, 4294966306U);
}

TEST(IntervalDelta, KeepsFarEndCountersThatTheChipDoesNotHave) {
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

TEST(IntervalDelta, MovesTheStartOfTooManyUnavailableSeconds) {
  QVR_intervalCounterDB_t snapshots{};
  snapshots.prev15minSnapshot.ne.UAS = 100;
  snapshots.curr15minSnapshot.ne.UAS = 150;
  QVR_intervalLinkCounterDB_t interval{};
  interval.collectionTime = 50;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(snapshots.prev15minSnapshot.ne.UAS, 100U) << "not more than were collected";
  interval.collectionTime = 49;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(interval.neCounters.linePerformanceCounters.UAS, 50U);
  EXPECT_EQ(snapshots.prev15minSnapshot.ne.UAS, 101U);
  EXPECT_EQ(snapshots.curr15minSnapshot.ne.UAS, 150U);
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_EQ(interval.neCounters.linePerformanceCounters.UAS, 49U);
}

TEST(IntervalDelta, LogsNoLimitWhenAllSecondsWereUnavailable) {
  const TraceLog trace;
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  QVR_intervalCounterDB_t snapshots{};
  snapshots.curr15minSnapshot.ne.UAS = 50;
  QVR_intervalLinkCounterDB_t interval{};
  interval.collectionTime = 50;
  QVR_update15minPeformanceCounters(&snapshots, &interval);
  EXPECT_THAT(TraceLog::lines(), testing::Not(testing::Contains(testing::HasSubstr("collectionTime"))));
}

TEST(IntervalDelta, LogsItsCounters) {
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

TEST(IntervalDelta, SumsCountersAndKeepsHeaders) {
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

}  // namespace
