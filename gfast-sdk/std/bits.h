// Small arithmetic that the whole library shares: bit fields described by a pair of constants, and counters
// that wrap.
#pragma once

#include <cstdint>

namespace gfast {

// The mask of a bit field named by the constants <name>_SIZE and <name>_OFFSET.
#define MASK(name) (((uint32_t{1} << name##_SIZE) - 1U) << name##_OFFSET)

// How far a 32-bit counter counted from b to a; it may have wrapped in between. 0 for equal values.
constexpr uint32_t WA32bSUBTRACT(uint32_t a, uint32_t b) {
  return a > b ? a - b : (0xFFFFFFFFU - b + 1U) + a;
}

}  // namespace gfast
