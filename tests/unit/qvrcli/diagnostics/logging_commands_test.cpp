// Logging at the console: given these log records, when this is typed, this is printed and waited for; and
// the level of the trace.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "qvrcli/events/events.h"
#include "qvrcli/session/session_stream.h"
#include "qvrdev/callbacks.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

constexpr const char* kUsage = "start logging [<seconds>] [<filename>] : { <0>, <stdout> }";

class Logging : public TypedConsole {
 protected:
  // What is on standard output when a chip sends this log line.
  static std::string printedWhenAChipSpeaks(const char* text) {
    CaptureStdout();
    callbacks().logMessageCB.notify(QVR_deviceId_t{1}, text);
    std::fflush(stdout);
    return GetCapturedStdout();
  }

  static bool delivers() { return callbacks().logMessageCB.load() != nullptr; }

  static Lines waiting(cli_def* interpreter) {
    kept().clear();
    cli_print_callback(interpreter, [](cli_def*, const char* line) { kept().emplace_back(line); });
    printWaiting(interpreter);
    return kept();
  }

  // An interpreter in a session, and what the session's peer receives.
  class Connected {
   public:
    explicit Connected(cli_def* interpreter) : interpreter_(interpreter) {
      EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets_), 0);
      interpreter->client = fdopen(sockets_[0], "w+");
      cli_print_callback(interpreter, nullptr);
    }
    ~Connected() {
      std::fclose(interpreter_->client);
      interpreter_->client = nullptr;
      close(sockets_[1]);
    }

    std::string received() {
      std::fflush(interpreter_->client);
      char bytes[4096];
      const ssize_t count = recv(sockets_[1], bytes, sizeof bytes, MSG_DONTWAIT);
      return count > 0 ? std::string(bytes, static_cast<size_t>(count)) : std::string();
    }

   private:
    cli_def* interpreter_;
    int sockets_[2];
  };

 private:
  static Lines& kept() {
    static auto& lines = *new Lines;
    return lines;
  }
};

// Switching a device's log on opens it.
Script switchesOn() {
  return opens(0) + configuresLog(0) + opens(1) + configuresLog(1);
}

TEST_F(Logging, GoesOnUntilItIsStopped) {
  expect(switchesOn());
  EXPECT_THAT(typed("start logging"), ElementsAre("Logging started..."));
  EXPECT_THAT(testClock().sleeps(), IsEmpty());
  EXPECT_EQ(printedWhenAChipSpeaks("10:00:00 FRM00 - up\n"), "DFE01: 10:00:00 FRM00 - up\n");
  EXPECT_THAT(typed("stop logging"), ElementsAre("Logging stopped"));
  EXPECT_FALSE(delivers());
  EXPECT_EQ(printedWhenAChipSpeaks("down\n"), "");
}

// What is printed is true at that moment.
TEST_F(Logging, IsOnWhenItSaysThatItStartedAndOffWhenItSaysThatItStopped) {
  static std::vector<std::pair<std::string, bool>> said;
  expect(switchesOn());
  cli_print_callback(interpreter(), [](cli_def*, const char* line) { said.emplace_back(line, delivers()); });
  typed("start logging 2");
  typed("stop logging");
  EXPECT_THAT(said, ElementsAre(Pair("Logging started...", true), Pair("Logging stopped...", false),
                                Pair("Logging stopped", false)));
}

TEST_F(Logging, GoesOnForZeroSeconds) {
  expect(switchesOn());
  EXPECT_THAT(typed("start logging 0"), ElementsAre("Logging started..."));
  EXPECT_TRUE(delivers());
}

TEST_F(Logging, GoesOnForAWordWithoutDigits) {
  expect(switchesOn());
  EXPECT_THAT(typed("start logging soon"), ElementsAre("Logging started..."));
  EXPECT_TRUE(delivers());
}

