#include "qvrdev/notification.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>

#include "chip/boot_register.h"
#include "clock/clock.h"
#include "qvrdev/device_events.h"
#include "qvrdev/device_table.h"
#include "qvrdev/log_records.h"

using namespace gfast;

namespace {

using std::chrono::microseconds;

constexpr microseconds kPollingInterval{QVR_K_POLLING_INTERVAL};
constexpr microseconds kCheckInterval = QVR_K_DEVICE_COMM_WATCHDOG_PERIOD * kPollingInterval;

// Slept after the quarter-hour callbacks, so that the second of the boundary is over at the next check.
constexpr std::chrono::seconds kBoundaryPause{1};

}  // namespace

NotificationRound::NotificationRound()
    : secondsLeft_(QVR_secsTo15minBoundary(nullptr)), nextCheck_(clockSource().steady() + kCheckInterval) {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    limit_ = std::max(limit_, std::min(openDescriptor(device) + 1, FD_SETSIZE));
  }
  checksLeft_.fill(QVR_K_DEVICE_COMM_WATCHDOG_COUNT);
}

void NotificationRound::step() {
  const bool continued = hasUnfinished();
  const microseconds left = timeLeftInRound();
  const bool readable = waitForDevices(continued ? microseconds{0} : left);
  watchBoundary();
  if (readable || continued) {
    drainDevices();
  }
  if (const microseconds now = clockSource().steady(); now >= nextCheck_) {
    checkDevices();
    nextCheck_ = now + kCheckInterval;
  }
}

microseconds NotificationRound::timeLeftInRound() {
  const microseconds now = clockSource().steady();
  if (now >= roundEnd_) {
    roundEnd_ = now + kPollingInterval;
    fruitless_.fill(false);
    newsLeft_ = kMostNewsInARound;
  }
  return roundEnd_ - now;
}

bool NotificationRound::hasUnfinished() const {
  return std::ranges::find(unfinished_, true) != unfinished_.end();
}

// In place of a device that is readable all the time.
bool NotificationRound::awaitsNews(int descriptor, fd_set& descriptors) {
  if (newsLeft_ <= 0 || news_.descriptor() < 0 || news_.descriptor() >= FD_SETSIZE ||
      !news_.watch(descriptor)) {
    return false;
  }
  FD_SET(news_.descriptor(), &descriptors);
  return true;
}

bool NotificationRound::waitForDevices(microseconds duration) {
  fd_set descriptors;
  FD_ZERO(&descriptors);
  std::array<int, QVR_K_MAX_DEVICES> waitedFor;
  waitedFor.fill(-1);
  int limit = limit_;
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    const int descriptor = openDescriptor(device);
    if (descriptor < 0 || descriptor >= limit_) {
      continue;
    }
    if (!fruitless_[static_cast<size_t>(device)]) {
      waitedFor[static_cast<size_t>(device)] = descriptor;
      FD_SET(descriptor, &descriptors);
    } else if (awaitsNews(descriptor, descriptors)) {
      limit = std::max(limit, news_.descriptor() + 1);
    }
  }
  const int readable = clockSource().waitReadable(descriptors, limit, duration);
  if (readable > 0 && limit > limit_ && FD_ISSET(news_.descriptor(), &descriptors)) {
    news_.forget();
    newsLeft_--;
  }
  for (size_t i = 0; i < ready_.size(); i++) {
    ready_[i] = readable > 0 && waitedFor[i] >= 0 && FD_ISSET(waitedFor[i], &descriptors);
  }
  return readable > 0;
}

void NotificationRound::watchBoundary() {
  time_t now = 0;
  const uint32_t secondsLeft = QVR_secsTo15minBoundary(&now);
  if (secondsLeft == 0 || secondsLeft_ < secondsLeft) {
    for (const auto& slot : callbacks().periodicCounterEventCB) {
      slot.notify(now);
    }
    clockSource().sleep(kBoundaryPause);
  }
  secondsLeft_ = secondsLeft;
}

void NotificationRound::drainDevices() {
  std::array<int, QVR_K_MAX_DEVICES> taken;
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    taken[static_cast<size_t>(device)] = drainEvents(device);
  }
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    taken[static_cast<size_t>(device)] += drainLogs(device);
  }
  for (size_t i = 0; i < taken.size(); i++) {
    fruitless_[i] = (ready_[i] || fruitless_[i]) && taken[i] == 0;
  }
}

int NotificationRound::drainEvents(QVR_deviceId_t device) {
  const auto i = static_cast<size_t>(device);
  const int descriptor = openDescriptor(device);
  int taken = 0;
  if (descriptor >= 0 && (ready_[i] || unfinished_[i] || fruitless_[i])) {
    QVR_handleAlarm(descriptor, device, &taken);
  }
  unfinished_[i] = taken == kMostEventsInOneGo;
  return taken;
}

int NotificationRound::drainLogs(QVR_deviceId_t device) {
  const int descriptor = openDescriptor(device);
  int taken = 0;
  if (descriptor >= 0 && callbacks().logMessageCB.load() != nullptr) {
    QVR_handleLogEvents(descriptor, device, &taken);
  }
  unfinished_[static_cast<size_t>(device)] |= taken == kMostLogBuffersInOneGo;
  return taken;
}

void NotificationRound::checkDevices() {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    if (deviceRecord(device).deviceState != SS_INACTIVE_STATE) {
      checkDevice(device);
    }
  }
}

void NotificationRound::checkDevice(QVR_deviceId_t device) {
  uint32_t& left = checksLeft_[static_cast<size_t>(device)];
  uint8_t sbr[4];
  if (QVR_STATUS_OK(QVR_readmem(device, SBR_REG_ADDRESS, sbr, sizeof sbr))) {
    left = QVR_K_DEVICE_COMM_WATCHDOG_COUNT;
  } else if (left > 0) {
    left--;
  } else {
    callbacks().commFailureCB.notify(device);
  }
}

void* gfast::QVR_asyncNotificationHandler(void* /*xi_unused*/) {
  NotificationRound round;
  for (;;) {
    round.step();
  }
}

QVR_retval_t gfast::startNotificationThread() {
  try {
    std::thread(QVR_asyncNotificationHandler, nullptr).detach();
    clockSource().threadStarts();
  } catch (const std::system_error&) {
    return QVR_E_FAILED_CREATING_THREAD;
  }
  return QVR_E_STATUS_OK;
}
