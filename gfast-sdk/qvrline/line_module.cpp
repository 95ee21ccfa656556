// The start of the line module, and its reactions to events: showtime reached, a device rebooted.
#include "qvrline/line_module.h"

#include <atomic>
#include <vector>

#include "qvrdev/callbacks.h"
#include "qvrdev/device_lines.h"
#include "qvrdev/device_table.h"
#include "qvrline/interval_counters.h"
#include "qvrline/line_table.h"
#include "qvrlog/qvrlog.h"

using namespace gfast;

namespace {

bool initialized = false;  // used by the command thread only

constinit std::atomic<QVR_LinkStateChangeCB> link_state_observer{nullptr};

// Restarts the counters of a line: both snapshots are what the chip counts now, or zero.
void restartCounters(QVR_lineId_t lineId) {
  QVR_intervalCounterDB_t counters{};
  QVR_readPerformanceMonitoringCounters(lineId, &counters.curr15minSnapshot);
  QVR_resetIntervalCounters(&counters);
  storeCounters(lineId, counters);
}

// Enters the lines of the devices that answer, in device order, and returns their numbers. Lines of an absent
// device keep their numbers.
std::vector<QVR_lineId_t> buildLineTable() {
  std::vector<QVR_lineId_t> present;
  clearNumberOfLines();
  QVR_lineId_t line = 0;
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    const QVR_deviceInfo_t record = deviceRecord(device);
    if (record.deviceState == SS_INACTIVE_STATE) {
      line += static_cast<QVR_lineId_t>(QVR_numberOfLinesInDevice());
      continue;
    }
    for (int narrow = 0; narrow < linesOfRecord(record) && line <= QVR_K_LINE_ID_LAST; narrow++, line++) {
      addLine(line, device, static_cast<uint32_t>(narrow), record.isDPdevice);
      present.push_back(line);
    }
  }
  return present;
}

}  // namespace

QVR_retval_t gfast::QVR_refreshLineInfo(QVR_lineId_t lineId, BOOL reinitCounters) {
  GFAST_FRAMER_INIT_COUNTERS_S framing{};
  const QVR_retval_t status = QVR_readGfastFramerInitCounters(lineId, &framing);
  if (QVR_STATUS_ERROR(status)) {
    return status;
  }
  storeFraming(lineId, framing);
  if (reinitCounters == TRUE) {
    restartCounters(lineId);
  }
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_initLineModule(BOOL xi_waitForDevice) {
  if (initialized) {
    return QVR_E_STATUS_OK;
  }
  if (const QVR_retval_t status = QVR_initDeviceModule(xi_waitForDevice); QVR_STATUS_ERROR(status)) {
    return status;
  }
  buildLineNumberMap();
  const std::vector<QVR_lineId_t> lines = buildLineTable();
  // The handlers come before the first reading: a line that reaches showtime meanwhile is then read again.
  QVR_registerDeviceLinkStateChangeCB(QVR_linkStateChangeEventHandler);
  registerLineRebootHandler(QVR_rebootNotificationHandler);
  for (const QVR_lineId_t line : lines) {
    QVR_refreshLineInfo(line, TRUE);
  }
  if (QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, QVR_15minCounterEventHandler) == QVR_K_NULL_HANDLE) {
    return QVR_E_FAILED_REGISTERING_CALLBACK;
  }
  initialized = true;
  return QVR_E_STATUS_OK;
}

void QVR_registerlinkStateChangeCB(QVR_LinkStateChangeCB xi_callback, QVR_linkStateEventMask_t /*xi_mask*/) {
  link_state_observer = xi_callback;
}

void gfast::QVR_linkStateChangeEventHandler(QVR_lineId_t internalId, G9701_linkState_t oldState,
                                            G9701_linkState_t newState) {
  if (const QVR_LinkStateChangeCB observer = link_state_observer) {
    observer(QVR_int2log(internalId), oldState, newState);
  }
  if (newState == LS_SHOWTIME) {
    QVR_refreshLineInfo(internalId, FALSE);
  }
}

void gfast::QVR_rebootNotificationHandler() {
  for (QVR_lineId_t line = 0; line <= QVR_K_LINE_ID_LAST; line++) {
    QVR_refreshLineInfo(line, TRUE);
  }
}

BOOL QVR_isLineUp(QVR_lineId_t xi_lineId) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  QVR_deviceInfo_t info;
  if (QVR_STATUS_ERROR(QVR_getDeviceInfo(line.deviceId, &info))) {
    TRACE_LOG(QVRLOG_WARNING, "Failed getting device info for device (%1d)\n", line.deviceId);
    return FALSE;
  }
  return info.lineState[line.narrowLineID] == LS_SHOWTIME ? TRUE : FALSE;
}