TEST_F(Logging, DoesNotWaitForOneSecond) {
  expect(switchesOn());
  EXPECT_THAT(typed("start logging 1"), ElementsAre("Logging started...", "Logging stopped..."));
  EXPECT_THAT(testClock().sleeps(), IsEmpty());
  EXPECT_FALSE(delivers());
}

TEST_F(Logging, WaitsTwoSecondsForThree) {
  expect(switchesOn());
  EXPECT_THAT(typed("start logging 3"), ElementsAre("Logging started...", "Logging stopped..."));
  EXPECT_THAT(testClock().sleeps(), ElementsAre(microseconds(seconds(1)), microseconds(seconds(1))));
  EXPECT_FALSE(delivers());
}

TEST_F(Logging, DeliversWhileItWaits) {
  expect(switchesOn());
  std::string printed;
  testClock().onSleep([&printed] { printed += printedWhenAChipSpeaks("up\n"); });
  typed("start logging 4");
  EXPECT_EQ(printed, "DFE01: up\nDFE01: up\nDFE01: up\n");
}

TEST_F(Logging, DoesNotStartForABadNumberOfSeconds) {
  for (const char* line : {"start logging -1", "start logging \"\"", "start logging -2147483648"}) {
    EXPECT_THAT(typed(line), ElementsAre("Invalid seconds counter")) << line;
  }
  EXPECT_FALSE(delivers());
}

TEST_F(Logging, TakesNoFileName) {
  EXPECT_THAT(typed("start logging 5 out.txt"), ElementsAre(kUsage));
  EXPECT_THAT(typed("start logging 5 out.txt more"), ElementsAre(kUsage));
  EXPECT_THAT(typed("start logging ?"), ElementsAre(kUsage));
  EXPECT_FALSE(delivers());
  EXPECT_NE(access("out.txt", F_OK), 0);
}

TEST_F(Logging, MayBeStoppedWhenItWasNotStarted) {
  EXPECT_THAT(typed("stop logging"), ElementsAre("Logging stopped"));
  EXPECT_THAT(typed("stop logging now"), ElementsAre("Logging stopped"));
  EXPECT_THAT(typed("stop logging 1 2"), ElementsAre("stop logging "));
}

// A log terminal that is a pipe, whose other end the test reads.
class Terminal {
 public:
  Terminal() {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_NONBLOCK), 0);
    reading_ = ends[0];
    setTerminal(fdopen(ends[1], "w"));
  }
  ~Terminal() { close(reading_); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  bool isOpen() const {
    char byte = 0;
    return read(reading_, &byte, 1) < 0 && errno == EAGAIN;
  }

 private:
  int reading_ = -1;
};

TEST_F(Logging, ClosesTheTerminalWhenItStops) {
  const Terminal terminal;
  EXPECT_TRUE(terminal.isOpen());
  typed("stop logging");
  EXPECT_FALSE(terminal.isOpen());
}

TEST_F(Logging, ClosesTheTerminalWhenItsTimeIsOver) {
  const Terminal terminal;
  expect(switchesOn());
  typed("start logging");
  EXPECT_TRUE(terminal.isOpen());
  typed("start logging 1");
  EXPECT_FALSE(terminal.isOpen());
}

TEST_F(Logging, IsNotShownTwiceInAScript) {
  expect(switchesOn());
  typed("start logging");
  EXPECT_EQ(printedWhenAChipSpeaks("up\n"), "DFE01: up\n");
  EXPECT_THAT(waiting(interpreter()), IsEmpty());
}

TEST_F(Logging, IsShownInTheSessionToo) {
  expect(switchesOn());
  Connected session(interpreter());
  typed("start logging");
  EXPECT_EQ(session.received(), "Logging started...\r\n");
  EXPECT_EQ(printedWhenAChipSpeaks("100%s up\r\n"), "DFE01: 100%s up\r\n");
  EXPECT_EQ(printedWhenAChipSpeaks("no end"), "DFE01: no end");
  EXPECT_EQ(session.received(), "");
  EXPECT_THAT(waiting(interpreter()), ElementsAre("DFE01: 100%s up", "DFE01: no end"));
  typed("stop logging");
  handleLogMessage(0, "late\n");
  EXPECT_THAT(waiting(interpreter()), IsEmpty());
}

