// Finding the chips: start of the device layer, reading a chip's identity and state, rediscovery.
#include <chrono>

#include "chip/device_information.h"
#include "chip/registers.h"
#include "clock/clock.h"
#include "driver/driver.h"
#include "qvrdev/callbacks.h"
#include "qvrdev/device_lines.h"
#include "qvrdev/device_table.h"
#include "qvrdev/notification.h"
#include "qvrdev/require.h"
#include "qvrdev/sbr.h"
#include "std/observing.h"

using namespace gfast;

namespace {

constexpr std::chrono::seconds kDeviceRetryInterval{1};

bool initialized = false;  // used by the command thread only

QVR_retval_t readImages(QVR_deviceId_t device, DeviceImages& images) {
  QVR_retval_t status = readSBR(device, images.sbr);
  if (QVR_STATUS_OK(status)) {
    status = QVR_readmem(device, VIRT_ADDR_DEVICE_INFO_READ, images.info.data(), DEV_INF_SIZE);
  }
  if (QVR_STATUS_OK(status)) {
    status = QVR_readmem(device, VIRT_ADDR_B0_REGS, images.b0Regs.data(), B0_REGS_SIZE);
  }
  return status;
}

// The counters of a line that is not idle cover only the rest of this quarter hour.
void markCollectionStart(QVR_deviceId_t device, const QVR_deviceInfo_t& record) {
  for (int line = 0; line < linesOfRecord(record); line++) {
    if (record.lineState[line] != LS_IDLE) {
      setStartOfCollection(device, line, QVR_secsTo15minBoundary(nullptr));
    }
  }
}

void readDevices() {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    QVR_deviceInfo_t record;
    if (QVR_STATUS_OK(QVR_getDeviceInfo(device, &record))) {
      markCollectionStart(device, record);
    }
  }
}

QVR_retval_t findFirstDevice(BOOL wait) {
  while (QVR_STATUS_ERROR(QVR_getDeviceInfo(QVR_K_DEVICE_ID_FIRST, nullptr))) {
    if (wait != TRUE) {
      return QVR_E_ERROR;
    }
    clockSource().sleep(kDeviceRetryInterval);
  }
  return QVR_E_STATUS_OK;
}

// Until the line table is built every line is line 0.
uint8_t logicalLineId(uint8_t internalId) {
  const LineIdTranslation translate = callbacks().logicalLineId.load();
  return translate == nullptr ? 0 : static_cast<uint8_t>(translate(internalId));
}

}  // namespace

QVR_retval_t QVR_initDeviceModule(BOOL xi_waitForDevice) {
  if (initialized) {
    return QVR_E_STATUS_OK;
  }
  clearDeviceTable();
  QVR_retval_t status = findFirstDevice(xi_waitForDevice);
  if (QVR_STATUS_OK(status)) {
    readDevices();
    status = startNotificationThread();
  }
  initialized = QVR_STATUS_OK(status);
  return status;
}

QVR_retval_t QVR_rediscoverDevices() {
  closeDevices();
  driver().rediscover();
  forgetDevices();
  readDevices();
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_getDeviceInfo(QVR_deviceId_t xi_deviceId, QVR_deviceInfo_t* xo_deviceInfo) {
  requireDevice(xi_deviceId, kInvalidDeviceId);
  DeviceImages images;
  if (const QVR_retval_t status = readImages(xi_deviceId, images); QVR_STATUS_ERROR(status)) {
    return status;
  }
  const QVR_deviceInfo_t record =
      observing ? recordWithImages(xi_deviceId, images) : storeDeviceImages(xi_deviceId, images);
  if (xo_deviceInfo != nullptr) {
    *xo_deviceInfo = record;
    for (uint8_t& lineId : xo_deviceInfo->lineIDs) {
      lineId = logicalLineId(lineId);
    }
  }
  return QVR_E_STATUS_OK;
}
