// A clock that a test sets: time stands still but for sleeps, which take no time and are remembered.
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
  // Installs itself. Never destroyed, because the library's own thread may still ask at process exit: use
  // testClock().
  TestClock();

  void setNow(time_t seconds);
  void setPeerGone(bool gone);  // what sleepWhileConnected finds

  // Runs at every sleep, on the thread that sleeps.
  void onSleep(std::function<void()> action);

  std::vector<std::chrono::microseconds> sleeps();

  time_t now() override;
  void sleep(std::chrono::microseconds duration) override;

  // On the test's own thread nothing ever becomes readable and the wait takes its time at once; any other
  // thread waits for the rest of the process.
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) override;

  bool sleepWhileConnected(int descriptor, std::chrono::microseconds duration) override;

 private:
  const std::thread::id owner_ = std::this_thread::get_id();
  std::mutex lock_;
  std::chrono::microseconds now_{0};
  bool peerGone_ = false;
  std::function<void()> onSleep_;
  std::vector<std::chrono::microseconds> sleeps_;
};

// The process's test clock, installed on first use.
TestClock& testClock();
