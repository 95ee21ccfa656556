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
  const uint32_t expected_kbps = streamRates(framing).expected;
  if (open_) {
    stop(now);
  } else {
    throughput_.least = expected_kbps;
    severeInRow_ = 0;
    framesExpected_ = expectedInFrames_ = 0;
  }
  throughput_.last = expected_kbps;
  stretches_++;
  open_ = Stretch{now, framing, expected_kbps, errors, 0, {}};
  average(0);
}

void StreamMeter::stop(double now) {
  if (!open_) {
    return;
  }
  StreamCounts stretch = count(now, 0);
  // The last second is not whole; it counts with the units that were lost in it.
  judgeSecond(stretch, stretch.dtusUncorrected - open_->settled.dtusUncorrected);
  if (open_->errors.corrupted > 0) {
    carryOver(stretch.dtusArrived);
  }
  add(closed_, stretch);
  framesExpected_ += stretch.framesSent;
  expectedInFrames_ += stretch.framesSent * open_->expected_kbps;
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
  average(frames);
  StreamCounts counts = open_->settled;
  counts.framesSent = frames;
  counts.adaptiveFrames = framing.seamlessRateAdaptation ? frames : 0;
  counts.framesArrived = arrived;
  counts.dtusSent = dtus(frames);
  counts.dtusArrived = dtus(arrived);
  if (open_->errors.rmcLost) {
    counts.lostRmcs = static_cast<uint64_t>(static_cast<double>(arrived) * open_->errors.corrupted);
  }
  const Errors errors = errorsIn(open_->seconds, counts.dtusArrived);
  counts.dtusBad += errors.bad;
  counts.dtusUncorrected += errors.uncorrected;
  return counts;
}

uint64_t StreamMeter::framesIn(uint64_t seconds) const {
  return seconds * kSymbolRate_hz / open_->framing.frameSymbols;
}

uint64_t StreamMeter::dtus(uint64_t frames) const {
  return frames * open_->framing.bytesPerFrame() / open_->framing.dtu.size();
}

// Draws the corrupted units of one second of a healthy line.
StreamMeter::Errors StreamMeter::draw(uint64_t second, uint64_t length) const {
  const uint64_t number = mix(mix(seed_ ^ (stretches_ << 32)) + second);
  const uint64_t bad = number % kSecondsBetweenHits == 0 ? 1 + (number >> 8) % kMostHit : 0;
  const bool lost = (number >> 16) % (kSecondsBetweenLosses / kSecondsBetweenHits) == 0;
  return {std::min(bad, length), bad != 0 && length != 0 && lost ? 1U : 0U};
}

double StreamMeter::exactlyBad(uint64_t units) const {
  return carry_.bad + static_cast<double>(units) * open_->errors.corrupted;
}

double StreamMeter::exactlyUncorrected(uint64_t bad) const {
  return carry_.uncorrected + static_cast<double>(bad) * open_->errors.lost;
}

// The errors of the first units of a stretch with noise.
StreamMeter::Errors StreamMeter::noiseErrors(uint64_t units) const {
  const auto bad = static_cast<uint64_t>(exactlyBad(units));
  return {bad, static_cast<uint64_t>(exactlyUncorrected(bad))};
}

// Keeps the fractions of a stretch of so many units for the next one.
void StreamMeter::carryOver(uint64_t units) {
  const Errors errors = noiseErrors(units);
  carry_ = {exactlyBad(units) - static_cast<double>(errors.bad),
            exactlyUncorrected(errors.bad) - static_cast<double>(errors.uncorrected)};
}

// The errors in a second of the open stretch, of which `units` is the number of units that the stretch has
// had so far. They are spread evenly over the second, so that the count of good units never falls.
StreamMeter::Errors StreamMeter::errorsIn(uint64_t second, uint64_t units) const {
  const uint64_t begin = dtus(framesIn(second));
  if (open_->errors.corrupted > 0) {
    const Errors before = noiseErrors(begin);
    const Errors after = noiseErrors(units);
    return {after.bad - before.bad, after.uncorrected - before.uncorrected};
  }
  const uint64_t length = dtus(framesIn(second + 1)) - begin;
  const Errors whole = draw(second, length);
  if (whole.bad == 0) {
    return {};
  }
  const uint64_t bad = (units - begin) * whole.bad / length;
  return {bad, bad * whole.uncorrected / whole.bad};
}

bool StreamMeter::severelyErrored() const {
  return open_ && static_cast<double>(dtus(framesIn(1))) * open_->errors.corrupted * open_->errors.lost >=
                      static_cast<double>(kSevere);
}

// Counts the seconds of which all frames have arrived.
void StreamMeter::settle(uint64_t framesArrived) {
  Stretch& stretch = *open_;
  while (framesIn(stretch.seconds + 1) <= framesArrived) {
    const uint64_t end = dtus(framesIn(stretch.seconds + 1));
    const uint64_t length = end - dtus(framesIn(stretch.seconds));
    const Errors second = errorsIn(stretch.seconds, end);
    stretch.settled.dtusBad += second.bad;
    stretch.settled.dtusUncorrected += second.uncorrected;
    judgeSecond(stretch.settled, second.uncorrected);
    judgeThroughput(second.bad, length);
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

void StreamMeter::judgeThroughput(uint64_t bad, uint64_t units) {
  const uint64_t expected = open_->expected_kbps;
  throughput_.last = static_cast<uint32_t>(units == 0 ? expected : expected * (units - bad) / units);
  throughput_.least = std::min(throughput_.least, throughput_.last);
}

// So many frames of the open stretch have been sent.
void StreamMeter::average(uint64_t frames) {
  const uint64_t all = framesExpected_ + frames;
  const uint64_t expected = expectedInFrames_ + frames * open_->expected_kbps;
  throughput_.averageExpected = all == 0 ? open_->expected_kbps : static_cast<uint32_t>(expected / all);
}

}  // namespace gfast::board
