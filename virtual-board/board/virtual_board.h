// Two G.fast chips made of software, joined by a pair of wires, as a driver.
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
  // Returns seconds since power-up; they never fall.
  using TimeSource = std::function<double()>;

  // Time that passes by itself, so much in a second of real time.
  struct RunningTime {
    TimeSource now;
    double speed;
  };

  // Switches a board on. Without a time source the board runs in real time. With one, its user moves the time
  // and calls advance.
  explicit VirtualBoard(const BoardConfig& config, const TimeSource& time = {});

  // The same, in running time.
  VirtualBoard(const BoardConfig& config, const RunningTime& time);

  ~VirtualBoard() override;

  // From now on each request is written to this file. Returns 0, or the errno from creating the file. Called
  // before the first request.
  int traceRequests(const std::string& path) { return trace_.open(path); }

  // Fails with ENODEV (no such chip on the board), with the errno of a fault, or with that of eventfd.
  int open(int device) override;

  // Fails with:
  //   EBADF       not a descriptor of this board
  //   ENOTTY      no such request
  //   EOPNOTSUPP  a request that the board does not serve
  //   EINVAL      a length or an address out of range
  //   EFAULT      no buffer
  //   EMSGSIZE    the buffer is too small for a record
  //   EIO         the chip is in reset
  //   ETIMEDOUT   the chip hangs
  //   ENOTCONN    no showtime, so no far end
  //   others      of Chip, Flash, FarEnd, or a fault
  // In running time an exchange with the far end takes some milliseconds; other requests are served
  // meanwhile.
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;

  void close(int descriptor) override;

  // Nothing to do: a chip that was reset answers as soon as it has booted.
  void rediscover() override {}

  // Runs what is due by now.
  void advance();

  // When something is due next, in seconds since power-up; empty: never.
  std::optional<double> nextDue();

  // Cuts or repairs the pair of wires.
  void cutLoop(bool cut);

 private:
  VirtualBoard(const BoardConfig& config, const TimeSource& time, std::optional<double> speed);
  void mapCounters(size_t device);
  LineInsight insight(size_t device);
  void introduce(size_t device);
  void scheduleRecords(const BoardConfig& config);
  void scheduleFailures(const BoardConfig& config);
  void disturbExtcom(const ExtcomErrors& errors);
  void runClock();
  void advanceLocked();
  void wakeClock();
  void showPending();
  std::optional<int> deviceOf(int descriptor);
  int serve(const RequestHandler& handler, Exchange& exchange);

  const int devices_;
  TimeSource time_;
  const std::optional<double> speed_;  // of running time; empty: somebody else moves the time
  RequestTrace trace_;
  std::mutex mutex_;  // guards everything below
  std::condition_variable changed_;
  bool ending_ = false;
  std::optional<double> clockWakes_;  // when the clock's thread wakes; empty: when it is notified
  Agenda agenda_;
  std::array<std::unique_ptr<Chip>, kMaxDevices> chips_;
  std::unique_ptr<CopperLine> line_;
  std::unique_ptr<TestMemory> testMemory_;
  std::array<std::unique_ptr<FarEnd>, kMaxDevices> farEnds_;
  Faults faults_;
  struct Descriptor {
    int device;
    bool readable;
    size_t arrivals;  // of which its readers were told
  };
  std::map<int, Descriptor> descriptors_;
  std::thread clock_;
};

}  // namespace gfast::board
