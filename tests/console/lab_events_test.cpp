// What a lab prints on standard output when its chips report events: whole lines, trailing blanks included.
// Events of the two chips may interleave, so the order is checked for each chip.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "console/lab_on_board.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::MatchesRegex;

using Lines = std::vector<std::string>;

const std::string kBothInShowtime = boardWithLines("showtime");
const std::string kBothIdle = boardWithLines("idle");

class LabEvents : public LabOnBoard {
 protected:
  LabEvents() { setenv("TZ", "LAB-3", 1); }  // three hours ahead of UTC

  void await(const std::string& text, int times = 1) { program().awaitOutput(text, times); }

  // What was printed so far but for the server's own lines and the trace log: a quarter hour may end any
  // time.
  Lines events() {
    std::istringstream printed(program().output());
    Lines lines;
    for (std::string line; std::getline(printed, line);) {
      if (!line.starts_with("Listening on port ") && !line.starts_with(" * accepted connection ") &&
          !line.starts_with("[LOG_")) {
        lines.push_back(line);
      }
    }
    return lines;
  }

  // Those of a line. Events without a line number count as line 0's, because the tests reboot device 0.
  Lines eventsOf(int line) {
    const std::string other = "Link [" + std::to_string(1 - line) + "] ";
    Lines lines = events();
    std::erase_if(lines, [&](const std::string& text) {
      return text.starts_with(other) || (line == 1 && !text.starts_with("Link "));
    });
    return lines;
  }
};

// The time as the console writes it.
std::string timeText(time_t time) {
  char text[32];
  const time_t local = time + 3L * 60 * 60;
  tm fields{};
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S+LAB", gmtime_r(&local, &fields));
  return text;
}

TEST_F(LabEvents, TrainingFromPowerUp) {
  start("");
  await("to show time      \n", 2);
  EXPECT_THAT(eventsOf(0), ElementsAre("Link [0] state changed from silent          to init hs        ",
                                       "Link [0] state changed from init hs         to init train     ",
                                       "Link [0] state changed from init train      to show time      "));
  EXPECT_THAT(eventsOf(1), ElementsAre("Link [1] state changed from silent          to init hs        ",
                                       "Link [1] state changed from init hs         to init train     ",
                                       "Link [1] state changed from init train      to show time      "));
  EXPECT_EQ(session().readFor(0ms), "");
}

TEST_F(LabEvents, RestartedLineEndsInOrderAndTrainsAgain) {
  start(kBothInShowtime);
  EXPECT_EQ(session().type("restart line 0"), "");
  await("to show time      \n", 2);
  EXPECT_THAT(eventsOf(0), ElementsAre("Link [0] state changed from show time       to deactivating 1 ",
                                       "Link [0] state changed from deactivating 1  to deactivating 2 ",
                                       "Link [0] state changed from deactivating 2  to silent         ",
                                       "Link [0] state changed from silent          to init hs        ",
                                       "Link [0] state changed from init hs         to init train     ",
                                       "Link [0] state changed from init train      to show time      "));
  EXPECT_THAT(eventsOf(1), ElementsAre("Link [1] state changed from show time       to pre-deactivating 1",
                                       "Link [1] state changed from pre-deactivating 1 to deactivating 2 ",
                                       "Link [1] state changed from deactivating 2  to silent         ",
                                       "Link [1] state changed from silent          to init hs        ",
                                       "Link [1] state changed from init hs         to init train     ",
                                       "Link [1] state changed from init train      to show time      "));
}

TEST_F(LabEvents, DeactivatedLineStaysDownUntilItIsActivated) {
  start(kBothInShowtime);
  EXPECT_EQ(session().type("deactivate line 1"), "");
  await("to idle           \n");
  EXPECT_THAT(eventsOf(0), ElementsAre("Link [0] state changed from show time       to pre-deactivating 1",
                                       "Link [0] state changed from pre-deactivating 1 to deactivating 2 ",
                                       "Link [0] state changed from deactivating 2  to silent         "));
  EXPECT_THAT(eventsOf(1), ElementsAre("Link [1] state changed from show time       to deactivating 1 ",
                                       "Link [1] state changed from deactivating 1  to deactivating 2 ",
                                       "Link [1] state changed from deactivating 2  to idle           "));
  const size_t before = events().size();
  EXPECT_EQ(session().readFor(1s), "");
  EXPECT_EQ(events().size(), before);
  EXPECT_EQ(session().type("activate line 1"), "");
  await("to init hs        \n", 2);
  EXPECT_EQ(eventsOf(0).back(), "Link [0] state changed from silent          to init hs        ");
  const Lines down = eventsOf(1);
  ASSERT_EQ(down.size(), 5U);
  EXPECT_EQ(down[3], "Link [1] state changed from idle            to silent         ");
  EXPECT_EQ(down[4], "Link [1] state changed from silent          to init hs        ");
}

