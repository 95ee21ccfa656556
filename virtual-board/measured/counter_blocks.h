// The counter blocks of a chip, as it computes them when the host reads them: all from one view of the line,
// so that they agree with each other and with those of the other end.
#pragma once

#include <cstdint>
#include <span>

#include "virtual-board/base/address_space.h"
#include "virtual-board/line/line_insight.h"

namespace gfast::board {

// An area of chip memory, of the chip's only line.
struct CounterBlock {
  uint32_t address;
  uint32_t length;
  Bytes (*build)(const LineInsight&);
};
std::span<const CounterBlock> counterBlocks();

// What a modem tells the other end of its own: the management counters and the single PMD parameters, as on
// the wire.
Bytes managementCounters(const LineInsight& insight);
Bytes pmdTestParameters(const LineInsight& insight);

}  // namespace gfast::board
