#include "qvrdev/device_table.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <type_traits>

#include "driver/driver.h"
#include "qvrdev/device_lines.h"
#include "qvrdev/require.h"
#include "std/observing.h"

using namespace gfast;

namespace {

struct DeviceTable {
  std::mutex mutex;
  std::array<QVR_deviceInfo_t, QVR_K_MAX_DEVICES> deviceInfoTable{};
  uint32_t numberOfDevices = 0;
  uint32_t numberOfLinesInDevice = 0;
  std::array<std::atomic<int>, QVR_K_MAX_DEVICES> fds{-1, -1};  // outside the lock: each is one word
};

// Trivially destructible, so the notification thread may use it until the process ends.
constinit DeviceTable table;
static_assert(std::is_trivially_destructible_v<DeviceTable>);

constexpr size_t at(QVR_deviceId_t device) {
  return static_cast<size_t>(device);
}

using Locked = std::lock_guard<std::mutex>;

void setInactive(QVR_deviceInfo_t& record) {
  record.fwState = FW_UNDEFINED;
  record.deviceState = SS_INACTIVE_STATE;
}

// Another thread may have opened the device meanwhile, and found it active.
void setInactiveUnlessOpen(QVR_deviceId_t device) {
  const Locked locked(table.mutex);
  if (table.fds[at(device)] < 0) {
    setInactive(table.deviceInfoTable[at(device)]);
  }
}

// Another thread may have opened the device meanwhile. Then its descriptor is kept, and this one is closed.
int rememberDescriptor(QVR_deviceId_t device, int opened) {
  int remembered = -1;
  if (table.fds[at(device)].compare_exchange_strong(remembered, opened)) {
    return opened;
  }
  driver().close(opened);
  return remembered;
}

bool closeDevice(QVR_deviceId_t device) {
  const int descriptor = table.fds[at(device)].exchange(-1);
  if (descriptor >= 0) {
    driver().close(descriptor);
  }
  return descriptor >= 0;
}

}  // namespace

QVR_deviceInfo_t gfast::deviceRecord(QVR_deviceId_t device) {
  const Locked locked(table.mutex);
  return table.deviceInfoTable[at(device)];
}

int gfast::openDescriptor(QVR_deviceId_t device) {
  return isDeviceId(device) ? table.fds[at(device)].load() : -1;
}

void gfast::setLineState(QVR_deviceId_t device, int narrowLine, QVR_lineState_t state) {
  const Locked locked(table.mutex);
  QVR_deviceInfo_t& record = table.deviceInfoTable[at(device)];
  if (narrowLine >= 0 && narrowLine < linesOfRecord(record)) {
    record.lineState[narrowLine] = state;
  }
}

void gfast::setStartOfCollection(QVR_deviceId_t device, int narrowLine, uint32_t secondsLeft) {
  const Locked locked(table.mutex);
  table.deviceInfoTable[at(device)].counterCollectionInterval[narrowLine].startOfCollectionPeriodInInterval =
      secondsLeft;
}

QVR_deviceInfo_t gfast::storeDeviceImages(QVR_deviceId_t device, const DeviceImages& images) {
  const Locked locked(table.mutex);
  QVR_deviceInfo_t& record = table.deviceInfoTable[at(device)];
  if (record.deviceState == SS_INACTIVE_STATE) {
    table.numberOfDevices++;
  }
  fillRecord(record, device, images);
  if (table.numberOfLinesInDevice == 0) {
    table.numberOfLinesInDevice = record.numberOfLines;
  }
  return record;
}

QVR_deviceInfo_t gfast::recordWithImages(QVR_deviceId_t device, const DeviceImages& images) {
  QVR_deviceInfo_t record = deviceRecord(device);
  fillRecord(record, device, images);
  return record;
}

void gfast::clearDeviceTable() {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    closeDevice(device);
  }
  const Locked locked(table.mutex);
  table.deviceInfoTable = {};
}

void gfast::closeDevices() {
  for (QVR_deviceId_t device = QVR_K_DEVICE_ID_FIRST; device <= QVR_K_DEVICE_ID_LAST; device++) {
    if (closeDevice(device)) {
      setInactiveUnlessOpen(device);
    }
  }
}

void gfast::forgetDevices() {
  const Locked locked(table.mutex);
  std::ranges::for_each(table.deviceInfoTable, setInactive);
  table.numberOfDevices = 0;
  table.numberOfLinesInDevice = 0;
}

int QVR_deviceHandle(QVR_deviceId_t xi_deviceId) {
  if (!isDeviceId(xi_deviceId)) {
    return -1;
  }
  if (const int descriptor = openDescriptor(xi_deviceId); descriptor >= 0) {
    return descriptor;
  }
  if (observing) {
    return -1;
  }
  const int opened = driver().open(xi_deviceId);
  if (opened < 0) {
    setInactiveUnlessOpen(xi_deviceId);
    return -1;
  }
  return rememberDescriptor(xi_deviceId, opened);
}

const QVR_deviceInfo_t* QVR_deviceInfoForDevice(QVR_deviceId_t xi_deviceId) {
  requireDevice(xi_deviceId, kInvalidDeviceIdentifier);
  return &table.deviceInfoTable[at(xi_deviceId)];
}

BOOL QVR_isDeviceActive(QVR_deviceId_t xi_deviceId) {
  requireDevice(xi_deviceId, kInvalidDeviceIdentifier);
  return deviceRecord(xi_deviceId).deviceState != SS_INACTIVE_STATE ? TRUE : FALSE;
}

uint32_t QVR_numberOfDevices() {
  const Locked locked(table.mutex);
  return table.numberOfDevices;
}

uint32_t QVR_numberOfLinesInDevice() {
  const Locked locked(table.mutex);
  return table.numberOfLinesInDevice;
}
