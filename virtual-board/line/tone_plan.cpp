#include "virtual-board/line/tone_plan.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "virtual-board/base/decibels.h"

namespace gfast::board {

namespace {

constexpr uint32_t kTopmostTone = kTones - 1;

// Transmit PSD before shaping: linear between these points.
constexpr struct {
  double mhz;
  double dbm_hz;
} kPsd[] = {{2.2, -65}, {30, -73}, {106, -76}};

// What the two directions have of their own.
struct DirectionLimits {
  uint32_t lastTone;
  double mostPower_dbm;
  uint32_t reserve;      // 0.1 dB
  uint32_t mostRmcBits;  // a subcarrier
  DtuFraming dtu;
};
constexpr DirectionLimits kDownstream{kLastTone, 4, 0, 6, kDownstreamDtu};
// The filter that keeps power and signal apart at the network side rolls off, and its receiver measures the
// SNR in short bursts.
constexpr DirectionLimits kUpstream{kLastTone - 12, 3, 3, 5, kUpstreamDtu};

// International amateur radio bands (ITU-T G.9700), by bit of IARBands.
constexpr struct {
  double from_mhz;
  double to_mhz;
} kAmateurBands[] = {{1.8, 2.0},    {3.5, 4.0},       {7.0, 7.3},    {10.1, 10.15},
                     {14.0, 14.35}, {18.068, 18.168}, {21.0, 21.45}, {24.89, 24.99},
                     {28.0, 29.7},  {50.0, 54.0},     {69.9, 70.5}};

constexpr uint32_t kRfiBands = 16;
constexpr uint32_t kPsdBands = 8;
// A medley set holds at most so many; what lies above them is not used.
constexpr size_t kMostBands = 31;

constexpr uint32_t kMostMargin = 310;  // 0.1 dB
constexpr uint32_t kPilotSpacing = 128;
constexpr uint32_t kPilots = 8;

// Downstream symbols that a frame may have (ITU-T G.9701).
constexpr struct {
  uint32_t frameSymbols;
  uint32_t fewestDown, mostDown;
} kFrames[] = {{36, 10, 32}, {23, 6, 19}};

uint32_t indexed(const Parameters& parameters, eConstParams first, uint32_t i) {
  return parameters.running(static_cast<eConstParams>(first + i));
}

void spare(ToneMask& mask, uint32_t first, uint32_t last) {
  for (uint32_t tone = first; tone <= std::min(last, kTopmostTone); tone++) {
    mask.reset(tone);
  }
}

// A word holds the first subcarrier in its low half, the last in its high half; 0: no band.
void spareRfiBands(ToneMask& mask, const Parameters& parameters) {
  for (uint32_t i = 0; i < kRfiBands; i++) {
    const uint32_t band = indexed(parameters, PARAMS_RFIBand_0, i);
    if (band != 0) {
      spare(mask, band & 0xFFFF, band >> 16);
    }
  }
}

// Spares every subcarrier whose main lobe reaches into a band.
void spareAmateurBands(ToneMask& mask, uint32_t bits) {
  for (size_t i = 0; i < std::size(kAmateurBands); i++) {
    if ((bits >> i & 1) != 0) {
      spare(mask, static_cast<uint32_t>(std::floor(kAmateurBands[i].from_mhz / kSubcarrierSpacing_mhz)),
            static_cast<uint32_t>(std::ceil(kAmateurBands[i].to_mhz / kSubcarrierSpacing_mhz)));
    }
  }
}

// Where the bands of the spectrum begin, in rising order, and then where the last one ends. The usual band
// when the parameters name none.
std::vector<uint32_t> bandEdges(const Parameters& parameters) {
  std::vector<uint32_t> edges;
  for (uint32_t i = 0; i < kPsdBands; i++) {
    const uint32_t edge = indexed(parameters, PARAMS_bandStart_0, i);
    if (edge > kTopmostTone || (edges.empty() ? edge == 0 : edge <= edges.back())) {
      break;
    }
    edges.push_back(edge);
  }
  return edges.size() < 2 ? std::vector<uint32_t>{kFirstTone, kLastTone} : edges;
}

double unshapedPsd(uint32_t tone) {
  const double mhz = std::clamp(tone * kSubcarrierSpacing_mhz, kPsd[0].mhz, std::rbegin(kPsd)->mhz);
  const auto* above = std::find_if(std::next(std::begin(kPsd)), std::prev(std::end(kPsd)),
                                   [mhz](const auto& point) { return mhz <= point.mhz; });
  const auto* below = std::prev(above);
  return below->dbm_hz + (mhz - below->mhz) * (above->dbm_hz - below->dbm_hz) / (above->mhz - below->mhz);
}

// Lowers each band by flatDecrease (0.1 dB), or limits it to -saturation (0.1 dBm/Hz).
void shape(DirectionPlan& plan, const Parameters& parameters) {
  const std::vector<uint32_t> edges = bandEdges(parameters);
  const bool lowered = parameters.running(PARAMS_isFlatDecrease) != 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (tone < edges.front() || tone > edges.back()) {
      plan.medley.reset(tone);
      continue;
    }
    const auto next = std::upper_bound(edges.begin(), std::prev(edges.end()), tone);
    const auto band = static_cast<uint32_t>(next - edges.begin() - 1);
    double level = unshapedPsd(tone);
    if (lowered) {
      level -= indexed(parameters, PARAMS_flatDecrease_0, band) / 10.0;
    } else if (const uint32_t ceiling = indexed(parameters, PARAMS_saturation_0, band); ceiling != 0) {
      level = std::min(level, -(ceiling / 10.0));
    }
    plan.sent_dbm_hz[tone] = std::min(plan.sent_dbm_hz[tone], level);
  }
}

// Lowers the whole spectrum until its power is at most this.
void scale(DirectionPlan& plan, double mostPower_dbm) {
  double power_mw = 0;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (plan.medley.test(tone)) {
      power_mw += powerRatio(plan.sent_dbm_hz[tone]) * kSubcarrierSpacing_hz;
    }
  }
  const double excess_db = power_mw > 0 ? powerDecibels(power_mw) - mostPower_dbm : 0;
  plan.highest_dbm_hz = -std::numeric_limits<double>::infinity();
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (plan.medley.test(tone)) {
      plan.sent_dbm_hz[tone] -= std::max(0.0, excess_db);
      plan.highest_dbm_hz = std::max(plan.highest_dbm_hz, plan.sent_dbm_hz[tone]);
    } else {
      plan.sent_dbm_hz[tone] = 0;
    }
  }
}

