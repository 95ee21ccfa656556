// The states of a link as a chip reports them.
#pragma once

#include <cstdint>

namespace gfast::board {

// A nibble each (ITU-T G.9701).
enum class LineState : uint32_t {
  SelfTest = 0,
  UnitFail = 1,
  Idle = 2,
  Silent = 3,
  Handshake = 4,
  Training = 5,
  Showtime = 6,
  Deactivating1 = 7,
  Deactivating2 = 8,
  PreDeactivating1E = 9
};

}  // namespace gfast::board
