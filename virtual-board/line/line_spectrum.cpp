#include "virtual-board/line/line_spectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "virtual-board/base/decibels.h"

namespace gfast::board {

namespace {

// The gap to the capacity at an error ratio of 1e-7, and what coding gains of it.
constexpr double kShannonGap_db = 9.8;
constexpr double kCodingGain_db = 5;

// The robust management channel (ITU-T G.9701): few bits a subcarrier, and more margin than data has.
constexpr uint32_t kMostRmcTones = 128;
constexpr uint32_t kFewestRmcBits = 2;
constexpr uint32_t kMostRmcBits = 6;
constexpr double kRmcMarginAbove_db = 3;

double capacity(double snr, double margin_db) {
  return std::log2(1 + snr / powerRatio(kShannonGap_db + margin_db - kCodingGain_db));
}

uint8_t wholeBits(double capacity, uint32_t most) {
  return static_cast<uint8_t>(std::clamp(std::floor(capacity), 0.0, static_cast<double>(most)));
}

// The margin of a subcarrier with this SNR and so many bits.
double margin_db(double snr, uint32_t bits) {
  return powerDecibels(snr) - (kShannonGap_db - kCodingGain_db) - powerDecibels(std::exp2(bits) - 1);
}

class LeastMargin {
 public:
  void add(double snr, uint32_t bits) {
    if (bits != 0) {
      least_db_ = std::min(least_db_, margin_db(snr, bits));
    }
  }
  // In 0.1 dB; 0 when no subcarrier was given.
  uint32_t tenths() const {
    constexpr double rounding = 1e-6;
    return std::isfinite(least_db_) ? static_cast<uint32_t>(std::max(0.0, least_db_ * 10 + rounding)) : 0;
  }

 private:
  double least_db_ = std::numeric_limits<double>::infinity();
};

// The noise energy of the noisiest subcarrier must fit 32 bits, and that of the best one must have enough
// steps; the steps are more important.
uint32_t snrScale(const LineSpectrum& spectrum, const TonePlan& plan) {
  constexpr double usual = 24;
  constexpr double fewestSteps = 64;
  double least = 1;
  double most = 1;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (plan.medley.test(tone)) {
      least = std::min(least, spectrum.snr[tone]);
      most = std::max(most, spectrum.snr[tone]);
    }
  }
  const double fine = std::log2(fewestSteps * most / kSnrWindow);
  const double fits = usual + std::log2(std::max(least, std::numeric_limits<double>::min()));
  return static_cast<uint32_t>(std::clamp(std::max(std::ceil(fine), std::floor(fits)), 0.0, usual));
}

// Loads the lowest subcarriers that carry enough, because a loop loses least there.
void loadRmc(ToneLoading& loading, const LineSpectrum& spectrum, const TonePlan& plan, double margin_db) {
  LeastMargin least;
  uint32_t bits = 0;
  for (uint32_t tone = 0; tone < kTones && loading.rmcTones.size() < kMostRmcTones; tone++) {
    const uint8_t most =
        wholeBits(capacity(spectrum.snr[tone], margin_db + kRmcMarginAbove_db), kMostRmcBits);
    if (!plan.medley.test(tone) || plan.pilots.test(tone) || most < kFewestRmcBits) {
      continue;
    }
    loading.rmcTones.push_back(static_cast<uint16_t>(tone));
    loading.rmcBits[tone] = most;
    bits += most;
    least.add(spectrum.snr[tone], most);
  }
  loading.rmcBytes = bits / 8;
  loading.rmcMargin = least.tenths();
}

}  // namespace

LineSpectrum lineSpectrum(const std::vector<std::complex<double>>& gains, const TonePlan& plan,
                          double noise_dbm_hz) {
  LineSpectrum spectrum;
  double sent_mw = 0;
  double received_mw = 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    spectrum.gain[tone] = gains[tone];
    spectrum.received_dbm_hz[tone] = noise_dbm_hz;
    if (!plan.medley.test(tone)) {
      continue;
    }
    // The gain of a very long loop may be 0, and its level must be finite.
    const double through = std::max(std::norm(gains[tone]), std::numeric_limits<double>::min());
    spectrum.received_dbm_hz[tone] = plan.sent_dbm_hz[tone] + powerDecibels(through);
    spectrum.snr[tone] = powerRatio(spectrum.received_dbm_hz[tone] - noise_dbm_hz);
    sent_mw += powerRatio(plan.sent_dbm_hz[tone]) * kSubcarrierSpacing_hz;
    received_mw += powerRatio(spectrum.received_dbm_hz[tone]) * kSubcarrierSpacing_hz;
  }
  spectrum.snrScale = snrScale(spectrum, plan);
  spectrum.powerSent_dbm = powerDecibels(std::max(sent_mw, std::numeric_limits<double>::min()));
  spectrum.powerReceived_dbm = powerDecibels(std::max(received_mw, std::numeric_limits<double>::min()));
  return spectrum;
}

ToneLoading toneLoading(const LineSpectrum& spectrum, const TonePlan& plan, const DirectionPlan& direction) {
  ToneLoading loading;
  const double target_db = direction.targetMargin / 10.0;
  loadRmc(loading, spectrum, plan, target_db);
  LeastMargin least;
  uint32_t bits = 0;
  uint32_t setAside = 0;
  double attainable = 0;
  double attainableSetAside = 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (!plan.medley.test(tone) || plan.pilots.test(tone)) {
      continue;
    }
    const double most = capacity(spectrum.snr[tone], target_db);
    loading.bits[tone] = wholeBits(most, direction.mostBits);
    least.add(spectrum.snr[tone], loading.bits[tone]);
    bits += loading.bits[tone];
    attainable += std::min<double>(most, kMostToneBits);
    if (loading.rmcBits[tone] != 0) {
      setAside += loading.bits[tone];
      attainableSetAside += std::min<double>(most, kMostToneBits);
    }
  }
  loading.bytesPerSymbol = bits / 8;
  loading.bytesPerRmcSymbol = (bits - setAside) / 8;
  loading.attainableBytes = static_cast<uint32_t>(attainable / 8);
  loading.attainableRmcBytes = static_cast<uint32_t>((attainable - attainableSetAside) / 8);
  loading.margin = least.tenths();
  return loading;
}

}  // namespace gfast::board
