#include "virtual-board/chip/initialisation.h"

#include "chip/init_failure_causes.h"

namespace gfast::board {

namespace {

// How long the first part of training takes. Channel analysis takes the rest.
constexpr double kChannelDiscovery_s = 1.2;

}  // namespace

void Initialisation::entered(LineState state, double now) {
  state_ = state;
  since_ = now;
}

void Initialisation::ended(uint32_t startup_ms, uint32_t handshake_ms, uint32_t failureCause,
                           bool networkSide, double now) {
  startup_ms_ = startup_ms;
  handshake_ms_ = handshake_ms;
  failureCause_ = failureCause;
  if (failureCause == E_INITSFCAUSE_NO_FAR_END_FTU_DETECTED) {
    // Only the subscriber's end sends before it hears the other one.
    lastDownstream_ = InitSignal::kNone;
    lastUpstream_ = networkSide ? InitSignal::kNone : InitSignal::kHandshake;
    return;
  }
  lastDownstream_ = failureCause == E_INITSFCAUSE_SUCCESSS ? InitSignal::kShowtime : reached(now);
  lastUpstream_ = lastDownstream_;
}

InitSignal Initialisation::reached(double now) const {
  if (state_ != LineState::kTraining) {
    return InitSignal::kHandshake;
  }
  return now - since_ < kChannelDiscovery_s ? InitSignal::kChannelDiscovery : InitSignal::kChannelAnalysis;
}

}  // namespace gfast::board
