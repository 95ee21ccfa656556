// Dumps of the quarter hours, newest first.
#include <gmock/gmock.h>

#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using HistoryDump = HistoryTest;

TEST_F(HistoryDump, DumpsNewestFirstAfterReadingTheRunningInterval) {
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

TEST_F(HistoryDump, DumpsAroundTheEndOfTheRing) {
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

TEST_F(HistoryDump, StopsTheDumpWhenTheCallbackReturnsFalse) {
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

TEST_F(HistoryDump, LetsBoundariesPassDuringADump) {
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
  EXPECT_THAT(seen, ElementsAre(1, 10)) << "the dump shows the history as it was at its start";
}

}  // namespace
