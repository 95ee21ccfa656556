// Where a chip's counter blocks lie.
#pragma once

#include <cstdint>

#include "chip/counter_records.h"

namespace gfast {

// Where the blocks lie; linkId is the line's index within its device.
constexpr uint32_t VIRT_GFAST_CNTR_FDU_CORE = 0;
constexpr uint32_t VIRT_GFAST_CNTR_FRAMER_CORE = 1;
constexpr uint32_t VIRT_GFAST_CNTR_CP_CORE = 2;
constexpr uint32_t VIRT_GFAST_CNTR_INIT = 0;
constexpr uint32_t VIRT_GFAST_CNTR_RAW = 1;
constexpr uint32_t VIRT_GFAST_CNTR_DERIVED = 2;

constexpr uint32_t VIRT_ADDR_GFAST_COUNTERS(uint32_t coreType, uint32_t linkId, uint32_t countersType) {
  return 0xE2000000U | (coreType << 22) | (linkId << 20) | (countersType << 18);
}
constexpr uint32_t VIRT_ADDR_ETR_DB(uint32_t linkId) {
  return (0xE5000000U | (linkId << 20)) + 0x2000U;
}
constexpr uint32_t VIRT_ADDR_15MIN_24HRS_COUNTERS(uint32_t linkId) {
  return 0xF0000000U | (linkId << 20);
}

}  // namespace gfast
