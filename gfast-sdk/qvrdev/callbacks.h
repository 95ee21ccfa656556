// The callbacks that the upper layers registered. A slot holds one function; registering while the
// notification thread runs is safe, and a callback runs without any lock held.
#pragma once

#include <qvr.h>

#include <array>

#include "std/callback_slot.h"

namespace gfast {

constexpr size_t kQuarterHourSlots = 2;

// The line number that callers see, from the internal one.
using LineIdTranslation = QVR_lineId_t (*)(QVR_lineId_t internalId);

struct Callbacks {
  CallbackSlot<QVR_deviceLinkStateChangeCB> deviceLinkStateChangeCB;
  std::array<CallbackSlot<QVR_15minCounterEventCB>, kQuarterHourSlots> periodicCounterEventCB;
  CallbackSlot<QVR_linkFailureNotificationCB> linkFailureCB;
  CallbackSlot<QVR_rebootNotificationCB> rebootCB;
  CallbackSlot<QVR_commFailureNotificationCB> commFailureCB;
  CallbackSlot<QVR_logMessageCB> logMessageCB;
  CallbackSlot<QVR_nonCdtaCpeJoinNotificationCB> nonCdtaCpeJoinNotificationCB;
  CallbackSlot<QVR_rebootNotificationCB> lineRebootHandler;
  CallbackSlot<LineIdTranslation> logicalLineId;
};

// The only registry of the process.
Callbacks& callbacks();

// Registers the line layer's handler of a reboot, which runs before the registered reboot callback.
void registerLineRebootHandler(QVR_rebootNotificationCB handler);

// The line room's own numbering, once it has built its table.
void registerLineIdTranslation(LineIdTranslation translation);

}  // namespace gfast
