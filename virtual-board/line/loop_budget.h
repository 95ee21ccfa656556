// What a loop allows: rates, margins and levels of a line. All are computed from the pair of wires,
// subcarrier by subcarrier. The pair is computed once, the rest once for each plan.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "virtual-board/base/line_framing.h"
#include "virtual-board/line/cable.h"
#include "virtual-board/line/error_rates.h"
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

  // The same loading as the receiver measures it now; another one on the same line.
  void measured(std::shared_ptr<const LineSpectrum> now, const DirectionPlan& plan);
  void load(std::shared_ptr<const ToneLoading> other, const DirectionPlan& plan);
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
  Loop(const Loop&) = delete;
  Loop& operator=(const Loop&) = delete;

  // From now on the loop is as it is at this time. Returns whether anything has changed.
  bool passTo(double now);
  // When it changes next, after `now`; empty: never.
  std::optional<double> nextChange(double now) const { return nextConditions(config_.faults, now); }
  // As it is now.
  const Cable& cable() const { return cable_; }

  // Groups of vectored lines that are there.
  size_t vectoredNeighbours() const;

  // Whether the lowest subcarriers of both directions have enough SNR for a handshake.
  bool heard(const TonePlan& plan) const;

  LoopBudget budget(const TonePlan& plan);

  // Measures again what a line in showtime has to spare. Its loading stays.
  void measure(LoopBudget& budget);

  // What the impulses that are there corrupt, by the end that sends.
  std::array<ErrorRates, 2> impulses(const LoopBudget& budget);

  // The loss at 1 MHz as an end's receiver estimates it.
  double electricalLength_db(bool networkEnd) const;
  const SpectrumLimits& limits() const { return config_.limits; }

  // Of the lowest subcarriers, on average.
  double arrivingLoss_db(const TonePlan& plan) const;

 private:
  using Gains = std::vector<std::complex<double>>;
  // By the end that hears it, by subcarrier.
  using Noise = std::array<std::vector<double>, 2>;

  double loss_db(double frequency_hz) const;
  bool heard(const DirectionPlan& plan, size_t receiver, bool vectoring) const;
  bool soonEnough() const;
  Path path(size_t receiver, bool vectoring);
  DirectionBudget directionBudget(const TonePlan& plan, const DirectionPlan& direction, size_t receiver);

  const LoopConfig config_;
  const uint32_t seed_;
  LineConditions conditions_;
  Cable cable_;
  Gains gains_;     // empty until they are needed, here and below
  Noise noise_[2];  // without and with vectoring
};

}  // namespace gfast::board