TEST_F(Logging, IsShownSecondBySecondWhileTheSessionWaits) {
  expect(switchesOn());
  Connected session(interpreter());
  std::string seen;
  testClock().onSleep([&] {
    seen += "[" + session.received() + "]";
    printedWhenAChipSpeaks("up\n");
  });
  typed("start logging 3");
  EXPECT_EQ(seen, "[Logging started...\r\n][DFE01: up\r\n]");
  EXPECT_EQ(session.received(), "DFE01: up\r\nLogging stopped...\r\n");
}

TEST_F(Logging, GoesToAnOpenTerminalOnly) {
  expect(switchesOn());
  Connected session(interpreter());
  typed("start logging");
  setTerminal(std::tmpfile());
  EXPECT_EQ(printedWhenAChipSpeaks("up\n"), "");
  EXPECT_THAT(waiting(interpreter()), IsEmpty());
}

TEST_F(Logging, EndsWithTheSessionThatWaitsForIt) {
  expect(switchesOn());
  Connected session(interpreter());
  testClock().setPeerGone(true);
  typed("start logging 2147483647");
  EXPECT_EQ(testClock().sleeps().size(), 1U);
  EXPECT_FALSE(delivers());
}

TEST_F(Logging, StartsWithoutDevicesAsWell) {
  expect(opens(0).fails(ENOENT) + opens(1).fails(ENOENT));
  EXPECT_THAT(typed("start logging"), ElementsAre("Logging started..."));
}

using LogLevel = TypedConsole;

constexpr const char* kBadLevel = "Invalid log level - must be between 0 and 4";

TEST_F(LogLevel, IsShownAsItIsSet) {
  EXPECT_THAT(typed("show log-level"), ElementsAre("LOG_ERR"));
  const char* const names[] = {"LOG_CRIT", "LOG_ERR", "LOG_WARNING", "LOG_INFO", "LOG_DEBUG"};
  for (int level = 0; level < 5; level++) {
    EXPECT_THAT(typed("set log-level " + std::to_string(level)), IsEmpty());
    EXPECT_THAT(typed("show log-level"), ElementsAre(names[level]));
    EXPECT_EQ(QVR_traceLogLevel(), level);
  }
}

TEST_F(LogLevel, OutOfRangeIsReportedAndStillSet) {
  EXPECT_THAT(typed("set log-level 9"), ElementsAre(kBadLevel));
  EXPECT_EQ(QVR_traceLogLevel(), 9);
  EXPECT_THAT(typed("show log-level"), ElementsAre("LOG_UNKNOWN"));
  EXPECT_THAT(typed("set log-level -1"), ElementsAre(kBadLevel));
  EXPECT_EQ(QVR_traceLogLevel(), static_cast<QVR_logSeverity_t>(0xFFFFFFFF));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(LogLevel, WithoutANumberStaysAsItIs) {
  typed("set log-level 3");
  EXPECT_THAT(typed("set log-level LOG_DEBUG"), IsEmpty());
  EXPECT_THAT(typed("set log-level \"\""), ElementsAre(kBadLevel));
  EXPECT_THAT(typed("show log-level"), ElementsAre("LOG_INFO"));
}

TEST_F(LogLevel, TakesOneWord) {
  const std::string usage =
      "set log-level <0..4> : 0=LOG_CRIT, 1=LOG_ERR, 2=LOG_WARNING, 3=LOG_INFO, 4=LOG_DEBUG";
  EXPECT_THAT(typed("set log-level"), ElementsAre(usage));
  EXPECT_THAT(typed("set log-level 1 2"), ElementsAre(usage));
  EXPECT_THAT(typed("show log-level 1"), ElementsAre("show log-level"));
}

}  // namespace
