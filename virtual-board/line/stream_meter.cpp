#include "virtual-board/line/stream_meter.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "virtual-board/base/draw.h"

namespace gfast::board {

namespace {

// Sent, but not received yet.
constexpr uint64_t kFramesOnTheWay = 2;
// Units lost in a severely errored second.
constexpr uint64_t kSevere = 18;

// A healthy line: every fifth second a few units are corrupted, and once in ten minutes one is lost for good.
constexpr uint64_t kSecondsBetweenHits = 5;
constexpr uint64_t kMostHit = 4;
constexpr uint64_t kSecondsBetweenLosses = 600;

// Frames between two adaptations of a healthy line.
constexpr uint32_t kBitSwapPeriod = 20 * kFramesPer3s / 3;
constexpr uint32_t kBitSwapSpread = 10 * kFramesPer3s / 3;
constexpr uint64_t kSraPeriod = 300ULL * kFramesPer3s / 3;
constexpr uint64_t kRpaPeriod = 900ULL * kFramesPer3s / 3;

constexpr uint64_t StreamCounts::*kFields[] = {&StreamCounts::framesSent,
                                               &StreamCounts::adaptiveFrames,
                                               &StreamCounts::framesArrived,
                                               &StreamCounts::lostRmcs,
                                               &StreamCounts::dtusSent,
                                               &StreamCounts::dtusArrived,
                                               &StreamCounts::dtusBad,
                                               &StreamCounts::dtusUncorrected,
                                               &StreamCounts::dtusRetransmitted,
                                               &StreamCounts::erroredSeconds,
                                               &StreamCounts::severelyErroredSeconds,
                                               &StreamCounts::adaptedSeconds,
                                               &StreamCounts::lossOfRmcSeconds,
                                               &StreamCounts::bitSwaps,
                                               &StreamCounts::seamlessRateAdaptations,
                                               &StreamCounts::fastRateAdaptations,
                                               &StreamCounts::rmcParameterAdaptations};
static_assert(sizeof(StreamCounts) == std::size(kFields) * sizeof(uint64_t));

void add(StreamCounts& counts, const StreamCounts& more) {
  for (const auto field : kFields) {
    counts.*field += more.*field;
  }
}

}  // namespace

StreamCounts operator-(StreamCounts counts, const StreamCounts& before) {
  for (const auto field : kFields) {
    counts.*field -= before.*field;
  }
  return counts;
}

StreamMeter::StreamMeter(uint32_t seed, uint32_t stream)
    : seed_(mix(uint64_t{seed} << 8 | stream)),
      load_percent_(static_cast<uint32_t>(10 + mix(seed_) % 71)),
      bitSwapPeriod_(
          static_cast<uint32_t>(kBitSwapPeriod - kBitSwapSpread / 2 + mix(seed_ + 1) % kBitSwapSpread)) {}

void StreamMeter::flow(double now, const StreamFraming& framing, const ErrorRates& errors) {
  if (open_) {
    stop(now);
  } else {
    worstLoss_ = 0;
    severeInRow_ = 0;
  }
  lastLoss_ = 0;
  stretches_++;
  open_ = Stretch{now, framing, errors, 0, {}};
}

void StreamMeter::stop(double now) {
  if (!open_) {
    return;
  }
  StreamCounts stretch = count(now, 0);
  // The last second is not whole; it counts with the units that were lost in it.
  judgeSecond(stretch, stretch.dtusUncorrected - open_->settled.dtusUncorrected);
  add(closed_, stretch);
  open_.reset();
}

StreamCounts StreamMeter::counts(double now) {
  StreamCounts counts = closed_;
  if (open_) {
    add(counts, count(now, kFramesOnTheWay));
  }
  counts.dtusRetransmitted = counts.dtusBad - counts.dtusUncorrected;
  counts.bitSwaps += counts.framesSent / bitSwapPeriod_;
  counts.seamlessRateAdaptations += counts.adaptiveFrames / kSraPeriod;
  counts.fastRateAdaptations += counts.adaptedSeconds;
  counts.rmcParameterAdaptations += counts.framesSent / kRpaPeriod;
  return counts;
}

// Counts of the open stretch, with so many frames on their way.
StreamCounts StreamMeter::count(double now, uint64_t framesOnTheWay) {
  const StreamFraming& framing = open_->framing;
  const auto frames =
      static_cast<uint64_t>(std::max(0.0, now - open_->start) * kSymbolRate_hz / framing.frameSymbols);
  const uint64_t arrived = frames - std::min(frames, framesOnTheWay);
  settle(arrived);
  StreamCounts counts = open_->settled;
  counts.framesSent = frames;
  counts.adaptiveFrames = framing.seamlessRateAdaptation ? frames : 0;
  counts.framesArrived = arrived;
  counts.dtusSent = dtus(frames);
  counts.dtusArrived = dtus(arrived);
  if (open_->errors.rmcLost) {
    counts.lostRmcs = static_cast<uint64_t>(static_cast<double>(arrived) * open_->errors.corrupted);
  }
  // The bad units are spread evenly over the second, so that the count of good ones never falls.
  const uint64_t begin = dtus(framesIn(open_->seconds));
  const uint64_t length = dtus(framesIn(open_->seconds + 1)) - begin;
  if (const Draw second = draw(open_->seconds); second.bad != 0) {
    const uint64_t bad = (counts.dtusArrived - begin) * second.bad / length;
    counts.dtusBad += bad;
    counts.dtusUncorrected += bad * second.uncorrected / second.bad;
  }
  return counts;
}

uint64_t StreamMeter::framesIn(uint64_t seconds) const {
  return seconds * kSymbolRate_hz / open_->framing.frameSymbols;
}

uint64_t StreamMeter::dtus(uint64_t frames) const {
  return frames * open_->framing.bytesPerFrame() / open_->framing.dtu.size();
}

// Draws the corrupted units of one second of the open stretch.
StreamMeter::Draw StreamMeter::draw(uint64_t second) const {
  const uint64_t number = mix(mix(seed_ ^ (stretches_ << 32)) + second);
  const uint64_t length = dtus(framesIn(second + 1)) - dtus(framesIn(second));
  if (open_->errors.corrupted == 0) {
    const uint64_t bad = number % kSecondsBetweenHits == 0 ? 1 + (number >> 8) % kMostHit : 0;
    const bool lost = (number >> 16) % (kSecondsBetweenLosses / kSecondsBetweenHits) == 0;
    return {std::min(bad, length), bad != 0 && length != 0 && lost ? 1U : 0U};
  }
  const auto bad = static_cast<uint64_t>(std::llround(static_cast<double>(length) * open_->errors.corrupted));
  const auto lost = static_cast<uint64_t>(static_cast<double>(bad) * open_->errors.lost);
  return {bad, lost};
}

// Counts the seconds of which all frames have arrived.
void StreamMeter::settle(uint64_t framesArrived) {
  Stretch& stretch = *open_;
  while (framesIn(stretch.seconds + 1) <= framesArrived) {
    const Draw second = draw(stretch.seconds);
    const uint64_t length = dtus(framesIn(stretch.seconds + 1)) - dtus(framesIn(stretch.seconds));
    stretch.settled.dtusBad += second.bad;
    stretch.settled.dtusUncorrected += second.uncorrected;
    judgeSecond(stretch.settled, second.uncorrected);
    lastLoss_ = length == 0 ? 0 : static_cast<double>(second.uncorrected) / static_cast<double>(length);
    worstLoss_ = std::max(worstLoss_, lastLoss_);
    severeInRow_ = second.uncorrected >= kSevere ? severeInRow_ + 1 : 0;
    stretch.seconds++;
  }
}

void StreamMeter::judgeSecond(StreamCounts& counts, uint64_t uncorrected) const {
  counts.erroredSeconds += uncorrected > 0 ? 1 : 0;
  counts.severelyErroredSeconds += uncorrected >= kSevere ? 1 : 0;
  counts.adaptedSeconds +=
      uncorrected >= kSevere && open_->framing.fastRateAdaptation && open_->errors.announced ? 1 : 0;
  counts.lossOfRmcSeconds += uncorrected > 0 && open_->errors.rmcLost ? 1 : 0;
}

}  // namespace gfast::board
