// Decibels of powers and of amplitudes.
#pragma once

#include <cmath>

namespace gfast::board {

// exp2 takes a third of pow's instructions.
constexpr double kLog2Of10 = 3.32192809488736234787;

inline double powerRatio(double db) {
  return std::exp2(db * (kLog2Of10 / 10));
}
inline double powerDecibels(double ratio) {
  return 10 * std::log10(ratio);
}

inline double amplitudeRatio(double db) {
  return std::exp2(db * (kLog2Of10 / 20));
}
inline double amplitudeDecibels(double ratio) {
  return 20 * std::log10(ratio);
}

}  // namespace gfast::board
