#include "virtual-board/measured/front_end.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "virtual-board/base/decibels.h"
#include "virtual-board/base/line_framing.h"

namespace gfast::board {

namespace {

constexpr double kNominalSteps = 4096;
constexpr double kNominal_dbm = 4;
// Power of the second-order products over that of the third-order ones, in a balanced circuit.
constexpr double kSecondOrder_db = -10;
// Range of the programmable gain, and the highest peak that it allows, relative to the nominal level.
constexpr double kLeastProgrammed_db = -12;
constexpr double kMostProgrammed_db = 60;
constexpr double kHighestPeak = 7;

// The gain that brings the signal to its nominal level, unless a peak would be too high.
double gainFor(std::span<const double> signal) {
  double energy = 0;
  double peak = 0;
  for (const double x : signal) {
    energy += x * x;
    peak = std::max(peak, std::abs(x));
  }
  const double rms = std::sqrt(energy / static_cast<double>(std::max<size_t>(signal.size(), 1)));
  const double wanted_db = -amplitudeDecibels(std::max(rms, peak / kHighestPeak));
  return std::sqrt(powerRatio(std::clamp(std::floor(wanted_db), kLeastProgrammed_db, kMostProgrammed_db)));
}

int16_t converted(double x) {
  constexpr double most = std::numeric_limits<int16_t>::max();
  return static_cast<int16_t>(std::lround(std::clamp(x * kNominalSteps, -most, most)));
}

}  // namespace

// For a Gaussian x of variance 1, the distortion has a power of 2 in x^2 and of 6 in x^3. The third-order
// term of a driver is negative: it compresses.
FrontEnd::FrontEnd(double distortion_db, uint32_t seed)
    : second_(std::sqrt(powerRatio(distortion_db + kSecondOrder_db) / 2)),
      third_(-std::sqrt(powerRatio(distortion_db) / 6)),
      random_(seed) {}

std::vector<double> FrontEnd::send(std::span<const int16_t> samples) const {
  std::vector<double> signal(samples.size());
  std::transform(samples.begin(), samples.end(), signal.begin(),
                 [this](int16_t sample) { return distorted(sample / kNominalSteps); });
  return signal;
}

std::vector<int16_t> FrontEnd::receive(std::vector<double> signal, double background_dbm_hz,
                                       const Receiver& receiver) {
  constexpr double bandwidth_hz = kSampleRate_hz / 2.0;
  const double noise = std::sqrt((powerRatio(background_dbm_hz) + powerRatio(receiver.noise_dbm_hz)) *
                                 bandwidth_hz / powerRatio(kNominal_dbm));
  const double through = amplitudeRatio(-receiver.loss_db);
  for (double& x : signal) {
    x = through * x + noise * gaussian();
  }
  const double gain = gainFor(signal);
  std::vector<int16_t> samples(signal.size());
  std::transform(signal.begin(), signal.end(), samples.begin(),
                 [this, gain](double x) { return converted(distorted(gain * x)); });
  return samples;
}

// Without std::normal_distribution, whose draws differ from one standard library to another.
double FrontEnd::gaussian() {
  constexpr double range = static_cast<double>(std::mt19937::max()) + 1;
  const double radius = std::sqrt(-2 * std::log((static_cast<double>(random_()) + 1) / range));
  return radius * std::cos(2 * std::numbers::pi * static_cast<double>(random_()) / range);
}

}  // namespace gfast::board
