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
  return heard(plan.downstream) && heard(plan.upstream);
}

bool Loop::heard(const DirectionPlan& plan) const {
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

const Path& Loop::path() {
  if (path_.gain.empty()) {
    path_.gain.resize(kTones);
    path_.noise_mw_hz.assign(kTones, powerRatio(noise_dbm_hz_));
    for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
      path_.gain[tone] = cable_.insertionGain(tone * kSubcarrierSpacing_hz);
    }
  }
  return path_;
}

DirectionBudget Loop::directionBudget(const DirectionPlan& plan, uint32_t frameSymbols,
                                      bool networkReceives) {
  DirectionBudget budget;
  const Receiver& receiver = receiverOf(networkReceives);
  const auto spectrum = std::make_shared<const LineSpectrum>(lineSpectrum(path(), plan, receiver));
  const auto loading = std::make_shared<const ToneLoading>(toneLoading(*spectrum, plan));
  budget.state = loadingState(*spectrum, plan, *loading);
  StreamFraming& framing = budget.framing;
  framing.frameSymbols = frameSymbols;
  framing.symbolsPerFrame = plan.symbols;
  framing.dtu = plan.dtu;
  framing.bytesPerSymbol = loading->bytesPerSymbol;
  framing.bytesPerRmcSymbol = loading->bytesPerRmcSymbol;
  framing.seamlessRateAdaptation = plan.seamlessRateAdaptation;
  framing.fastRateAdaptation = plan.fastRateAdaptation;
  StreamFraming attainable = framing;
  attainable.bytesPerSymbol = budget.state.attainableBytes;
  attainable.bytesPerRmcSymbol = budget.state.attainableRmcBytes;
  budget.attainable_kbps = streamRates(attainable).net;
  budget.powerSent = signedTenthsOf(spectrum->powerSent_dbm);
  budget.powerReceived = signedTenthsOf(spectrum->powerReceived_dbm);
  budget.electricalLength = tenthsOf(loss_db(kElectricalLength_hz) + receiver.loss_db);
  budget.loading = loading;
  budget.spectrum = spectrum;
  return budget;
}

LoopBudget Loop::budget(const TonePlan& plan) {
  LoopBudget budget;
  budget.plan = std::make_shared<const TonePlan>(plan);
  budget.downstream = directionBudget(plan.downstream, plan.frameSymbols, false);
  budget.upstream = directionBudget(plan.upstream, plan.frameSymbols, true);
  budget.heard = heard(plan);
  budget.trainable = budget.heard && soonEnough() && carriesEnough(budget.downstream, budget.upstream);
  budget.length_m = length_m_;
  budget.binderSeed = seed_;
  return budget;
}

}  // namespace gfast::board
