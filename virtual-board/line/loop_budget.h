// What a loop allows: rates, margins and levels of a line. All are computed from the pair of wires,
// subcarrier by subcarrier. The pair is computed once, the rest once for each plan.
#pragma once

#include <cstdint>
#include <memory>

#include "virtual-board/base/line_framing.h"
#include "virtual-board/line/cable.h"
#include "virtual-board/line/line_spectrum.h"
#include "virtual-board/line/loop_config.h"
#include "virtual-board/line/tone_plan.h"

namespace gfast::board {

struct DirectionBudget {
  StreamFraming framing;
  uint32_t attainable_kbps = 0;  // net
  // 0.1 dBm
  int32_t powerSent = 0;
  int32_t powerReceived = 0;
  uint32_t electricalLength = 0;  // loss at 1 MHz as the receiver estimates it, 0.1 dB
  LoadingState state;
  std::shared_ptr<const LineSpectrum> spectrum;
  std::shared_ptr<const ToneLoading> loading;
};

struct LoopBudget {
  bool heard = false;      // the ends hear each other's handshake
  bool trainable = false;  // and the loop carries enough for showtime
  double length_m = 0;
  uint32_t binderSeed = 0;  // decides what the other pairs of the cable couple into this one
  std::shared_ptr<const TonePlan> plan;
  DirectionBudget downstream;
  DirectionBudget upstream;
};

class Loop {
 public:
  explicit Loop(const LoopConfig& config, uint32_t seed = 0);

  // Whether the lowest subcarriers of both directions have enough SNR for a handshake.
  bool heard(const TonePlan& plan) const;

  LoopBudget budget(const TonePlan& plan);

 private:
  double loss_db(double frequency_hz) const;
  bool heard(const DirectionPlan& plan) const;
  bool soonEnough() const;
  const Path& path();
  DirectionBudget directionBudget(const DirectionPlan& plan, uint32_t frameSymbols, bool networkReceives);

  const Cable cable_;
  const double length_m_;
  const double noise_dbm_hz_;
  const uint32_t seed_;
  Path path_;  // empty until the first budget
};

}  // namespace gfast::board
