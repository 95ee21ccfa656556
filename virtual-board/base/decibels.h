// Decibels of powers and of amplitudes.
#pragma once

#include <cmath>

namespace gfast::board {

inline double powerRatio(double db) {
  return std::pow(10, db / 10);
}
inline double powerDecibels(double ratio) {
  return 10 * std::log10(ratio);
}

inline double amplitudeRatio(double db) {
  return std::pow(10, db / 20);
}
inline double amplitudeDecibels(double ratio) {
  return 20 * std::log10(ratio);
}

}  // namespace gfast::board
