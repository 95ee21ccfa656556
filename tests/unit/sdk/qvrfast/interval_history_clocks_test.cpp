// Quarter hours and days when clocks are set, and in unusual time zones.
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

// Boundaries at these times, in this zone. The counts of intervals stay in range, and the last intervals are
// right.
struct Clocks {
  const char* name;
  const char* zone;
  std::vector<time_t> boundaries;
};

void PrintTo(const Clocks& clocks, std::ostream* out) {
  *out << clocks.name;
}

std::vector<time_t> quarters(time_t first, int count) {
  std::vector<time_t> times;
  for (int i = 0; i < count; i++) {
    times.push_back(first + i * kQuarter);
  }
  return times;
}

std::vector<time_t> operator+(std::vector<time_t> times, const std::vector<time_t>& more) {
  times.insert(times.end(), more.begin(), more.end());
  return times;
}

constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr time_t kSpringDay = 1711839600;  // 2024-03-31 00:00 CET
constexpr time_t kAutumnDay = 1729980000;  // 2024-10-27 00:00 CEST

class StrangeClocks : public HistoryTest, public testing::WithParamInterface<Clocks> {};

TEST_P(StrangeClocks, KeepTheRingsInRange) {
  setZone(GetParam().zone);
  uint32_t n = 0;
  for (const time_t boundary : GetParam().boundaries) {
    endQuarterHour(boundary, ++n);
    for (const QVR_lineId_t line : {0, 1}) {
      const int count = QVR_numberOf15minHistoryIntervals(line);
      ASSERT_GE(count, 1);
      ASSERT_LE(count, 96);
      ASSERT_GE(QVR_numberOf24hrHistoryIntervals(line), 1);
      ASSERT_LE(QVR_numberOf24hrHistoryIntervals(line), 7);
      if (count > 1) {
        expectCounted(previous(line, 1), 1);
        expectCounted(previous(line, static_cast<int8_t>(count - 1)), 1);
      }
    }
  }
  expect(readsPm(0, n + 2));
  expectCounted(previous(0, 0), 2);
  expect(readsPm(0, n + 3));
  previousDay(0, 0);
}

INSTANTIATE_TEST_SUITE_P(
    History, StrangeClocks,
    testing::Values(Clocks{"SetBackByHours", "UTC0",
                           quarters(at(10, 15), 30) + quarters(at(9, 0), 40) + quarters(at(3, 7), 100)},
                    Clocks{"SetForwardByHours", "UTC0", quarters(at(10, 15), 10) + quarters(at(20, 0), 100)},
                    Clocks{"SetBackOverMidnight", "UTC0",
                           quarters(at(23, 0), 8) + quarters(at(23, 0), 8) + quarters(at(23, 30), 9)},
                    Clocks{"QuarterHourZoneEast", "<+0545>-5:45", quarters(at(10, 15), 200)},
                    Clocks{"QuarterHourZoneChatham", "<+1245>-12:45<+1345>,M9.5.0/2:45,M4.1.0/3:45",
                           quarters(at(10, 15), 200)},
                    Clocks{"ZoneOffTheQuarterHour", "LMT-0:19:32", quarters(at(10, 15), 200)},
                    Clocks{"BeforeTheEpoch", "UTC0", quarters(-5 * kQuarter, 20)},
                    Clocks{"JumpingBackAndForth",
                           "UTC0",
                           {at(1, 0), at(0, 0), at(23, 59), at(0, 14), at(5, 0), at(0, 0), at(0, 0), at(0, 0),
                            at(0, 0), at(0, 0), at(0, 0), at(0, 0), at(0, 0), at(0, 0), at(12, 0), at(0, 0),
                            at(6, 0)}}),
    [](const auto& clocks) { return clocks.param.name; });

// Summer time makes a day shorter or longer, and it has fewer or more quarter hours.
TEST_F(HistoryTest, KeepsNinetyTwoIntervalsOnASpringDay) {
  setZone(kCentralEurope);
  uint32_t n = 0;
  for (const time_t boundary : quarters(kSpringDay, 92)) {
    endQuarterHour(boundary, ++n);
  }
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 92);
  EXPECT_EQ(previous(0, 1).intervalNumber, 96U);
  EXPECT_EQ(previous(0, 91).intervalNumber, 2U);
  EXPECT_STREQ(previous(0, 84).timestampString, "2024-03-31T03:00:00+CEST");
  EXPECT_EQ(previous(0, 84).intervalNumber, 13U);
  EXPECT_EQ(previous(0, 85).intervalNumber, 8U);
  endQuarterHour(kSpringDay + 92 * kQuarter, ++n);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 1);
  EXPECT_EQ(previousDay(0, 1).neCounters.linePerformanceCounters.LOS, 92U);
  EXPECT_EQ(previousDay(0, 1).collectionTime, 91U * 900U);
}

TEST_F(HistoryTest, KeepsTheLastNinetySixIntervalsOfAnAutumnDay) {
  setZone(kCentralEurope);
  uint32_t n = 0;
  for (const time_t boundary : quarters(kAutumnDay, 100)) {
    endQuarterHour(boundary, ++n);
  }
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 96);
  EXPECT_EQ(previous(0, 1).intervalNumber, 96U);
  EXPECT_EQ(previous(0, 88).intervalNumber, 9U) << "02:00 for the second time";
  EXPECT_EQ(previous(0, 92).intervalNumber, 9U) << "and for the first";
  endQuarterHour(kAutumnDay + 100 * kQuarter, ++n);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 1);
  EXPECT_EQ(previousDay(0, 1).neCounters.linePerformanceCounters.LOS, 96U)
      << "only the intervals that were kept are summed";
}

}  // namespace
