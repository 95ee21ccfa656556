#include "virtual-board/chip/initialisation.h"

#include "chip/init_failure_causes.h"

namespace gfast::board {

namespace {

// How long the first part of training takes, and from when on upstream trains in it. Channel analysis takes
// the rest.
constexpr double kChannelDiscovery_s = 1.2;
constexpr double kVectoredTrainingFrom_s = 0.9;

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
  if (failureCause == E_INITSFCAUSE_SUCCESSS) {
    lastDownstream_ = DownstreamSignal::kShowtime;
    lastUpstream_ = UpstreamSignal::kShowtime;
  } else if (failureCause == E_INITSFCAUSE_NO_FAR_END_FTU_DETECTED) {
    // Only the subscriber's end sends before it hears the other one.
    lastDownstream_ = DownstreamSignal::kNone;
    lastUpstream_ = networkSide ? UpstreamSignal::kNone : UpstreamSignal::kHandshake;
  } else {
    takeReached(now);
  }
}

void Initialisation::takeReached(double now) {
  lastDownstream_ = DownstreamSignal::kHandshake;
  lastUpstream_ = UpstreamSignal::kHandshake;
  if (state_ != LineState::kTraining) {
    return;
  }
  const double elapsed_s = now - since_;
  const bool discovered = elapsed_s >= kChannelDiscovery_s;
  lastDownstream_ = discovered ? DownstreamSignal::kChannelAnalysis : DownstreamSignal::kChannelDiscovery;
  lastUpstream_ = discovered                             ? UpstreamSignal::kChannelAnalysis
                  : elapsed_s >= kVectoredTrainingFrom_s ? UpstreamSignal::kVectoredTraining
                                                         : UpstreamSignal::kChannelDiscovery;
}

}  // namespace gfast::board
