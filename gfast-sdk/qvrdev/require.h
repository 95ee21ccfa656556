// Checks of the device layer's arguments. A failed check ends the process in an assertion.
#pragma once

#include <qvr.h>

#include "qvrassert/qvrassert.h"

namespace gfast {

constexpr const char* kDeviceLayer = "../qvrdev.c";  // the device layer's name in assertions

// Messages of the assertion on a device id: of requests, of readings, of the table.
constexpr const char* kUnknownDeviceHandle = "Unknown device handle";
constexpr const char* kInvalidDeviceId = "Invalid device id";
constexpr const char* kInvalidDeviceIdentifier = "Invalid Device Identifier";

inline void requireDevice(QVR_deviceId_t device, const char* message, int line = __builtin_LINE()) {
  if (device < QVR_K_DEVICE_ID_FIRST || device > QVR_K_DEVICE_ID_LAST) {
    DoAssert(QVR_K_ASSERT_DEVICE_ID, kDeviceLayer, line, message, 1, device);
  }
}

inline void requireEvenLength(uint32_t numBytes, int line = __builtin_LINE()) {
  if (numBytes % 2 != 0) {
    DoAssert(QVR_K_ASSERT_ODD_LENGTH, kDeviceLayer, line, "Length must be an even number of bytes", 1,
             static_cast<int>(numBytes));
  }
}

}  // namespace gfast
