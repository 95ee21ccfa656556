#include "loop_budget.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "line_framing.h"

namespace {

// Insertion loss of 100 m between 100-ohm ends at 50 MHz, after the reference model of ITU-T G.9701.
constexpr struct {
  const char* cable;
  double loss_db;
} kLosses[] = {{"CAD55", 16.7}, {"CAT5", 12.7}, {"T05u", 12.2}, {"T05b", 10.7}, {"T05h", 17.2}};
constexpr double kUsualNoise_dbm_hz = -140;
constexpr double kMetresPerDb = 100 / 16.7;

// Net rate of both directions together over metres of CAD55; in between, a straight line.
constexpr struct {
  double length_m;
  double net_mbps;
} kRates[] = {{0, 980}, {50, 860}, {100, 620}, {200, 260}, {300, 90}, {400, 25}, {450, 10}};
// The handshake uses the lowest tones and reaches further than data.
constexpr double kHeard_m = 900;
// Upstream loses a little to its shorter share of the frame.
constexpr double kUpstreamShare = 0.95;

// A short loop's symbols are full before its margin is used up: what is left above the target, 0.1 dB a
// metre.
constexpr double kTargetMargin = 60;
constexpr double kFullSymbols_m = 50;
// Of CAD55, in 0.1 dB a metre: its loss at 1 MHz, and the mean over the transmit spectrum.
constexpr double kLossAt1MHz = 0.18;
constexpr double kMeanLoss = 1.2;
constexpr int32_t kPowerSent = 40;

double cableLoss_db(const LoopConfig& loop) {
  const auto* found = std::find_if(std::begin(kLosses), std::end(kLosses),
                                   [&loop](const auto& entry) { return loop.cable == entry.cable; });
  return (found == std::end(kLosses) ? kLosses[0] : *found).loss_db;
}

double equivalentLength_m(const LoopConfig& loop) {
  double length = loop.length_m * cableLoss_db(loop) / kLosses[0].loss_db;
  for (const BridgedTap& tap : loop.taps) {
    length += tap.length_m;
  }
  return std::max(0.0, length + (loop.noise_dbm_hz - kUsualNoise_dbm_hz) * kMetresPerDb);
}

double netRate_mbps(double length_m) {
  const auto* longer = std::find_if(std::begin(kRates), std::end(kRates),
                                    [length_m](const auto& point) { return length_m <= point.length_m; });
  if (longer == std::begin(kRates)) {
    return longer->net_mbps;
  }
  if (longer == std::end(kRates)) {
    return 0;
  }
  const auto* shorter = std::prev(longer);
  const double way = (length_m - shorter->length_m) / (longer->length_m - shorter->length_m);
  return shorter->net_mbps + way * (longer->net_mbps - shorter->net_mbps);
}

// Bytes a symbol that give the net rate when the codewords' redundancy is off.
uint32_t bytesPerSymbol(double net_mbps) {
  constexpr double dataSymbols =
      static_cast<double>(kDownstreamSymbols + kUpstreamSymbols) / kSymbolsPerFrame;
  constexpr double symbolRate = static_cast<double>(kSampleRate_hz) / kSamplesPerSymbol;
  constexpr double codeRate = static_cast<double>(kCodewordData) / kCodewordSize;
  return static_cast<uint32_t>(net_mbps * 1e6 / 8 / (symbolRate * dataSymbols * codeRate));
}

}  // namespace

LoopBudget loopBudget(const LoopConfig& loop) {
  LoopBudget budget;
  budget.equivalent_m = equivalentLength_m(loop);
  budget.heard = budget.equivalent_m <= kHeard_m;
  const double net_mbps = netRate_mbps(budget.equivalent_m);
  budget.trainable = net_mbps > 0;
  budget.downstreamBytes = bytesPerSymbol(net_mbps);
  budget.upstreamBytes = bytesPerSymbol(net_mbps * kUpstreamShare);
  budget.margin = static_cast<uint32_t>(kTargetMargin + std::max(0.0, kFullSymbols_m - budget.equivalent_m));
  budget.electricalLength = static_cast<uint32_t>(std::lround(budget.equivalent_m * kLossAt1MHz));
  budget.powerSent = kPowerSent;
  budget.powerReceived = kPowerSent - static_cast<int32_t>(std::lround(budget.equivalent_m * kMeanLoss));
  return budget;
}
