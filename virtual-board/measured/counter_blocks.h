// The counter blocks of a chip. Each is computed when the host reads it, from the same view of the line, so
// that the blocks agree with each other and with those of the other end.
#pragma once

#include <cstdint>
#include <span>

#include "virtual-board/base/address_space.h"
#include "virtual-board/line/line_insight.h"

namespace gfast::board {

// An area of chip memory. A chip has one line.
struct CounterBlock {
  uint32_t address;
  uint32_t length;
  Bytes (*build)(const LineInsight&);
};
std::span<const CounterBlock> counterBlocks();

// What a modem sends to the other end about itself, as on the wire: management counters, and single PMD
// parameters.
Bytes managementCounters(const LineInsight& insight);
Bytes pmdTestParameters(const LineInsight& insight);

}  // namespace gfast::board
