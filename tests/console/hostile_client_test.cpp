// Clients that do what no operator does: the server goes on for the next one.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

#include "console/programs.h"

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

constexpr const char* kMuch = "read memory 0 d0000000 65536\r";

void expectAlive(LabServer& lab) {
  OpenSession next(lab.port());
  EXPECT_EQ(next.type("show version"), kVersion);
  EXPECT_TRUE(lab.program().running());
}

std::string repeat(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; i++) {
    all += text;
  }
  return all;
}

TEST(HostileClient, PressesTabBehindAFilter) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const std::string filter : {"include", "exclude", "begin", "between a", "between", "grep", "egrep",
                                   "grep -v", "egrep -i", "count"}) {
    for (const std::string key : {"\t", "\t\t", "?"}) {
      for (const char* const behind : {" x ", " ", ""}) {
        session.send("show version | ");
        session.send(filter);
        session.send(behind);
        session.send(key);
        session.send("\x15");
      }
    }
  }
  session.send("show version | \t\x15show version |?\x15|\t|?\x15|||\t?\x15\r");
  session.send("\r  \r\t?\rshow version |\r\tshow version | include x \t\x15\r");
  session.close();
  expectAlive(lab);
}

TEST(HostileClient, PressesTabAtTheEndOfALongLine) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const size_t length :
       {4000U, 4070U, 4080U, 4087U, 4088U, 4089U, 4090U, 4093U, 4094U, 4095U, 4096U, 5000U}) {
    session.send(std::string(length - 3, ' ') + "sho\t\t\x15\r");
    session.readUntil(kPrompt);
    session.send(std::string(length - 11, 'x') + " | re\t | in\t\t\x15\r");
    session.readUntil(kPrompt);
  }
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST(HostileClient, PressesTabOnLinesOfTheHistory) {
  LabServer lab;
  OpenSession session(lab.port());
  session.send(std::string(4087, ' ') + "sho\r");
  for (const std::string key : {"\x10", "\x0e", "\x1b[A", "\x1b[B"}) {
    session.send(key);
    session.send("\t");
    session.send(key);
    session.send("\t\t\x15");
  }
  session.send(repeat("show ve\t", 2000) + "\x15\r");
  session.close();
  expectAlive(lab);
}

TEST(HostileClient, HidesLineEndsInTelnetCommands) {
  LabServer lab;
  OpenSession session(lab.port());
  session.send(std::string(4090, ' ') + "sho\xFF\xFB\r\t\t\x1b\r\t\t\xFF\xFA\r\t\xFF\xF0\t\x15\r");
  session.close();
  expectAlive(lab);
}

TEST(HostileClient, TypesEveryByte) {
  LabServer lab;
  OpenSession session(lab.port());
  std::string all;
  for (int first = 0; first < 256; first++) {
    if (first == 4) {
      continue;  // the end of the session
    }
    all += "show "s + static_cast<char>(first) + "x\x10\x01y\x05\x02z\x17\x0b\r";
  }
  session.send(all);
  session.send("\xFF\xF0\x1b[A\r");
  session.close();
  expectAlive(lab);
}

TEST(HostileClient, TypesQuotesPipesAndWordsWithoutEnd) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const std::string& line : {"\""s,
                                  "'"s,
                                  "\"\""s,
                                  "\\"s,
                                  "\\\\"s,
                                  "\"|\" x"s,
                                  "|"s,
                                  "| | |"s,
                                  "show \"\" \"\""s,
                                  "show version \""s,
                                  "show version | \"include\" \"x"s,
                                  repeat("a ", 2000),
                                  repeat("|", 4000),
                                  repeat("\"\" ", 1300),
                                  repeat("\\x", 2000),
                                  "show version " + repeat("| include n ", 300),
                                  "show version | egrep " + repeat("(", 4000),
                                  "show version | egrep ((((a{99}){99}){99}){99})"s,
                                  "show version | egrep " + repeat("a{255}", 600),
                                  "show version | egrep " + repeat("(", 30) + "a" + repeat("+)", 30),
                                  "show version | grep ["s,
                                  "run x | count y"s}) {
    session.send(line + "\t\t?\r");
  }
  session.send("\x15\r");
  session.close();
  expectAlive(lab);
}

TEST(HostileClient, TypesPatternsThatTakeTimeToCompile) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const std::string& pattern :
       {repeat("(^)*", 40), repeat("($)*", 40), repeat("((.+[a-b]*a)*)*", 40), repeat("(a*)+", 100)}) {
    EXPECT_EQ(session.type("show version | egrep " + pattern), "Pattern too large\r\n") << pattern;
  }
  EXPECT_EQ(session.type("show version | egrep \"(Date|x)*\""), kVersion);
}

