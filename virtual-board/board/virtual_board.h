// Two G.fast chips made of software, joined by a pair of wires, behind the driver seam.
#pragma once

#include <driver/driver.h>

#include <array>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <span>
#include <thread>

#include "virtual-board/base/agenda.h"
#include "virtual-board/board/board_config.h"
#include "virtual-board/board/far_end.h"
#include "virtual-board/board/faults.h"
#include "virtual-board/board/request_handlers.h"
#include "virtual-board/board/request_trace.h"
#include "virtual-board/chip/chip.h"
#include "virtual-board/line/copper_line.h"
#include "virtual-board/measured/test_memory.h"

namespace gfast::board {

class VirtualBoard final : public Driver {
 public:
  // Seconds since power-up, never falling.
  using TimeSource = std::function<double()>;

  // A board that has just been switched on. Without a time source its clock runs with real time, and what
  // happens later happens by itself; with one, a test drives the clock and calls advance.
  explicit VirtualBoard(const BoardConfig& config, const TimeSource& time = {});
  ~VirtualBoard() override;

  // Requests are written there from now on. 0, or the errno that kept the file from being created. Called
  // before the first request.
  int traceRequests(const std::string& path) { return trace_.open(path); }

  // ENODEV: no such chip on the board; otherwise a descriptor of the chip's own, or why there is none left.
  int open(int device) override;

  // A failure's errno: EBADF, not a descriptor of this board; ENOTTY, no such request; EOPNOTSUPP, a request
  // that the board does not serve; EINVAL, a length or address out of range; EFAULT, no buffer; EIO, the chip
  // is in reset; ETIMEDOUT, it hangs; else as the chip, the flash or the far end says. With real time, an
  // exchange with the far end takes some milliseconds, during which other requests are served.
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;

  void close(int descriptor) override;

  // Chips are where they always were; one that was reset answers as soon as it has booted.
  void rediscover() override {}

  // Does what is due by now.
  void advance();

  // Cuts the pair of wires, or joins it again.
  void cutLoop(bool cut);

 private:
  void mapCounters(size_t device);
  LineInsight insight(size_t device);
  void introduce(size_t device);
  void scheduleConfigured(const BoardConfig& config);
  void scheduleHappenings(const BoardConfig& config);
  void disturbExtcom(const ExtcomErrors& errors);
  void runClock();
  void advanceLocked();
  void wakeClock();
  void showPending();
  std::optional<int> deviceOf(int descriptor);
  int serve(const RequestHandler& handler, Exchange& exchange);

  const int devices_;
  TimeSource time_;
  const bool realTime_;
  RequestTrace trace_;
  std::mutex mutex_;  // guards everything below
  std::condition_variable changed_;
  bool ending_ = false;
  std::optional<double> clockWakes_;  // when the clock's thread means to wake; none: not by itself
  Agenda agenda_;
  std::array<std::unique_ptr<Chip>, kMaxDevices> chips_;
  std::unique_ptr<CopperLine> line_;
  std::unique_ptr<TestMemory> testMemory_;
  std::array<std::unique_ptr<FarEnd>, kMaxDevices> farEnds_;
  Faults faults_;
  struct Descriptor {
    int device;
    bool readable;
  };
  std::map<int, Descriptor> descriptors_;
  std::thread clock_;
};

}  // namespace gfast::board
