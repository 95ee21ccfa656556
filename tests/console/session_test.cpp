// Sessions over telnet: how they begin and end, and what they print when.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <chrono>
#include <csignal>
#include <string>

#include "console/programs.h"

namespace {

using namespace std::chrono_literals;
using testing::MatchesRegex;

TEST(ConsoleSessions, BeginsWithTheBannerAndThePrompt) {
  LabServer lab;
  ConsoleSession session(lab.port());
  EXPECT_THAT(
      session.readUntil(kPrompt),
      MatchesRegex("Welcome to Quelvor G\\.fast CLI environment \\(build: [A-Z][a-z][a-z] [ 0-9][0-9] "
                   "[0-9]+ [0-9:]+\\)\r\n\r\n\\(gfast-cli\\)> "));
}

TEST(ConsoleSessions, NegotiatesTelnet) {
  LabServer lab;
  ConsoleSession session(lab.port());
  char negotiation[12];
  ASSERT_EQ(recv(session.socket(), negotiation, sizeof negotiation, MSG_WAITALL), 12);
  EXPECT_EQ(std::string(negotiation, 12), "\xFF\xFB\x03\xFF\xFB\x01\xFF\xFD\x03\xFF\xFD\x01");
}

TEST(ConsoleSessions, PrintsTheUsageForAQuestionMark) {
  LabServer lab;
  OpenSession session(lab.port());
  EXPECT_EQ(session.typeKeys("show version now?"), "show version now\r\nshow version\r\n");
}

TEST(ConsoleSessions, PrintsTheUsageForTooManyWords) {
  LabServer lab;
  OpenSession session(lab.port());
  EXPECT_EQ(session.type("sleep 1 2"), "sleep <seconds>\r\n");
}

TEST(ConsoleSessions, EndsWithQuitLogoutAndExit) {
  LabServer lab;
  for (const std::string word : {"quit", "logout", "exit"}) {
    OpenSession session(lab.port());
    session.send(word + "\r");
    EXPECT_EQ(session.readToEnd(), word + "\r\n");
  }
}

TEST(ConsoleSessions, FiltersOutput) {
  LabServer lab;
  OpenSession session(lab.port());
  EXPECT_EQ(session.type("show device-info 0 | include State"),
            "FW State                                  APP\r\n"
            "Config State                       LINE (LCS)\r\n");
  EXPECT_EQ(session.type("show device-info 0 | count"), "10\r\n");
  EXPECT_EQ(session.type("show device-info 0 | include State | count"), "2\r\n");
  EXPECT_EQ(session.type("show device-info 0 | egrep \"(State|Version)\" | exclude Config | count"), "3\r\n");
  EXPECT_EQ(session.type("show device-info 0 | egrep ("), "Invalid pattern \"(\"\r\n");
}

TEST(ConsoleSessions, IsAnnouncedOnStandardOutput) {
  LabServer lab;
  const std::string listening = "Listening on port " + std::to_string(lab.port()) + "\n";
  {
    OpenSession session(lab.port());
    EXPECT_EQ(lab.program().awaitOutput("127.0.0.1\n"),
              listening + " * accepted connection from 127.0.0.1\n");
  }
  EXPECT_EQ(lab.program().awaitOutput(listening, 2),
            listening + " * accepted connection from 127.0.0.1\n" + listening);
}

TEST(ConsoleSessions, StartsWithoutModeAndHistoryOfTheOneBefore) {
  LabServer lab;
  {
    OpenSession first(lab.port());
    first.type("write memory 0 d0000000 4 12345678");
    first.type("configure");
  }
  OpenSession second(lab.port());
  EXPECT_EQ(second.type("read memory 0 d0000000 4"), "d0000000: 78563412\r\n");
  EXPECT_EQ(second.type("history"), "\r\nCommand history:\r\n  0. read memory 0 d0000000 4\r\n");
}

TEST(ConsoleSessions, WaitsForTheOneBefore) {
  LabServer lab;
  OpenSession first(lab.port());
  ConsoleSession second(lab.port());
  EXPECT_EQ(second.readFor(300ms), "");
  EXPECT_EQ(first.type("show version"), kVersion);
  first.send("quit\r");
  first.readToEnd();
  EXPECT_NE(second.readUntil(kPrompt).find("Welcome"), std::string::npos);
}

TEST(ConsoleSessions, RunsWhatWasSentBeforeThePeerEndedItsInput) {
  LabServer lab;
  ConsoleSession session(lab.port());
  session.send("show version ?x\rsleep 1\rread sbr ?x\r");
  session.endInput();
  const std::string all = session.readToEnd();
  EXPECT_NE(all.find("show version\r\n"), std::string::npos);
  EXPECT_NE(all.find("read sbr <device-id> [ 0 ]\r\n"), std::string::npos);
}

TEST(ConsoleSessions, RunsLinesThatEndInALineFeedOnly) {
  LabServer lab;
  ConsoleSession session(lab.port());
  session.send("show version\nread sbr ?x\nquit\n");
  const std::string all = session.readToEnd();
  EXPECT_NE(all.find(kVersion), std::string::npos);
  EXPECT_NE(all.find("read sbr <device-id> [ 0 ]\r\n"), std::string::npos);
}

TEST(ConsoleSessions, CountsACarriageReturnWithALineFeedAsOneLineEnd) {
  LabServer lab;
  OpenSession session(lab.port());
  session.send("show version\r\nshow version\r\n");
  const std::string one = std::string("show version\r\n") + kVersion + std::string(kPrompt);
  EXPECT_EQ(session.readUntil(one + one), one + one);
}

TEST(ConsoleSessions, RefusesALineThatIsTooLongWhole) {
  LabServer lab;
  OpenSession session(lab.port());
  session.type("write memory 0 d0000000 4 12345678");
  std::string bytes = "11";
  for (int i = 1; i < 2000; i++) {
    bytes += ":22";
  }
  session.send("write memory 0 d0000000 2000 " + bytes + "\r");
  const std::string answer = session.readUntil(kPrompt);
  EXPECT_TRUE(answer.ends_with("\r\nLine too long (more than 4095 characters)\r\n" + std::string(kPrompt)))
      << answer.substr(answer.size() - 200);
  EXPECT_EQ(session.type("read memory 0 d0000000 4"), "d0000000: 78563412\r\n");
  EXPECT_EQ(session.type("history"),
            "\r\nCommand history:\r\n  0. write memory 0 d0000000 4 12345678\r\n"
            "  1. read memory 0 d0000000 4\r\n");
  session.type("configure");
  session.send(std::string(5000, 'x') + "\r");
  EXPECT_TRUE(
      session.readUntil(kConfigPrompt)
          .ends_with("\r\nLine too long (more than 4095 characters)\r\n" + std::string(kConfigPrompt)));
}

TEST(ConsoleSessions, WritesAsMuchMemoryAsOneLineHolds) {
  LabServer lab;
  OpenSession session(lab.port());
  std::string bytes = "11";
  for (int i = 1; i < 1354; i++) {
    bytes += ":22";
  }
  const std::string line = "write memory 0 d0000000 1354 " + bytes;
  ASSERT_LE(line.size(), 4095U);
  EXPECT_EQ(session.type(line), "");
  EXPECT_EQ(session.type("read memory 0 d0000548 4"), "d0000548: 00002222\r\n");
}

TEST(ConsoleSessions, ReceivesOutputBeforeAWait) {
  LabServer lab;
  TemporaryFolder folder;
  const std::string script = folder.write("wait.txt", "show version\nsleep 86400\n");
  OpenSession session(lab.port());
  session.send("run " + script + "\r");
  EXPECT_NE(session.readUntil(kVersion).find(kVersion), std::string::npos);
}

TEST(ConsoleSessions, ReceivesOutputOfEachScriptCommandWhenItEnds) {
  LabServer lab;
  TemporaryFolder folder;
  const std::string script =
      folder.write("order.txt", "show version\nshow device-info 0 | count\nread sbr ?\nhelp | count\n");
  OpenSession session(lab.port());
  const std::string answer = session.type("run " + script + " 2");
  const std::string once =
      std::string(kVersion) + "10\r\nread sbr <device-id> [ 0 ]\r\n" + "\r\nCommands available:\r\n";
  EXPECT_TRUE(answer.starts_with(">run " + script + " 1 of 2\r\n" + once)) << answer;
  EXPECT_NE(answer.find("0\r\n>run " + script + " 2 of 2\r\n" + once), std::string::npos) << answer;
}

TEST(ConsoleSessions, FiltersWhatAScriptPrints) {
  LabServer lab;
  TemporaryFolder folder;
  const std::string inner = folder.write("inner.txt", "show device-info 0 | include State\nread sbr ?\n");
  const std::string outer = folder.write("outer.txt", "run " + inner + " | exclude Config\nsleep ?\n");
  OpenSession session(lab.port());
  EXPECT_EQ(session.type("run " + outer + " | exclude sbr"),
            "FW State                                  APP\r\nsleep <seconds>\r\n");
  EXPECT_EQ(session.type("run " + outer + " | count"), "3\r\n");
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST(ConsoleSessions, GoesOnAfterAScriptThatRunsItself) {
  TemporaryFolder folder;
  LabServer lab(folder.path());
  folder.write("self.txt", "run self.txt\n");
  OpenSession session(lab.port());
  EXPECT_EQ(session.type("run self.txt"),
            "Scripts run each other more than 10 deep, stopped at [self.txt]\r\n");
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST(ConsoleSessions, SurvivesSigpipe) {
  LabServer lab;
  OpenSession session(lab.port());
  kill(lab.program().pid(), SIGPIPE);
  EXPECT_EQ(session.type("show version"), kVersion);
}

}  // namespace
