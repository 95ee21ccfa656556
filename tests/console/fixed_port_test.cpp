// gfast-cli on its own port, with and without a script.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "console/programs.h"

namespace {

ConsoleProgram gfastCli(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), GFAST_CLI);
  return ConsoleProgram(LAUNCHER, arguments);
}

constexpr uint16_t kPort = 9000;

TEST(GfastCli, ListensOnPort9000) {
  ConsoleProgram program = gfastCli({});
  EXPECT_EQ(program.port(), kPort);
  OpenSession session(kPort);
  EXPECT_EQ(session.type("show device-info"), "Could not refresh the data\r\n");
}

TEST(GfastCli, ListensWhenItsScriptIsMissing) {
  ConsoleProgram program = gfastCli({"/no/such/script.txt", "ignored"});
  EXPECT_EQ(program.port(), kPort);
}

TEST(GfastCli, ReportsATakenPortAndExitsWith1) {
  const int taken = socket(AF_INET, SOCK_STREAM, 0);
  const int yes = 1;
  setsockopt(taken, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(kPort);
  ASSERT_EQ(bind(taken, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(taken, 1), 0);
  ConsoleProgram program = gfastCli({});
  EXPECT_EQ(program.wait(), 1);
  EXPECT_EQ(program.errors(), "bind: Address already in use\n");
  close(taken);
}

TEST(GfastCli, RunsAScriptAndExitsWith0) {
  TemporaryFolder folder;
  ConsoleProgram program = gfastCli({folder.write("a.txt", "sleep ?\n"), "ignored"});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(), "Warning: Failed to connect to DFEs\nsleep <seconds>\n");
}

// A child that ends without being waited for would stay in the system's table otherwise.
TEST(GfastCli, LeavesNothingOfAChildThatEnds) {
  const std::string start = std::string("sleep 60 & echo child $!; exec ") + LAUNCHER + " " + GFAST_CLI;
  ConsoleProgram program("", {"/bin/sh", "-c", start});
  program.port();
  const std::string& printed = program.output();
  const pid_t child = std::stoi(printed.substr(printed.find("child ") + 6));
  ASSERT_EQ(kill(child, SIGKILL), 0);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (kill(child, 0) == 0 && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_NE(kill(child, 0), 0) << "it is a zombie";
}

}  // namespace
