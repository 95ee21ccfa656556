#include "virtual-board/line/line_noise.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "virtual-board/base/decibels.h"
#include "virtual-board/base/line_framing.h"

namespace gfast::board {

namespace {

using Ends = std::array<double, 2>;

// How far a good pair keeps from between its wires what both of them hear.
constexpr double kBalance_db = 60;
constexpr double kCommonModeImpedance_ohm = 150;
// Crosstalk of n lines (the usual models, ANSI T1.417): near end kNext f^1.5 n^0.6, far end kFextPerMetre f^2
// n^0.6 a metre, less what the line loses.
constexpr double kNext = 8.536e-15;
constexpr double kFextPerMetre = 7.74e-21 * 3.28;
constexpr double kLinesExponent = 0.6;
// How far a group of lines that is vectored cancels its own.
constexpr double kCancellation_db = 45;
// A supply is weaker by so much between its harmonics, and falls above this frequency by the square.
constexpr double kBetweenHarmonics_db = 20;
constexpr double kSupplyCorner_hz = 1e6;

void add(Ends& sum, const Ends& more, double factor) {
  for (size_t end = 0; end < sum.size(); end++) {
    sum[end] += factor * more[end];
  }
}

// Straight in dB between the points of a shape; 0 outside.
double levelOf(const LineFault::Shape& shape, double mhz) {
  for (size_t i = 0; i + 1 < shape.size(); i++) {
    const auto& [from, low] = shape[i];
    const auto& [to, high] = shape[i + 1];
    if (mhz >= from && mhz <= to) {
      return powerRatio(to > from ? low + (mhz - from) * (high - low) / (to - from) : high);
    }
  }
  return 0;
}

double wideBand(const LineFault& noise, double frequency_hz) {
  return noise.shape.empty() ? powerRatio(noise.level_dbm_hz) : levelOf(noise.shape, frequency_hz / 1e6);
}

// A station as a receiver sees it that cuts its symbols off sharply: each subcarrier hears its own part, and
// the further ones hear the rest of it with the square of the distance.
double station(const LineFault& radio, double frequency_hz) {
  const double level = powerRatio(radio.level_dbm_hz);
  const double from_edge =
      std::max(0.0, std::abs(frequency_hz - radio.frequency_hz) - radio.width_hz / 2) / kSubcarrierSpacing_hz;
  const double away = std::numbers::pi * std::max(0.0, from_edge - 0.5);
  return level * std::min(1.0, radio.width_hz / kSubcarrierSpacing_hz) / (1 + away * away);
}

// The harmonics are as wide as a subcarrier.
double supply(const LineFault& fault, double frequency_hz) {
  const double corner = std::max(frequency_hz, kSupplyCorner_hz) / kSupplyCorner_hz;
  const double level = powerRatio(fault.level_dbm_hz) / (corner * corner);
  const double harmonic = std::round(frequency_hz / fault.frequency_hz) * fault.frequency_hz;
  const bool near = std::abs(frequency_hz - harmonic) <= kSubcarrierSpacing_hz / 2;
  return near ? level : level * powerRatio(-kBetweenHarmonics_db);
}

// The share of what both wires hear alike that a joint in one of them brings between them.
double conversion(const LineFault& joint, double frequency_hz) {
  const auto impedance = Cable::jointImpedance(joint, frequency_hz);
  return std::norm(impedance / (impedance + 4 * kCommonModeImpedance_ohm));
}

// Every station is heard at its own place through the pair's usual balance, and at every place where the
// wires differ.
void addRadio(Ends& sum, const NoiseScene& scene, const LineFault& radio, double frequency_hz) {
  const double level = station(radio, frequency_hz);
  add(sum, scene.cable.noiseGains(frequency_hz, radio.at_m), level * powerRatio(-kBalance_db));
  for (const auto& [fault, share] : scene.conditions) {
    if (fault->kind == LineFault::Kind::kImbalance) {
      add(sum, scene.cable.noiseGains(frequency_hz, fault->at_m), level * powerRatio(-fault->balance_db));
    } else if (fault->kind == LineFault::Kind::kJoint && fault->oneWire) {
      add(sum, scene.cable.noiseGains(frequency_hz, fault->at_m), level * conversion(*fault, frequency_hz));
    }
  }
}

// Lines of the own group keep the same frame, so that only their far ends are heard. Others are heard at the
// near end too: their signal has come to the shared stretch as ours leaves it.
void addCrosstalk(Ends& sum, const NoiseScene& scene, const LineFault& fault, double frequency_hz) {
  if (frequency_hz > fault.last_hz) {
    return;
  }
  const double sent = powerRatio(fault.level_dbm_hz) * std::pow(fault.lines, kLinesExponent);
  const double shared_m = std::clamp(scene.loop.length_m - fault.at_m, 0.0, fault.length_m);
  const double cancelled = fault.vectored && scene.vectoring ? powerRatio(-kCancellation_db) : 1;
  const double far = sent * kFextPerMetre * shared_m * frequency_hz * frequency_hz *
                     std::norm(scene.cable.insertionGain(frequency_hz)) * cancelled;
  add(sum, {1, 1}, far);
  if (!fault.vectored) {
    const double near = sent * kNext * frequency_hz * std::sqrt(frequency_hz);
    const double left = scene.cable.noiseGains(frequency_hz, fault.at_m)[0];
    const double right = scene.cable.noiseGains(frequency_hz, fault.at_m + shared_m)[1];
    add(sum, {left * left, right * right}, near);
  }
}

}  // namespace

std::array<double, 2> noiseAtEnds(const NoiseScene& scene, double frequency_hz) {
  const double background = powerRatio(scene.loop.noise_dbm_hz);
  Ends sum{background, background};
  for (const auto& [fault, share] : scene.conditions) {
    switch (fault->kind) {
      case LineFault::Kind::kNoise:
        add(sum, scene.cable.noiseGains(frequency_hz, fault->at_m), wideBand(*fault, frequency_hz));
        break;
      case LineFault::Kind::kSupply:
        add(sum, scene.cable.noiseGains(frequency_hz, fault->at_m), supply(*fault, frequency_hz));
        break;
      case LineFault::Kind::kRadio:
        addRadio(sum, scene, *fault, frequency_hz);
        break;
      case LineFault::Kind::kCrosstalk:
        addCrosstalk(sum, scene, *fault, frequency_hz);
        break;
      default:
        break;
    }
  }
  return sum;
}

std::array<double, 2> impulseAtEnds(const Cable& cable, const LineFault& impulse, double frequency_hz) {
  Ends sum{};
  add(sum, cable.noiseGains(frequency_hz, impulse.at_m), wideBand(impulse, frequency_hz));
  return sum;
}

}  // namespace gfast::board
