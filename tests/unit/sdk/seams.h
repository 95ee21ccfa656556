// What the tests of the device layer share: assertions that end the process, warnings in the trace log.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <qvr.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "support/expected_requests.h"

using namespace gfast;

// The statement ends the process by a memory fault, having printed what the matcher wants to see on standard
// output, and without a request that nobody expects.
#define EXPECT_ASSERTION(statement, matcher) \
  EXPECT_EXIT(                               \
      {                                      \
        std::signal(SIGSEGV, SIG_DFL);       \
        dup2(STDERR_FILENO, STDOUT_FILENO);  \
        statement;                           \
      },                                     \
      testing::KilledBySignal(SIGSEGV),      \
      testing::AllOf(testing::Not(testing::HasSubstr("expected was")), matcher))

// The report of an assertion of the device layer, or of another layer by its source name.
inline auto asserts(int id, const std::string& message, int parameter,
                    const std::string& file = "../qvrdev.c") {
  return testing::ContainsRegex("Assert " + std::to_string(id) + " in file " + file + " at line [0-9]+\n" +
                                message + "\nParam 0 = " + std::to_string(parameter) + "\n");
}

// Collects what the trace log lets through at warning level.
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

// A device that is open already, so that a script holds the requests of one operation only.
inline void openDevice(ExpectedRequests& driver, int device) {
  driver.expect(opens(device));
  ASSERT_EQ(QVR_deviceHandle(device), ExpectedRequests::descriptorOf(device));
}
