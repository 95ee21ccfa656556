// The lowest rates and margins of each quarter hour, for a day.
#include "qvrcli/reading/day_figures.h"

#include <gtest/gtest.h>

using namespace gfast::console;

namespace {

constexpr time_t kQuarter = 900;
constexpr time_t kStart = 1000 * kQuarter;

LineReading with(std::optional<double> margin_db, std::optional<uint32_t> rate_kbps) {
  LineReading line;
  line.downstream.snrMargin_db = margin_db;
  line.upstream.netDataRate_kbps = rate_kbps;
  return line;
}

TEST(DayFigures, KeepTheLowestOfAQuarterHour) {
  DayFigures day;
  day.add(with(6.0, 500), kStart + 10);
  day.add(with(5.5, 700), kStart + 20);
  day.add(with(std::nullopt, std::nullopt), kStart + 30);
  day.add(with(7.0, 600), kStart + kQuarter);
  const auto all = day.all();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].start, kStart);
  EXPECT_EQ(all[0].downstream.snrMargin_db, 5.5);
  EXPECT_EQ(all[0].upstream.netDataRate_kbps, 500U);
  EXPECT_EQ(all[0].upstream.snrMargin_db, std::nullopt);
  EXPECT_EQ(all[1].downstream.snrMargin_db, 7.0);
}

TEST(DayFigures, HaveNoFiguresOfALineThatWasDown) {
  DayFigures day;
  day.add(with(std::nullopt, std::nullopt), kStart);
  ASSERT_EQ(day.all().size(), 1U);
  EXPECT_FALSE(day.all()[0].downstream.netDataRate_kbps);
}

TEST(DayFigures, AreOfOneDay) {
  DayFigures day;
  for (int quarter = 0; quarter < 100; quarter++) {
    day.add(with(quarter, 1), kStart + quarter * kQuarter);
  }
  const auto all = day.all();
  EXPECT_EQ(all.size(), kQuarterHoursOfDay);
  EXPECT_EQ(all.front().start, kStart + 4 * kQuarter);
  EXPECT_EQ(all.back().downstream.snrMargin_db, 99);
}

}  // namespace
