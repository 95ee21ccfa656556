// What one end of a line has sent to the other so far, and how it arrived: the model of traffic and errors
// from which every counter follows.
//
// A stretch of showtime under unchanging conditions is counted in whole frames from its start, so what is
// counted by a moment does not depend on who looked before. Which data transfer units are corrupted is drawn
// once a second from the board's seed; within the second they are spread evenly.
#pragma once

#include <cstdint>
#include <optional>

#include "virtual-board/base/line_framing.h"

namespace gfast::board {

// From this share of errors on the robust management channel does not get through either.
constexpr double kRmcLost = 0.5;

// Since power-up; none ever falls. What arrives is late by the time it takes.
struct StreamCounts {
  uint64_t framesSent = 0;
  uint64_t adaptiveFrames = 0;  // of them, those of a stream whose rate may be adapted
  uint64_t framesArrived = 0;
  uint64_t lostRmcs = 0;
  uint64_t dtusSent = 0;  // data, idle and retransmitted ones
  uint64_t dtusArrived = 0;
  uint64_t dtusBad = 0;            // corrupted on arrival
  uint64_t dtusUncorrected = 0;    // and never made good
  uint64_t dtusRetransmitted = 0;  // the other bad ones
  uint64_t erroredSeconds = 0;
  uint64_t severelyErroredSeconds = 0;
  uint64_t adaptedSeconds = 0;  // of these, the ones that fast rate adaptation answered
  uint64_t lossOfRmcSeconds = 0;
  // Adaptations that were asked for and made: by name as in ITU-T G.9701.
  uint64_t bitSwaps = 0;
  uint64_t seamlessRateAdaptations = 0;
  uint64_t fastRateAdaptations = 0;
  uint64_t rmcParameterAdaptations = 0;

  uint64_t dtusGood() const { return dtusArrived - dtusBad; }
};

// What was counted since `before`.
StreamCounts operator-(StreamCounts counts, const StreamCounts& before);

class StreamMeter {
 public:
  // What this direction draws is its own: `stream` sets it apart on its board.
  StreamMeter(uint32_t seed, uint32_t stream);

  // Data flows from now on; `errors` is the share of units that arrive corrupted, 0 on a healthy line. Ends a
  // stretch that is open.
  void flow(double now, const StreamFraming& framing, double errors);
  // Nothing flows any more. What was on its way arrives.
  void stop(double now);

  StreamCounts counts(double now);
  // The share of units that were lost for good in the last whole second of this stretch, and in the worst
  // second since data flows.
  double lastLoss() const { return lastLoss_; }
  double worstLoss() const { return worstLoss_; }
  // How much of what is sent is somebody's data, in per cent; the rest is idle.
  uint32_t load_percent() const { return load_percent_; }

 private:
  struct Draw {
    uint64_t bad;
    uint64_t uncorrected;
  };
  struct Stretch {
    double start;
    StreamFraming framing;
    double errors;
    uint64_t seconds = 0;  // whole ones, counted in `settled`
    StreamCounts settled;  // bad, uncorrected and the kinds of seconds
  };

  uint64_t framesIn(uint64_t seconds) const;
  uint64_t dtus(uint64_t frames) const;
  Draw draw(uint64_t second) const;
  void settle(uint64_t framesArrived);
  void judgeSecond(StreamCounts& counts, uint64_t uncorrected) const;
  StreamCounts count(double now, uint64_t framesOnTheWay);

  uint64_t seed_;
  uint32_t load_percent_;
  uint32_t bitSwapPeriod_;  // frames
  uint64_t stretches_ = 0;
  StreamCounts closed_;
  std::optional<Stretch> open_;
  double lastLoss_ = 0;
  double worstLoss_ = 0;
};

}  // namespace gfast::board
