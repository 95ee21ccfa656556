// A session is recorded where the chips are and seen again where they are not. Under the desk it is the
// console that ships which is recorded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "console/programs.h"
#include "support/stored_text.h"
#include "support/temporary_folder.h"

namespace {

using testing::HasSubstr;
using testing::Not;

// The line is lost while the session waits, and so are words of the log.
const std::string kBoard =
    boardWithLines("showtime") +
    "[[loop_event]]\nat_s = 1.5\ncut = true\n"
    "[[log]]\ndevice = 1\nat_s = 2\ncore = \"CP\"\ntext = \"word %d\\n\"\nparams = [7]\n";
const std::string kScript =
    "start logging\n"
    "show device-info 0\n"
    "show line status 0\n"
    "show inventory 0\n"
    "sleep 3\n"
    "show line status 0\n"
    "show init-failure-cause 0\n"
    "write memory 0 d0000000 16 1:2:3:4\n"
    "read memory 0 d0000000 16\n"
    "rediscover\n"
    "show network-info\n"
    "upgrade firmware none.bin\n";

struct Outcome {
  std::string output;
  std::string errors;
};

// What a session prints, and what comes by itself in between, apart: which lines of the one stand between
// which of the other is a matter of moments. So is the second in which an event is told, and whether a
// quarter hour ends meanwhile.
struct Printed {
  std::string session;
  std::string events;

  bool operator==(const Printed&) const = default;
};

Printed sorted(const std::string& output) {
  static const std::regex timeOfDay("\\d\\d:\\d\\d:\\d\\d");
  Printed printed;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (line.find("] QVR_15minCounter") != std::string::npos ||
        line.find("] QVR_update15minPeformance") != std::string::npos) {
      continue;
    }
    const bool event =
        line.starts_with("Link [") || line.starts_with("Line failure") || line.starts_with("DFE");
    if (event) {
      printed.events += std::regex_replace(line, timeOfDay, "hh:mm:ss") + '\n';
    } else {
      printed.session += line + '\n';
    }
  }
  return printed;
}

class FieldTrace : public testing::Test {
 protected:
  FieldTrace() { setenv("TZ", "UTC", 1); }

  Outcome recorded(const std::string& trace) {
    setenv("GFAST_TRACE", trace.c_str(), 1);
    Outcome outcome = run({gfastLab(), "--board", folder_.write("board.toml", kBoard), script()});
    unsetenv("GFAST_TRACE");
    return outcome;
  }

  Outcome replayed(const std::string& trace) { return run({GFAST_LAB, "--replay", trace, script()}); }

  Outcome run(const std::vector<std::string>& command) {
    ConsoleProgram program(LAUNCHER, command, folder_.path());
    EXPECT_EQ(program.wait(), 0);
    return {program.output(), program.errors()};
  }

  std::string script() const { return folder_.write("script.txt", kScript); }

  TemporaryFolder folder_;
};

TEST_F(FieldTrace, OfASessionLetsItBeSeenAgain) {
  const std::string trace = folder_.file("a.trace");
  const Outcome there = recorded(trace);
  EXPECT_EQ(there.errors, "");
  EXPECT_THAT(there.output, HasSubstr("Line failure event on line=0 reason=6 at time "));
  EXPECT_THAT(there.output, HasSubstr(" CP - word 7\n"));
  const Outcome here = replayed(trace);
  EXPECT_EQ(here.errors, "");
  EXPECT_EQ(sorted(here.output).session, sorted(there.output).session);
  EXPECT_EQ(sorted(here.output).events, sorted(there.output).events);
}

TEST_F(FieldTrace, OfAReplayIsTheSameSessionOnceMore) {
  const std::string first = folder_.file("a.trace");
  recorded(first);
  const std::string second = folder_.file("b.trace");
  setenv("GFAST_TRACE", second.c_str(), 1);
  const Outcome here = replayed(first);
  unsetenv("GFAST_TRACE");
  EXPECT_EQ(sorted(replayed(second).output).session, sorted(here.output).session);
}

TEST_F(FieldTrace, BlankedNamesNoCustomer) {
  const std::string trace = folder_.file("a.trace");
  setenv("GFAST_TRACE_BLANK", "1", 1);
  const Outcome there = recorded(trace);
  unsetenv("GFAST_TRACE_BLANK");
  EXPECT_THAT(there.output, HasSubstr("02:00:5e:00:00:01"));
  EXPECT_THAT(there.output, HasSubstr("VB02005E000002"));
  for (const char* const secret : {"5e000001", "5e000002", "56423032"}) {
    EXPECT_THAT(folder_.read("a.trace"), Not(HasSubstr(secret)));
  }
  const Outcome here = replayed(trace);
  EXPECT_EQ(here.errors, "");
  EXPECT_THAT(here.output, HasSubstr("MAC address                 00:00:00:00:00:00\n"));
  EXPECT_THAT(here.output, HasSubstr("SERIALNR:      XXXXXXXXXXXXXX\n"));
}

TEST_F(FieldTrace, IsBlankedLaterToo) {
  const std::string trace = folder_.file("a.trace");
  recorded(trace);
  EXPECT_THAT(folder_.read("a.trace"), HasSubstr("5e000001"));
  const std::string blanked = folder_.file("b.trace");
  EXPECT_EQ(run({GFAST_LAB, "--replay", trace, "--blank-into", blanked}).output, "");
  EXPECT_THAT(folder_.read("b.trace"), Not(HasSubstr("5e000001")));
  EXPECT_THAT(replayed(blanked).output, HasSubstr("MAC address                 00:00:00:00:00:00\n"));
}

TEST_F(FieldTrace, ThatCannotBeWrittenDisturbsNothing) {
  const std::vector<std::string> command{
      gfastLab(), "--board", quietBoard(),
      folder_.write("short.txt", "show device-info 0\nshow inventory 0\n")};
  const std::string undisturbed = run(command).output;
  EXPECT_THAT(undisturbed, HasSubstr("MAC address "));
  for (const char* const file : {"/dev/full", "/nonexistent/trace"}) {
    setenv("GFAST_TRACE", file, 1);
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.output, undisturbed);
    EXPECT_THAT(outcome.errors, HasSubstr(std::string("GFAST_TRACE: ") + file + ": "));
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
  }
}

TEST_F(FieldTrace, CutOffIsSeenAsFarAsItGoes) {
  const std::string trace = folder_.file("a.trace");
  recorded(trace);
  const std::string whole = folder_.read("a.trace");
  const std::string cut = folder_.write("b.trace", whole.substr(0, whole.find("memread f1000000") + 60));
  const Outcome here = replayed(cut);
  EXPECT_THAT(here.output, HasSubstr("MAC address                 02:00:5e:00:00:01\n"));
  EXPECT_THAT(here.errors, HasSubstr("b.trace: the last exchange is not whole and is left out\n"));
  EXPECT_THAT(here.errors,
              HasSubstr("b.trace: the trace holds no answer to: device 0 memread f1000000 116\n"));
}

// Field traces that are kept: what the console makes of them stays the same.
class KeptFieldTrace : public testing::TestWithParam<const char*> {};

TEST_P(KeptFieldTrace, PrintsWhatItPrintedBefore) {
  setenv("TZ", "UTC", 1);
  const std::string name = std::string(FIELD_TRACES "/") + GetParam();
  ConsoleProgram program(LAUNCHER, {GFAST_LAB, "--replay", name + ".trace", name + ".script"});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.errors(), "");
  expectStored(name + ".txt", program.output());
}

INSTANTIATE_TEST_SUITE_P(All, KeptFieldTrace, testing::Values("line-drops"));

}  // namespace
