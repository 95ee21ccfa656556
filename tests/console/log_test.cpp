// Standard output as a log: GFAST_LOG, through the real program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "console/programs.h"
#include "support/temporary_folder.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kListening = "Listening on port ";

void awaitFile(const TemporaryFolder& folder, const std::string& name) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!folder.has(name) && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

// A file's content, once the text is in it; what there is when that takes too long.
std::string awaitInFile(const TemporaryFolder& folder, const std::string& name, const std::string& text) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  std::string content;
  while (std::chrono::steady_clock::now() < end) {
    content = folder.has(name) ? folder.read(name) : "";
    if (content.find(text) != std::string::npos) {
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return content;
}

uint16_t portIn(const std::string& log) {
  return static_cast<uint16_t>(
      std::stoi(log.substr(log.find(kListening) + std::string_view(kListening).size())));
}

// gfast-lab whose standard output is a file of this folder.
class LoggingLab : public testing::Test {
 protected:
  LoggingLab() { setenv("GFAST_LOG", folder_.file("log").c_str(), 1); }

  // A session, as often as told, up to its prompt.
  static void openSessions(uint16_t port, int times = 1) {
    for (int i = 0; i < times; i++) {
      OpenSession session(port);
      EXPECT_EQ(session.type("show version"), kVersion);
      session.send("quit\r\n");
      session.readToEnd();
    }
  }

  TemporaryFolder folder_;
};

TEST_F(LoggingLab, WritesToTheFileAndNotToStandardOutput) {
  ConsoleProgram program = lab({"--port", "0"});
  const uint16_t port = portIn(awaitInFile(folder_, "log", "\n"));
  openSessions(port);
  EXPECT_THAT(awaitInFile(folder_, "log", "accepted"), HasSubstr(" * accepted connection from 127.0.0.1\n"));
  EXPECT_EQ(program.output(), "");
}

TEST_F(LoggingLab, AddsToWhatTheFileHas) {
  folder_.write("log", "yesterday\n");
  ConsoleProgram program = lab({"--port", "0"});
  EXPECT_THAT(awaitInFile(folder_, "log", kListening), StartsWith("yesterday\nListening on port "));
}

TEST_F(LoggingLab, OpensTheFileAgainAtHangup) {
  ConsoleProgram program = lab({"--port", "0"});
  const uint16_t port = portIn(awaitInFile(folder_, "log", "\n"));
  OpenSession session(port);
  const std::string before = awaitInFile(folder_, "log", "accepted");
  std::rename(folder_.file("log").c_str(), folder_.file("log.1").c_str());
  kill(program.pid(), SIGHUP);
  awaitFile(folder_, "log");
  EXPECT_EQ(session.type("show version"), kVersion) << "the session goes on";
  session.close();
  openSessions(port);
  EXPECT_THAT(awaitInFile(folder_, "log", "accepted"), HasSubstr("accepted connection"));
  EXPECT_EQ(folder_.read("log.1"), before);
}

TEST_F(LoggingLab, StaysWhereItIsWhenTheFileCannotBeOpened) {
  setenv("GFAST_LOG", folder_.file("none/log").c_str(), 1);
  ConsoleProgram program = lab({"--port", "0"});
  const uint16_t port = program.port();
  openSessions(port);
  EXPECT_THAT(program.awaitOutput("accepted"), HasSubstr(" * accepted connection from 127.0.0.1\n"));
  mkdir(folder_.file("none").c_str(), 0700);
  kill(program.pid(), SIGHUP);
  awaitFile(folder_, "none/log");
  openSessions(port);
  EXPECT_THAT(awaitInFile(folder_, "none/log", kListening), HasSubstr(kListening)) << "a hangup tries again";
  kill(program.pid(), SIGTERM);
  program.wait();
  EXPECT_EQ(program.errors(), "GFAST_LOG=" + folder_.file("none/log") + ": No such file or directory\n");
}

TEST_F(LoggingLab, TakesRegularFilesOnly) {
  setenv("GFAST_LOG", "/dev/full", 1);
  ConsoleProgram program = lab({"--port", "0"});
  openSessions(program.port());
  kill(program.pid(), SIGTERM);
  program.wait();
  EXPECT_EQ(program.errors(), "GFAST_LOG=/dev/full: Invalid argument\n");
}

TEST_F(LoggingLab, GoesOnWhenTheFileMayNotGrow) {
  // One block: 512 or 1024 bytes, after which a program that writes on gets a signal that ends it.
  folder_.write("little", "ulimit -f 1\nexec \"$@\"\n");
  ConsoleProgram program("sh " + folder_.file("little") + " " LAUNCHER,
                         {gfastLab(), "--board", quietBoard(), "--port", "0"});
  const uint16_t port = portIn(awaitInFile(folder_, "log", "\n"));
  openSessions(port, 40);
  EXPECT_TRUE(program.running());
  EXPECT_LE(folder_.read("log").size(), 1024U);
}

TEST_F(LoggingLab, LeavesAScriptsOutputToWhoeverRunsIt) {
  ConsoleProgram program = lab({folder_.write("script", "show version\n")});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(), "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $\n");
  EXPECT_FALSE(folder_.has("log"));
}

TEST(SystemLog, TakesStandardOutputAwayAndEndsWithTheConsole) {
  setenv("GFAST_LOG", "syslog", 1);
  setenv("GFAST_LISTEN", "127.0.0.1:9218", 1);
  ConsoleProgram program = lab({});
  for (int tries = 0;; tries++) {
    try {
      OpenSession session(9218);
      EXPECT_EQ(session.type("show version"), kVersion);
      break;
    } catch (const std::runtime_error&) {
      ASSERT_LT(tries, 500) << "it does not listen";
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  kill(program.pid(), SIGTERM);
  EXPECT_EQ(program.wait(), killedBy(SIGTERM)) << "standard output is at its end, so no process holds it";
  EXPECT_EQ(program.output(), "");
}

}  // namespace
