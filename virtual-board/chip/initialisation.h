// What a chip knows of its line's last initialisation.
#pragma once

#include <cstdint>

#include "virtual-board/base/line_state.h"

namespace gfast::board {

// The last signal that was sent in one direction (ITU-T G.9701).
enum class InitSignal : uint8_t { kNone, kHandshake, kChannelDiscovery, kChannelAnalysis, kShowtime };

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
  InitSignal lastDownstream() const { return lastDownstream_; }
  InitSignal lastUpstream() const { return lastUpstream_; }

 private:
  InitSignal reached(double now) const;

  LineState state_ = LineState::kSelfTest;
  double since_ = 0;
  uint32_t startup_ms_ = 0;
  uint32_t handshake_ms_ = 0;
  uint32_t failureCause_ = 0;
  InitSignal lastDownstream_ = InitSignal::kNone;
  InitSignal lastUpstream_ = InitSignal::kNone;
};

}  // namespace gfast::board
