// The noise that a line hears at its ends, by frequency.
#pragma once

#include <array>

#include "virtual-board/line/cable.h"
#include "virtual-board/line/line_fault.h"
#include "virtual-board/line/loop_config.h"

namespace gfast::board {

// What decides about the noise besides the loop itself.
struct NoiseScene {
  const LoopConfig& loop;
  const Cable& cable;  // as it is now
  const LineConditions& conditions;
  bool vectoring = false;  // crosstalk of the own group is cancelled
};

// mW/Hz at the end of device 0 and at that of device 1, receivers not included. Impulses do not count: they
// last too short for a measurement.
std::array<double, 2> noiseAtEnds(const NoiseScene& scene, double frequency_hz);

// The same for the time of one impulse alone.
std::array<double, 2> impulseAtEnds(const Cable& cable, const LineFault& impulse, double frequency_hz);

}  // namespace gfast::board
