#include "clock/clock.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <thread>

using namespace gfast;

namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLongestSleep{500};  // without asking whether to go on

class SystemClock final : public Clock {
 public:
  time_t now() override { return ::time(nullptr); }

  microseconds steady() override {
    return std::chrono::duration_cast<microseconds>(steady_clock::now().time_since_epoch());
  }

  void sleep(microseconds duration) override { std::this_thread::sleep_for(duration); }

  int waitReadable(fd_set& descriptors, int limit, microseconds duration) override {
    timeval timeout{};
    timeout.tv_sec = static_cast<time_t>(duration.count() / 1000000);
    timeout.tv_usec = static_cast<suseconds_t>(duration.count() % 1000000);
    const int ready = ::select(limit, &descriptors, nullptr, nullptr, &timeout);
    if (ready > 0) {
      return ready;
    }
    FD_ZERO(&descriptors);
    if (ready < 0 && errno != EINTR) {
      // A descriptor was closed meanwhile: wait the caller's time anyway, so that the caller does not spin.
      std::this_thread::sleep_for(duration);
    }
    return 0;
  }

  bool sleepWhile(microseconds duration, const std::function<bool()>& mayGoOn) override {
    const auto end = steady_clock::now() + duration;
    for (;;) {
      if (!mayGoOn()) {
        return false;
      }
      const auto now = steady_clock::now();
      if (now >= end) {
        return true;
      }
      std::this_thread::sleep_for(std::min<steady_clock::duration>(end - now, kLongestSleep));
    }
  }
};

// Never destroyed: the notification thread may still use it while the process exits.
std::atomic<Clock*>& installedClock() {
  static auto* system = new SystemClock;
  static std::atomic<Clock*> clock{system};
  return clock;
}

}  // namespace

void gfast::installClock(Clock& clock) {
  installedClock() = &clock;
}

Clock& gfast::clockSource() {
  return *installedClock();
}
