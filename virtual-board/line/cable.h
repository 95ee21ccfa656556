// A copper pair as a filter: what arrives of a wave, by frequency.
//
// Line constants after the reference model of ITU-T G.9701 (wire types), a chain matrix for each stretch of
// wire, and each bridged tap as a shunt of admittance tanh(g*l)/Zc where it branches off.
#pragma once

#include <complex>
#include <vector>

#include "virtual-board/line/loop_config.h"

namespace gfast::board {

// One stretch of wire.
struct WireType {
  const char* name;
  double z0_ohm;
  double velocity;  // share of c0
  double rs0;       // ohm/m at 0 Hz
  double ql, qh, qx, qy;
  double phi, fd_hz, qc;
};

class Cable {
 public:
  // A cable of unknown name counts as the first there is; taps beyond an end branch off there.
  explicit Cable(const LoopConfig& loop);

  // Voltage over the 100-ohm load behind 100 ohms, with the loop over that without it. Frequencies below 1 Hz
  // count as 1 Hz.
  std::complex<double> insertionGain(double frequency_hz) const;

  // From one end to the other.
  double delay_s() const;

 private:
  const WireType& wire_;
  const double length_m_;
  std::vector<BridgedTap> taps_;  // in order of their places
};

}  // namespace gfast::board
