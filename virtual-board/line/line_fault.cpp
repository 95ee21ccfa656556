#include "virtual-board/line/line_fault.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace gfast::board {

namespace {

// Growing faults change in steps of this time.
constexpr double kGrowthStep_s = 10;

// Whole microseconds, so that a change and the moment at which it was announced are the same.
using Micros = int64_t;
constexpr double kMicros = 1e6;

Micros micros(double seconds) {
  return std::llround(seconds * kMicros);
}
double seconds(Micros time) {
  return static_cast<double>(time) / kMicros;
}

// Since it last began.
Micros phaseOf(const FaultTimes& times, Micros now) {
  const Micros since = now - micros(times.at_s);
  const Micros period = micros(times.every_s.value_or(0));
  return period > 0 ? since % period : since;
}

constexpr Micros kGrowthStep = static_cast<Micros>(kGrowthStep_s * kMicros);

// The whole steps that a fault has grown, as a share.
double grown(const LineFault& fault, double now) {
  if (fault.grows_s <= 0) {
    return 1;
  }
  const Micros steps = phaseOf(fault.times, micros(now)) / kGrowthStep;
  return std::min(1.0, static_cast<double>(steps) * kGrowthStep_s / fault.grows_s);
}

std::optional<double> nextGrowth(const LineFault& fault, double now) {
  if (fault.grows_s <= 0 || !fault.times.there(now) || grown(fault, now) >= 1) {
    return std::nullopt;
  }
  const Micros phase = phaseOf(fault.times, micros(now));
  return seconds(micros(now) - phase + (phase / kGrowthStep + 1) * kGrowthStep);
}

void take(std::optional<double>& earliest, std::optional<double> other) {
  if (other && (!earliest || *other < *earliest)) {
    earliest = other;
  }
}

}  // namespace

bool FaultTimes::there(double now) const {
  return micros(now) >= micros(at_s) && (!for_s || phaseOf(*this, micros(now)) < micros(*for_s));
}

std::optional<double> FaultTimes::nextChange(double now) const {
  const Micros time = micros(now);
  if (time < micros(at_s)) {
    return seconds(micros(at_s));
  }
  if (!for_s) {
    return std::nullopt;
  }
  const Micros begun = time - phaseOf(*this, time);
  if (begun + micros(*for_s) > time) {
    return seconds(begun + micros(*for_s));
  }
  return every_s ? std::optional(seconds(begun + micros(*every_s))) : std::nullopt;
}

LineConditions conditionsAt(const std::vector<LineFault>& faults, double now) {
  LineConditions present;
  for (const LineFault& fault : faults) {
    if (fault.times.there(now)) {
      present.push_back({&fault, grown(fault, now)});
    }
  }
  return present;
}

std::optional<double> nextConditions(const std::vector<LineFault>& faults, double now) {
  std::optional<double> earliest;
  for (const LineFault& fault : faults) {
    take(earliest, fault.times.nextChange(now));
    take(earliest, nextGrowth(fault, now));
  }
  return earliest;
}

bool isCopper(const LineFault& fault) {
  using Kind = LineFault::Kind;
  return fault.kind == Kind::kTap || fault.kind == Kind::kJoint || fault.kind == Kind::kSection ||
         fault.kind == Kind::kWater;
}

}  // namespace gfast::board