double levelAt(const std::vector<LevelPoint>& points, uint32_t tone) {
  const auto above = std::find_if(points.begin(), points.end(),
                                  [tone](const LevelPoint& point) { return point.tone >= tone; });
  if (above == points.begin() || above == points.end()) {
    return above == points.end() ? points.back().dbm_hz : above->dbm_hz;
  }
  const LevelPoint& below = *std::prev(above);
  return below.dbm_hz +
         (above->dbm_hz - below.dbm_hz) * (tone - below.tone) / static_cast<double>(above->tone - below.tone);
}

void limit(DirectionPlan& plan, const DirectionSpectrumLimits& limits) {
  for (const ToneBand& band : limits.masked) {
    spare(plan.medley, band.first, band.last);
  }
  for (uint32_t tone = 0; !limits.levels.empty() && tone < kTones; tone++) {
    plan.sent_dbm_hz[tone] = std::min(plan.sent_dbm_hz[tone], levelAt(limits.levels, tone));
  }
}

void backOff(DirectionPlan& plan, const PowerBackOff& backOff, double estimated_db) {
  constexpr double least_db = 1.8;
  const double loss_db = std::max(least_db, backOff.forced_db.value_or(estimated_db));
  const double equal_db = std::max(0.0, 10 * std::log10(backOff.reference_db / loss_db));
  for (uint32_t tone = 0; tone < kTones; tone++) {
    const double root = std::sqrt(tone * kSubcarrierSpacing_mhz);
    plan.sent_dbm_hz[tone] =
        std::min(plan.sent_dbm_hz[tone], -backOff.a_dbm_hz + equal_db + (loss_db - backOff.b_dbm_hz) * root);
  }
}

std::vector<ToneBand> bandsOf(const ToneMask& medley) {
  std::vector<ToneBand> bands;
  for (uint32_t tone = 0; tone < kTones; tone++) {
    if (!medley.test(tone)) {
      continue;
    }
    const auto index = static_cast<uint16_t>(tone);
    if (bands.empty() || bands.back().last + 1U != tone) {
      bands.push_back({index, index});
    } else {
      bands.back().last = index;
    }
  }
  return bands;
}

