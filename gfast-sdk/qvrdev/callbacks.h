// The callbacks that the upper layers registered. A slot holds one function; registering while the
// notification thread runs is safe, and a callback runs without any lock held.
#pragma once

#include <qvr.h>

#include <array>
#include <atomic>

namespace gfast {

// One registered function, or none.
template <typename Callback>
class CallbackSlot {
 public:
  void store(Callback callback) { callback_.store(callback); }
  Callback load() const { return callback_.load(); }

  // Stores the callback if the slot is empty; returns whether it was.
  bool claim(Callback callback) {
    Callback empty = nullptr;
    return callback_.compare_exchange_strong(empty, callback);
  }

  // Calls the function that is registered at this moment, if any.
  template <typename... Arguments>
  void notify(Arguments... arguments) const {
    if (const Callback callback = load()) {
      callback(arguments...);
    }
  }

 private:
  std::atomic<Callback> callback_{nullptr};
};

constexpr size_t kQuarterHourSlots = 2;

struct Callbacks {
  CallbackSlot<QVR_deviceLinkStateChangeCB> deviceLinkStateChangeCB;
  std::array<CallbackSlot<QVR_15minCounterEventCB>, kQuarterHourSlots> periodicCounterEventCB;
  CallbackSlot<QVR_linkFailureNotificationCB> linkFailureCB;
  CallbackSlot<QVR_rebootNotificationCB> rebootCB;
  CallbackSlot<QVR_commFailureNotificationCB> commFailureCB;
  CallbackSlot<QVR_logMessageCB> logMessageCB;
  CallbackSlot<QVR_nonCdtaCpeJoinNotificationCB> nonCdtaCpeJoinNotificationCB;
  CallbackSlot<QVR_rebootNotificationCB> lineRebootHandler;
};

// The only registry of the process.
Callbacks& callbacks();

// Registers the line layer's handler of a reboot, which runs before the registered reboot callback.
void registerLineRebootHandler(QVR_rebootNotificationCB handler);

}  // namespace gfast
