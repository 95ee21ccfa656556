// The library's seam to time: what time it is, and waiting. A program may install a clock of its own, on
// which time runs faster; a test installs one and sets any time.
#pragma once

#include <sys/select.h>

#include <chrono>
#include <ctime>
#include <functional>

namespace gfast {

class Clock {
 public:
  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  virtual ~Clock() = default;

  // Wall-clock time, seconds since the epoch.
  virtual time_t now() = 0;

  // Time since a fixed moment. Setting the wall clock does not change it.
  virtual std::chrono::microseconds steady() = 0;

  virtual void sleep(std::chrono::microseconds duration) = 0;

  // Waits until one of the descriptors below `limit` in `descriptors` is readable or the duration has passed,
  // as select: the number of ready descriptors, which are left set, or 0.
  virtual int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) = 0;

  // Sleeps like sleep, but asks now and then whether to go on, at least twice a second. Returns the last
  // answer, at once when it is false.
  virtual bool sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) {
    sleep(duration);
    return mayGoOn();
  }

  // A wait that the world outside the chips asks for, such as the network. It is no shorter on a clock on
  // which the chips' time runs faster.
  virtual void sleepOutside(std::chrono::microseconds duration) { sleep(duration); }

  // Told when another thread has been started that will wait on this clock. A clock on which threads take
  // turns waits for it.
  virtual void threadStarts() {}

  // On a clock on which threads take turns, the others do now what is due by now, as long as this one may go
  // on waiting. On any other they do so without being told.
  virtual void letOthersCatchUp(const std::function<bool()>& /*mayGoOn*/) {}
};

// Uses this clock from now on. It must live until the process ends.
void installClock(Clock& clock);

// The installed clock; the system's unless another was installed.
Clock& clockSource();

}  // namespace gfast
