// Versions, logs, inventory, restart state and inter-chip links, typed at the real program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "console/lab_on_board.h"
#include "support/stored_text.h"

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

const std::string kQuiet = boardWithLines("showtime");

class Diagnostics : public LabOnBoard {
 protected:
  // A script's output, and how the program ended.
  struct Ended {
    int status;
    std::string output;
  };
  Ended ranScript(const std::string& board, const std::string& commands) {
    const std::string file = folder().write("board.toml", board);
    const std::string script = folder().write("script.txt", commands);
    ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", file, script}, folder().path());
    const int status = program.wait();
    return {status, program.output()};
  }
};

// Every line typed and what it answered, as a terminal shows it.
std::string transcript(OpenSession& session, const std::vector<std::string>& lines) {
  std::string shown;
  for (const std::string& line : lines) {
    shown += "(gfast-cli)> " + line + "\r\n" + session.type(line);
  }
  return shown;
}

TEST_F(Diagnostics, MatchTheTranscript) {
  start(kQuiet);
  expectStored(TRANSCRIPTS "/diagnostics.txt",
               transcript(session(), {"show version",
                                      "show version and more",
                                      "show log-level",
                                      "set log-level 2",
                                      "show log-level",
                                      "set log-level 9",
                                      "show log-level",
                                      "set log-level -1",
                                      "set log-level loud",
                                      "set log-level 4",
                                      "show log-level",
                                      "show log-level 1",
                                      "show system restart-state",
                                      "set inventory 0 41:42:43:44 SN-0001",
                                      "set inventory 0 01:02:03:04:05:06:07:08 SN1 extra",
                                      "set inventory 2 41 SN",
                                      "read memory 0 f100000c 40",
                                      "set inventory",
                                      "read memory 0 f100000c 40",
                                      "start logging -1",
                                      "start logging 5 out.txt",
                                      "start logging 1",
                                      "stop logging",
                                      "stop logging now please",
                                      "start extcom-test 1 2",
                                      "show extcom-results 1 2"}));
}

TEST_F(Diagnostics, RestartStateReportsAChangedSystemParameter) {
  start(kQuiet);
  EXPECT_EQ(typed("show system restart-state"), "system does NOT require restart\r\n");
  // innerVlanID, a parameter of the system configuration state.
  const std::string parameter = typed("show params | include innerVlanID");
  const size_t bracket = parameter.find('[');
  ASSERT_NE(bracket, std::string::npos) << parameter;
  EXPECT_EQ(typed("write memory 0 " + parameter.substr(bracket + 1, 8) + " 2 07:00"), "");
  EXPECT_EQ(typed("show system restart-state"), "system requires restart (system parameter changed)\r\n");
}

TEST_F(Diagnostics, SessionGoesOnWhenTheRestartStateCannotBeRead) {
  start(kQuiet + "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0xE0000238\ncount = 0\n");
  EXPECT_EQ(typed("show system restart-state"), "");
  EXPECT_EQ(typed("show version"), kVersion);
}

// ---- Logging ----

// A log record of device 0 so many seconds after power-up.
std::string logAt(const std::string& seconds, const std::string& text) {
  return "[[log]]\ndevice = 0\nat_s = " + seconds + "\ncore = \"FRM\"\ntext = \"" + text +
         "\"\nparams = [7]\n";
}

const std::string kStamp = "DFE00: [0-9:]+ FRM00 - ";

// What is shown without its one line of the log. A waiting record is read as soon as logging starts, so its
// line comes before or after the command's own.
std::string withoutLogLine(const std::string& shown, const std::string& text) {
  const std::regex line(kStamp + text + "\r?\n");
  EXPECT_EQ(std::distance(std::sregex_iterator(shown.begin(), shown.end(), line), std::sregex_iterator()), 1)
      << shown;
  return std::regex_replace(shown, line, "");
}

TEST_F(Diagnostics, LogIsShownInTheSessionForSomeSeconds) {
  start(kQuiet + logAt("0.1", "sync at %d\\n"));
  EXPECT_EQ(withoutLogLine(typed("start logging 3"), "sync at 7"),
            "Logging started...\r\nLogging stopped...\r\n");
  EXPECT_THAT(program().output(), MatchesRegex("(.|\n)*" + kStamp + "sync at 7\n(.|\n)*"));
}

