#include <fmt/format.h>

#include "qvrcli/findings/rules.h"

namespace gfast::console {

namespace {

constexpr size_t kLatest = 4;  // quarter hours: the last hour

std::vector<IntervalReading> latestOf(const HistoryReading& history, size_t most) {
  std::vector<IntervalReading> latest;
  if (history.running) {
    latest.push_back(*history.running);
  }
  for (size_t i = 0; i < history.past.size() && latest.size() < most; i++) {
    latest.push_back(history.past[i]);
  }
  return latest;
}

// Whether an end had to follow something that it could measure, or lost the line. A healthy line changes its
// rate now and then, too.
bool adapted(const EndCounters& end, uint32_t measured_s) {
  constexpr uint32_t kSecondsPerAdaptation = 180;
  const uint32_t losses = end.lossOfSignal + end.lossOfMargin + end.lossOfRmc + end.lossOfPower;
  return end.fastRateAdaptations + losses > 0 || end.rateAdaptations > 1 + measured_s / kSecondsPerAdaptation;
}

void tellImpulses(const char* direction, const EndCounters& receiver, const EndCounters& sender,
                  uint32_t measured_s, std::vector<Finding>& findings) {
  constexpr uint32_t kErroredSeconds = 10;
  constexpr uint32_t kRepeatedInASecond = 5;
  if (receiver.erroredSeconds < kErroredSeconds &&
      sender.retransmittedDtus < kRepeatedInASecond * measured_s) {
    return;
  }
  findings.push_back(
      {"impulses", Sureness::kLikely,
       fmt::format("Impulses ({}): {} units sent again and {} errored second{} in {} s, while the line had "
                   "nothing to adapt to: they are too short for the SNR to show them.",
                   direction, sender.retransmittedDtus, receiver.erroredSeconds,
                   receiver.erroredSeconds == 1 ? "" : "s", measured_s)});
}

std::string spanOf(const std::vector<IntervalReading>& intervals) {
  uint32_t measured_s = 0;
  for (const IntervalReading& interval : intervals) {
    measured_s += interval.measuredTime_s;
  }
  const uint32_t minutes = measured_s / 60;
  return minutes < 60 ? fmt::format("{} min", minutes)
                      : fmt::format("{} h {} min", minutes / 60, minutes % 60);
}

void tellPowerLosses(const char* end, uint32_t times, const std::string& span,
                     std::vector<Finding>& findings) {
  if (times > 0) {
    findings.push_back({"power-loss", Sureness::kSure,
                        fmt::format("The {} end announced {} time{} within {} that it loses power.", end,
                                    times, times == 1 ? "" : "s", span)});
  }
}

}  // namespace

// The worst quarter hour of the last ones tells: an adaptation in another one is another story.
void findImpulses(const LineReading& line, std::vector<Finding>& findings) {
  const IntervalReading* worst = nullptr;
  const std::vector<IntervalReading> latest = latestOf(line.quarterHours, kLatest);
  const auto errors = [](const IntervalReading& interval) {
    return uint64_t{interval.near.counters.retransmittedDtus} + interval.far.counters.retransmittedDtus;
  };
  for (const IntervalReading& interval : latest) {
    const bool steady = !adapted(interval.near.counters, interval.measuredTime_s) &&
                        !adapted(interval.far.counters, interval.measuredTime_s);
    if (steady && interval.measuredTime_s > 0 && (worst == nullptr || errors(interval) > errors(*worst))) {
      worst = &interval;
    }
  }
  if (worst == nullptr) {
    return;
  }
  const EndCounters& network = (line.networkSide ? worst->near : worst->far).counters;
  const EndCounters& subscriber = (line.networkSide ? worst->far : worst->near).counters;
  tellImpulses("downstream", subscriber, network, worst->measuredTime_s, findings);
  tellImpulses("upstream", network, subscriber, worst->measuredTime_s, findings);
}

// An end counts what the other one announced with its last breath.
void findPowerLosses(const LineReading& line, std::vector<Finding>& findings) {
  const std::vector<IntervalReading> day = latestOf(line.quarterHours, 96);
  uint32_t byNear = 0;
  uint32_t byFar = 0;
  for (const IntervalReading& interval : day) {
    byNear += interval.near.counters.lossOfPower;
    byFar += interval.far.counters.lossOfPower;
  }
  const uint32_t ofSubscriber = line.networkSide ? byNear : byFar;
  const uint32_t ofNetwork = line.networkSide ? byFar : byNear;
  tellPowerLosses("subscriber's", ofSubscriber, spanOf(day), findings);
  tellPowerLosses("network", ofNetwork, spanOf(day), findings);
}

}  // namespace gfast::console
