#include "virtual-board/line/cable.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
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

// Wet insulation has more capacitance, and loses.
constexpr double kWetCapacitance = 0.5;  // more than dry, as a share
constexpr double kWetLoss = 0.03;        // tangent of the loss angle

LineConstants lineConstants(const WireType& wire, double wetness, double frequency_hz) {
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
  Complex shunt = jw * capacitance * ((1 - wire.qc) * std::pow(1.0 + jw / wd, -2 * wire.phi / pi) + wire.qc);
  if (wetness > 0) {
    shunt *= (1 + kWetCapacitance * wetness) * Complex(1, -kWetLoss * wetness);
  }
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

// In series in the pair.
Chain joint(Complex impedance) {
  return {1, impedance, 0, 1};
}

}  // namespace

// The product of a part of the chain, without the factor exp(-lost).
struct Cable::Walk {
  const Cable& cable;
  double frequency_hz;
  std::vector<LineConstants> constants;  // by medium
  Chain chain{};
  Complex lost = 0;

  Walk(const Cable& cable_, double frequency)
      : cable(cable_), frequency_hz(std::max(frequency, kLowestFrequency_hz)) {
    for (const Medium& medium : cable.media_) {
      constants.push_back(lineConstants(*medium.wire, medium.wetness, frequency_hz));
    }
  }

  void begin() {
    chain = {};
    lost = 0;
  }

  // Takes the part of an element that lies between these places.
  void take(const Element& element, double from_m, double to_m) {
    if (element.kind == Element::Kind::kStretch) {
      const LineConstants& line = constants[element.medium];
      const double begin_m = std::max(element.at_m, from_m);
      const double length_m = std::min(element.at_m + element.length_m, to_m) - begin_m;
      if (length_m > 0) {
        chain = chain * stretch(line, length_m);
        lost += line.propagation * length_m;
      }
    } else if (element.at_m >= from_m && element.at_m < to_m) {
      // A joint is of no medium: a cable without length has none.
      chain =
          chain * (element.kind == Element::Kind::kTap ? tap(constants[element.medium], element.length_m)
                                                       : joint(jointImpedance(*element.joint, frequency_hz)));
    }
  }

  void takeAll(double from_m, double to_m) {
    begin();
    for (const Element& element : cable.elements_) {
      take(element, from_m, to_m);
    }
  }
};

Cable::Cable(const LoopConfig& loop, const LineConditions& conditions)
    : wire_(&wireNamed(loop.cable)), length_m_(std::max(0.0, loop.length_m)) {
  layStretches(conditions);
  const auto within = [this](double at_m) { return std::clamp(at_m, 0.0, length_m_); };
  for (const BridgedTap& tap : loop.taps) {
    place({Element::Kind::kTap, within(tap.at_m), tap.length_m, mediumOf({wire_, 0}), nullptr});
  }
  for (const auto& [fault, share] : conditions) {
    if (fault->kind == LineFault::Kind::kTap) {
      place({Element::Kind::kTap, within(fault->at_m), fault->length_m, mediumOf({wire_, 0}), nullptr});
    } else if (fault->kind == LineFault::Kind::kJoint) {
      place({Element::Kind::kJoint, within(fault->at_m), 0, 0, fault});
    }
  }
}