TEST_F(LabEvents, RebootDropsTheLineAndBringsItBack) {
  start(kBothInShowtime);
  const time_t before = std::time(nullptr);
  EXPECT_EQ(session().type("reboot"), "");
  await("to show time      \n", 2);
  const time_t after = std::time(nullptr);
  Lines first = eventsOf(0);
  ASSERT_EQ(first.size(), 6U);
  // The other end reports the failure, and numbers its own line 0; a chip in reset reports nothing.
  const std::string begin = "Line failure event on line=0 reason=6 at time ";
  EXPECT_GE(first[0], begin + timeText(before) + " ...");
  EXPECT_LE(first[0], begin + timeText(after) + " ...");
  EXPECT_EQ(first[0].size(), begin.size() + timeText(before).size() + 4);
  first.erase(first.begin());
  EXPECT_THAT(first, ElementsAre("Reboot notification...",
                                 "Link [0] state changed from idle            to silent         ",
                                 "Link [0] state changed from silent          to init hs        ",
                                 "Link [0] state changed from init hs         to init train     ",
                                 "Link [0] state changed from init train      to show time      "));
  EXPECT_THAT(eventsOf(1), ElementsAre("Link [1] state changed from show time       to deactivating 1 ",
                                       "Link [1] state changed from deactivating 1  to silent         ",
                                       "Link [1] state changed from silent          to init hs        ",
                                       "Link [1] state changed from init hs         to init train     ",
                                       "Link [1] state changed from init train      to show time      "));
}

// Bit 1 of the boot register leaves the activation after a reset to the host.
TEST_F(LabEvents, RebootActivatesBothLines) {
  start(kBothIdle);
  EXPECT_EQ(session().type("write memory 0 e0000238 4 02:00:80:01"), "");
  EXPECT_EQ(session().type("reboot"), "");
  await("to init hs        \n", 2);
  EXPECT_THAT(eventsOf(0), ElementsAre("Reboot notification...",
                                       "Link [0] state changed from idle            to silent         ",
                                       "Link [0] state changed from silent          to init hs        "));
  EXPECT_THAT(eventsOf(1), ElementsAre("Link [1] state changed from idle            to silent         ",
                                       "Link [1] state changed from silent          to init hs        "));
}

// Bit 15 of the boot register keeps the chip in configuration state.
TEST_F(LabEvents, RebootInConfigurationStateActivatesNothing) {
  start(kBothIdle);
  EXPECT_EQ(session().type("write memory 0 e0000238 4 02:80:80:01"), "");
  EXPECT_EQ(session().type("reboot"), "");
  await("Reboot notification...\n");
  EXPECT_EQ(session().readFor(1s), "");
  EXPECT_THAT(events(), ElementsAre("Reboot notification..."));
}

TEST_F(LabEvents, EventsOfTheBoardFileAreShown) {
  start(kBothInShowtime +
        "[[event]]\ndevice = 0\nat_s = 1.0\ntype = 2\nparams = [3, 1]\n"  //
        "[[event]]\ndevice = 0\nat_s = 1.1\ntype = 5\nparams = [0]\n"     //
        "[[event]]\ndevice = 1\nat_s = 1.2\ntype = 5\nparams = [0]\n"     //
        "[[event]]\ndevice = 1\nat_s = 1.3\ntype = 2\nparams = [8, 5]\n"  //
        "[[event]]\ndevice = 0\nat_s = 1.4\ntype = 0\nparams = [5, 6]\n"  //
        "[[event]]\ndevice = 1\nat_s = 1.5\ntype = 0\nparams = [15, 9]\n");
  await("to pre-deactivating 1\n");
  const std::string time =
      "at time 2[0-9]+-[0-9][0-9]-[0-9][0-9]T[0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\+LAB \\.\\.\\.";
  EXPECT_THAT(events(), ElementsAre(MatchesRegex("Line failure event on line=1 reason=3 " + time),
                                    "non-cDTA CPE joined on line 0",  //
                                    "non-cDTA CPE joined on line 1",
                                    MatchesRegex("Line failure event on line=5 reason=8 " + time),
                                    "Link [0] state changed from init train      to show time      ",
                                    "Link [1] state changed from Unknown         to pre-deactivating 1"));
}

TEST_F(LabEvents, EventsWithoutAMessageAreNotShown) {
  start(kBothInShowtime +
        "[[event]]\ndevice = 0\nat_s = 1.0\ntype = 1\n"
        "[[event]]\ndevice = 1\nat_s = 1.0\ntype = 3\n"
        "[[event]]\ndevice = 0\nat_s = 1.0\ntype = 77\nparams = [1, 2]\n"
        "[[event]]\ndevice = 1\nat_s = 1.0\ntype = 0\nparams = [6, 6]\n"
        "[[event]]\ndevice = 1\nat_s = 1.0\ntype = 5\nparams = [1]\n"
        "[[event]]\ndevice = 1\nat_s = 1.3\ntype = 5\nparams = [0]\n");
  await("non-cDTA CPE joined on line 1\n");
  EXPECT_THAT(events(), ElementsAre("non-cDTA CPE joined on line 1"));
}

