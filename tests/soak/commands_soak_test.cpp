// Many commands, and chips that speak all the time.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "console/programs.h"
#include "soak/process_figures.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// The script's lines, over and over, print little and use every way through the interpreter.
constexpr const char* kLines =
    "show version\nread memory 0 d0000000 4\nconfigure\nTARSNRM us 77\nMds 99\nexit\nshow log-level\n"
    "show version | include nothing\nsleep ?\nno such command\n";
constexpr int kLinesInText = 10;

TEST(CommandsSoak, AScriptOfManyCommands) {
  const int commands = sizeOf(1000000, 10000);
  TemporaryFolder folder;
  std::string script;
  for (int i = 0; i < commands / kLinesInText; i++) {
    script += kLines;
  }
  const auto start = steady_clock::now();
  ConsoleProgram program = lab({folder.write("script.txt", script)});
  long early_KiB = 0;
  long last_KiB = 0;
  const size_t early = size_t{30} * static_cast<size_t>(commands) / 10;  // bytes of output, about a tenth
  while (program.running()) {
    const size_t printed = program.output().size();
    if (const long now_KiB = residentKib(program.pid()); now_KiB > 0 && printed > early) {
      early_KiB = early_KiB == 0 ? now_KiB : early_KiB;
      last_KiB = now_KiB;
    }
    std::this_thread::sleep_for(5ms);
  }
  EXPECT_EQ(program.wait(), 0);
  const Milliseconds took = steady_clock::now() - start;
  EXPECT_GT(std::count(program.output().begin(), program.output().end(), '\n'), commands / 2);
  EXPECT_LE(last_KiB, early_KiB + kAllowedGrowth_KiB);
  std::printf("%d commands in %.1f s; resident memory: %ld KiB after some, %ld KiB at the end\n", commands,
              took.count() / 1000, early_KiB, last_KiB);
}

// Both chips tell of something every few milliseconds.
std::string floodedBoard(double from_s, double seconds) {
  constexpr double kBetween_s = 0.005;
  std::string board = boardWithLines("showtime");
  for (int i = 0; i < static_cast<int>(seconds / kBetween_s); i++) {
    const std::string at = "at_s = " + std::to_string(from_s + kBetween_s * i) + "\n";
    for (const std::string device : {"device = 0\n", "device = 1\n"}) {
      board += "[[event]]\n" + device + at + "type = 2\nparams = [6, 0]\n";
      board += "[[log]]\n" + device + at + "core = \"FDU\"\ntext = \"flood %d\"\nparams = [" +
               std::to_string(i) + "]\n";
    }
  }
  return board;
}

TEST(CommandsSoak, AFloodOfEventsAndLogsWhileASessionTypes) {
  const double seconds = sizeOf(120, 2);
  TemporaryFolder folder;
  ConsoleProgram program(LAUNCHER, {gfastLab(), "--board",
                                    folder.write("board.toml", floodedBoard(0.5, seconds)), "--port", "0"});
  OpenSession session(program.port());
  session.type("start logging");
  std::vector<double> roundTrips_ms;
  long early_KiB = 0;
  size_t logLines = 0;
  const auto start = steady_clock::now();
  while (steady_clock::now() - start < std::chrono::duration<double>(seconds)) {
    const auto typed = steady_clock::now();
    const std::string answer = session.type("show version");
    roundTrips_ms.push_back(Milliseconds(steady_clock::now() - typed).count());
    EXPECT_NE(answer.find(kVersion), std::string::npos);
    for (size_t at = answer.find("flood"); at != std::string::npos; at = answer.find("flood", at + 1)) {
      logLines++;
    }
    program.output();
    if (roundTrips_ms.size() == 20) {
      early_KiB = residentKib(program.pid());
    }
    std::this_thread::sleep_for(20ms);
  }
  const long last_KiB = residentKib(program.pid());
  std::nth_element(roundTrips_ms.begin(),
                   roundTrips_ms.begin() + static_cast<ptrdiff_t>(roundTrips_ms.size() / 2),
                   roundTrips_ms.end());
  const double median_ms = roundTrips_ms[roundTrips_ms.size() / 2];
  EXPECT_GT(logLines, static_cast<size_t>(seconds * 100)) << "both chips' logs reached the session";
  EXPECT_LE(last_KiB, early_KiB + kAllowedGrowth_KiB);
  if (isFull()) {
    EXPECT_LT(median_ms, 5);
  }
  std::printf(
      "%zu log lines; median round trip %.2f ms; resident memory: %ld KiB early, %ld KiB at the end\n",
      logLines, median_ms, early_KiB, last_KiB);
}

}  // namespace
