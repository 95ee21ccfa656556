// Days that pass in seconds: the lab with --speed, from its clock to the history of the counters.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "console/lab_script.h"
#include "support/stored_text.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr int kQuartersOfADay = 96;

// The numbers behind this label, in the order of the lines.
std::vector<int> numbersOf(const std::string& output, const std::string& label) {
  std::istringstream lines(output);
  std::vector<int> numbers;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(label + ' ')) {
      numbers.push_back(std::stoi(line.substr(label.size())));
    }
  }
  return numbers;
}

const std::string kEvening = BOARD_EXAMPLES "/evening.toml";

// The board is disturbed from eight in the evening until half past.
TEST(SpeedMax, ADayHas96QuarterHoursAnEveningAndAMidnight) {
  const std::string output = outputOf({"--speed", "max", "--board", kEvening},
                                      "sleep 86399\n"
                                      "dump 15min-history 0\n"
                                      "show number 15min-intervals 0\n"
                                      "show number 24hr-intervals 0\n"
                                      "sleep 1\n"
                                      "show number 15min-intervals 0\n"
                                      "show number 24hr-intervals 0\n"
                                      "show 24hr-counters 0 1\n");
  // The newest stands first. One that is over has the number of the quarter hour that began with its end.
  std::vector<int> numbers{kQuartersOfADay};
  for (int ended = kQuartersOfADay; ended > 1; ended--) {
    numbers.push_back(ended);
  }
  EXPECT_EQ(numbersOf(output, "intervalNumber"), numbers);
  // The quarter hour that runs lacks a second.
  std::vector<int> seconds(kQuartersOfADay, 900);
  seconds.front() = 899;
  EXPECT_EQ(numbersOf(output, "collectionTime"), seconds);
  EXPECT_THAT(output, HasSubstr("timestamp             2024-01-01T23:59:59+UTC"));
  EXPECT_THAT(output, HasSubstr("\n96\n1\n"));  // so many quarter hours and days before midnight
  EXPECT_THAT(output, HasSubstr("\n1\n2\n"));   // and after
  EXPECT_THAT(output, HasSubstr("timestamp:            2024-01-02T00:00:00+UTC\n"));
  std::vector<int> errored = numbersOf(output, "NE-ES");
  ASSERT_EQ(errored.size(), kQuartersOfADay + 1U);
  EXPECT_EQ(errored.back(), std::accumulate(errored.begin(), errored.end() - 1, 0));  // the day's
  errored.pop_back();
  // Of the quarter hours that ended at half past eight and at a quarter past.
  constexpr size_t last = 4 * 4 - 2;
  for (size_t i = 0; i < errored.size(); i++) {
    if (i == last || i == last + 1) {
      EXPECT_GE(errored[i], 890) << i;
    } else {
      EXPECT_LE(errored[i], 20) << i;
    }
  }
}

TEST(SpeedMax, TheSameSeedGivesTheSameHistoryByteForByte) {
  const std::string script =
      "show line status 0\nsleep 7000\ndump 15min-history 0\nactivate line 0\ndeactivate line 1\nsleep 3000\n"
      "show gfast-counters 1\nshow 24hr-counters 0\nshow 24hr-counters 1\ndump 15min-history 1\n";
  const std::string first = outputOf({"--speed", "max"}, script);
  EXPECT_EQ(first, outputOf({"--speed", "max"}, script));
  const TemporaryFolder folder;
  const std::string board = folder.write("board.toml", "[board]\nseed = 2\n");
  EXPECT_NE(first, outputOf({"--speed", "max", "--board", board}, script));
}

// Stored, so that every processor and every C library is held to the same day.
TEST(SpeedMax, ADayIsTheStoredOne) {
  expectStored(TRANSCRIPTS "/time_day.txt",
               outputOf({"--speed", "max", "--board", kEvening},
                        "sleep 86400\nshow 24hr-counters 0 1\nshow 24hr-counters 1 1\nshow pm-counters 0\n"));
}

TEST(SpeedMax, PrintsAtOnceWhatACommandCaused) {
  const TemporaryFolder folder;
  const std::string board = folder.write("board.toml", boardWithLines("showtime"));
  const std::string output =
      outputOf({"--speed", "max", "--board", board}, "deactivate line 0\nshow line state 0\nshow version\n");
  const size_t event = output.find("Link [0] state changed from show time       to deactivating 1");
  const size_t shown = output.find("Line[00] deactivating 1");
  EXPECT_NE(event, std::string::npos) << output;
  EXPECT_NE(shown, std::string::npos) << output;
  EXPECT_LT(event, shown);
}

TEST(SpeedMax, FindsAChipThatHangsAfterTwentySeconds) {
  const TemporaryFolder folder;
  const std::string board =
      folder.write("board.toml", boardWithLines("showtime") +
                                     "[[device_event]]\ndevice = 1\nat_s = 101\nkind = \"hang\"\n");
  const std::vector<std::string> options{"--speed", "max", "--board", board};
  EXPECT_THAT(outputOf(options, "sleep 115\n"), Not(HasSubstr("ommunication")));
  EXPECT_THAT(outputOf(options, "sleep 121\n"), HasSubstr("ommunication"));
}

TEST(SpeedMax, StandsStillAtThePrompt) {
  const TemporaryFolder folder;
  setenv("TZ", "UTC0", 1);
  ConsoleProgram program(LAUNCHER, {gfastLab(), "--speed", "max", "--port", "0"});
  OpenSession session(program.port());
  EXPECT_THAT(session.type("show line state 0"), HasSubstr("silent"));
  session.type("sleep 7200");
  EXPECT_THAT(session.type("show line state 0"), HasSubstr("show time"));
  EXPECT_THAT(session.type("show 15min-counters 0"), HasSubstr("2024-01-01T02:00:00+UTC"));
}

TEST(Speed, RunsSoManyTimesFasterFromTheTimeOfDayGiven) {
  const TemporaryFolder folder;
  setenv("TZ", "UTC0", 1);
  ConsoleProgram program(LAUNCHER,
                         {gfastLab(), "--speed", "1000", "--start", "2023-11-15T23:40:00", "--port", "0"});
  OpenSession session(program.port());
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(session.type("sleep 1500"), testing::Eq(""));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
  EXPECT_THAT(session.type("show 24hr-counters 0 1"), HasSubstr("2023-11-16T00:00:"));
}

TEST(Speed, OneWithAStartIsRealTime) {
  const std::string output =
      outputOf({"--start", "2023-11-15T11:59:30", "--board", kEvening}, "show 15min-counters 0\n");
  EXPECT_THAT(output, HasSubstr("2023-11-15T11:59:3"));
}

}  // namespace
