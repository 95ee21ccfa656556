// What has happened on a line since power-up, counted for each end, and the part of it that each chip knows:
// its own end since the chip started, and the other end as of the last showtime.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "virtual-board/base/line_framing.h"
#include "virtual-board/line/stream_meter.h"

namespace gfast::board {

constexpr size_t kEnds = 2;

// What one end has counted since power-up. Counts never fall.
struct EndCounts {
  StreamCounts sent;
  StreamCounts received;
  uint64_t lossOfSignalFailures = 0;
  uint64_t lossOfRmcFailures = 0;
  uint64_t lossOfMarginFailures = 0;
  uint64_t lossOfPowerFailures = 0;
  uint64_t gainAdjustments = 0;  // initiated by the transmitter at the network side
  uint64_t initialisations = 0;  // the failed ones included
  uint64_t failedInitialisations = 0;
  uint64_t lossOfSignalSeconds = 0;
  uint64_t unavailableSeconds = 0;
};
using EndCounter = uint64_t EndCounts::*;

EndCounts operator-(EndCounts counts, const EndCounts& before);

// The state of one direction.
struct StreamState {
  StreamFraming framing;
  uint32_t load_percent = 0;
  Throughput throughput;
  uint32_t severeInRow = 0;
};

// What a chip knows of its line at one moment. The streams are those of the last showtime; before the first
// they are empty.
struct EndView {
  EndCounts near;  // since this chip started
  EndCounts far;   // what the other end counted since then, up to the last showtime
  StreamState sends;
  StreamState receives;
  bool showtime = false;
  EndCounter failure = nullptr;  // that ended the last showtime; null: none, or one that has no counter
  bool signalLost = false;
  uint32_t signalLostFor_s = 0;
  bool rmcLost = false;  // nothing of the management channel arrives at this end
  double rmcLostFor_s = 0;
};

class LineLedger {
 public:
  explicit LineLedger(uint32_t seed);

  // Both directions carry data from now on. Framing is by the end that sends, `errors` as in
  // StreamMeter::flow.
  void flow(double now, const std::array<StreamFraming, kEnds>& framing,
            const std::array<ErrorRates, kEnds>& errors);
  void stop(double now);
  void signalLost(double now, bool lost);
  // An adaptation of what that end sends.
  void adapted(size_t sender, uint64_t StreamCounts::*kind, uint64_t exchanges) {
    streams_[sender].adapted(kind, exchanges);
  }
  // Of either direction.
  bool severelyErrored() const { return streams_[0].severelyErrored() || streams_[1].severelyErrored(); }
  // Showtime ends with a failure at that end.
  void fail(size_t end, EndCounter failure);
  void count(size_t end, EndCounter what) { ++(ends_[end].events.*what); }
  // The chip at that end has started: its counts begin at 0.
  void restarted(double now, size_t end);

  EndView view(double now, size_t end);

 private:
  // Counts the seconds during which something lasts.
  struct Stopwatch {
    double before = 0;
    std::optional<double> since;

    void run(double now, bool on);
    double current(double now) const { return since ? now - *since : 0; }
    uint64_t seconds(double now) const { return static_cast<uint64_t>(before + current(now)); }
  };
  struct End {
    EndCounts events;  // only the fields that are counted one by one
    // The counts of both ends when this end's chip started.
    EndCounts nearAtStart;
    EndCounts farAtStart;
    EndCounts farHeard;  // the other end's, at the last moment of showtime
    EndCounter failure = nullptr;
  };

  EndCounts total(double now, size_t end);

  std::array<StreamMeter, kEnds> streams_;  // by the end that sends
  std::array<StreamFraming, kEnds> framing_;
  std::array<End, kEnds> ends_;
  Stopwatch unavailable_;
  Stopwatch withoutSignal_;
  std::array<Stopwatch, kEnds> withoutRmc_;  // by the end that receives
  bool flowing_ = false;
};

}  // namespace gfast::board
