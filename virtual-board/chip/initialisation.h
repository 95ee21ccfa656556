// What a chip knows of its line's last initialisation.
#pragma once

#include <cstdint>

#include "virtual-board/base/line_state.h"

namespace gfast::board {

// How far an initialisation got in one direction: the stage whose signal was the last to be sent (ITU-T
// G.9701).
enum class InitSignal : uint8_t { kNone, kHandshake, kChannelDiscovery, kChannelAnalysis, kShowtime };

class Initialisation {
 public:
  // The line has changed its state.
  void entered(LineState state, double now);
  // An attempt came to an end: how long it took, its handshake with it (0 when it failed), and how it ended.
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
