// What the chips said lately, kept for readers: a bounded list since start, and for each line how long it has
// been in its state and why it went down last.
#pragma once

#include <qvr.h>

#include <array>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace gfast::console {

constexpr size_t kMostRecentEvents = 256;  // the oldest one goes for the next

struct RecentEvent {
  time_t time;
  std::optional<QVR_lineId_t> line;  // none: it is of no line, or the chip does not say of which
  std::string what;
  std::string why;  // empty where there is no reason
};

struct LineFailure {
  time_t time;
  LINK_FAILURE_TYPE_E reason;
};

struct LineMemory {
  std::optional<time_t> stateSince;  // none: in this state since before the start
  std::optional<LineFailure> lastFailure;
};

struct RecentEvents {
  std::vector<RecentEvent> events;  // oldest first
  std::array<LineMemory, QVR_K_MAX_LINES> lines;
};

// What a reason says, in words; the number in words for one that nobody knows.
std::string failureText(LINK_FAILURE_TYPE_E reason);

// These are called by the handlers, on the notification thread.

void rememberLinkState(QVR_lineId_t line, G9701_linkState_t before, G9701_linkState_t after);

// A chip numbers its lines from 0, so this alone does not tell the line. The same chip's change out of
// showtime comes right behind it, and names it.
void rememberLineFailure(LINK_FAILURE_TYPE_E reason, time_t time);

// Anything else. The same again right behind itself is one event: a chip that does not answer is reported
// every few seconds.
void rememberEvent(std::optional<QVR_lineId_t> line, const char* what);

// A copy, on any thread.
RecentEvents recentEvents();

}  // namespace gfast::console
