// A virtual board and the library in front of it, under a clock that a test moves: a week passes in seconds.
#pragma once

#include <qvr.h>
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <thread>

#include "chip/counters.h"
#include "clock/clock.h"
#include "driver/driver.h"
#include "qvrdev/notification.h"
#include "support/bytes.h"  // before the board's names, which have Bytes as well
#include "virtual-board/board/board_config.h"
#include "virtual-board/board/virtual_board.h"

using namespace gfast;
using namespace gfast::board;

constexpr time_t kPowerUp = 1700006400;  // 2023-11-15 00:00:00 UTC, a midnight
constexpr int kQuarter_s = 900;
constexpr int kDay_s = 86400;

// Time moves only when it is set, and by sleeps, which take no time. The library's own notification thread
// never wakes: the test runs its rounds.
class SimulatedTime final : public Clock {
 public:
  SimulatedTime() { installClock(*this); }

  void set(double seconds) { elapsed_ms_ = static_cast<uint32_t>(std::lround(seconds * 1000)); }
  double seconds() const { return elapsed_ms_ / 1000.0; }  // since power-up

  time_t now() override { return kPowerUp + static_cast<time_t>(elapsed_ms_ / 1000); }
  std::chrono::microseconds steady() override { return std::chrono::milliseconds(elapsed_ms_); }
  void sleep(std::chrono::microseconds duration) override {
    elapsed_ms_ += static_cast<uint32_t>(std::chrono::ceil<std::chrono::milliseconds>(duration).count());
  }
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds /*duration*/) override {
    while (std::this_thread::get_id() != owner_) {
      pause();
    }
    timeval now{0, 0};
    return std::max(0, select(limit, &descriptors, nullptr, nullptr, &now));
  }

 private:
  const std::thread::id owner_ = std::this_thread::get_id();
  std::atomic<uint32_t> elapsed_ms_{0};  // no wider: the board's processor has no 64-bit atomics
};

// Counts how often the library reads a chip's performance counters.
class CountedBoard final : public Driver {
 public:
  CountedBoard(const BoardConfig& config, const SimulatedTime& time)
      : board_(config, [&time] { return time.seconds(); }) {
    installDriver(*this);
  }

  VirtualBoard& board() { return board_; }
  uint32_t counterReads() const { return counterReads_; }

  int open(int device) override { return board_.open(device); }
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD && request.req_u.memread.hw_mem_addr == VIRT_ADDR_15MIN_24HRS_COUNTERS(0)) {
      counterReads_++;
    }
    return board_.request(descriptor, code, request);
  }
  void close(int descriptor) override { board_.close(descriptor); }
  void rediscover() override { board_.rediscover(); }

 private:
  VirtualBoard board_;
  std::atomic<uint32_t> counterReads_{0};
};

// Never destroyed: the library's notification thread may still ask at process exit.
class SimulatedBoard {
 public:
  // Both lines are up at power-up, and so is the library.
  static SimulatedBoard& start(BoardConfig config) {
    setenv("TZ", "UTC0", 1);
    tzset();
    for (auto& device : config.device) {
      device.line = LineState::kShowtime;
    }
    static auto& instance = *new SimulatedBoard(config);
    return instance;
  }

  VirtualBoard& board() { return driver_.board(); }
  uint32_t counterReads() const { return driver_.counterReads(); }

  // Moves the time to so many seconds after power-up. The board does what is due by then; the library sees it
  // in the next round.
  void setTime(double seconds) {
    time_.set(seconds);
    board().advance();
  }
  // A round of the library's notification thread at this moment.
  void round() { round_->step(); }

 private:
  explicit SimulatedBoard(const BoardConfig& config) : driver_(config, time_) {
    if (QVR_STATUS_ERROR(QVR_initFastModule(FALSE))) {
      std::abort();
    }
    round_ = std::make_unique<NotificationRound>();
  }

  SimulatedTime time_;
  CountedBoard driver_;
  std::unique_ptr<NotificationRound> round_;
};
