// A quarter hour ends: the lines' counters are read and reported, and the next quarter hour starts with them.
#include "qvrline/interval_counters.h"
#include "support/devices.h"
#include "support/lines.h"
#include "support/records.h"
#include "support/trace_log.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr time_t kBoundary = 1700000100;

Script readsIntervalCounters(int device, uint32_t first) {
  return reads(device, 0xF0000000, countingWords(156, first));
}

// What each call of the callback found.
struct Update {
  QVR_lineId_t line;
  time_t boundary;
  uint32_t now;
  uint32_t start;
  bool operator==(const Update&) const = default;
};

std::vector<Update>& updates() {
  static auto& all = *new std::vector<Update>;
  return all;
}

void account(QVR_lineId_t line, time_t boundary) {
  const QVR_intervalCounterDB_t counters = QVR_lineDescriptorForLine(line).counters;
  updates().push_back({line, boundary, counters.curr15minSnapshot.ne.LOS, counters.prev15minSnapshot.ne.LOS});
}

// Both lines started their quarter hour with these counters.
class QuarterHour : public testing::Test {
 protected:
  void SetUp() override {
    enterBothLines();
    openDevice(driver_, 0);
    openDevice(driver_, 1);
    QVR_register15minCounterUpdateNotificationCB(account);
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      QVR_intervalCounterDB_t counters{};
      counters.curr15minSnapshot.ne.LOS = 7;
      counters.prev15minSnapshot.ne.LOS = 5;
      storeCounters(line, counters);
    }
  }

  static QVR_intervalCounterDB_t countersOf(QVR_lineId_t line) {
    return QVR_lineDescriptorForLine(line).counters;
  }

  ExpectedRequests driver_{Script()};
};

TEST(IntervalCounters, StartAgainFromTheLatestRead) {
  QVR_intervalCounterDB_t counters{};
  counters.curr15minSnapshot.ne.LOS = 1;
  counters.curr15minSnapshot.fe.EFB = 2;
  counters.prev15minSnapshot.ne.ES = 3;
  QVR_resetIntervalCounters(&counters);
  EXPECT_EQ(counters.prev15minSnapshot.ne.LOS, 1U);
  EXPECT_EQ(counters.prev15minSnapshot.fe.EFB, 2U);
  EXPECT_EQ(counters.prev15minSnapshot.ne.ES, 0U);
  EXPECT_EQ(counters.curr15minSnapshot.ne.LOS, 1U);
}

TEST_F(QuarterHour, IsReportedForEachLineAndTheNextStartsThere) {
  driver_.expect(readsIntervalCounters(0, 1000) + readsIntervalCounters(1, 2000));
  QVR_15minCounterEventHandler(kBoundary);
  EXPECT_THAT(updates(), ElementsAre(Update{0, kBoundary, 1000, 5}, Update{1, kBoundary, 2000, 5}));
  expectCountingWords(countersOf(0).curr15minSnapshot, 1000);
  expectCountingWords(countersOf(0).prev15minSnapshot, 1000);
  expectCountingWords(countersOf(1).prev15minSnapshot, 2000);
}

TEST_F(QuarterHour, LogsALineThatCannotBeReadAndKeepsItsCounters) {
  const TraceLog trace;
  driver_.expect(readsIntervalCounters(0, 1000).fails(EIO) + readsIntervalCounters(1, 2000));
  QVR_15minCounterEventHandler(kBoundary);
  EXPECT_THAT(updates(), ElementsAre(Update{1, kBoundary, 2000, 5}));
  EXPECT_EQ(countersOf(0).curr15minSnapshot.ne.LOS, 7U);
  EXPECT_EQ(countersOf(0).prev15minSnapshot.ne.LOS, 5U);
  EXPECT_THAT(trace.lines(),
              ElementsAre(testing::MatchesRegex("\\[LOG_ERR\\] QVR_15minCounterEventHandler:[0-9]+ Failed "
                                                "reading performance monitoring counters for line 0\n")));
}

