// Warnings in the trace log.
#pragma once

#include <gmock/gmock.h>
#include <qvr.h>

#include <string>
#include <vector>

// Collects the messages of warning level and above.
class TraceLog {
 public:
  TraceLog() {
    lines().clear();
    QVR_setTraceLogLevel(QVRLOG_WARNING);
    QVR_registerTraceLogHandlerCB(
        [](QVR_logSeverity_t, const char* message) { lines().emplace_back(message); });
  }

  static std::vector<std::string>& lines() {
    static auto* collected = new std::vector<std::string>;
    return *collected;
  }
};

// A warning that an operation wrote about itself.
inline auto warns(const std::string& operation, const std::string& text) {
  return testing::MatchesRegex("\\[LOG_WARNING\\] " + operation + ":[0-9]+ " + text);
}
