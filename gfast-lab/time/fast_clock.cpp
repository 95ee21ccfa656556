#include "gfast-lab/time/fast_clock.h"

#include <algorithm>

namespace gfast::lab {

namespace {

using std::chrono::microseconds;

constexpr double kSecond_us = 1e6;
constexpr double kFarthestAhead_us = 60 * kSecond_us;

// Of a wait on the real clock, so that one that has almost ended does not keep the processor busy.
constexpr microseconds kLeastWait{20};

}  // namespace

FastClock::FastClock(time_t start, double speed, Clock& real)
    : start_(start), speed_(speed), real_(real), seen_(real.steady()) {}

microseconds FastClock::steady() {
  const std::lock_guard lock(mutex_);
  const microseconds now = real_.steady();
  elapsed_us_ += static_cast<double>((now - seen_).count()) * speed_;
  seen_ = now;
  if (looked_us_) {
    elapsed_us_ = std::min(elapsed_us_, *looked_us_ + kFarthestAhead_us);
  }
  return microseconds{static_cast<int64_t>(elapsed_us_)};
}

double FastClock::elapsed_s() {
  return static_cast<double>(steady().count()) / kSecond_us;
}

time_t FastClock::now() {
  return start_ + static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(steady()).count());
}

microseconds FastClock::real(microseconds duration) const {
  return std::max(kLeastWait,
                  microseconds{static_cast<int64_t>(static_cast<double>(duration.count()) / speed_)});
}

void FastClock::sleep(microseconds duration) {
  sleepWhile(duration, [] { return true; });
}

bool FastClock::sleepWhile(microseconds duration, const std::function<bool()>& mayGoOn) {
  const microseconds end = steady() + duration;
  // More than once when the time was held back meanwhile.
  for (microseconds now = steady(); now < end; now = steady()) {
    if (!real_.sleepWhile(real(end - now), mayGoOn)) {
      return false;
    }
  }
  return mayGoOn();
}

int FastClock::waitReadable(fd_set& descriptors, int limit, microseconds duration) {
  look();
  const int readable =
      real_.waitReadable(descriptors, limit, duration.count() == 0 ? duration : real(duration));
  look();
  return readable;
}

void FastClock::look() {
  const auto now = static_cast<double>(steady().count());
  const std::lock_guard lock(mutex_);
  looked_us_ = std::max(looked_us_.value_or(0), now);
}

}  // namespace gfast::lab
