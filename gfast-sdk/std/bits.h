// Small arithmetic that the whole library shares: bit fields described by a pair of constants, and counters
// that wrap.
#pragma once

#include <cstdint>

namespace gfast {

// The mask of a bit field named by the constants <name>_SIZE and <name>_OFFSET.
#define MASK(name) (((uint32_t{1} << name##_SIZE) - 1U) << name##_OFFSET)

// The distance from b to a on a 32-bit counter that may have wrapped in between; equal values are a full
// turn, which 32 bits show as 0.
constexpr uint32_t WA32bSUBTRACT(uint32_t a, uint32_t b) {
  return a > b ? a - b : (0xFFFFFFFFU - b + 1U) + a;
}

}  // namespace gfast
