#include "support/test_clock.h"

#include <unistd.h>

using namespace gfast;

TestClock::TestClock() {
  installClock(*this);
}

void TestClock::setNow(time_t seconds) {
  const std::lock_guard guard(lock_);
  now_ = std::chrono::seconds(seconds);
}

void TestClock::setPeerGone(bool gone) {
  const std::lock_guard guard(lock_);
  peerGone_ = gone;
}

void TestClock::onSleep(std::function<void()> action) {
  const std::lock_guard guard(lock_);
  onSleep_ = std::move(action);
}

std::vector<std::chrono::microseconds> TestClock::sleeps() {
  const std::lock_guard guard(lock_);
  return sleeps_;
}

std::vector<std::chrono::microseconds> TestClock::outsideSleeps() {
  const std::lock_guard guard(lock_);
  return outsideSleeps_;
}

time_t TestClock::now() {
  const std::lock_guard guard(lock_);
  return static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(now_).count());
}

std::chrono::microseconds TestClock::steady() {
  const std::lock_guard guard(lock_);
  return now_;
}

void TestClock::sleep(std::chrono::microseconds duration) {
  std::function<void()> action;
  {
    const std::lock_guard guard(lock_);
    now_ += duration;
    sleeps_.push_back(duration);
    action = onSleep_;
  }
  if (action) {
    action();
  }
}

int TestClock::waitReadable(fd_set& descriptors, int /*limit*/, std::chrono::microseconds duration) {
  while (std::this_thread::get_id() != owner_) {
    pause();
  }
  FD_ZERO(&descriptors);
  const std::lock_guard guard(lock_);
  now_ += duration;
  return 0;
}

void TestClock::sleepOutside(std::chrono::microseconds duration) {
  {
    const std::lock_guard guard(lock_);
    outsideSleeps_.push_back(duration);
  }
  sleep(duration);
}

bool TestClock::sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) {
  sleep(duration);
  const bool goesOn = mayGoOn();
  const std::lock_guard guard(lock_);
  return goesOn && !peerGone_;
}

TestClock& testClock() {
  static TestClock* clock = new TestClock;
  return *clock;
}
