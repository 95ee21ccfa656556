#include "qvrcli/events/recent_events.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <iterator>
#include <mutex>
#include <string_view>
#include <utility>

#include "clock/clock.h"
#include "qvrcli/text/link_states.h"

namespace gfast::console {

namespace {

struct Remembered {
  std::mutex lock;
  std::deque<RecentEvent> events;
  std::array<LineMemory, QVR_K_MAX_LINES> lines;
  std::optional<LineFailure> unnamed;  // the last failure, until its line is known
};

// Never destroyed: the notification thread may still write while the process exits.
Remembered& remembered() {
  static auto& all = *new Remembered;
  return all;
}

constexpr std::string_view kFailure = "line failure";

constexpr const char* kReasons[] = {"no error",
                                    "no G.fast in the handshake",
                                    "severely errored seconds",
                                    "loss of RMC",
                                    "loss of power",
                                    "loss of margin",
                                    "loss of signal",
                                    "initialisation failed",
                                    "high error rate"};

std::string stateText(G9701_linkState_t state) {
  const std::string_view padded = linkStateString(static_cast<int>(state));
  return std::string(padded.substr(0, padded.find_last_not_of(' ') + 1));
}

// With the lock held.
void keep(Remembered& all, RecentEvent event) {
  if (all.events.size() == kMostRecentEvents) {
    all.events.pop_front();
  }
  all.events.push_back(std::move(event));
}

// Gives the failure that was kept last its line. With the lock held.
void nameLine(Remembered& all, QVR_lineId_t line) {
  const auto failure =
      std::ranges::find(all.events.rbegin(), all.events.rend(), kFailure, &RecentEvent::what);
  if (failure != all.events.rend()) {
    failure->line = line;
  }
}

bool isLine(QVR_lineId_t line) {
  return line >= 0 && line <= QVR_K_LINE_ID_LAST;
}

}  // namespace

std::string failureText(LINK_FAILURE_TYPE_E reason) {
  const auto number = static_cast<uint32_t>(reason);
  return number < std::size(kReasons) ? kReasons[number] : fmt::format("reason {}", number);
}

void rememberLinkState(QVR_lineId_t line, G9701_linkState_t before, G9701_linkState_t after) {
  if (!isLine(line)) {
    return;
  }
  const time_t now = clockSource().now();
  Remembered& all = remembered();
  const std::lock_guard guard(all.lock);
  LineMemory& memory = all.lines[static_cast<size_t>(line)];
  memory.stateSince = now;
  std::string why;
  if (before == LS_SHOWTIME && all.unnamed) {
    memory.lastFailure = std::exchange(all.unnamed, std::nullopt);
    why = failureText(memory.lastFailure->reason);
    nameLine(all, line);
  }
  keep(all, {now, line, fmt::format("{} to {}", stateText(before), stateText(after)), why});
}

void rememberLineFailure(LINK_FAILURE_TYPE_E reason, time_t time) {
  Remembered& all = remembered();
  const std::lock_guard guard(all.lock);
  all.unnamed = {time, reason};
  keep(all, {time, std::nullopt, std::string(kFailure), failureText(reason)});
}

void rememberEvent(std::optional<QVR_lineId_t> line, const char* what) {
  const time_t now = clockSource().now();
  Remembered& all = remembered();
  const std::lock_guard guard(all.lock);
  const RecentEvent event{now, line && isLine(*line) ? line : std::nullopt, what, ""};
  const bool again =
      !all.events.empty() && all.events.back().what == event.what && all.events.back().line == event.line;
  if (!again) {
    keep(all, event);
  }
}

RecentEvents recentEvents() {
  Remembered& all = remembered();
  const std::lock_guard guard(all.lock);
  return {{all.events.begin(), all.events.end()}, all.lines};
}

}  // namespace gfast::console
