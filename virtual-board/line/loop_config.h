// The pair of wires between the two chips.
#pragma once

#include <string>
#include <vector>

#include "virtual-board/line/line_fault.h"
#include "virtual-board/line/spectrum_limits.h"

namespace gfast::board {

struct BridgedTap {
  double at_m;  // from the end of device 0
  double length_m;
};

struct LoopConfig {
  std::string cable = "CAD55";  // CAD55, CAT5, T05u, T05b or T05h
  double length_m = 100.0;
  double noise_dbm_hz = -140.0;
  std::vector<BridgedTap> taps;
  bool cut = false;
  std::vector<LineFault> faults{};
  SpectrumLimits limits{};
};

}  // namespace gfast::board
