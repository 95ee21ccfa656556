// Answers requests from a field trace, as the board did on which it was recorded.
//
// Each thread gets, for each request, the answers that this thread got on the board to the same request, in
// their order; the last one again and again. So what a command sees does not depend on what the notification
// thread asks meanwhile. A request that this thread did not make there gets what the other one got last, by
// the replay's clock.
//
// The replay's clock runs as on the board. When the command thread asks something earlier than it did there,
// the clock jumps to that moment, and on its way there stops at the events and log records that came before,
// until the notification thread has taken them. The waits of a command are such jumps too.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "driver/driver.h"
#include "gfast-lab/replay/record_tape.h"
#include "gfast-lab/replay/trace_reader.h"

namespace gfast::replay {

class ReplayedBoard final : public Driver {
 public:
  // Returns microseconds since some start; they never fall.
  using TimeSource = std::function<uint64_t()>;
  // Takes one line about a request that the trace does not hold.
  using Report = std::function<void(const std::string&)>;

  // Who makes it is the command thread. Without a time source the clock runs in real time between the jumps;
  // with one that stands still, it only jumps.
  ReplayedBoard(FieldTrace&& trace, Report report, TimeSource time = {});
  ~ReplayedBoard() override;

  // Fails with the recorded error, with that of timerfd_create, or with ENODATA: the trace does not hold it.
  int open(int device) override;

  // Fails with the recorded error, or with ENODATA (the trace does not hold it) or EBADF (not open).
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override;

  void close(int descriptor) override;
  void rediscover() override {}

  // The replay's clock: microseconds since the beginning of the recording.
  uint64_t clock_us();

  // Moves the clock on, with the stops of a jump. False on another than the command thread: nothing is done.
  bool pass(std::chrono::microseconds duration);

 private:
  using Answer = std::shared_ptr<const TraceAnswer>;
  struct Timed {
    uint64_t time_us;
    Answer answer;
  };
  // The answers to one request that one thread got.
  struct Series {
    std::vector<Timed> answers;
    size_t next = 0;
  };
  using SeriesOfThreads = std::array<Series, 2>;

  void sort(TracedExchange&& exchange);
  uint64_t now() const { return time_() + skipped_us_; }
  bool onCommandThread() const { return std::this_thread::get_id() == commandThread_; }
  Answer answerTo(std::unique_lock<std::mutex>& lock, const TraceRequest& request);
  Answer nextOf(std::unique_lock<std::mutex>& lock, Series& own);
  Answer latestOf(const Series& other) const;
  void jumpTo(std::unique_lock<std::mutex>& lock, uint64_t time_us);
  void awaitRound(std::unique_lock<std::mutex>& lock);
  void skipTo(uint64_t time_us);
  Answer takeRecord(const TraceRequest& request);
  void setTimers();
  void report(const TraceRequest& request);

  const TimeSource time_;
  const Report report_;
  const bool blanked_;
  const std::thread::id commandThread_ = std::this_thread::get_id();
  std::mutex mutex_;  // guards everything below
  std::condition_variable handled_;
  uint64_t skipped_us_ = 0;
  bool attended_ = true;  // the notification thread took its last round in time
  std::map<TraceRequest, SeriesOfThreads> series_;
  RecordTape tape_;
  std::map<int, int> devices_;  // by descriptor
  std::set<TraceRequest> reported_;
};

}  // namespace gfast::replay
