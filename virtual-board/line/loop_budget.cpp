#include "virtual-board/line/loop_budget.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "virtual-board/base/decibels.h"
#include "virtual-board/line/line_noise.h"

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
    : config_(config),
      seed_(seed),
      conditions_(conditionsAt(config_.faults, 0)),
      cable_(config_, conditions_) {}

bool Loop::passTo(double now) {
  LineConditions then = conditionsAt(config_.faults, now);
  if (then == conditions_) {
    return false;
  }
  const auto copper = [](const LineConditions& conditions) {
    LineConditions kept;
    std::copy_if(conditions.begin(), conditions.end(), std::back_inserter(kept),
                 [](const PresentFault& present) { return isCopper(*present.fault); });
    return kept;
  };
  const bool sameCopper = copper(then) == copper(conditions_);
  conditions_ = std::move(then);
  if (!sameCopper) {
    cable_ = Cable(config_, conditions_);
    gains_.clear();
  }
  for (Noise& noise : noise_) {
    noise = {};
  }
  return true;
}

size_t Loop::vectoredNeighbours() const {
  return static_cast<size_t>(
      std::count_if(conditions_.begin(), conditions_.end(), [](const PresentFault& present) {
        return present.fault->kind == LineFault::Kind::kCrosstalk && present.fault->vectored;
      }));
}

bool Loop::heard(const TonePlan& plan) const {
  return heard(plan.downstream, 1 - plan.networkEnd, plan.vectoring) &&
         heard(plan.upstream, plan.networkEnd, plan.vectoring);
}

bool Loop::heard(const DirectionPlan& plan, size_t receiver, bool vectoring) const {
  const NoiseScene scene{config_, cable_, conditions_, vectoring};
  double sum_db = 0;
  uint32_t tones = 0;
  for (uint32_t tone = 0; tone < kTones && tones < kHandshakeTones; tone++) {
    if (plan.medley.test(tone)) {
      const double frequency_hz = tone * kSubcarrierSpacing_hz;
      sum_db += plan.sent_dbm_hz[tone] - loss_db(frequency_hz) -
                powerDecibels(noiseAtEnds(scene, frequency_hz)[receiver]);
      tones++;
    }
  }
  return tones == kHandshakeTones && sum_db / tones >= kHandshakeSnr_db;
}

double Loop::loss_db(double frequency_hz) const {
  return -amplitudeDecibels(std::abs(cable_.insertionGain(frequency_hz)));
}

double Loop::electricalLength_db(bool networkEnd) const {
  return loss_db(kElectricalLength_hz) + receiverOf(networkEnd).loss_db;
}

bool Loop::soonEnough() const {
  return 2 * cable_.delay_s() <= kMostRoundTrip_s;
}

Path Loop::path(size_t receiver, bool vectoring) {
  if (gains_.empty()) {
    gains_.resize(kTones);
    for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
      gains_[tone] = cable_.insertionGain(tone * kSubcarrierSpacing_hz);
    }
  }
  Noise& noise = noise_[vectoring ? 1 : 0];
  if (noise[0].empty()) {
    const NoiseScene scene{config_, cable_, conditions_, vectoring};
    noise[0].resize(kTones);
    noise[1].resize(kTones);
    for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
      const auto ends = noiseAtEnds(scene, tone * kSubcarrierSpacing_hz);
      noise[0][tone] = ends[0];
      noise[1][tone] = ends[1];
    }
  }
  return {gains_, noise[receiver]};
}

DirectionBudget Loop::directionBudget(const TonePlan& plan, const DirectionPlan& direction, size_t receiver) {
  DirectionBudget budget;
  const Receiver& traits = receiverOf(receiver == plan.networkEnd);
  const auto spectrum =
      std::make_shared<const LineSpectrum>(lineSpectrum(path(receiver, plan.vectoring), direction, traits));
  const auto loading = std::make_shared<const ToneLoading>(toneLoading(*spectrum, direction));
  StreamFraming& framing = budget.framing;
  framing.frameSymbols = plan.frameSymbols;
  framing.symbolsPerFrame = direction.symbols;
  framing.dtu = direction.dtu;
  framing.seamlessRateAdaptation = direction.seamlessRateAdaptation;
  framing.fastRateAdaptation = direction.fastRateAdaptation;
  budget.electricalLength = tenthsOf(electricalLength_db(receiver == plan.networkEnd));
  budget.loading = loading;
  budget.measured(spectrum, direction);
  return budget;
}

