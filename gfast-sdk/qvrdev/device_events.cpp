#include "qvrdev/device_events.h"

#include <algorithm>

#include "clock/clock.h"
#include "driver/driver.h"
#include "driver/envelope.h"
#include "qvrdev/callbacks.h"
#include "qvrdev/device_lines.h"
#include "qvrdev/device_table.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

// The event's parameter words as the chip gave them.
struct Event {
  uint32_t type;
  uint32_t params[2];
};

Event readEvent(const char* bytes) {
  const char* params = bytes + GFAST_EVENT_PARAMS;
  return {load_le32(bytes + GFAST_EVENT_TYPE), {load_le32(params), load_le32(params + 4)}};
}

constexpr QVR_lineState_t linkStateOfLine(uint32_t states, int line) {
  constexpr uint32_t kBitsOfLine = 4;
  return static_cast<QVR_lineState_t>((states >> (kBitsOfLine * static_cast<uint32_t>(line))) & 0xFU);
}

void handleLinksStatusChanged(QVR_deviceId_t device, const Event& event) {
  const QVR_deviceInfo_t record = deviceRecord(device);
  for (int line = 0; line < linesOfRecord(record); line++) {
    const QVR_lineState_t before = linkStateOfLine(event.params[0], line);
    const QVR_lineState_t after = linkStateOfLine(event.params[1], line);
    if (before != after) {
      setLineState(device, line, after);
      callbacks().deviceLinkStateChangeCB.notify(record.lineIDs[line], before, after);
    }
  }
}

void handleLineFailure(QVR_deviceId_t /*device*/, const Event& event) {
  callbacks().linkFailureCB.notify(static_cast<QVR_lineId_t>(event.params[1]),
                                   static_cast<LINK_FAILURE_TYPE_E>(event.params[0]), clockSource().now());
}

void handleBootSucceeded(QVR_deviceId_t /*device*/, const Event& /*event*/) {
  QVR_handleRebootEvent();
}

void handleNonCdtaCpeJoin(QVR_deviceId_t device, const Event& event) {
  const QVR_deviceInfo_t record = deviceRecord(device);
  if (event.params[0] < static_cast<uint32_t>(linesOfRecord(record))) {
    callbacks().nonCdtaCpeJoinNotificationCB.notify(record.lineIDs[event.params[0]]);
  }
}

struct EventHandler {
  EVENTS_TYPE_E type;
  void (*handle)(QVR_deviceId_t device, const Event& event);
};

// Nothing uses the other event types.
constexpr EventHandler kEventHandlers[] = {
    {EVENT_TYPE_LINKS_STATUS_CHANGED, handleLinksStatusChanged},
    {EVENT_TYPE_LINE_FAILURE, handleLineFailure},
    {EVENT_TYPE_BOOT_SUCCEEDED, handleBootSucceeded},
    {EVENT_TYPE_DTA_UNSUPPORTIVE_LINK, handleNonCdtaCpeJoin},
};

void dispatch(QVR_deviceId_t device, const Event& event) {
  const auto* handler = std::ranges::find(kEventHandlers, event.type, &EventHandler::type);
  if (handler != std::end(kEventHandlers)) {
    handler->handle(device, event);
  }
}

}  // namespace

QVR_retval_t gfast::QVR_handleAlarm(int xi_descriptor, QVR_deviceId_t xi_deviceId, int* xo_taken) {
  char event[QVR_K_MAX_EVT_BUFFER_LEN] = {};
  gfast_iocreq request = emptyRequest();
  request.req_u.logalm_read.buf = event;
  request.req_u.logalm_read.bufsize = sizeof event;
  int taken = 0;
  for (; taken < kMostEventsInOneGo; taken++) {
    if (driver().request(xi_descriptor, DFEIOCALMRD, request) < 0 ||
        request.req_u.logalm_read.datalen_copied_to_user == 0) {
      break;
    }
    dispatch(xi_deviceId, readEvent(event));
  }
  if (xo_taken != nullptr) {
    *xo_taken = taken;
  }
  return QVR_E_STATUS_OK;
}

void gfast::QVR_handleRebootEvent() {
  callbacks().lineRebootHandler.notify();
  callbacks().rebootCB.notify();
}