// Cuts the loop where its wire or its wetness changes, and where something branches off.
void Cable::layStretches(const LineConditions& conditions) {
  std::vector<double> edges{0, length_m_};
  for (const auto& [fault, share] : conditions) {
    if (fault->kind == LineFault::Kind::kSection || fault->kind == LineFault::Kind::kWater) {
      edges.push_back(std::clamp(fault->at_m, 0.0, length_m_));
      edges.push_back(std::clamp(fault->at_m + fault->length_m, 0.0, length_m_));
    }
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  for (size_t i = 0; i + 1 < edges.size(); i++) {
    elements_.push_back({Element::Kind::kStretch, edges[i], edges[i + 1] - edges[i],
                         mediumAt((edges[i] + edges[i + 1]) / 2, conditions), nullptr});
  }
}

// Behind what begins before it; a stretch that goes on behind it is cut there.
void Cable::place(const Element& element) {
  for (size_t i = 0; i < elements_.size(); i++) {
    Element& stretch = elements_[i];
    const double end_m = stretch.at_m + stretch.length_m;
    if (stretch.kind == Element::Kind::kStretch && element.at_m > stretch.at_m && element.at_m < end_m) {
      Element rest = stretch;
      rest.at_m = element.at_m;
      rest.length_m = end_m - element.at_m;
      stretch.length_m = element.at_m - stretch.at_m;
      elements_.insert(elements_.begin() + static_cast<std::ptrdiff_t>(i) + 1, rest);
      break;
    }
  }
  const auto behind = std::find_if(elements_.begin(), elements_.end(), [&element](const Element& other) {
    return other.at_m > element.at_m || (other.kind == Element::Kind::kStretch && other.at_m == element.at_m);
  });
  elements_.insert(behind, element);
}

size_t Cable::mediumOf(const Medium& medium) {
  const auto found = std::find(media_.begin(), media_.end(), medium);
  if (found != media_.end()) {
    return static_cast<size_t>(found - media_.begin());
  }
  media_.push_back(medium);
  return media_.size() - 1;
}

size_t Cable::mediumAt(double at_m, const LineConditions& conditions) {
  Medium medium{wire_, 0};
  for (const auto& [fault, share] : conditions) {
    if (at_m < fault->at_m || at_m >= fault->at_m + fault->length_m) {
      continue;
    }
    if (fault->kind == LineFault::Kind::kSection) {
      medium.wire = &wireNamed(fault->cable);
    } else if (fault->kind == LineFault::Kind::kWater) {
      medium.wetness = std::max(medium.wetness, share);
    }
  }
  return mediumOf(medium);
}

std::complex<double> Cable::insertionGain(double frequency_hz) const {
  Walk walk(*this, frequency_hz);
  constexpr double everywhere = std::numeric_limits<double>::infinity();
  walk.takeAll(0, everywhere);
  const Chain& chain = walk.chain;
  const Complex ends = chain.a + chain.b / kTermination_ohm + chain.c * kTermination_ohm + chain.d;
  return 2.0 * std::exp(-walk.lost) / ends;
}

// The noise drives one current through both parts of the loop.
std::array<double, 2> Cable::noiseGains(double frequency_hz, double at_m) const {
  constexpr double r = kTermination_ohm;
  const double place_m = std::clamp(at_m, 0.0, length_m_);
  Walk left(*this, frequency_hz);
  Walk right = left;
  left.takeAll(0, place_m);
  right.takeAll(place_m, std::numeric_limits<double>::infinity());
  const Chain& l = left.chain;
  const Chain& n = right.chain;
  const Complex around = (l.d * r + l.b) / (l.c * r + l.a) + (n.a * r + n.b) / (n.c * r + n.d);
  return {std::norm(2.0 * std::exp(-left.lost) / (around * (l.c + l.a / r))),
          std::norm(2.0 * std::exp(-right.lost) / (around * (n.c + n.d / r)))};
}

double Cable::delay_s() const {
  double delay_s = 0;
  for (const Element& element : elements_) {
    if (element.kind == Element::Kind::kStretch) {
      const Medium& medium = media_[element.medium];
      delay_s += element.length_m / (medium.wire->velocity * kSpeedOfLight);
    }
  }
  return delay_s;
}

std::complex<double> Cable::jointImpedance(const LineFault& joint, double frequency_hz) {
  const Complex admittance(joint.ohm > 0 ? 1 / joint.ohm : 1e9,
                           2 * pi * frequency_hz * joint.farad.value_or(0));
  return 1.0 / admittance;
}

}  // namespace gfast::board
