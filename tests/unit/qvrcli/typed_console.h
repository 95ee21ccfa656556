// The console's interpreter in front of a driver that expects a list of requests: a test says what is typed,
// what the chip is asked, and what is printed.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qvrcli/session/interpreter.h"
#include "support/expected_requests.h"
#include "support/test_clock.h"
#include "unit/qvrcli/captured_console.h"

using namespace gfast;
using namespace gfast::console;

using Lines = std::vector<std::string>;

// The library is not started, so the only requests are those of the commands.
class TypedConsole : public testing::Test {
 protected:
  TypedConsole() {
    cli = console_.cli();
    testClock().setNow(1700000100);
  }

  // What one line prints.
  Lines typed(const std::string& line) { return console_.run(line); }

  // What was printed since the last line.
  Lines printedSince() { return console_.take(); }

  // What the last line returned to libcli.
  int result() const { return console_.result(); }

  // The requests that the next lines make.
  void expect(const Script& script) { driver_.expect(script); }

  // Every expected request was made so far.
  void verify() { driver_.verify(); }

  cli_def* interpreter() { return console_.cli(); }

 private:
  CapturedConsole console_;
  ExpectedRequests driver_{Script()};
};
