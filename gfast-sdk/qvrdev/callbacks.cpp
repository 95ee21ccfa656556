#include "qvrdev/callbacks.h"

#include <type_traits>

#include "driver/driver.h"
#include "driver/envelope.h"

using namespace gfast;

namespace {

// Trivially destructible, so the notification thread may use it until the process ends.
constinit Callbacks registry;
static_assert(std::is_trivially_destructible_v<Callbacks>);

// Makes both chips deliver log records from now on. What the configuration means is up to the driver; zeros
// select nothing special.
void enableLogDelivery() {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    const int descriptor = QVR_deviceHandle(device);
    if (descriptor < 0) {
      continue;
    }
    char body[GFAST_LOGCFG_BODY_SIZE] = {};
    gfast_iocreq request = emptyRequest();
    request.req_u.logcfg.buf = body;
    request.req_u.logcfg.bufsize = sizeof body;
    driver().request(descriptor, DFEIOCLOGCFG, request);
  }
}

}  // namespace

Callbacks& gfast::callbacks() {
  return registry;
}

void gfast::registerLineRebootHandler(QVR_rebootNotificationCB handler) {
  registry.lineRebootHandler.store(handler);
}

void QVR_registerDeviceLinkStateChangeCB(QVR_deviceLinkStateChangeCB xi_callback) {
  registry.deviceLinkStateChangeCB.store(xi_callback);
}

void QVR_registerLinkFailureNotificationCB(QVR_linkFailureNotificationCB xi_callback) {
  registry.linkFailureCB.store(xi_callback);
}

void QVR_registerRebootEventCB(QVR_rebootNotificationCB xi_callback) {
  registry.rebootCB.store(xi_callback);
}

void QVR_registerCommFailureNotificationCB(QVR_commFailureNotificationCB xi_callback) {
  registry.commFailureCB.store(xi_callback);
}

void QVR_registerNonCdtaCpeJoinNotificationCB(QVR_nonCdtaCpeJoinNotificationCB xi_callback) {
  registry.nonCdtaCpeJoinNotificationCB.store(xi_callback);
}

int QVR_register15minCounterEventCB(int xi_handle, QVR_15minCounterEventCB xi_callback) {
  auto& slots = registry.periodicCounterEventCB;
  if (xi_handle == QVR_K_NULL_HANDLE) {
    for (size_t handle = 0; handle < slots.size(); handle++) {
      if (slots[handle].claim(xi_callback)) {
        return static_cast<int>(handle);
      }
    }
    return QVR_K_NULL_HANDLE;
  }
  if (xi_handle >= 0 && static_cast<size_t>(xi_handle) < slots.size()) {
    slots[static_cast<size_t>(xi_handle)].store(xi_callback);
  }
  return 0;
}

QVR_retval_t QVR_registerLogMessageCB(QVR_deviceId_t /*xi_deviceId*/, QVR_logMessageCB xi_callback) {
  if (xi_callback == nullptr) {
    registry.logMessageCB.store(nullptr);
  } else if (registry.logMessageCB.claim(xi_callback)) {
    enableLogDelivery();
  }
  return QVR_E_STATUS_OK;
}
