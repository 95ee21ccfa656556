// The traffic from one end of a line to the other, and its errors. Every counter is computed from it.
//
// A stretch is a time of showtime under the same conditions. It is counted in whole frames from its start, so
// that counts do not depend on earlier reads. Noise corrupts its share of the data transfer units, and
// fractions of a unit add up. On a healthy line the number of corrupted units is drawn for each second from
// the board's seed; within the second they are spread evenly.
#pragma once

#include <cstdint>
#include <optional>

#include "virtual-board/base/line_framing.h"
#include "virtual-board/line/error_rates.h"

namespace gfast::board {

// Counts since power-up. They never fall. Those of the receiver are two frames behind those of the sender.
struct StreamCounts {
  uint64_t framesSent = 0;
  uint64_t adaptiveFrames = 0;  // of framesSent: while rate adaptation was allowed
  uint64_t framesArrived = 0;
  uint64_t lostRmcs = 0;
  uint64_t dtusSent = 0;  // data, idle and retransmitted units
  uint64_t dtusArrived = 0;
  uint64_t dtusBad = 0;            // corrupted on arrival
  uint64_t dtusUncorrected = 0;    // of the bad ones: lost for good
  uint64_t dtusRetransmitted = 0;  // of the bad ones: repeated with success
  uint64_t erroredSeconds = 0;
  uint64_t severelyErroredSeconds = 0;
  uint64_t adaptedSeconds = 0;  // of these: with a fast rate adaptation
  uint64_t lossOfRmcSeconds = 0;
  // Adaptations that were made (ITU-T G.9701).
  uint64_t bitSwaps = 0;
  uint64_t seamlessRateAdaptations = 0;
  uint64_t fastRateAdaptations = 0;
  uint64_t rmcParameterAdaptations = 0;

  uint64_t dtusGood() const { return dtusArrived - dtusBad; }
};

// The counts since `before`.
StreamCounts operator-(StreamCounts counts, const StreamCounts& before);

// What is left of the expected rate: a corrupted unit takes the place of a new one (the error-free throughput
// of ITU-T G.9701).
struct Throughput {
  uint32_t last = 0;   // in the last whole second of the stretch
  uint32_t least = 0;  // in the worst second
  uint32_t averageExpected = 0;
};

class StreamMeter {
 public:
  // `stream` tells the two directions apart, so that each has draws of its own.
  StreamMeter(uint32_t seed, uint32_t stream);

  // Begins a stretch, and ends the one before.
  void flow(double now, const StreamFraming& framing, const ErrorRates& errors);
  // Ends the stretch. Frames on their way arrive.
  void stop(double now);

  // Adaptations were made that noise or the loop asked for. A line that nothing happens to makes a few by
  // itself.
  void adapted(uint64_t StreamCounts::*kind, uint64_t exchanges) { closed_.*kind += exchanges; }

  StreamCounts counts(double now);
  // Rates since data began to flow, kbit/s.
  const Throughput& throughput() const { return throughput_; }
  // Whether a second like this is severely errored.
  bool severelyErrored() const;
  // Severely errored seconds up to the last whole one.
  uint32_t severeInRow() const { return severeInRow_; }
  // The share of user data in what is sent, in per cent. The rest is idle.
  uint32_t load_percent() const { return load_percent_; }

 private:
  struct Errors {
    uint64_t bad = 0;
    uint64_t uncorrected = 0;
  };
  // Of a unit, so that what is counted stays within half a unit of what is due.
  struct Fractions {
    double bad = 0.5;
    double uncorrected = 0.5;
  };
  struct Stretch {
    double start;
    StreamFraming framing;
    uint32_t expected_kbps;
    ErrorRates errors;
    uint64_t seconds = 0;  // whole seconds that `settled` counts
    StreamCounts settled;  // only bad and uncorrected units, and seconds
  };

  uint64_t framesIn(uint64_t seconds) const;
  uint64_t dtus(uint64_t frames) const;
  Errors draw(uint64_t second, uint64_t length) const;
  double exactlyBad(uint64_t units) const;
  double exactlyUncorrected(uint64_t bad) const;
  Errors noiseErrors(uint64_t units) const;
  void carryOver(uint64_t units);
  Errors errorsIn(uint64_t second, uint64_t units) const;
  void settle(uint64_t framesArrived);
  void judgeSecond(StreamCounts& counts, uint64_t uncorrected) const;
  void judgeThroughput(uint64_t bad, uint64_t units);
  void average(uint64_t frames);
  StreamCounts count(double now, uint64_t framesOnTheWay);

  uint64_t seed_;
  uint32_t load_percent_;
  uint32_t bitSwapPeriod_;  // frames
  uint64_t stretches_ = 0;
  StreamCounts closed_;
  Fractions carry_;  // of earlier stretches with noise
  std::optional<Stretch> open_;
  Throughput throughput_;
  // Of the stretches since data began to flow but for the open one.
  uint64_t framesExpected_ = 0;
  uint64_t expectedInFrames_ = 0;  // the sum of the expected rates, frame by frame
  uint32_t severeInRow_ = 0;
};

}  // namespace gfast::board