// At a regular distance, so that a notch does not remove them all. One that falls into a notch moves up.
ToneMask pilotsOf(const ToneMask& medley) {
  ToneMask pilots;
  for (uint32_t i = 1; i <= kPilots; i++) {
    for (uint32_t tone = i * kPilotSpacing; tone < (i + 1) * kPilotSpacing; tone++) {
      if (medley.test(tone)) {
        pilots.set(tone);
        break;
      }
    }
  }
  return pilots;
}

uint32_t margin(const Parameters& parameters, eConstParams id) {
  const auto value = static_cast<int16_t>(parameters.running(id));
  return value < 0 ? 0 : std::min<uint32_t>(static_cast<uint32_t>(value), kMostMargin);
}

void shareFrame(TonePlan& plan, const Parameters& network) {
  const uint32_t wanted = network.running(PARAMS_numTxSymbolsInFrame);
  const auto* frame = std::find_if(std::begin(kFrames), std::end(kFrames),
                                   [wanted](const auto& each) { return each.frameSymbols == wanted; });
  if (frame == std::end(kFrames)) {
    frame = std::begin(kFrames);
  }
  plan.frameSymbols = frame->frameSymbols;
  plan.downstream.symbols =
      std::clamp(network.running(PARAMS_numDownstreamSymbols), frame->fewestDown, frame->mostDown);
  // The gap between the directions takes one symbol.
  plan.upstream.symbols = plan.frameSymbols - 1 - plan.downstream.symbols;
}

DirectionPlan spectrumOf(const DirectionLimits& limits, const Parameters& network,
                         const Parameters& subscriber, const DirectionSpectrumLimits& allowed) {
  DirectionPlan plan;
  plan.medley.set();
  for (const Parameters* end : {&network, &subscriber}) {
    shape(plan, *end);
    spareRfiBands(plan.medley, *end);
    spareAmateurBands(plan.medley, end->running(PARAMS_IARBands));
  }
  spare(plan.medley, 0, kFirstTone - 1);
  spare(plan.medley, limits.lastTone + 1, kTopmostTone);
  limit(plan, allowed);
  plan.bands = bandsOf(plan.medley);
  if (plan.bands.size() > kMostBands) {
    plan.bands.resize(kMostBands);
    spare(plan.medley, plan.bands.back().last + 1U, kTopmostTone);
  }
  plan.pilots = pilotsOf(plan.medley);
  plan.reserve = limits.reserve;
  plan.mostRmcBits = limits.mostRmcBits;
  plan.dtu = limits.dtu;
  plan.mostBits = std::min(
      {network.running(PARAMS_blUpperLimit), subscriber.running(PARAMS_blUpperLimit), kMostToneBits});
  return plan;
}

}  // namespace

TonePlan tonePlan(const Parameters& network, const Parameters& subscriber, const SpectrumLimits& limits,
                  double electricalLength_db) {
  TonePlan plan;
  plan.downstream = spectrumOf(kDownstream, network, subscriber, limits.downstream);
  plan.upstream = spectrumOf(kUpstream, network, subscriber, limits.upstream);
  if (limits.backOff) {
    backOff(plan.upstream, *limits.backOff, electricalLength_db);
  }
  scale(plan.downstream, kDownstream.mostPower_dbm);
  scale(plan.upstream, kUpstream.mostPower_dbm);
  plan.vectoring = network.running(PARAMS_vectoringEnabled) != 0;
  shareFrame(plan, network);
  plan.downstream.targetMargin = margin(network, PARAMS_dsMargin);
  plan.upstream.targetMargin = margin(network, PARAMS_usMargin);
  plan.downstream.seamlessRateAdaptation = network.running(PARAMS_disableDsSra) == 0;
  plan.upstream.seamlessRateAdaptation = network.running(PARAMS_disableUsSra) == 0;
  plan.downstream.fastRateAdaptation = network.running(PARAMS_disableDsFra) == 0;
  plan.upstream.fastRateAdaptation = network.running(PARAMS_disableUsFra) == 0;
  return plan;
}

}  // namespace gfast::board
