// A chip's analogue front end, between converters and pair: noise, gain and distortion.
//
// Signals are relative to the nominal level, which is +4 dBm on the pair and a root mean square of 4096 steps
// in the converters. In both directions a signal x becomes x + a2 x^2 + a3 x^3. For a multicarrier signal at
// nominal level, the power of all third-order products relative to the signal is `distortion_db`, that of all
// second-order products 10 dB lower.
#pragma once

#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "virtual-board/base/receiver.h"

namespace gfast::board {

class FrontEnd {
 public:
  FrontEnd(double distortion_db, uint32_t seed);

  // The signal on the pair.
  std::vector<double> send(std::span<const int16_t> samples) const;

  // The samples of a received signal: with the receiver's loss and the noise of background and receiver,
  // amplified in steps of 1 dB to the nominal level, or less if peaks or the range of the gain forbid it.
  std::vector<int16_t> receive(std::vector<double> signal, double background_dbm_hz,
                               const Receiver& receiver);

 private:
  double distorted(double x) const { return x + second_ * x * x + third_ * x * x * x; }
  double gaussian();

  double second_;
  double third_;
  std::mt19937 random_;
};

}  // namespace gfast::board
