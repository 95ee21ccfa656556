// A copper pair as a filter: loss and phase by frequency, and what a noise at some place becomes at the ends.
//
// Line constants follow the reference model of ITU-T G.9701 (wire types). The pair is a chain of matrices:
// stretches of wire, bridged taps as shunts of admittance tanh(g*l)/Zc, joints as series impedances.
#pragma once

#include <array>
#include <complex>
#include <vector>

#include "virtual-board/line/line_fault.h"
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
  // An unknown name stands for the first wire type. What lies beyond an end is moved to that end. Of the
  // conditions, those that change the copper count.
  explicit Cable(const LoopConfig& loop, const LineConditions& conditions = {});

  // Voltage at the receiver with the loop over voltage without it, between 100-ohm ends. A frequency below 1
  // Hz is taken as 1 Hz.
  std::complex<double> insertionGain(double frequency_hz) const;

  // What a noise induced in the pair at this place is at either end: its power over that between two ends of
  // 100 ohm at the place itself.
  std::array<double, 2> noiseGains(double frequency_hz, double at_m) const;

  bool operator==(const Cable&) const = default;

  // From one end to the other, by the velocity of the wire.
  double delay_s() const;

  // The series impedance of a joint: its resistance, and the capacitance of the gap beside it.
  static std::complex<double> jointImpedance(const LineFault& joint, double frequency_hz);

 private:
  // A wire, and how wet it is (0 to 1).
  struct Medium {
    const WireType* wire;
    double wetness;
    bool operator==(const Medium&) const = default;
  };
  struct Element {
    enum class Kind { kStretch, kTap, kJoint } kind;
    double at_m;      // of a stretch: where it begins
    double length_m;  // of a stretch or a tap
    size_t medium;
    const LineFault* joint;
    bool operator==(const Element&) const = default;
  };
  struct Walk;

  void layStretches(const LineConditions& conditions);
  void place(const Element& element);
  size_t mediumOf(const Medium& medium);
  size_t mediumAt(double at_m, const LineConditions& conditions);

  const WireType* wire_;
  double length_m_;
  std::vector<Medium> media_;
  std::vector<Element> elements_;  // by place
};

}  // namespace gfast::board
