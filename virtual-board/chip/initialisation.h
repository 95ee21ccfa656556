// What a chip knows of its line's last initialisation.
#pragma once

#include <cstdint>

#include "virtual-board/base/line_state.h"

namespace gfast::board {

// The last signals that were sent, by the stage they belong to (ITU-T G.9701). Upstream has one stage more:
// the vectored training of the upstream direction, with which channel discovery ends.
enum class DownstreamSignal : uint8_t { kNone, kHandshake, kChannelDiscovery, kChannelAnalysis, kShowtime };
enum class UpstreamSignal : uint8_t {
  kNone,
  kHandshake,
  kChannelDiscovery,
  kVectoredTraining,
  kChannelAnalysis,
  kShowtime
};

class Initialisation {
 public:
  // Called when the line has changed its state.
  void entered(LineState state, double now);
  // Called at the end of an initialisation. A failed one has no times: both are 0. `failureCause` is one of
  // E_INITSFCAUSE_*.
  void ended(uint32_t startup_ms, uint32_t handshake_ms, uint32_t failureCause, bool networkSide, double now);

  uint32_t startup_ms() const { return startup_ms_; }
  uint32_t handshake_ms() const { return handshake_ms_; }
  uint32_t failureCause() const { return failureCause_; }
  DownstreamSignal lastDownstream() const { return lastDownstream_; }
  UpstreamSignal lastUpstream() const { return lastUpstream_; }

 private:
  void takeReached(double now);

  LineState state_ = LineState::kSelfTest;
  double since_ = 0;
  uint32_t startup_ms_ = 0;
  uint32_t handshake_ms_ = 0;
  uint32_t failureCause_ = 0;
  DownstreamSignal lastDownstream_ = DownstreamSignal::kNone;
  UpstreamSignal lastUpstream_ = UpstreamSignal::kNone;
};

}  // namespace gfast::board
