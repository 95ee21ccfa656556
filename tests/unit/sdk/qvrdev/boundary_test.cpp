// Seconds to the quarter-hour boundary of local time.
#include <gtest/gtest.h>

#include "support/local_time.h"
#include "unit/sdk/qvrdev/notification_chips.h"

using namespace gfast;

namespace {

class Boundary : public testing::Test {
 protected:
  Boundary() { setZone("UTC0"); }

  uint32_t secondsAt(time_t time) {
    bench_.clock.time = time;
    return QVR_secsTo15minBoundary(nullptr);
  }

  Bench bench_;
};

TEST_F(Boundary, IsOneSecondAwayAt101459) {
  EXPECT_EQ(secondsAt(at(10, 14, 59)), 1U);
}

TEST_F(Boundary, IsAWholeIntervalAwayAt101500) {
  EXPECT_EQ(secondsAt(at(10, 15, 0)), 900U);
}

TEST_F(Boundary, ComesFourTimesAnHour) {
  for (const int minute : {0, 15, 30, 45}) {
    EXPECT_EQ(secondsAt(at(7, minute, 0)), QVR_K_SECS_IN_15MIN_INTERVAL);
    EXPECT_EQ(secondsAt(at(7, minute, 1)), 899U);
    EXPECT_EQ(secondsAt(at(7, minute + 7, 30)), 450U);
    EXPECT_EQ(secondsAt(at(7, minute + 14, 59)), 1U);
  }
}

TEST_F(Boundary, ComesAtMidnight) {
  EXPECT_EQ(secondsAt(at(23, 59, 59)), 1U);
  EXPECT_EQ(secondsAt(at(24, 0, 0)), 900U);
}

TEST_F(Boundary, IsBetween1And900SecondsAway) {
  for (time_t time = kMidnight; time < kMidnight + 86400; time++) {
    const uint32_t seconds = secondsAt(time);
    ASSERT_GE(seconds, 1U);
    ASSERT_LE(seconds, 900U);
  }
}

TEST_F(Boundary, ReturnsTheTimeItCountedFrom) {
  bench_.clock.time = at(10, 14, 59);
  time_t now = 0;
  QVR_secsTo15minBoundary(&now);
  EXPECT_EQ(now, at(10, 14, 59));
}

// New York, 2023-03-12: 01:59:59 is followed by 03:00:00.
TEST_F(Boundary, ComesWhenClocksGoForward) {
  setZone("EST5EDT,M3.2.0,M11.1.0");
  constexpr time_t kChange = 1678604400;
  EXPECT_EQ(secondsAt(kChange - 1), 1U);
  EXPECT_EQ(secondsAt(kChange), 900U);
}

// New York, 2023-11-05: 01:59:59 is followed by 01:00:00.
TEST_F(Boundary, ComesWhenClocksGoBack) {
  setZone("EST5EDT,M3.2.0,M11.1.0");
  constexpr time_t kChange = 1699164000;
  EXPECT_EQ(secondsAt(kChange - 1), 1U);
  EXPECT_EQ(secondsAt(kChange), 900U);
}

// Lord Howe Island, 2023-04-02, where clocks go back half an hour: 01:59:59 is followed by 01:30:00.
TEST_F(Boundary, ComesWhenClocksGoBackHalfAnHour) {
  setZone("<+1030>-10:30<+11>-11,M10.1.0,M4.1.0");
  constexpr time_t kChange = 1680361200;
  EXPECT_EQ(secondsAt(kChange - 1), 1U);
  EXPECT_EQ(secondsAt(kChange), 900U);
}

// Nepal is 5 h 45 min ahead of UTC, so its quarter hours are those of UTC.
TEST_F(Boundary, FollowsZonesOffsetByAQuarterHour) {
  setZone("<+0545>-5:45");
  EXPECT_EQ(secondsAt(at(10, 14, 59)), 1U);
  EXPECT_EQ(secondsAt(at(10, 15, 0)), 900U);
}

// A zone offset by seven minutes has its boundaries seven minutes earlier.
TEST_F(Boundary, FollowsLocalTime) {
  setZone("<+0007>-0:07");
  EXPECT_EQ(secondsAt(at(10, 8, 0)), 900U);
  EXPECT_EQ(secondsAt(at(10, 15, 0)), 480U);
}

TEST_F(Boundary, WorksBeforeTheEpoch) {
  EXPECT_EQ(secondsAt(-1), 1U);
}

}  // namespace
