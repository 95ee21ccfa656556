// The vectoring coefficients of a line among the sixteen pairs of its cable (ITU-T G.9701).
//
// The coupling from one pair into another grows with frequency and with the square root of the length, and
// halves from one neighbour to the next. Strength, phase and delay of each coupling are drawn from the
// cable's seed. Canceller and precoder are nearly the identity: they subtract the couplings, and the diagonal
// is lower by their power.
#pragma once

#include <complex>
#include <cstdint>

namespace gfast::board {

constexpr uint32_t kVectorUsers = 16;

enum class VectorMatrix : uint32_t { kCanceller = 0, kPrecoder = 1 };

struct Binder {
  uint32_t seed = 0;
  double length_m = 0;
};

std::complex<double> vectorCoefficient(const Binder& binder, VectorMatrix matrix, uint32_t i, uint32_t j,
                                       double frequency_hz);

}  // namespace gfast::board
