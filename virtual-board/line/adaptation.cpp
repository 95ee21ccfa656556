#include "virtual-board/line/adaptation.h"

#include <algorithm>

namespace gfast::board {

namespace {

constexpr int32_t kDownshift = 10;   // 0.1 dB below the target
constexpr double kUpshift_db = 1;    // that remains above the target
constexpr double kRiseLeast = 1.02;  // of the bytes of a symbol: less is not worth an exchange
constexpr int32_t kRmcAbove = 30;    // the RMC's target above the data's, 0.1 dB
// From this share of corrupted units on the receiver does not wait.
constexpr double kFast = 0.01;
// Subcarriers that one exchange changes at most.
constexpr uint64_t kTonesInExchange = 128;

uint64_t changed(const ToneLoading& one, const ToneLoading& other) {
  uint64_t tones = 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    tones += one.bits[tone] != other.bits[tone] ? 1 : 0;
  }
  return tones;
}

Adaptation exchange(uint64_t StreamCounts::*kind, const ToneLoading& loading, uint64_t exchanges = 1) {
  return {kind, exchanges, std::make_shared<const ToneLoading>(loading)};
}

// These data bits beside the RMC that is in use.
ToneLoading besideRmc(ToneLoading loading, const ToneLoading& rmc) {
  loading.rmcTones = rmc.rmcTones;
  loading.rmcBits = rmc.rmcBits;
  sumUp(loading);
  return loading;
}

// As many bits as before, none of them beyond `best`, changed on as few subcarriers as possible.
ToneLoading swapped(const ToneLoading& before, const ToneLoading& best) {
  ToneLoading loading = before;
  uint32_t moved = 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (loading.bits[tone] > best.bits[tone]) {
      moved += loading.bits[tone] - best.bits[tone];
      loading.bits[tone] = best.bits[tone];
    }
  }
  for (uint32_t tone = 0; tone < kTones && moved > 0; tone++) {
    const auto room = static_cast<uint32_t>(best.bits[tone] - std::min(best.bits[tone], loading.bits[tone]));
    const uint32_t taken = std::min(room, moved);
    loading.bits[tone] = static_cast<uint8_t>(loading.bits[tone] + taken);
    moved -= taken;
  }
  sumUp(loading);
  return loading;
}

// The RMC anew, with the data as it is.
Adaptation otherRmc(const ToneLoading& now, const ToneLoading& best) {
  ToneLoading loading = now;
  loading.rmcTones = best.rmcTones;
  loading.rmcBits = best.rmcBits;
  sumUp(loading);
  return exchange(&StreamCounts::rmcParameterAdaptations, loading);
}

ToneLoading risen(const DirectionBudget& now, const DirectionPlan& plan) {
  return besideRmc(toneLoading(*now.spectrum, plan, kUpshift_db), *now.loading);
}

bool worthRising(const ToneLoading& now, const ToneLoading& risen) {
  return risen.bytesPerSymbol > now.bytesPerSymbol * kRiseLeast;
}

}  // namespace

Adaptation adapt(const DirectionBudget& now, const DirectionPlan& plan, double corrupted, double quiet_s) {
  const ToneLoading& loading = *now.loading;
  const auto target = static_cast<int32_t>(plan.targetMargin + plan.reserve);
  const ToneLoading best = besideRmc(toneLoading(*now.spectrum, plan), loading);
  if (now.state.rmcMargin < target + kRmcAbove - kDownshift) {
    const ToneLoading rmc = toneLoading(*now.spectrum, plan);
    if (!rmc.rmcTones.empty() && rmc.rmcBits != loading.rmcBits) {
      return otherRmc(loading, rmc);
    }
  }
  if (now.state.margin < target - kDownshift && best.bytesPerSymbol > 0) {
    if (corrupted >= kFast && plan.fastRateAdaptation) {
      return exchange(&StreamCounts::fastRateAdaptations, best);
    }
    if (best.bytesPerSymbol >= loading.bytesPerSymbol) {
      const ToneLoading other = swapped(loading, best);
      return exchange(&StreamCounts::bitSwaps, other,
                      (changed(loading, other) + kTonesInExchange - 1) / kTonesInExchange);
    }
    if (plan.seamlessRateAdaptation) {
      return exchange(&StreamCounts::seamlessRateAdaptations, best);
    }
    return {};
  }
  if (plan.seamlessRateAdaptation && quiet_s >= kUpshiftTime_s) {
    if (const ToneLoading more = risen(now, plan); worthRising(loading, more)) {
      return exchange(&StreamCounts::seamlessRateAdaptations, more);
    }
  }
  return {};
}

bool mayRise(const DirectionBudget& now, const DirectionPlan& plan) {
  return plan.seamlessRateAdaptation && worthRising(*now.loading, risen(now, plan));
}

}  // namespace gfast::board
