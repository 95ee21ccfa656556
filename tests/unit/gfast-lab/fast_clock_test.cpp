// A clock that runs at another speed than the real one, and how the command line says so.
#include "gfast-lab/time/fast_clock.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "gfast-lab/time/time_options.h"
#include "support/test_clock.h"

using namespace gfast::lab;
using namespace std::chrono_literals;

namespace {

using std::chrono::microseconds;
using testing::ElementsAre;

constexpr time_t kFastStart = 1700006400;

bool atOnce() {
  return true;
}

int waitForNothing(FastClock& clock, microseconds duration) {
  fd_set none;
  FD_ZERO(&none);
  return clock.waitReadable(none, 0, duration);
}

TEST(FastClock, RunsSoManyTimesFaster) {
  TestClock& real = testClock();
  FastClock clock(kFastStart, 60, real);
  EXPECT_EQ(clock.now(), kFastStart);
  real.sleep(2500ms);
  EXPECT_EQ(clock.now(), kFastStart + 150);
  EXPECT_EQ(clock.steady(), 150s);
  EXPECT_EQ(clock.elapsed_s(), 150.0);
}

TEST(FastClock, WaitsSoMuchShorter) {
  TestClock& real = testClock();
  FastClock clock(kFastStart, 100, real);
  clock.sleep(50s);
  EXPECT_TRUE(clock.sleepWhile(20s, atOnce));
  EXPECT_EQ(waitForNothing(clock, 10s), 0);
  EXPECT_THAT(real.sleeps(), ElementsAre(500ms, 200ms));
  EXPECT_EQ(real.steady(), 800ms);
  EXPECT_EQ(clock.steady(), 80s);
}

TEST(FastClock, CanRunSlower) {
  TestClock& real = testClock();
  FastClock clock(kFastStart, 0.5, real);
  clock.sleep(1s);
  EXPECT_EQ(real.steady(), 2s);
}

TEST(FastClock, PassesOnThatAWaitMayNotGoOn) {
  FastClock clock(kFastStart, 100, testClock());
  EXPECT_FALSE(clock.sleepWhile(20s, [] { return false; }));
}

TEST(FastClock, WaitsInRealTimeForTheWorldOutside) {
  TestClock& real = testClock();
  FastClock clock(kFastStart, 100, real);
  clock.sleepOutside(100ms);
  EXPECT_THAT(real.sleeps(), ElementsAre(100ms));
}

// A computer that is too slow would else skip quarter hours.
TEST(FastClock, IsHeldBackAMinuteAheadOfTheThreadThatWaitsForTheDevices) {
  TestClock& real = testClock();
  FastClock clock(kFastStart, 1000, real);
  waitForNothing(clock, 500ms);
  real.sleep(10s);
  EXPECT_EQ(clock.steady(), 60500ms);
  real.sleep(10s);
  EXPECT_EQ(clock.steady(), 60500ms);
  waitForNothing(clock, 500ms);
  EXPECT_EQ(clock.steady(), 61s);
}

TEST(SpeedOption, IsANumberOrMax) {
  EXPECT_EQ(parseSpeed("max"), kNextEventAtOnce);
  EXPECT_EQ(parseSpeed("1440"), 1440.0);
  EXPECT_EQ(parseSpeed("0.5"), 0.5);
  for (const char* text : {"", "0", "0.001", "-1", "100001", "inf", "nan", "5x", "maximum"}) {
    EXPECT_EQ(parseSpeed(text), std::nullopt) << text;
  }
}

TEST(StartOption, IsALocalTime) {
  setenv("TZ", "LAB-2", 1);
  tzset();
  EXPECT_EQ(parseStart("2023-11-15T02:00:00"), kFastStart);
  for (const char* text : {"", "2023-11-15", "2023-11-15T02:00:00Z", "2023-13-15T02:00:00", "now"}) {
    EXPECT_EQ(parseStart(text), std::nullopt) << text;
  }
}

}  // namespace
