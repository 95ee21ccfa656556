// Commands that take long: Ctrl-C ends them, and so does the end of their session.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <string>

#include "console/programs.h"

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr const char* kInterrupted = "Interrupted\r\n";

class LongCommand : public testing::Test {
 protected:
  // Types the line, waits until it runs, types the keys, and returns what the line printed.
  std::string interrupted(const std::string& line, const std::string& keys = "\x03") {
    session_.send(line + "\r");
    session_.readUntil(line + "\r\n");
    EXPECT_EQ(session_.readFor(300ms), "") << line;
    session_.send(keys);
    const auto start = std::chrono::steady_clock::now();
    const std::string answer = session_.typeKeys("");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << line;
    return answer;
  }

  // Types the line in a session that is then reset: the next client is served.
  void expectEndsWithItsSession(const std::string& line) {
    session_.send(line + "\r");
    session_.readUntil(line + "\r\n");
    session_.readFor(300ms);
    session_.reset();
    const auto start = std::chrono::steady_clock::now();
    OpenSession next(lab_.port());
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << line;
    EXPECT_EQ(next.type("show version"), kVersion);
  }

  // A restart waits for a chip until its line is idle, which no boot loader says.
  void takeFirmwareAway() {
    session_.type("reboot B1");
    session_.type("sleep 3");
    session_.type("erase firmware");
  }

  TemporaryFolder folder_;
  LabServer lab_{folder_.path()};
  OpenSession session_{lab_.port()};
};

TEST_F(LongCommand, EndsAtCtrlC) {
  EXPECT_EQ(interrupted("sleep 86400"), kInterrupted);
  EXPECT_EQ(session_.type("show version"), kVersion);
}

TEST_F(LongCommand, EndsAtTelnetsInterruptAndBreak) {
  EXPECT_EQ(interrupted("sleep 86400", "\xFF\xF4"), kInterrupted);
  EXPECT_EQ(interrupted("sleep 86400", "\xFF\xF3"), kInterrupted);
  EXPECT_EQ(session_.type("show version"), kVersion);
}

TEST_F(LongCommand, TakesWhatWasTypedAheadWithIt) {
  EXPECT_EQ(interrupted("sleep 86400", "show version\rshow \x03"), kInterrupted);
  EXPECT_EQ(session_.type("show version"), kVersion);
}

TEST_F(LongCommand, EndsWithTheScriptsThatLedToIt) {
  folder_.write("inner.txt", "sleep 60\nshow version\n");
  folder_.write("outer.txt", "run inner.txt 5\nshow version\n");
  EXPECT_EQ(interrupted("run outer.txt | exclude run"), kInterrupted);
  EXPECT_EQ(session_.type("show version"), kVersion);
}

TEST_F(LongCommand, EndsWhileLoggingIsShown) {
  session_.send("start logging 60\r");
  session_.readUntil("Logging started...\r\n");
  session_.send("\x03");
  EXPECT_EQ(session_.typeKeys(""), kInterrupted);
}

TEST_F(LongCommand, EndsInTheMiddleOfLongTables) {
  folder_.write("tables.txt", "read memory 0 d0000000 65536\n");
  session_.send("run tables.txt 100000\r");
  session_.readUntil("d0000100");
  session_.send("\x03");
  const std::string all = session_.readUntil(kInterrupted + std::string(kPrompt));
  EXPECT_TRUE(all.ends_with("\r\n"s + kInterrupted + std::string(kPrompt)));
  EXPECT_EQ(session_.type("show version"), kVersion);
}

TEST_F(LongCommand, EndsWhileARestartWaitsForItsChip) {
  takeFirmwareAway();
  EXPECT_EQ(interrupted("restart system T"), kInterrupted);
  EXPECT_EQ(session_.type("show version"), kVersion);
}

TEST_F(LongCommand, EndsInTheMiddleOfManyCaptures) {
  EXPECT_EQ(interrupted("test afe-mtpr-loop 0 1 100"), kInterrupted);
  EXPECT_EQ(session_.type("show version"), kVersion);
}

TEST_F(LongCommand, EndsWithItsSessionWhileARestartWaitsForItsChip) {
  takeFirmwareAway();
  expectEndsWithItsSession("restart system T");
}

TEST_F(LongCommand, EndsWithItsSessionInTheMiddleOfManyCaptures) {
  expectEndsWithItsSession("test afe-mtpr-loop 0 1 100");
}

TEST_F(LongCommand, IsNoNameThatIsNoFile) {
  ASSERT_EQ(mkfifo((folder_.path() + "/pipe").c_str(), 0600), 0);
  EXPECT_EQ(session_.type("run pipe"), "Unable to open file [pipe]\r\n");
  EXPECT_EQ(session_.type("run /dev/zero"), "Unable to open file [/dev/zero]\r\n");
  EXPECT_EQ(session_.type("show SNRps 0 us pipe"), "Could not open file pipe\r\n");
  EXPECT_EQ(session_.type("generate signal pipe"), "Failed writing file pipe (Operation not supported)\r\n");
  EXPECT_EQ(session_.type("transmit signal 0 pipe"), "Failed loading signal from file pipe\r\n");
  EXPECT_EQ(session_.type("show SNRps 0 us /dev/null"), "");
}

TEST_F(LongCommand, IsNotEndedByACtrlCBeforeIt) {
  session_.send("\x03");
  EXPECT_EQ(session_.type("show version"), "no echo: \ashow version\r\n"s + kVersion);
}

}  // namespace
