// A clock that runs faster or slower than real time, from any time of day on.
#pragma once

#include <mutex>
#include <optional>

#include "clock/clock.h"

namespace gfast::lab {

// A computer may be too slow for the speed that was asked for. So that no quarter hour is missed, the time
// never gets more than a minute ahead of the thread that waits for the devices and looks at the hour.
class FastClock final : public Clock {
 public:
  // `start` is the time of day at the beginning, `speed` how much passes in a second of `real`, which must
  // outlive this clock.
  FastClock(time_t start, double speed, Clock& real);

  double elapsed_s();

  time_t now() override;
  std::chrono::microseconds steady() override;
  void sleep(std::chrono::microseconds duration) override;
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds duration) override;
  bool sleepWhile(std::chrono::microseconds duration, const std::function<bool()>& mayGoOn) override;
  void sleepOutside(std::chrono::microseconds duration) override { real_.sleepOutside(duration); }

 private:
  std::chrono::microseconds real(std::chrono::microseconds duration) const;
  void look();

  const time_t start_;
  const double speed_;
  Clock& real_;
  std::mutex mutex_;                // guards what follows
  std::chrono::microseconds seen_;  // on the real clock, when the time was asked for last
  double elapsed_us_ = 0;
  std::optional<double> looked_us_;  // when the thread that waits for the devices did so last
};

}  // namespace gfast::lab
