#include "virtual-board/line/loop_budget.h"

#include <algorithm>
#include <cmath>

#include "virtual-board/base/decibels.h"

namespace gfast::board {

namespace {

constexpr double kElectricalLength_hz = 1e6;
// Tones of the handshake, and the mean SNR that it needs.
constexpr uint32_t kHandshakeTones = 16;
constexpr double kHandshakeSnr_db = 15;
// A frame has a gap of one symbol between the directions. These chips allow so much of it for the way there
// and back.
constexpr double kMostRoundTrip_s = 4.7e-6;
// Showtime needs a management channel, and this net rate in both directions together.
constexpr size_t kFewestRmcTones = 32;
constexpr uint32_t kLeastNet_kbps = 10000;

uint32_t tenthsOf(double db) {
  return static_cast<uint32_t>(std::clamp(std::round(db * 10), 0.0, 65535.0));
}

int32_t signedTenthsOf(double db) {
  return static_cast<int32_t>(std::clamp(std::round(db * 10), -32768.0, 32767.0));
}

DirectionBudget directionBudget(const LineSpectrum& spectrum, const TonePlan& plan,
                                const DirectionPlan& direction) {
  DirectionBudget budget;
  const auto loading = std::make_shared<const ToneLoading>(toneLoading(spectrum, plan, direction));
  StreamFraming& framing = budget.framing;
  framing.frameSymbols = plan.frameSymbols;
  framing.symbolsPerFrame = direction.symbols;
  framing.bytesPerSymbol = loading->bytesPerSymbol;
  framing.bytesPerRmcSymbol = loading->bytesPerRmcSymbol;
  framing.seamlessRateAdaptation = direction.seamlessRateAdaptation;
  framing.fastRateAdaptation = direction.fastRateAdaptation;
  StreamFraming attainable = framing;
  attainable.bytesPerSymbol = loading->attainableBytes;
  attainable.bytesPerRmcSymbol = loading->attainableRmcBytes;
  budget.attainable_kbps = streamRates(attainable).net;
  budget.loading = loading;
  return budget;
}

bool carriesEnough(const DirectionBudget& downstream, const DirectionBudget& upstream) {
  const uint32_t net = streamRates(downstream.framing).net + streamRates(upstream.framing).net;
  return downstream.framing.bytesPerSymbol != 0 && upstream.framing.bytesPerSymbol != 0 &&
         downstream.loading->rmcTones.size() >= kFewestRmcTones &&
         upstream.loading->rmcTones.size() >= kFewestRmcTones && net >= kLeastNet_kbps;
}

}  // namespace

Loop::Loop(const LoopConfig& config, uint32_t seed)
    : cable_(config), length_m_(config.length_m), noise_dbm_hz_(config.noise_dbm_hz), seed_(seed) {}

bool Loop::heard(const TonePlan& plan) const {
  double sum_db = 0;
  uint32_t tones = 0;
  for (uint32_t tone = 0; tone < kTones && tones < kHandshakeTones; tone++) {
    if (plan.medley.test(tone)) {
      sum_db += plan.sent_dbm_hz[tone] - loss_db(tone * kSubcarrierSpacing_hz) - noise_dbm_hz_;
      tones++;
    }
  }
  return tones == kHandshakeTones && sum_db / tones >= kHandshakeSnr_db;
}

double Loop::loss_db(double frequency_hz) const {
  return -amplitudeDecibels(std::abs(cable_.insertionGain(frequency_hz)));
}

bool Loop::soonEnough() const {
  return 2 * cable_.delay_s() <= kMostRoundTrip_s;
}

const std::vector<std::complex<double>>& Loop::gains() {
  if (gains_.empty()) {
    gains_.resize(kTones);
    for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
      gains_[tone] = cable_.insertionGain(tone * kSubcarrierSpacing_hz);
    }
  }
  return gains_;
}

LoopBudget Loop::budget(const TonePlan& plan) {
  LoopBudget budget;
  const auto spectrum = std::make_shared<const LineSpectrum>(lineSpectrum(gains(), plan, noise_dbm_hz_));
  budget.plan = std::make_shared<const TonePlan>(plan);
  budget.spectrum = spectrum;
  budget.downstream = directionBudget(*spectrum, plan, plan.downstream);
  budget.upstream = directionBudget(*spectrum, plan, plan.upstream);
  budget.heard = heard(plan);
  budget.trainable = budget.heard && soonEnough() && carriesEnough(budget.downstream, budget.upstream);
  budget.length_m = length_m_;
  budget.electricalLength = tenthsOf(loss_db(kElectricalLength_hz));
  budget.powerSent = signedTenthsOf(spectrum->powerSent_dbm);
  budget.powerReceived = signedTenthsOf(spectrum->powerReceived_dbm);
  budget.binderSeed = seed_;
  return budget;
}

}  // namespace gfast::board
