// Random draws that are the same on every machine.
#pragma once

#include <cstdint>

namespace gfast::board {

// A pseudo-random number made from x (SplitMix64).
constexpr uint64_t mix(uint64_t x) {
  x += 0x9E3779B97F4A7C15U;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
  return x ^ (x >> 31);
}

}  // namespace gfast::board
