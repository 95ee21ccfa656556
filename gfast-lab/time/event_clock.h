// A clock that goes from one event to the next without waiting: a day passes as fast as it can be computed.
//
// Time stands still while any thread that uses the clock computes. When the last of them waits, it moves on
// to whatever comes first: the end of a wait, or what the board does by itself. Then one thread goes on, and
// the others stay until that one waits too. So threads take turns, always in the same order, and a run that
// is repeated gives the same answers.
#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

#include "clock/clock.h"

namespace gfast::lab {

class EventClock final : public Clock {
 public:
  // What happens by itself, without a thread that waits for it. Times are seconds since the start.
  struct Events {
    std::function<std::optional<double>()> next;  // when the next event comes; empty: none comes
    std::function<void()> advance;                // does what is due by the present time
  };

  // `start` is the time of day at the beginning. Who makes the clock is the command thread. Of several
  // threads whose waits end at the same moment, it goes on last: what is due is done before the next command.
  explicit EventClock(time_t start) : start_(start) {}

  // To be called before anybody waits.
  void setEvents(Events events) { events_ = std::move(events); }

  double elapsed_s();

  time_t now() override;
  std::chrono::microseconds steady() override;
  void sleep(std::chrono::microseconds duration) override;
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) override;
  bool sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) override;
  void sleepOutside(std::chrono::microseconds duration) override;
  void threadStarts() override;
  void letOthersCatchUp(const std::function<bool()>& mayGoOn) override { sleepWhile({}, mayGoOn); }

 private:
  struct Waiting {
    std::chrono::microseconds end{};
    bool commands = false;          // of the command thread
    fd_set* descriptors = nullptr;  // also ends when one of these is readable
    int limit = 0;                  // one above the highest of them
    int readable = 0;               // so many were
    bool over = false;
  };
  using Lock = std::unique_lock<std::mutex>;

  void begin(Waiting& waiting, std::chrono::microseconds duration);
  void moveOn();
  Waiting* findReadable();
  Waiting& firstToEnd();
  bool passEvent(std::chrono::microseconds latest);
  void end(Waiting& waiting);
  void setTime(std::chrono::microseconds time);

  const time_t start_;
  const std::thread::id commandThread_ = std::this_thread::get_id();
  Events events_;

  // Held while the board is asked for its events; it asks for the time meanwhile, which has a lock of its
  // own.
  std::mutex mutex_;
  std::condition_variable ended_;
  std::set<std::thread::id> threads_{commandThread_};  // that have used the clock
  size_t expected_ = 1;                                // threads that will
  size_t computing_ = 1;
  std::list<Waiting*> waiting_;  // who has waited longest first

  std::mutex timeMutex_;
  std::chrono::microseconds time_{0};  // since the start
};

}  // namespace gfast::lab
