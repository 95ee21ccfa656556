// The notification thread: it delivers the chips' events and log messages, calls the quarter-hour callbacks
// and checks that each chip still answers.
#pragma once

#include <sys/select.h>

#include <array>
#include <chrono>

#include "qvrdev/callbacks.h"
#include "qvrdev/device_news.h"

namespace gfast {

constexpr uint32_t QVR_K_POLLING_INTERVAL = 500000;  // microseconds, the wait of one round
constexpr uint32_t QVR_K_DEVICE_COMM_WATCHDOG_PERIOD =
    5 * (1000000 / QVR_K_POLLING_INTERVAL);  // rounds between two liveness checks
constexpr uint32_t QVR_K_DEVICE_COMM_WATCHDOG_COUNT =
    3;  // failed checks tolerated before the failure callback

// The work of the thread, in rounds of QVR_K_POLLING_INTERVAL by the clock, each of one step or more. The
// highest descriptor is fixed when the first round is prepared: a descriptor that is opened later and is
// higher is not waited for.
class NotificationRound {
 public:
  NotificationRound();

  // Waits for the devices until the round ends at the latest, then: quarter-hour callbacks when a boundary
  // has passed (and a second of sleep), pending events and log records, and the liveness check when
  // QVR_K_DEVICE_COMM_WATCHDOG_PERIOD rounds have passed since the last one. A queue that still holds more is
  // continued in the next step, which does not wait.
  //
  // A device that was readable but delivered nothing (log records that nobody takes, reads that fail) would
  // end every wait at once. During the rest of the round only news on it end the wait; its events are read
  // then, and whenever another device ends the wait. Of a driver that tells of news all the time, so many are
  // heard in a round and the others wait for the next.
  static constexpr int kMostNewsInARound = 50;
  void step();

 private:
  std::chrono::microseconds timeLeftInRound();  // begins a round when the last one is over
  bool hasUnfinished() const;
  bool awaitsNews(int descriptor, fd_set& descriptors);
  bool waitForDevices(std::chrono::microseconds duration);
  void watchBoundary();
  void drainDevices();
  int drainEvents(QVR_deviceId_t device);
  int drainLogs(QVR_deviceId_t device);
  void checkDevices();
  void checkDevice(QVR_deviceId_t device);

  int limit_ = 0;         // one above the highest descriptor at start
  uint32_t secondsLeft_;  // to the quarter-hour boundary, as of the last round
  std::chrono::microseconds roundEnd_{0};
  std::chrono::microseconds nextCheck_;
  std::array<uint32_t, QVR_K_MAX_DEVICES> checksLeft_;  // failures still tolerated
  std::array<bool, QVR_K_MAX_DEVICES> ready_{};         // devices whose events are drained in this round
  std::array<bool, QVR_K_MAX_DEVICES> unfinished_{};    // devices whose queues still hold more
  std::array<bool, QVR_K_MAX_DEVICES> fruitless_{};     // devices that were readable but delivered nothing
  DeviceNews news_;                                     // on those
  int newsLeft_ = 0;                                    // still heard in this round
};

// The thread's body; it never returns.
void* QVR_asyncNotificationHandler(void* xi_unused);

// Starts the thread, which runs until the process ends.
//   QVR_E_FAILED_CREATING_THREAD  the system refuses a thread
QVR_retval_t startNotificationThread();

}  // namespace gfast
