#include "virtual-board/line/line_ledger.h"

namespace gfast::board {

namespace {

constexpr EndCounter kFields[] = {
    &EndCounts::lossOfSignalFailures,  &EndCounts::lossOfRmcFailures,   &EndCounts::lossOfPowerFailures,
    &EndCounts::lossOfMarginFailures,  &EndCounts::gainAdjustments,     &EndCounts::initialisations,
    &EndCounts::failedInitialisations, &EndCounts::lossOfSignalSeconds, &EndCounts::unavailableSeconds};

}  // namespace

EndCounts operator-(EndCounts counts, const EndCounts& before) {
  counts.sent = counts.sent - before.sent;
  counts.received = counts.received - before.received;
  for (const EndCounter field : kFields) {
    counts.*field -= before.*field;
  }
  return counts;
}

LineLedger::LineLedger(uint32_t seed) : streams_{StreamMeter(seed, 0), StreamMeter(seed, 1)} {
  unavailable_.run(0, true);
}

void LineLedger::flow(double now, const std::array<StreamFraming, kEnds>& framing,
                      const std::array<ErrorRates, kEnds>& errors) {
  for (size_t end = 0; end < kEnds; end++) {
    streams_[end].flow(now, framing[end], errors[end]);
    withoutRmc_[1 - end].run(now, errors[end].rmcLost);
    ends_[end].failure = nullptr;
  }
  framing_ = framing;
  flowing_ = true;
  unavailable_.run(now, false);
}

void LineLedger::stop(double now) {
  if (!flowing_) {
    return;
  }
  for (StreamMeter& stream : streams_) {
    stream.stop(now);
  }
  for (size_t end = 0; end < kEnds; end++) {
    ends_[end].farHeard = total(now, 1 - end);
    withoutRmc_[end].run(now, false);
  }
  flowing_ = false;
  unavailable_.run(now, true);
}

void LineLedger::signalLost(double now, bool lost) {
  withoutSignal_.run(now, lost);
}

void LineLedger::fail(size_t end, EndCounter failure) {
  ends_[end].failure = failure;
  if (failure != nullptr) {
    count(end, failure);
  }
}

void LineLedger::restarted(double now, size_t end) {
  End& self = ends_[end];
  self.nearAtStart = total(now, end);
  self.farAtStart = total(now, 1 - end);
  self.farHeard = self.farAtStart;
  self.failure = nullptr;
}

EndView LineLedger::view(double now, size_t end) {
  const End& self = ends_[end];
  const auto state = [this](size_t sender) {
    const StreamMeter& stream = streams_[sender];
    return StreamState{framing_[sender], stream.load_percent(), stream.throughput(), stream.severeInRow()};
  };
  EndView view;
  view.near = total(now, end) - self.nearAtStart;
  view.far = (flowing_ ? total(now, 1 - end) : self.farHeard) - self.farAtStart;
  view.sends = state(end);
  view.receives = state(1 - end);
  view.showtime = flowing_;
  view.failure = self.failure;
  view.signalLost = withoutSignal_.since.has_value();
  view.rmcLost = withoutRmc_[end].since.has_value();
  view.rmcLostFor_s = withoutRmc_[end].current(now);
  view.signalLostFor_s = static_cast<uint32_t>(withoutSignal_.current(now));
  return view;
}

EndCounts LineLedger::total(double now, size_t end) {
  EndCounts counts = ends_[end].events;
  counts.sent = streams_[end].counts(now);
  counts.received = streams_[1 - end].counts(now);
  counts.lossOfSignalSeconds = withoutSignal_.seconds(now);
  counts.unavailableSeconds = unavailable_.seconds(now);
  return counts;
}

void LineLedger::Stopwatch::run(double now, bool on) {
  if (on == since.has_value()) {
    return;
  }
  before += current(now);
  since = on ? std::optional(now) : std::nullopt;
}

}  // namespace gfast::board
