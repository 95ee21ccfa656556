// What a receiver in showtime asks its transmitter for when the line has changed (ITU-T G.9701, on-line
// reconfiguration).
#pragma once

#include <cstdint>
#include <memory>

#include "virtual-board/line/loop_budget.h"
#include "virtual-board/line/stream_meter.h"

namespace gfast::board {

struct Adaptation {
  uint64_t StreamCounts::*kind = nullptr;  // how it is counted; null: nothing is asked for
  uint64_t exchanges = 0;
  std::shared_ptr<const ToneLoading> loading;

  explicit operator bool() const { return kind != nullptr; }
};

// A receiver looks at its margins so often, and asks for more bits when it could have had them for so long.
constexpr double kAdaptationPeriod_s = 1;
constexpr double kUpshiftTime_s = 8;

// Asks for the first of these that helps and is allowed:
//   - another loading of the RMC, when its margin is more than 1 dB below its target
//   - a fast rate adaptation, when many units are corrupted
//   - a bit swap, when the line carries its rate with other bits
//   - a seamless rate adaptation downwards, when the margin is more than 1 dB below the target
//   - a seamless rate adaptation upwards, when `quiet_s` is long enough and 1 dB of margin would remain
Adaptation adapt(const DirectionBudget& now, const DirectionPlan& plan, double corrupted, double quiet_s);

// Whether time alone will bring an upward adaptation.
bool mayRise(const DirectionBudget& now, const DirectionPlan& plan);

}  // namespace gfast::board