TEST_F(LabEvents, CutLoopTakesBothEndsDownUntilItIsRepaired) {
  start(kBothInShowtime +
        "[[loop_event]]\nat_s = 1.0\ncut = true\n"
        "[[loop_event]]\nat_s = 2.5\ncut = false\n");
  const time_t before = std::time(nullptr);
  await("to show time      \n", 2);
  const Lines all = events();
  // Each end reports its own line, number 0, before it goes down.
  const auto isFailure = [&](const std::string& line) {
    const std::string begin = "Line failure event on line=0 reason=6 at time ";
    return line >= begin + timeText(before) + " ..." && line <= begin + timeText(before + 10) + " ...";
  };
  EXPECT_EQ(std::ranges::count_if(all, isFailure), 2);
  EXPECT_TRUE(isFailure(all.front())) << all.front();
  Lines first = eventsOf(0);
  std::erase_if(first, isFailure);
  EXPECT_THAT(first, ElementsAre("Link [0] state changed from show time       to deactivating 1 ",
                                 "Link [0] state changed from deactivating 1  to silent         ",
                                 "Link [0] state changed from silent          to init hs        ",
                                 "Link [0] state changed from init hs         to init train     ",
                                 "Link [0] state changed from init train      to show time      "));
  EXPECT_THAT(eventsOf(1), ElementsAre("Link [1] state changed from show time       to deactivating 1 ",
                                       "Link [1] state changed from deactivating 1  to silent         ",
                                       "Link [1] state changed from silent          to init hs        ",
                                       "Link [1] state changed from init hs         to init train     ",
                                       "Link [1] state changed from init train      to show time      "));
}

TEST_F(LabEvents, InterruptionOfHalfASecondShowsNothing) {
  start(kBothInShowtime +
        "[[loop_event]]\nat_s = 0.5\ncut = true\n"
        "[[loop_event]]\nat_s = 1.0\ncut = false\n"
        "[[event]]\ndevice = 1\nat_s = 2.5\ntype = 5\nparams = [0]\n");
  await("non-cDTA CPE joined on line 1\n");
  EXPECT_THAT(events(), ElementsAre("non-cDTA CPE joined on line 1"));
}

// The chips are checked every five seconds. The fourth failed check in a row is reported.
TEST_F(LabEvents, ChipThatStopsAnsweringIsReported) {
  // Before the first check, and late enough for a lab that takes its time to start.
  const auto begin = std::chrono::steady_clock::now();
  start(kBothInShowtime + "[[device_event]]\ndevice = 0\nat_s = 4.0\nkind = \"hang\"\n");
  await("Communication failure with DFE0\n");
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 18s);
  EXPECT_EQ(session().readFor(500ms), "");
  EXPECT_THAT(events(), ElementsAre("Communication failure with DFE0"));
}

// Nobody reads what the lab prints until the test does.
class UnreadOutput : public LabOnBoard {
 protected:
  static constexpr int kEvents = 9000;  // more than the pipe and what waits behind it

  static std::string floodedBoard() {
    std::string board = boardWithLines("showtime");
    for (int i = 0; i < kEvents; i++) {
      board += "[[event]]\nat_s = 1.5\ndevice = 0\ntype = 2\nparams = [" + std::to_string(i) + ", 0]\n";
    }
    return board;
  }
};

TEST_F(UnreadOutput, KeepsNobodyFromTheConsole) {
  start(floodedBoard());
  const auto end = std::chrono::steady_clock::now() + 6s;
  while (std::chrono::steady_clock::now() < end) {
    EXPECT_EQ(typed("show version"), kVersion);
    std::this_thread::sleep_for(200ms);
  }
  session().send("quit\r");
  OpenSession next(program().port());
  EXPECT_EQ(next.type("show version"), kVersion);
  const std::string printed = program().awaitOutput(" lines lost\n");
  // In order, and every event is printed or counted.
  int told = 0;
  std::istringstream lines(printed);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("Line failure event on line=0 reason=")) {
      EXPECT_TRUE(line.starts_with("Line failure event on line=0 reason=" + std::to_string(told) + " "))
          << line;
      told++;
    }
  }
  const size_t behind = printed.find(" lines lost");
  const int lost = std::stoi(printed.substr(printed.rfind('\n', behind) + 1));
  EXPECT_GE(told, 5000);
  EXPECT_GE(told + lost, kEvents);
  EXPECT_LE(told + lost, kEvents + 10) << "the server's own lines are counted as well";
}

TEST_F(UnreadOutput, GetsTheTextOfAnAssertionBeforeTheProcessEnds) {
  start(floodedBoard());
  std::this_thread::sleep_for(2500ms);
  session().send("write memory 0 0 1 12\r");
  session().readFor(500ms);
  EXPECT_EQ(program().wait(), killedBy(SIGSEGV));
  EXPECT_THAT(program().output(), testing::HasSubstr("Length must be an even number of bytes\n"));
}

}  // namespace
