#include "virtual-board/line/line_fault.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace gfast::board {

namespace {

// Faults that grow and recede do so in steps of this time.
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

Micros wholeSteps(Micros time) {
  return time / kGrowthStep * kGrowthStep;
}

// For how long a fault has grown less how long it has receded, in whole steps; at most `grows_s`.
Micros growth(const LineFault& fault, Micros now) {
  const FaultTimes& times = fault.times;
  const Micros whole = micros(fault.grows_s);
  const Micros phase = phaseOf(times, now);
  if (!times.for_s) {
    return std::min(whole, wholeSteps(phase));
  }
  const Micros wet = micros(*times.for_s);
  // What is left of the times before, when it recedes for less time than it grows.
  Micros left = 0;
  if (const Micros period = micros(times.every_s.value_or(0)); period > 0) {
    const Micros more = wholeSteps(wet) - wholeSteps(period - wet);
    const Micros before = (now - micros(times.at_s)) / period;
    left = std::max<Micros>(0, std::min(before * more, whole - wholeSteps(period - wet)));
  }
  const Micros most = std::min(whole, left + wholeSteps(std::min(phase, wet)));
  return phase < wet ? most : std::max<Micros>(0, most - wholeSteps(phase - wet));
}

// How much of a fault's effect there is.
double shareOf(const LineFault& fault, double now) {
  const bool there = fault.times.there(now);
  if (fault.grows_s <= 0 || micros(now) < micros(fault.times.at_s)) {
    return there ? 1 : 0;
  }
  return seconds(growth(fault, micros(now))) / fault.grows_s;
}

// Steps are counted from the last time that the fault began or ended.
std::optional<double> nextStep(const LineFault& fault, double now) {
  if (fault.grows_s <= 0 || micros(now) < micros(fault.times.at_s)) {
    return std::nullopt;
  }
  const bool grows = fault.times.there(now);
  if (growth(fault, micros(now)) == (grows ? micros(fault.grows_s) : 0)) {
    return std::nullopt;
  }
  const Micros phase = phaseOf(fault.times, micros(now)) - (grows ? 0 : micros(*fault.times.for_s));
  return seconds(micros(now) - phase + wholeSteps(phase) + kGrowthStep);
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
    if (const double share = shareOf(fault, now); share > 0) {
      present.push_back({&fault, share});
    }
  }
  return present;
}

std::optional<double> nextConditions(const std::vector<LineFault>& faults, double now) {
  std::optional<double> earliest;
  for (const LineFault& fault : faults) {
    take(earliest, fault.times.nextChange(now));
    take(earliest, nextStep(fault, now));
  }
  return earliest;
}

bool isCopper(const LineFault& fault) {
  using Kind = LineFault::Kind;
  return fault.kind == Kind::kTap || fault.kind == Kind::kJoint || fault.kind == Kind::kSection ||
         fault.kind == Kind::kWater;
}

}  // namespace gfast::board
