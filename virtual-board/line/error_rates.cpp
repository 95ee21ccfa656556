#include "virtual-board/line/error_rates.h"

#include <algorithm>
#include <cmath>

#include "virtual-board/base/decibels.h"
#include "virtual-board/base/line_framing.h"

namespace gfast::board {

namespace {

// When a corrupted unit is sent again, after it was sent first: of a maximum delay of 10 ms the way there and
// back takes 1.2 ms, and a repeat waits for its turn for up to one frame.
constexpr double kRepeats_s[] = {0.004, 0.008};
constexpr double kTurn_s = static_cast<double>(kSymbolsPerFrame) / kSymbolRate_hz;
constexpr double kSymbol_s = 1.0 / kSymbolRate_hz;
// Below this share a line counts as healthy.
constexpr double kNegligible = 1e-7;

// How often a symbol of quadrature amplitude modulation is wrong whose SNR is so far above the gap.
double symbolErrors(double margin_db) {
  return 2 * std::erfc(std::sqrt(1.5 * powerRatio(kShannonGap_db + margin_db)));
}

// Noise that is there from 0 to `length_s`, and so again after each period. 0: only once.
struct ImpulseTimes {
  double length_s;
  double period_s;
};

// How long there was noise from 0 to `until_s`.
double noisyTime(const ImpulseTimes& times, double until_s) {
  if (times.period_s <= 0) {
    return std::clamp(until_s, 0.0, times.length_s);
  }
  const double periods = std::floor(until_s / times.period_s);
  return periods * times.length_s + std::min(until_s - periods * times.period_s, times.length_s);
}

// The share of the units corrupted by impulses of which each repeat meets an impulse too.
double repeatedInVain(const ImpulseTimes& times, double corrupted) {
  constexpr int moments = 256;  // at which an impulse meets a unit
  double lost = 0;
  for (int i = 0; i < moments; i++) {
    const double met_s = times.length_s * (i + 0.5) / moments;
    double allMeet = 1;
    for (const double repeat_s : kRepeats_s) {
      const double earliest_s = met_s + repeat_s;
      allMeet *=
          corrupted * (noisyTime(times, earliest_s + kTurn_s) - noisyTime(times, earliest_s)) / kTurn_s;
    }
    lost += allMeet / moments;
  }
  return lost;
}

}  // namespace

void ErrorRates::add(const ErrorRates& other) {
  const double both = 1 - (1 - corrupted) * (1 - other.corrupted);
  if (both > 0) {
    lost = std::min(1.0, (corrupted * lost + other.corrupted * other.lost) / both);
  }
  corrupted = both;
  rmcLost = rmcLost || other.rmcLost;
  announced = announced || other.announced;
}

// A unit is lost for good when its retransmissions are corrupted too.
ErrorRates burstErrors(double share) {
  return {share, share * share, share >= kRmcLost, share > 0};
}

double corruptedShare(const LineSpectrum& spectrum, const ToneLoading& loading, const DtuFraming& dtu) {
  if (loading.bytesPerSymbol == 0) {
    return 0;
  }
  double errors = 0;
  for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
    if (loading.bits[tone] != 0) {
      errors += symbolErrors(marginOf(spectrum.snr[tone], loading.bits[tone]));
    }
  }
  const double share = 1 - std::exp(-errors * dtu.size() / loading.bytesPerSymbol);
  return share < kNegligible ? 0 : share;
}

ErrorRates lastingErrors(const LineSpectrum& spectrum, const ToneLoading& loading, const DtuFraming& dtu,
                         int32_t rmcMargin) {
  const double share = corruptedShare(spectrum, loading, dtu);
  return {share, share * share, rmcMargin < 0, false};
}

ErrorRates impulseErrors(const LineFault& impulse, double corrupted) {
  if (impulse.rate_hz <= 0) {
    return {corrupted, repeatedInVain({impulse.length_s, 0}, corrupted), false, false};
  }
  // Each impulse meets the symbols that it begins and ends in.
  const double period_s = 1 / impulse.rate_hz;
  const double length_s = std::min(impulse.length_s + kSymbol_s, period_s);
  const double share = length_s / period_s * corrupted;
  return {share < kNegligible ? 0 : share, repeatedInVain({length_s, period_s}, corrupted), share >= kRmcLost,
          false};
}

}  // namespace gfast::board