void DirectionBudget::measured(std::shared_ptr<const LineSpectrum> now, const DirectionPlan& plan) {
  spectrum = std::move(now);
  load(loading, plan);
}

void DirectionBudget::load(std::shared_ptr<const ToneLoading> other, const DirectionPlan& plan) {
  loading = std::move(other);
  framing.bytesPerSymbol = loading->bytesPerSymbol;
  framing.bytesPerRmcSymbol = loading->bytesPerRmcSymbol;
  state = loadingState(*spectrum, plan, *loading);
  StreamFraming attainable = framing;
  attainable.bytesPerSymbol = state.attainableBytes;
  attainable.bytesPerRmcSymbol = state.attainableRmcBytes;
  attainable_kbps = streamRates(attainable).net;
  powerSent = signedTenthsOf(spectrum->powerSent_dbm);
  powerReceived = signedTenthsOf(spectrum->powerReceived_dbm);
}

LoopBudget Loop::budget(const TonePlan& plan) {
  LoopBudget budget;
  budget.plan = std::make_shared<const TonePlan>(plan);
  budget.downstream = directionBudget(plan, plan.downstream, 1 - plan.networkEnd);
  budget.upstream = directionBudget(plan, plan.upstream, plan.networkEnd);
  budget.heard = heard(plan);
  budget.trainable = budget.heard && soonEnough() && carriesEnough(budget.downstream, budget.upstream);
  budget.length_m = config_.length_m;
  budget.binderSeed = seed_;
  return budget;
}

void Loop::measure(LoopBudget& budget) {
  const TonePlan& plan = *budget.plan;
  const auto again = [&](DirectionBudget& direction, const DirectionPlan& own, size_t receiver) {
    const Receiver& traits = receiverOf(receiver == plan.networkEnd);
    direction.measured(
        std::make_shared<const LineSpectrum>(lineSpectrum(path(receiver, plan.vectoring), own, traits)), own);
  };
  again(budget.downstream, plan.downstream, 1 - plan.networkEnd);
  again(budget.upstream, plan.upstream, plan.networkEnd);
}

std::array<ErrorRates, 2> Loop::impulses(const LoopBudget& budget) {
  const TonePlan& plan = *budget.plan;
  std::array<ErrorRates, 2> rates;
  for (const auto& [fault, share] : conditions_) {
    if (fault->kind != LineFault::Kind::kImpulse) {
      continue;
    }
    for (size_t receiver = 0; receiver < rates.size(); receiver++) {
      const bool upstream = receiver == plan.networkEnd;
      const DirectionBudget& direction = upstream ? budget.upstream : budget.downstream;
      Path hit = path(receiver, plan.vectoring);
      for (uint32_t tone = kFirstTone; tone <= kLastTone; tone++) {
        hit.noise_mw_hz[tone] += impulseAtEnds(cable_, *fault, tone * kSubcarrierSpacing_hz)[receiver];
      }
      const DirectionPlan& own = upstream ? plan.upstream : plan.downstream;
      const LineSpectrum spectrum = lineSpectrum(hit, own, receiverOf(upstream));
      rates[1 - receiver].add(impulseErrors(*fault, corruptedShare(spectrum, *direction.loading, own.dtu)));
    }
  }
  return rates;
}

double Loop::arrivingLoss_db(const TonePlan& plan) const {
  double sum_db = 0;
  uint32_t tones = 0;
  for (uint32_t tone = 0; tone < kTones && tones < kHandshakeTones; tone++) {
    if (plan.downstream.medley.test(tone)) {
      sum_db += loss_db(tone * kSubcarrierSpacing_hz);
      tones++;
    }
  }
  return sum_db / std::max(tones, 1U);
}

}  // namespace gfast::board
