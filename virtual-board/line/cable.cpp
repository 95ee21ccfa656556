#include "virtual-board/line/cable.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

namespace gfast::board {

namespace {

using Complex = std::complex<double>;
using std::numbers::pi;

constexpr double kSpeedOfLight = 3e8;     // m/s
constexpr double kMu0 = 4 * pi * 1e-7;    // H/m
constexpr double kTermination_ohm = 100;  // at both ends
constexpr double kLowestFrequency_hz = 1;

constexpr WireType kWires[] = {
    {"CAD55", 105.0694, 0.6976, 0.1871, 1.5315, 0.7415, 1, 0, -0.2356, 1, 1.0016},
    {"CAT5", 98, 0.690464, 0.1659, 2.15, 0.85945, 0.5, 0.722636, 0.973846e-3, 1, 0},
    {"T05u", 125.636455, 0.729623, 0.18, 1.66605, 0.74, 0.848761, 1.207166, 1.762056e-3, 1, 0},
    {"T05b", 132.348256, 0.675449, 0.1705, 1.789725, 0.725776, 0.799306, 1.030832, 0.005222e-3, 1, 0},
    {"T05h", 98.369783, 0.681182, 0.1708, 1.7, 0.65, 0.777307, 1.5, 3.023930e-3, 1, 0},
};

const WireType& wireNamed(const std::string& name) {
  const auto* found = std::find_if(std::begin(kWires), std::end(kWires),
                                   [&name](const WireType& wire) { return name == wire.name; });
  return found == std::end(kWires) ? kWires[0] : *found;
}

// At one frequency.
struct LineConstants {
  Complex propagation;  // per metre
  Complex impedance;    // characteristic, ohm
};

LineConstants lineConstants(const WireType& wire, double frequency_hz) {
  const Complex jw(0, 2 * pi * frequency_hz);
  const double inductance = wire.z0_ohm / (wire.velocity * kSpeedOfLight);
  const double capacitance = 1 / (wire.z0_ohm * wire.velocity * kSpeedOfLight);
  const double qs = 1 / (wire.qh * wire.qh * wire.ql);
  const double ws = wire.qh * wire.qh * 4 * pi * wire.rs0 / kMu0;
  const double wd = 2 * pi * wire.fd_hz;
  const Complex skin = jw / ws * wire.qy;
  const Complex root = std::sqrt(qs * qs * wire.qx * wire.qx +
                                 2.0 * (jw / ws) * (qs * qs + skin) / (qs * qs / wire.qx + skin));
  const Complex series = jw * inductance + wire.rs0 * (1 - qs * wire.qx + root);
  const Complex shunt =
      jw * capacitance * ((1 - wire.qc) * std::pow(1.0 + jw / wd, -2 * wire.phi / pi) + wire.qc);
  return {std::sqrt(series * shunt), std::sqrt(series / shunt)};
}

// A chain matrix without the common factor exp(g*l), which overflows on a long loop.
struct Chain {
  Complex a = 1, b = 0, c = 0, d = 1;

  Chain operator*(const Chain& next) const {
    return {a * next.a + b * next.c, a * next.b + b * next.d, c * next.a + d * next.c,
            c * next.b + d * next.d};
  }
};

Chain stretch(const LineConstants& line, double length_m) {
  const Complex back = std::exp(-2.0 * line.propagation * length_m);
  const Complex cosh = (1.0 + back) / 2.0;
  const Complex sinh = (1.0 - back) / 2.0;
  return {cosh, line.impedance * sinh, sinh / line.impedance, cosh};
}

// A bridged tap, open at its far end.
Chain tap(const LineConstants& line, double length_m) {
  const Complex back = std::exp(-2.0 * line.propagation * length_m);
  return {1, 0, (1.0 - back) / (1.0 + back) / line.impedance, 1};
}

}  // namespace

Cable::Cable(const LoopConfig& loop)
    : wire_(wireNamed(loop.cable)), length_m_(std::max(0.0, loop.length_m)), taps_(loop.taps) {
  for (BridgedTap& tap : taps_) {
    tap.at_m = std::clamp(tap.at_m, 0.0, length_m_);
  }
  std::stable_sort(taps_.begin(), taps_.end(),
                   [](const BridgedTap& one, const BridgedTap& other) { return one.at_m < other.at_m; });
}

std::complex<double> Cable::insertionGain(double frequency_hz) const {
  const LineConstants line = lineConstants(wire_, std::max(frequency_hz, kLowestFrequency_hz));
  Chain chain;
  double done_m = 0;
  for (const BridgedTap& branch : taps_) {
    chain = chain * stretch(line, branch.at_m - done_m) * tap(line, branch.length_m);
    done_m = branch.at_m;
  }
  chain = chain * stretch(line, length_m_ - done_m);
  const Complex ends = chain.a + chain.b / kTermination_ohm + chain.c * kTermination_ohm + chain.d;
  return 2.0 * std::exp(-line.propagation * length_m_) / ends;
}

double Cable::delay_s() const {
  return length_m_ / (wire_.velocity * kSpeedOfLight);
}

}  // namespace gfast::board
