// What is wrong with a line, and when.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace gfast::board {

// When something is there, in seconds since power-up.
struct FaultTimes {
  double at_s = 0;
  std::optional<double> for_s;    // empty: for good
  std::optional<double> every_s;  // begins again after this time

  bool there(double now) const;
  // When it comes or goes next, after `now`; empty: never.
  std::optional<double> nextChange(double now) const;
};

struct LineFault {
  enum class Kind {
    kTap,        // a bridged tap
    kJoint,      // a series impedance in one wire or in both
    kSection,    // a stretch of another cable
    kWater,      // a stretch that gets wet
    kNoise,      // noise between the wires
    kRadio,      // a station that both wires hear alike
    kImbalance,  // a place where the wires differ, so that the station is heard between them
    kCrosstalk,  // lines of the same cable
    kImpulse,    // short and strong noise, once or again and again
    kSupply      // a switching power supply at the place
  };
  // Noise levels by frequency: straight between the points, none outside.
  using Shape = std::vector<std::pair<double, double>>;  // MHz, dBm/Hz

  Kind kind{};
  FaultTimes times;
  double at_m = 0;  // from the end of device 0
  // ---- Copper ----
  double length_m = 0;          // of tap, section, wet or shared stretch
  std::string cable;            // of a section
  double ohm = 0;               // of a joint
  std::optional<double> farad;  // in parallel with it
  bool oneWire = false;         // the impedance is in one wire alone
  double grows_s = 0;           // until water has its full effect, and until it has none
  // ---- Noise ----
  double level_dbm_hz = 0;
  Shape shape;
  double frequency_hz = 0;  // of a station, or at which a supply switches
  double width_hz = 0;
  double balance_db = 0;
  double lines = 0;       // that disturb
  double last_hz = 0;     // up to which they send
  bool vectored = false;  // of this group of lines, so that crosstalk is cancelled
  double length_s = 0;    // of an impulse
  double rate_hz = 0;     // of impulses; 0: a single one
};

// A fault that is there, and how much of its effect it has: 1, or less while it grows or recedes.
struct PresentFault {
  const LineFault* fault;
  double share = 1;
  bool operator==(const PresentFault&) const = default;
};
// Those at one moment, in the order of the board file.
using LineConditions = std::vector<PresentFault>;

LineConditions conditionsAt(const std::vector<LineFault>& faults, double now);
// When they change next, after `now`.
std::optional<double> nextConditions(const std::vector<LineFault>& faults, double now);

// Whether the fault changes the copper. Otherwise it is noise.
bool isCopper(const LineFault& fault);

}  // namespace gfast::board