TEST_F(QuarterHour, OnlyLogsWhenNoLineCanBeRead) {
  const TraceLog trace;
  driver_.expect(readsIntervalCounters(0, 0).fails(EIO) + readsIntervalCounters(1, 0).fails(EIO));
  QVR_15minCounterEventHandler(kBoundary);
  EXPECT_THAT(updates(), IsEmpty());
  EXPECT_EQ(trace.lines().size(), 2U);
}

TEST_F(QuarterHour, StartsTheNextWithoutACallback) {
  QVR_register15minCounterUpdateNotificationCB(nullptr);
  driver_.expect(readsIntervalCounters(0, 1000) + readsIntervalCounters(1, 2000));
  QVR_15minCounterEventHandler(kBoundary);
  EXPECT_THAT(updates(), IsEmpty());
  expectCountingWords(countersOf(0).prev15minSnapshot, 1000);
  expectCountingWords(countersOf(1).prev15minSnapshot, 2000);
}

TEST_F(QuarterHour, ReadDuringTheCallbackDoesNotMoveTheNextStart) {
  QVR_register15minCounterUpdateNotificationCB([](QVR_lineId_t line, time_t) {
    G9972_PM_COUNTERS_S later{};
    later.ne.LOS = 1500;
    storeLatestCounters(line, later);
  });
  driver_.expect(readsIntervalCounters(0, 1000) + readsIntervalCounters(1, 2000));
  QVR_15minCounterEventHandler(kBoundary);
  expectCountingWords(countersOf(0).prev15minSnapshot, 1000);
  expectCountingWords(countersOf(1).prev15minSnapshot, 2000);
}

TEST_F(QuarterHour, LateReadDoesNotReplaceTheClosingRead) {
  G9972_PM_COUNTERS_S block{};
  block.ne.LOS = 8;
  storeLatestCounters(0, block);
  EXPECT_EQ(countersOf(0).curr15minSnapshot.ne.LOS, 8U);
  block.ne.LOS = 10;
  storeClosingCounters(0, block);
  storeLatestCounters(0, {});
  EXPECT_EQ(countersOf(0).curr15minSnapshot.ne.LOS, 10U);
  storeCounters(0, countersOf(0));
  storeLatestCounters(0, {});
  EXPECT_EQ(countersOf(0).curr15minSnapshot.ne.LOS, 0U) << "the next quarter hour has started";
}

TEST_F(QuarterHour, StartsOnceAtTheClosingRead) {
  G9972_PM_COUNTERS_S block{};
  startQuarterHour(0);
  EXPECT_EQ(countersOf(0).prev15minSnapshot.ne.LOS, 5U) << "no quarter hour has ended yet";
  block.ne.LOS = 10;
  storeClosingCounters(0, block);
  startQuarterHour(0);
  EXPECT_EQ(countersOf(0).prev15minSnapshot.ne.LOS, 10U);
  block.ne.LOS = 12;
  storeLatestCounters(0, block);
  startQuarterHour(0);
  EXPECT_EQ(countersOf(0).curr15minSnapshot.ne.LOS, 12U);
  EXPECT_EQ(countersOf(0).prev15minSnapshot.ne.LOS, 10U);
}

TEST_F(QuarterHour, UnavailableSecondsMoveOnlyFromWhereTheyWereFound) {
  QVR_intervalCounterDB_t counters{};
  counters.prev15minSnapshot.ne.UAS = 100;
  storeCounters(1, counters);
  moveUnavailableSecondsStart(1, 90, 120);
  EXPECT_EQ(countersOf(1).prev15minSnapshot.ne.UAS, 100U);
  moveUnavailableSecondsStart(1, 100, 120);
  EXPECT_EQ(countersOf(1).prev15minSnapshot.ne.UAS, 120U);
  EXPECT_EQ(countersOf(0).prev15minSnapshot.ne.UAS, 0U);
}

}  // namespace
