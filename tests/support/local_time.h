// Times of a day that a test chooses, and the zone they are local in.
#pragma once

#include <cstdlib>
#include <ctime>

constexpr time_t kMidnight = 1700006400;  // 2023-11-15 00:00:00 UTC
constexpr time_t kQuarter = 900;
constexpr time_t kDay = 86400;

constexpr time_t at(int hour, int minute, int second = 0) {
  return kMidnight + (hour * 60 + minute) * 60 + second;
}

inline void setZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}