TEST(HostileClient, ClosesInTheMiddleOfOutput) {
  LabServer lab;
  for (int i = 0; i < 5; i++) {
    OpenSession session(lab.port());
    session.send(repeat(kMuch, 20));
    session.readUntil("d0000100");
  }
  expectAlive(lab);
}

TEST(HostileClient, ResetsInTheMiddleOfOutput) {
  LabServer lab;
  for (int i = 0; i < 5; i++) {
    OpenSession session(lab.port());
    session.send(repeat(kMuch, 20));
    session.readUntil("d0000100");
    session.reset();
  }
  expectAlive(lab);
}

TEST(HostileClient, ResetsAtOnce) {
  LabServer lab;
  for (int i = 0; i < 20; i++) {
    ConsoleSession session(lab.port());
    session.reset();
  }
  expectAlive(lab);
}

TEST(HostileClient, ResetsWhileACommandWaits) {
  LabServer lab;
  OpenSession session(lab.port());
  session.send("sleep 86400\r");
  EXPECT_EQ(session.readUntil("\n"), "sleep 86400\r\n");
  session.reset();
  expectAlive(lab);
}

constexpr const char* kTelnet = "\xFF\xFD\x03";

TEST(HostileClient, ClosesATelnetSessionWhileACommandWaits) {
  LabServer lab;
  TemporaryFolder folder;
  const std::string script = folder.write("a.txt", "sleep 1\n");
  for (const std::string& command : {"sleep 86400"s, "run " + script + " 1000000"}) {
    OpenSession session(lab.port());
    session.send(kTelnet + command + "\r");
    session.readUntil("\n");
    session.close();
    const auto start = std::chrono::steady_clock::now();
    expectAlive(lab);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << command;
  }
}

TEST(HostileClient, EndsItsInputAndKeepsItsAnswers) {
  LabServer lab;
  ConsoleSession session(lab.port());
  session.send("sleep 3\nshow version\nquit\n");
  session.endInput();
  EXPECT_NE(session.readToEnd().find(kVersion), std::string::npos);
}

TEST(HostileClient, ResetsWhileAScriptRunsForEver) {
  LabServer lab;
  TemporaryFolder folder;
  const std::string script = folder.write("a.txt", "sleep ?\n");
  OpenSession session(lab.port());
  session.send("run " + script + " 4294967295\r");
  session.readUntil("100 of");
  session.reset();
  expectAlive(lab);
}

TEST(HostileClient, SendsMuchAndNeverReads) {
  LabServer lab;
  {
    ConsoleSession session(lab.port());
    const timeval timeout{2, 0};
    setsockopt(session.socket(), SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    const std::string input = repeat(kMuch, 200);
    while (send(session.socket(), input.data(), input.size(), MSG_NOSIGNAL) > 0) {
    }
  }
  expectAlive(lab);
}

// As long as its system answers, a reader that pauses is an idle session like any other.
TEST(HostileClient, PausesForLongInALongListing) {
  LabServer lab;
  TemporaryFolder folder;
  const std::string script = folder.write("a.txt", kMuch + "\n"s);
  OpenSession session(lab.port());
  session.send("run " + script + " 20\r");  // more than all buffers on the way hold
  std::this_thread::sleep_for(65s);
  EXPECT_EQ(session.typeKeys("").find("Interrupted"), std::string::npos);
  EXPECT_EQ(session.type("show version"), kVersion);
}

struct DescriptorLimit {
  uint64_t soft;
  uint64_t hard;
};

// Returns the limit so far. The system call itself: not every C library has a function for it.
DescriptorLimit exchangeDescriptorLimit(pid_t process, const DescriptorLimit* limit) {
  DescriptorLimit before{};
  EXPECT_EQ(syscall(SYS_prlimit64, process, RLIMIT_NOFILE, limit, &before), 0);
  return before;
}

TEST(HostileClient, ConnectsWhenTheServerHasNoDescriptors) {
#ifdef GFAST_UBSAN
  GTEST_SKIP() << "UBSan needs descriptors of its own to look at an object's type";
#endif
  LabServer lab;
  lab.port();
  const DescriptorLimit before = exchangeDescriptorLimit(lab.program().pid(), nullptr);
  const DescriptorLimit none{3, before.hard};
  exchangeDescriptorLimit(lab.program().pid(), &none);
  // The one that the server is already waiting for may be accepted still, and is turned away.
  ConsoleSession unlucky(lab.port());
  lab.program().awaitOutput("Listening on port", 4);
  exchangeDescriptorLimit(lab.program().pid(), &before);
  unlucky.close();
  expectAlive(lab);
}

}  // namespace
