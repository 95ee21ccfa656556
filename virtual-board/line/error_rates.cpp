#include "virtual-board/line/error_rates.h"

#include <algorithm>
#include <cmath>

#include "virtual-board/base/decibels.h"
#include "virtual-board/base/line_framing.h"

namespace gfast::board {

namespace {

constexpr double kShannonGap_db = 9.8;
// A unit is sent again for this time at most (a maximum delay of 10 ms less the way there and back).
constexpr double kRetransmission_s = 0.008;
// Below this share a line counts as healthy.
constexpr double kNegligible = 1e-7;

// How often a symbol of quadrature amplitude modulation is wrong whose SNR is so far above the gap.
double symbolErrors(double margin_db) {
  return 2 * std::erfc(std::sqrt(1.5 * powerRatio(kShannonGap_db + margin_db)));
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

// One that lasts longer than units are sent again corrupts some of them each time. Those of a fast sequence
// meet the repeated units as often as the others.
ErrorRates impulseErrors(const LineFault& impulse, double corrupted) {
  constexpr double symbol_s = 1.0 / kSymbolRate_hz;
  const double outlasts = std::max(0.0, 1 - kRetransmission_s / std::max(impulse.length_s, symbol_s));
  if (impulse.rate_hz <= 0) {
    return {corrupted, outlasts * corrupted, false, false};
  }
  // Each impulse meets the symbols that it begins and ends in.
  const double met = std::min(1.0, impulse.rate_hz * (impulse.length_s + symbol_s));
  const double share = met * corrupted;
  return {share < kNegligible ? 0 : share, std::max(outlasts * corrupted, share * share), share >= kRmcLost,
          false};
}

}  // namespace gfast::board
