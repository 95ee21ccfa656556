#include "virtual-board/line/line_spectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "virtual-board/base/decibels.h"

namespace gfast::board {

namespace {

// What coding gains of the gap.
constexpr double kCodingGain_db = 5;

// The robust management channel (ITU-T G.9701): few bits a subcarrier, and more margin than data has.
constexpr uint32_t kMostRmcTones = 128;
constexpr uint32_t kFewestRmcBits = 2;
constexpr double kRmcMarginAbove_db = 3;

constexpr double kLeastPositive = std::numeric_limits<double>::min();

double capacity(double snr, double margin_db) {
  return std::log2(1 + snr / powerRatio(kShannonGap_db + margin_db - kCodingGain_db));
}

uint8_t wholeBits(double capacity, uint32_t most) {
  return static_cast<uint8_t>(std::clamp(std::floor(capacity), 0.0, static_cast<double>(most)));
}

double targetOf(const DirectionPlan& plan) {
  return (plan.targetMargin + plan.reserve) / 10.0;
}

class LeastMargin {
 public:
  void add(double snr, uint32_t bits) {
    if (bits != 0) {
      least_db_ = std::min(least_db_, marginOf(snr, bits));
    }
  }
  // In 0.1 dB; 0 when no subcarrier was given.
  int32_t tenths() const {
    constexpr double rounding = 1e-6;
    constexpr double least = -511;
    return std::isfinite(least_db_)
               ? static_cast<int32_t>(std::floor(std::max(least, least_db_ * 10) + rounding))
               : 0;
  }

 private:
  double least_db_ = std::numeric_limits<double>::infinity();
};

// The energy of the noisiest subcarrier fits 32 bits with the usual scale. Where the best one would have too
// few steps and the noisiest has room, the scale is finer.
uint32_t snrScale(const LineSpectrum& spectrum, const DirectionPlan& plan) {
  constexpr double usual = 24;
  constexpr double fewestSteps = 64;
  double least = std::numeric_limits<double>::infinity();
  double most = 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (plan.medley.test(tone)) {
      least = std::min(least, spectrum.snr[tone]);
      most = std::max(most, spectrum.snr[tone]);
    }
  }
  const double fine = std::ceil(std::log2(fewestSteps * (1 + most) / kSnrWindow));
  const double fits = std::isfinite(least) ? std::floor(usual + std::log2(1 + least)) : usual;
  return static_cast<uint32_t>(std::max(usual, std::min(fine, fits)));
}

// Loads the lowest subcarriers that carry enough, because a loop loses least there.
void loadRmc(ToneLoading& loading, const LineSpectrum& spectrum, const DirectionPlan& plan) {
  for (uint32_t tone = 0; tone < kTones && loading.rmcTones.size() < kMostRmcTones; tone++) {
    const uint8_t most =
        wholeBits(capacity(spectrum.snr[tone], targetOf(plan) + kRmcMarginAbove_db), plan.mostRmcBits);
    if (!plan.medley.test(tone) || plan.pilots.test(tone) || most < kFewestRmcBits) {
      continue;
    }
    loading.rmcTones.push_back(static_cast<uint16_t>(tone));
    loading.rmcBits[tone] = most;
  }
}

}  // namespace

double marginOf(double snr, uint32_t bits) {
  return powerDecibels(std::max(snr, kLeastPositive)) - (kShannonGap_db - kCodingGain_db) -
         powerDecibels(std::exp2(bits) - 1);
}

LineSpectrum lineSpectrum(const Path& path, const DirectionPlan& plan, const Receiver& receiver) {
  LineSpectrum spectrum;
  const double own_mw_hz = powerRatio(receiver.noise_dbm_hz);
  const double through = amplitudeRatio(-receiver.loss_db);
  double sent_mw = 0;
  double received_mw = 0;
  for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
    const double noise_mw_hz = path.noise_mw_hz[tone] + own_mw_hz;
    double signal_mw_hz = 0;
    spectrum.gain[tone] = path.gain[tone] * through;
    if (plan.medley.test(tone)) {
      const double level_mw_hz = powerRatio(plan.sent_dbm_hz[tone]);
      signal_mw_hz = level_mw_hz * std::norm(spectrum.gain[tone]);
      sent_mw += level_mw_hz * kSubcarrierSpacing_hz;
    }
    spectrum.snr[tone] = signal_mw_hz / noise_mw_hz;
    spectrum.received_dbm_hz[tone] = powerDecibels(signal_mw_hz + noise_mw_hz);
    received_mw += (signal_mw_hz + noise_mw_hz) * kSubcarrierSpacing_hz;
  }
  spectrum.snrScale = snrScale(spectrum, plan);
  spectrum.powerSent_dbm = powerDecibels(std::max(sent_mw, kLeastPositive));
  spectrum.powerReceived_dbm = powerDecibels(std::max(received_mw, kLeastPositive));
  return spectrum;
}

ToneLoading toneLoading(const LineSpectrum& spectrum, const DirectionPlan& plan, double above_db) {
  ToneLoading loading;
  loadRmc(loading, spectrum, plan);
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (plan.medley.test(tone) && !plan.pilots.test(tone)) {
      loading.bits[tone] = wholeBits(capacity(spectrum.snr[tone], targetOf(plan) + above_db), plan.mostBits);
    }
  }
  sumUp(loading);
  return loading;
}

void sumUp(ToneLoading& loading) {
  uint32_t bits = 0;
  uint32_t setAside = 0;
  uint32_t rmc = 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    bits += loading.bits[tone];
    rmc += loading.rmcBits[tone];
    setAside += loading.rmcBits[tone] != 0 ? loading.bits[tone] : 0U;
  }
  loading.bytesPerSymbol = bits / 8;
  loading.bytesPerRmcSymbol = (bits - setAside) / 8;
  loading.rmcBytes = rmc / 8;
}

LoadingState loadingState(const LineSpectrum& spectrum, const DirectionPlan& plan,
                          const ToneLoading& loading) {
  LeastMargin data;
  LeastMargin rmc;
  double attainable = 0;
  double setAside = 0;
  for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
    data.add(spectrum.snr[tone], loading.bits[tone]);
    rmc.add(spectrum.snr[tone], loading.rmcBits[tone]);
    if (plan.medley.test(tone) && !plan.pilots.test(tone)) {
      const double most = std::min<double>(capacity(spectrum.snr[tone], targetOf(plan)), kMostToneBits);
      attainable += most;
      setAside += loading.rmcBits[tone] != 0 ? most : 0;
    }
  }
  return {data.tenths(), rmc.tenths(), static_cast<uint32_t>(attainable / 8),
          static_cast<uint32_t>((attainable - setAside) / 8)};
}

}  // namespace gfast::board
