// The vectoring coefficients of a line among the sixteen pairs of its cable (ITU-T G.9701).
//
// What a pair couples into another grows with frequency and with the root of the length, and falls by half
// from one neighbour to the next; strength, phase and delay of each coupling are drawn from the cable's seed.
// The canceller and the precoder undo it: nearly the identity, with what is coupled elsewhere missing on the
// diagonal.
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
