// The program itself: its command line, and how a program under it begins and ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "support/console_session.h"
#include "support/temporary_folder.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

ConsoleProgram desk(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), GFAST_DESK);
  return ConsoleProgram("", arguments);
}

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

Outcome outcomeOf(const std::vector<std::string>& arguments) {
  ConsoleProgram program = desk(arguments);
  const int status = program.wait();
  return {status, program.output(), program.errors()};
}

Outcome shell(const std::string& commands) {
  return outcomeOf({"--", "sh", "-c", commands});
}

// Whether the process has ended, within some seconds.
bool hasEnded(pid_t process) {
  for (int i = 0; i < 1000; i++) {
    if (kill(process, 0) != 0) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

TEST(GfastDesk, HelpExplainsEverything) {
  const Outcome help = outcomeOf({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* text : {"--board FILE", "--trace-requests FILE", "--version", "PROGRAM",
                           "/proc/gfast/rediscover", "exit status 2"}) {
    EXPECT_THAT(help.output, HasSubstr(text));
  }
}

TEST(GfastDesk, TellsItsVersion) {
  const Outcome version = outcomeOf({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "gfast-desk " PROJECT_VERSION "\n");
}

TEST(GfastDesk, MistakesOnTheCommandLineAreOneLineAndStatus2) {
  const struct {
    std::vector<std::string> arguments;
    const char* line;
  } mistakes[] = {
      {{}, "gfast-desk: PROGRAM is missing (--help explains)\n"},
      {{"--"}, "gfast-desk: PROGRAM is missing (--help explains)\n"},
      {{"--boards", "x", "--", "true"},
       "gfast-desk: The following argument was not expected: --boards (--help explains)\n"},
      {{"--board", "missing.toml", "--", "true"}, "missing.toml: No such file or directory\n"},
      {{"--trace-requests", "/nonexistent/x", "--", "true"},
       "gfast-desk: /nonexistent/x: No such file or directory\n"},
      {{"--", GFAST_DESK, "--", "true"},
       "gfast-desk: this machine cannot answer another program's system calls: seccomp: Device or resource "
       "busy\n"},
  };
  for (const auto& mistake : mistakes) {
    const Outcome outcome = outcomeOf(mistake.arguments);
    EXPECT_EQ(outcome.status, 2) << mistake.line;
    EXPECT_EQ(outcome.errors, mistake.line);
    EXPECT_EQ(outcome.output, "");
  }
}

TEST(GfastDesk, EndsAsItsProgramEnds) {
  EXPECT_EQ(shell("exit 0").status, 0);
  EXPECT_EQ(shell("exit 7").status, 7);
  EXPECT_EQ(shell("kill -KILL $$").status, 128 + SIGKILL);
  EXPECT_EQ(shell("kill -SEGV $$").status, 128 + SIGSEGV);
}

TEST(GfastDesk, SaysWhyAProgramCannotBeStarted) {
  const Outcome missing = outcomeOf({"--", "/no/such/program"});
  EXPECT_EQ(missing.status, 127);
  EXPECT_EQ(missing.errors, "gfast-desk: /no/such/program: No such file or directory\n");
  const Outcome folder = outcomeOf({"--", "/tmp"});
  EXPECT_EQ(folder.status, 126);
  EXPECT_EQ(folder.errors, "gfast-desk: /tmp: Permission denied\n");
}

TEST(GfastDesk, LeavesTheProgramsWordsAndStreamsAlone) {
  const Outcome words = outcomeOf({"--", "printf", "%s|", "--help", "--", "[a,b]", "", "--board"});
  EXPECT_EQ(words.output, "--help|--|[a,b]||--board|");
  const Outcome streams = shell("echo out; echo err >&2; ls -l /proc/self/fd | grep -c gfast");
  EXPECT_EQ(streams.output, "out\n0\n");
  EXPECT_EQ(streams.errors, "err\n");
}

TEST(GfastDesk, PassesSignalsOn) {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGUSR1}) {
    const std::string number = std::to_string(signal);
    ConsoleProgram program =
        desk({"--", "sh", "-c",
              "trap 'exit " + number + "' " + number + "; echo ready; while :; do sleep 0.01; done"});
    program.awaitOutput("ready\n");
    kill(program.pid(), signal);
    EXPECT_EQ(program.wait(), signal);
  }
  ConsoleProgram program = desk({"--", "sh", "-c", "echo ready; exec sleep 1000"});
  program.awaitOutput("ready\n");
  kill(program.pid(), SIGTERM);
  EXPECT_EQ(program.wait(), 128 + SIGTERM);
}

TEST(GfastDesk, EndsWhatTheProgramLeavesRunning) {
  const Outcome outcome = shell("sleep 1000 >/dev/null 2>&1 & echo $!; exit 5");
  EXPECT_EQ(outcome.status, 5);
  EXPECT_NE(kill(std::stoi(outcome.output), 0), 0);
}

TEST(GfastDesk, TakesTheProgramAlongWhenItIsKilled) {
  ConsoleProgram program = desk({"--", "sh", "-c", "echo $$; exec sleep 1000"});
  const pid_t process = std::stoi(program.awaitOutput("\n"));
  kill(program.pid(), SIGKILL);
  EXPECT_TRUE(hasEnded(process));
}

TEST(GfastDesk, TracesTheRequests) {
  const TemporaryFolder scratch;
  const std::string trace = scratch.path() + "/trace";
  EXPECT_EQ(
      outcomeOf({"--trace-requests", trace, "--", "sh", "-c", ": <>/dev/gfdfe1; : <>/dev/gfdfe0"}).status, 0);
  std::ifstream file(trace);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_THAT(text, HasSubstr(" 1 open - 0 ok\n"));
  EXPECT_THAT(text, HasSubstr(" 0 open - 0 ok\n"));
}

TEST(GfastDesk, KnowsTheBoardFilesBoard) {
  const TemporaryFolder scratch;
  const std::string board = scratch.write("board.toml", "[board]\ndevices = 1\n");
  const Outcome outcome =
      outcomeOf({"--board", board, "--", "sh", "-c", ": <>/dev/gfdfe0 && echo there; : <>/dev/gfdfe1"});
  EXPECT_EQ(outcome.output, "there\n");
  EXPECT_THAT(outcome.errors, HasSubstr("No such device"));
}

#ifdef GFAST_CLI_STATIC
// Without a dynamic loader and with another way of asking the system.
TEST(GfastDesk, ServesAStaticProgram) {
  const TemporaryFolder scratch;
  const std::string script =
      scratch.write("a.txt", "read memory 0 e0000238 4\nrediscover\nshow device-info 1 | include FW\n");
  const Outcome outcome = outcomeOf({"--", GFAST_CLI_STATIC, script});
  EXPECT_EQ(outcome.output, "e0000238: 01800000\nFW State                                  APP\n");
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(outcome.status, 0);
}
#endif

}  // namespace