TEST_F(Diagnostics, LogIsShownUntilItIsStopped) {
  start(kQuiet + logAt("0.1", "first\\n"));
  std::string shown = typed("start logging");
  program().awaitOutput("first\n");
  shown += typed("show version");
  EXPECT_EQ(withoutLogLine(shown, "first"), std::string("Logging started...\r\n") + kVersion);
  EXPECT_EQ(typed("stop logging"), "Logging stopped\r\n");
  EXPECT_EQ(typed("show version"), kVersion);
}

TEST_F(Diagnostics, LogBeginsOnALineOfItsOwnBelowHalfACommand) {
  start(kQuiet + logAt("4", "first\\n"));
  EXPECT_EQ(typed("start logging"), "Logging started...\r\n");
  EXPECT_THAT(session().typeKeys("show ver"), MatchesRegex("show ver\r\n" + kStamp + "first\r\n"));
  EXPECT_EQ(session().typeKeys("sion\r"), std::string("show version\r\n") + kVersion);
}

TEST_F(Diagnostics, LogOfABurstIsShownWhole) {
  std::string board = kQuiet;
  for (int i = 0; i < 300; i++) {
    board += logAt(std::to_string(5 + i / 1000.0), "burst\\n");
  }
  start(board);
  const std::string shown = typed("start logging") + typed("sleep 10");
  program().awaitOutput("burst", 300);
  const std::string lines = shown + typed("show version");
  size_t count = 0;
  for (size_t at = lines.find("burst"); at != std::string::npos; at = lines.find("burst", at + 1)) {
    count++;
  }
  EXPECT_EQ(count, 300U);
}

TEST_F(Diagnostics, LoggingStopsWhenItsSessionIsGone) {
  start(kQuiet + logAt("8", "late\\n"));
  session().send("start logging 86400\r");
  session().readUntil("Logging started...");
  session().reset();
  OpenSession next(program().port());
  EXPECT_EQ(next.type("show version"), kVersion);
  EXPECT_EQ(next.type("sleep 9"), "");
  EXPECT_THAT(program().output(), Not(HasSubstr("late")));
}

TEST_F(Diagnostics, LogOfAScriptIsPrintedOnce) {
  const Ended ended = ranScript(kQuiet + logAt("0.1", "only once\\n"), "start logging 3\n");
  EXPECT_EQ(ended.status, 0);
  EXPECT_EQ(withoutLogLine(ended.output, "only once"), "Logging started...\nLogging stopped...\n");
}

// ---- Inter-chip links ----

// The chips' programs address a third device, which ends the process on purpose.
TEST_F(Diagnostics, ExtcomCommandsEndWithAnAssertionAtTheThirdDevice) {
  for (const char* command : {"start extcom-test\n", "show extcom-results\n"}) {
    const Ended ended = ranScript(kQuiet, std::string("show version ?\n") + command + "show version\n");
    EXPECT_EQ(ended.status, killedBy(SIGSEGV)) << command;
    EXPECT_THAT(ended.output,
                MatchesRegex("show version\nAssert 100 in file \\.\\./qvrdev\\.c at line [0-9]+\n"
                             "Unknown device handle\nParam 0 = 2\n"))
        << command;
  }
}

TEST_F(Diagnostics, ExtcomResultsMatchTheTranscript) {
  start(kQuiet + "[[fault]]\ndevice = 0\nrequest = \"memwrite\"\naddress = 0xA00B0140\ncount = 0\n");
  EXPECT_EQ(typed("start extcom-test"), "Failed starting Extcom Connectivity Test (13)\r\n");
  expectStored(TRANSCRIPTS "/extcom_results.txt", transcript(session(), {"show extcom-results"}));
}

TEST_F(Diagnostics, WithoutDevicesMatchTheTranscript) {
  const Ended ended = ranScript(
      "[board]\ndevices = 0\n",
      "show version\nset log-level 1\nshow log-level\nshow system restart-state\nset inventory 0 41 SN\n"
      "set inventory 1 41 SN\nstart logging 1\nstop logging\nstart extcom-test\n"
      "show extcom-results\ntransmit signal\nreceive signal 1\ngenerate signal\ntest afe-loop 0 1\n"
      "test afe-mtpr 0 1\ntest afe-mtpr-loop 0 1\nanalyze crashdump 1\n");
  EXPECT_EQ(ended.status, 0);
  expectStored(TRANSCRIPTS "/diagnostics_without_devices.txt", ended.output);
}

}  // namespace
