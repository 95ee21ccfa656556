// A month of quarter hours, and an hour of a line that drops every second: nothing grows.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "soak/process_figures.h"
#include "soak/simulated_board.h"

using namespace gfast;

namespace {

constexpr int kMinute_s = 60;

std::atomic<int> dayEvents = 0;
std::atomic<int> stateChanges = 0;

void passTo(SimulatedBoard& simulated, int seconds) {
  simulated.setTime(seconds);
  simulated.round();
}

void expectFlat(long early_KiB, const char* what) {
  const long last_KiB = residentKib(getpid());
  EXPECT_LE(last_KiB, early_KiB + kAllowedGrowth_KiB);
  std::printf("%s; resident memory: %ld KiB after a tenth, %ld KiB at the end\n", what, early_KiB, last_KiB);
}

TEST(LongRunSoak, AMonthOfQuarterHours) {
  SimulatedBoard& simulated = SimulatedBoard::start({});
  QVR_register24hrEventCB([](QVR_lineId_t, const char*, time_t) { dayEvents++; });
  const int days = sizeOf(31, 2);
  const int minutes = days * kDay_s / kMinute_s;
  long early_KiB = 0;
  for (int minute = 1; minute <= minutes; minute++) {
    passTo(simulated, minute * kMinute_s);
    if (minute == minutes / 10) {
      early_KiB = residentKib(getpid());
    }
  }
  EXPECT_EQ(dayEvents, days * QVR_K_MAX_LINES);
  // The history's reads: one for each line and quarter hour, and those at the start.
  EXPECT_GE(simulated.counterReads(), static_cast<uint32_t>(days * 96 * QVR_K_MAX_LINES));
  expectFlat(early_KiB, "a month");
}

// Every second both lines go from showtime to silent, and back in the next one.
BoardConfig flappingBoard(int seconds) {
  constexpr uint32_t kShowtime = LS_SHOWTIME;
  constexpr uint32_t kSilent = LS_SILENT;
  BoardConfig config;
  for (int second = 1; second <= seconds; second++) {
    const bool down = second % 2 != 0;
    for (const int device : {0, 1}) {
      config.events.push_back({device,
                               static_cast<double>(second),
                               EVENT_TYPE_LINKS_STATUS_CHANGED,
                               {down ? kShowtime : kSilent, down ? kSilent : kShowtime}});
    }
  }
  return config;
}

TEST(LongRunSoak, AnHourOfLinkFlaps) {
  const int seconds = sizeOf(3600, 200);
  SimulatedBoard& simulated = SimulatedBoard::start(flappingBoard(seconds));
  QVR_registerlinkStateChangeCB([](QVR_lineId_t, G9701_linkState_t, G9701_linkState_t) { stateChanges++; },
                                LS_SHOWTIME);
  long early_KiB = 0;
  for (int second = 1; second <= seconds; second++) {
    passTo(simulated, second);
    if (second == seconds / 10) {
      early_KiB = residentKib(getpid());
    }
  }
  EXPECT_EQ(stateChanges, 2 * seconds);
  expectFlat(early_KiB, "an hour of flaps");
}

}  // namespace
