// The clock of a running system.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>

#include "clock/clock.h"

using namespace gfast;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kShort{20};
constexpr milliseconds kLong{30000};

milliseconds timeOf(auto&& action) {
  const auto start = steady_clock::now();
  action();
  return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

TEST(SystemClock, ReturnsTheTimeOfDay) {
  const time_t before = time(nullptr);
  const time_t now = clockSource().now();
  EXPECT_GE(now, before);
  EXPECT_LE(now, time(nullptr));
}

TEST(SystemClock, SteadyTimeGoesOnWhileItSleeps) {
  const std::chrono::microseconds before = clockSource().steady();
  clockSource().sleep(kShort);
  EXPECT_GE(clockSource().steady() - before, kShort);
}

TEST(SystemClock, SleepsAtLeastAsLongAsAsked) {
  EXPECT_GE(timeOf([] { clockSource().sleep(kShort); }), kShort);
}

TEST(SystemClock, WaitEndsWhenADescriptorIsReadable) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  fd_set descriptors;
  FD_ZERO(&descriptors);
  FD_SET(ends[0], &descriptors);
  EXPECT_LT(timeOf([&] { EXPECT_EQ(clockSource().waitReadable(descriptors, ends[0] + 1, kLong), 1); }),
            kLong);
  EXPECT_TRUE(FD_ISSET(ends[0], &descriptors));
}

TEST(SystemClock, WaitEndsAfterTheGivenTimeWhenNothingIsReadable) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  fd_set descriptors;
  FD_ZERO(&descriptors);
  FD_SET(ends[0], &descriptors);
  EXPECT_GE(timeOf([&] { EXPECT_EQ(clockSource().waitReadable(descriptors, ends[0] + 1, kShort), 0); }),
            kShort);
  EXPECT_FALSE(FD_ISSET(ends[0], &descriptors));
}

TEST(SystemClock, WaitsTheGivenTimeWhenADescriptorIsClosed) {
  const int gone = dup(STDERR_FILENO);
  close(gone);
  fd_set descriptors;
  FD_ZERO(&descriptors);
  FD_SET(gone, &descriptors);
  EXPECT_GE(timeOf([&] { EXPECT_EQ(clockSource().waitReadable(descriptors, gone + 1, kShort), 0); }), kShort);
  EXPECT_FALSE(FD_ISSET(gone, &descriptors));
}

TEST(SystemClock, SleepsTheWholeTimeWhileItMayGoOn) {
  int asked = 0;
  const auto mayGoOn = [&asked] {
    asked++;
    return true;
  };
  EXPECT_GE(timeOf([&] { EXPECT_TRUE(clockSource().sleepWhile(kShort, mayGoOn)); }), kShort);
  EXPECT_LE(asked, 3);
}

TEST(SystemClock, SleepEndsWhenItMayNotGoOn) {
  int asked = 0;
  const auto mayGoOn = [&asked] { return ++asked < 3; };
  EXPECT_LT(timeOf([&] { EXPECT_FALSE(clockSource().sleepWhile(kLong, mayGoOn)); }), milliseconds(5000));
  EXPECT_EQ(asked, 3);
}

}  // namespace
