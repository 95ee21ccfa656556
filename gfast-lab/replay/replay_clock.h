// The time of day at which a field trace was recorded.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>

#include "clock/clock.h"
#include "gfast-lab/replay/replayed_board.h"

namespace gfast::replay {

// Tells the time of the recording, moved on as the board's clock is. What the command thread waits for passes
// at once; the rest waits as another clock does.
class ReplayClock final : public Clock {
 public:
  ReplayClock(ReplayedBoard& board, int64_t started_us, Clock& waiting)
      : board_(board), started_us_(started_us), waiting_(waiting) {}

  time_t now() override {
    constexpr int64_t second_us = 1000000;
    return static_cast<time_t>((started_us_ + static_cast<int64_t>(board_.clock_us())) / second_us);
  }

  std::chrono::microseconds steady() override { return waiting_.steady(); }

  void sleep(std::chrono::microseconds duration) override {
    waiting_.sleep(board_.pass(duration) ? std::min(duration, kLeast) : duration);
  }

  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) override {
    return waiting_.waitReadable(descriptors, limit, duration);
  }

  bool sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) override {
    return waiting_.sleepWhile(board_.pass(duration) ? std::min(duration, kLeast) : duration, mayGoOn);
  }

 private:
  // Of a wait, so that who goes on waiting leaves the processor to others.
  static constexpr std::chrono::microseconds kLeast{1000};

  ReplayedBoard& board_;
  const int64_t started_us_;
  Clock& waiting_;
};

}  // namespace gfast::replay
