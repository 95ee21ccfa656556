// Devices that a test opens before its own requests.
#pragma once

#include <gtest/gtest.h>

#include "support/chip_identity.h"
#include "support/expected_requests.h"

using namespace gfast;

// The device is open already, so that a script holds the requests of one operation only.
inline void openDevice(ExpectedRequests& driver, int device) {
  driver.expect(opens(device));
  ASSERT_EQ(QVR_deviceHandle(device), ExpectedRequests::descriptorOf(device));
}

// The device is open, and its record says that its line is in this state.
inline void startDevice(ExpectedRequests& driver, QVR_deviceId_t device, G9701_linkState_t state) {
  driver.expect(opens(device) + readsIdentity(device, chipWithLine(state)));
  ASSERT_EQ(QVR_getDeviceInfo(device, nullptr), QVR_E_STATUS_OK);
}
