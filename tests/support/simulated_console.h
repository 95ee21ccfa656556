// The console with a virtual board behind it, in one process and under a clock that only waiting moves. The
// library's notification thread never wakes; its rounds are run by whoever holds the console. So a command
// always makes the same requests, and the process can be forked at any moment.
#pragma once

#include <libcli.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "clock/clock.h"
#include "driver/driver.h"
#include "qvrdev/notification.h"
#include "virtual-board/board/board_config.h"
#include "virtual-board/board/virtual_board.h"

// Sleeps take no time. The board does what is due meanwhile.
class WaitingClock final : public gfast::Clock {
 public:
  WaitingClock() { gfast::installClock(*this); }

  void advances(gfast::board::VirtualBoard& board) { board_ = &board; }
  double seconds() const;  // since the start

  // From this moment on, waits that may be ended are ended, as in a session that is lost.
  void endWaitsAt(double seconds) {
    waitsEnd_s_ = seconds;
    waitsEnded_ = false;
  }
  bool waitsEnded() const { return waitsEnded_; }

  // Returns when no thread but the caller's own can do anything any more.
  void awaitOtherThread() const;

  time_t now() override;
  std::chrono::microseconds steady() override;
  void sleep(std::chrono::microseconds duration) override;
  bool sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) override;
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) override;

 private:
  const std::thread::id owner_ = std::this_thread::get_id();
  gfast::board::VirtualBoard* board_ = nullptr;
  mutable std::mutex lock_;  // guards the time
  std::chrono::microseconds elapsed_{0};
  double waitsEnd_s_ = 1e18;
  bool waitsEnded_ = false;
  std::atomic<bool> otherWaits_{false};
};

class SimulatedConsole {
 public:
  // Switches the board on.
  explicit SimulatedConsole(const gfast::board::BoardConfig& config);

  gfast::board::VirtualBoard& board() { return *board_; }
  WaitingClock& clock() { return clock_; }

  // Starts library and interpreter behind this driver, which passes on to the board.
  void start(gfast::Driver& driver);

  // Puts a board as it was at power-up in the place of this one, and has the library discover it. The driver
  // that the console was started with passes its rediscovery to rediscovered().
  void renewBoard();
  void rediscovered();

  // Standard output is lost, as that of a script whose reader has left, when a script has printed so much.
  void loseOutputAfter(size_t bytes);

  // What a script of these lines prints to the interpreter's output, a line end behind each line.
  std::string run(const std::string& lines);

  // Has the interpreter's output kept for run() again.
  void keepPrints();

  // Rounds of the notification thread for so long.
  void pass(double seconds);

  cli_def* interpreter() const { return interpreter_; }

 private:
  void switchOn();

  const gfast::board::BoardConfig config_;
  WaitingClock clock_;
  std::unique_ptr<gfast::board::VirtualBoard> board_;
  bool renews_ = false;
  cli_def* interpreter_ = nullptr;
  std::unique_ptr<gfast::NotificationRound> round_;
};
