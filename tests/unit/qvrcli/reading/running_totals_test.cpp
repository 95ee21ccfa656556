// Totals only grow, whatever the chip's 32-bit counters do.
#include "qvrcli/reading/running_totals.h"

#include <gtest/gtest.h>

#include "qvrcli/reading/counter_columns.h"

using namespace gfast::console;

namespace {

// A column of kCounterColumns.
constexpr size_t kErroredSeconds = 4;
constexpr size_t kErrorFreeBits = 16;

EndCounters counted(uint32_t erroredSeconds, uint32_t errorFreeBits) {
  EndCounters counters{};
  counters.erroredSeconds = erroredSeconds;
  counters.errorFreeBits = errorFreeBits;
  return counters;
}

TEST(RunningTotals, AreTheCountersAtFirst) {
  RunningTotals totals;
  EXPECT_EQ(totals.add(counted(7, 70), false)[kErroredSeconds], 7U);
  EXPECT_EQ(totals.add(counted(9, 90), false)[kErroredSeconds], 9U);
}

TEST(RunningTotals, GoOnWhenACounterWraps) {
  RunningTotals totals;
  totals.add(counted(1, 0xFFFFFFF0), false);
  EXPECT_EQ(totals.add(counted(1, 0x10), false)[kErrorFreeBits], 0x100000010ULL);
  EXPECT_EQ(totals.add(counted(1, 0x20), false)[kErrorFreeBits], 0x100000020ULL);
}

TEST(RunningTotals, GoOnWhenAChipStartsAnew) {
  RunningTotals totals;
  totals.add(counted(50, 0xF0000000), false);
  // Its counters have already passed what they were.
  const EndTotals again = totals.add(counted(60, 5), true);
  EXPECT_EQ(again[kErroredSeconds], 110U);
  EXPECT_EQ(again[kErrorFreeBits], 0xF0000005U);
}

TEST(RunningTotals, NoticeAStartThatNobodyTold) {
  RunningTotals totals;
  totals.add(counted(50, 0xF0000000), false);
  const EndTotals again = totals.add(counted(2, 5), false);
  EXPECT_EQ(again[kErroredSeconds], 52U);
  EXPECT_EQ(again[kErrorFreeBits], 0xF0000005U) << "no wrap: another counter went back";
}

}  // namespace
