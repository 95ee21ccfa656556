// What a loop lets through: the one place where a line's rates, margins and levels come from. All follow from
// the pair of wires subcarrier by subcarrier; the pair is computed once, the rest once for each plan.
#pragma once

#include <complex>
#include <cstdint>
#include <memory>
#include <vector>

#include "virtual-board/base/line_framing.h"
#include "virtual-board/line/cable.h"
#include "virtual-board/line/line_spectrum.h"
#include "virtual-board/line/loop_config.h"
#include "virtual-board/line/tone_plan.h"

namespace gfast::board {

struct DirectionBudget {
  StreamFraming framing;
  uint32_t attainable_kbps = 0;  // net
  std::shared_ptr<const ToneLoading> loading;
};

struct LoopBudget {
  bool heard = false;      // the ends understand each other's handshake
  bool trainable = false;  // and the loop carries enough to be worth a showtime
  double length_m = 0;
  uint32_t electricalLength = 0;  // loss at 1 MHz, 0.1 dB
  // 0.1 dBm, the same in both directions.
  int32_t powerSent = 0;
  int32_t powerReceived = 0;
  uint32_t binderSeed = 0;  // which cable it is: what the pairs beside it couple into it
  std::shared_ptr<const TonePlan> plan;
  std::shared_ptr<const LineSpectrum> spectrum;
  DirectionBudget downstream;
  DirectionBudget upstream;
};

class Loop {
 public:
  explicit Loop(const LoopConfig& config, uint32_t seed = 0);

  // Whether the lowest subcarriers of the plan arrive well enough for a handshake.
  bool heard(const TonePlan& plan) const;

  LoopBudget budget(const TonePlan& plan);

 private:
  double loss_db(double frequency_hz) const;
  bool soonEnough() const;
  const std::vector<std::complex<double>>& gains();

  const Cable cable_;
  const double length_m_;
  const double noise_dbm_hz_;
  const uint32_t seed_;
  std::vector<std::complex<double>> gains_;  // by subcarrier; empty until somebody asks
};

}  // namespace gfast::board
