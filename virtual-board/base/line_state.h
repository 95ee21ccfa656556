// The link states that a chip reports.
#pragma once

#include <cstdint>

namespace gfast::board {

// Four bits in chip memory (ITU-T G.9701).
enum class LineState : uint32_t {
  kSelfTest = 0,
  kUnitFail = 1,
  kIdle = 2,
  kSilent = 3,
  kHandshake = 4,
  kTraining = 5,
  kShowtime = 6,
  kDeactivating1 = 7,
  kDeactivating2 = 8,
  kPreDeactivating1E = 9
};

}  // namespace gfast::board
