// A clock that a test sets. Time moves by sleeps only, which take no time and are remembered.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "clock/clock.h"

using namespace gfast;

class TestClock final : public Clock {
 public:
  // Installs itself. Never destroyed, because the library's own thread may still use it when the process
  // exits: use testClock().
  TestClock();

  void setNow(time_t seconds);
  void setPeerGone(bool gone);  // what sleepWhile finds

  // Runs at every sleep, on the thread that sleeps.
  void onSleep(std::function<void()> action);

  std::vector<std::chrono::microseconds> sleeps();
  std::vector<std::chrono::microseconds> outsideSleeps();  // of these, for the world outside

  time_t now() override;
  std::chrono::microseconds steady() override;
  void sleep(std::chrono::microseconds duration) override;

  // On the test's own thread nothing becomes readable, and the clock moves on by the duration at once. Any
  // other thread waits until the process ends.
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) override;

  void sleepOutside(std::chrono::microseconds duration) override;
  bool sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) override;

 private:
  const std::thread::id owner_ = std::this_thread::get_id();
  std::mutex lock_;
  std::chrono::microseconds now_{0};
  bool peerGone_ = false;
  std::function<void()> onSleep_;
  std::vector<std::chrono::microseconds> sleeps_;
  std::vector<std::chrono::microseconds> outsideSleeps_;
};

// The process's test clock, installed on first use.
TestClock& testClock();
