// A copper pair as a filter: loss and phase by frequency.
//
// Line constants follow the reference model of ITU-T G.9701 (wire types). Each stretch of wire is a chain
// matrix, each bridged tap a shunt of admittance tanh(g*l)/Zc.
#pragma once

#include <complex>
#include <vector>

#include "virtual-board/line/loop_config.h"

namespace gfast::board {

// The constants of a type of wire.
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
  // An unknown name stands for the first wire type. A tap beyond an end is moved to that end.
  explicit Cable(const LoopConfig& loop);

  // Voltage at the receiver with the loop over voltage without it, between 100-ohm ends. A frequency below 1
  // Hz is taken as 1 Hz.
  std::complex<double> insertionGain(double frequency_hz) const;

  // From one end to the other, by the velocity of the wire.
  double delay_s() const;

 private:
  const WireType& wire_;
  const double length_m_;
  std::vector<BridgedTap> taps_;  // by place
};

}  // namespace gfast::board
