// A chip's analogue front end between converters and pair: what it adds to a signal, going out and coming in.
//
// Levels are in units of the nominal one, which is +4 dBm on the pair and a root mean square of 4096 steps in
// the converters. Both ways a signal x becomes x + a2 x^2 + a3 x^3: of a multicarrier signal at nominal
// level, the third-order products lie `distortion_db` below it together, the second-order ones 10 dB further.
#pragma once

#include <cstdint>
#include <random>
#include <span>
#include <vector>

namespace gfast::board {

class FrontEnd {
 public:
  FrontEnd(double distortion_db, uint32_t seed);

  // What leaves the chip.
  std::vector<double> send(std::span<const int16_t> samples) const;

  // What the chip's converter makes of what arrives: with the background's noise and its own, amplified in
  // steps of 1 dB to the nominal level or as far as peaks and its range allow.
  std::vector<int16_t> receive(std::vector<double> signal, double background_dbm_hz);

 private:
  double distorted(double x) const { return x + second_ * x * x + third_ * x * x * x; }
  double gaussian();

  double second_;
  double third_;
  std::mt19937 random_;
};

}  // namespace gfast::board
