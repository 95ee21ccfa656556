// What a program here measured, as a row of ./bench, which works out the ratio and judges.
#pragma once

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

// The aim is one of
//   ">= 40"   the yardstick takes at least 40 times as much as ours
//   "<= 1.2"  ours takes at most 1.2 times as much as the yardstick
//   "< 2 ms"  ours alone is below 2, in the row's unit
inline void printRow(const std::string& name, double ours, double yardstick, const char* unit,
                     const char* aim) {
  std::printf("row\t%s\t%.6g\t%.6g\t%s\t%s\n", name.c_str(), ours, yardstick, unit, aim);
  std::fflush(stdout);
}

inline double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}
