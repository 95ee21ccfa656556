#include "virtual-board/measured/vector_coefficients.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "virtual-board/base/draw.h"

namespace gfast::board {

namespace {

// Amplitude between neighbours over 100 m at 106 MHz, on average. It does not grow beyond kLongest_m.
constexpr double kCoupling = 0.08;
constexpr double kReference_hz = 106e6;
constexpr double kReference_m = 100;
constexpr double kLongest_m = 400;
// The most that a coupling delays, because it is spread along the cable.
constexpr double kMostDelay_s = 50e-9;

// A number from 0 to 1.
double unit(uint64_t number) {
  return static_cast<double>(number >> 11) / static_cast<double>(uint64_t{1} << 53);
}

std::complex<double> coupling(const Binder& binder, VectorMatrix matrix, uint32_t i, uint32_t j,
                              double frequency_hz) {
  const uint64_t drawn = mix(mix(binder.seed) ^ (uint64_t{static_cast<uint32_t>(matrix)} << 16 | i << 8 | j));
  const uint32_t apart = i > j ? i - j : j - i;
  const double strength = kCoupling * (0.5 + unit(drawn)) * std::exp2(-static_cast<double>(apart - 1)) *
                          std::sqrt(std::min(binder.length_m, kLongest_m) / kReference_m) * frequency_hz /
                          kReference_hz;
  const double turns = unit(mix(drawn)) + unit(mix(drawn + 1)) * kMostDelay_s * frequency_hz;
  return std::polar(strength, -2 * std::numbers::pi * turns);
}

}  // namespace

std::complex<double> vectorCoefficient(const Binder& binder, VectorMatrix matrix, uint32_t i, uint32_t j,
                                       double frequency_hz) {
  if (i != j) {
    return -coupling(binder, matrix, i, j, frequency_hz);
  }
  double elsewhere = 0;
  for (uint32_t other = 0; other < kVectorUsers; other++) {
    elsewhere += other == i ? 0 : std::norm(coupling(binder, matrix, i, other, frequency_hz));
  }
  return std::sqrt(std::max(0.0, 1 - elsewhere));
}

}  // namespace gfast::board
