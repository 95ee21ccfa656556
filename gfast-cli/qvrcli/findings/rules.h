// The rules behind findings.h. Each looks at a reading and adds what it finds.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "qvrcli/findings/findings.h"

namespace gfast::console {

using Levels = std::vector<std::optional<float>>;

struct Direction {
  const char* name;
  const DirectionReading& figures;
  const ToneDirection& tones;
};
using Directions = std::array<Direction, 2>;  // downstream, upstream

inline double megahertz(double tone) {
  return tone * kToneSpacing_hz / 1e6;
}

// The middle one; the table must not be empty.
inline double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// ---- channel_rules: of HLOG ----

// A bridged tap; when there is none, a loss that no length of a cable has.
void findTapOrLoss(const LineReading& line, const Directions& directions, std::vector<Finding>& findings);

// ---- noise_rules ----

// Radio stations, and noise over a wide band.
void findNoise(const LineReading& line, const Directions& directions, std::vector<Finding>& findings);

// ---- loading_rules: of the bits ----

// Bands that are kept silent and cost rate.
void findMasks(const LineReading& line, const Directions& directions, std::vector<Finding>& findings);

// Fewer bits than the SNR would carry.
void findUnusedSnr(const LineReading& line, const Directions& directions, std::vector<Finding>& findings);

// ---- counter_rules ----

// Errors that no measured noise explains.
void findImpulses(const LineReading& line, std::vector<Finding>& findings);

// Ends that announced that they lose power.
void findPowerLosses(const LineReading& line, std::vector<Finding>& findings);

}  // namespace gfast::console
