// The software boot register: changing it, and what it tells of the chip.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "support/assertions.h"
#include "support/devices.h"

using namespace gfast;

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

TEST(BootRegister, ClearsTheMaskAndSetsTheValueEvenOutsideTheMask) {
  ExpectedRequests driver(opens(0) + reads(0, SBR_REG_ADDRESS, {0xFF, 0x80, 0x00, 0x01}) +
                          writes(0, SBR_REG_ADDRESS, {0xFF, 0x00, 0x00, 0x81}));
  EXPECT_EQ(QVR_readModifyWriteSBR(0, 0x00008000, 0x80000000), QVR_E_STATUS_OK);
}

TEST(BootRegister, ReturnsTheCodeOfTheFirstFailure) {
  ExpectedRequests driver(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_readModifyWriteSBR(0, 1, 1), QVR_E_DEVICE_NOT_EXISTS);
  openDevice(driver, 0);
  driver.expect(readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO));
  EXPECT_EQ(QVR_readModifyWriteSBR(0, 1, 1), QVR_E_MEMREAD_ERROR);
  driver.expect(readsWord(0, SBR_REG_ADDRESS, 0) + writesWord(0, SBR_REG_ADDRESS, 1).fails(EIO));
  EXPECT_EQ(QVR_readModifyWriteSBR(0, 1, 1), QVR_E_MEMWRITE_ERROR);
}

TEST(FirmwareState, IsValidWhenTheBootRegisterHoldsIt) {
  ExpectedRequests driver(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0xFE7FFFFFU | 0x01000000U).times(2));
  EXPECT_EQ(QVR_isValidFWState(0, FW_B1), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_isValidFWState(0, FW_APP), QVR_E_INVALID_FW_STATE);
}

TEST(FirmwareState, ReturnsTheCodeOfAFailedRead) {
  ExpectedRequests driver(opens(0).fails(ENOENT) + opens(0) + readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO));
  EXPECT_EQ(QVR_isValidFWState(0, FW_B1), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_isValidFWState(0, FW_B1), QVR_E_MEMREAD_ERROR);
}

TEST(FirmwareState, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  EXPECT_ASSERTION(QVR_isValidFWState(2, FW_B1), asserts(100, "Invalid device id", 2));
}

TEST(DeviceReset, IsReportedWhenTheResetCounterIsNotZero) {
  ExpectedRequests driver(opens(0) + reads(0, SBR_REG_ADDRESS, {0, 0, 0x80, 0x0B}));
  CaptureStdout();
  EXPECT_EQ(QVR_checkDeviceReset(), QVR_E_STATUS_OK);
  EXPECT_EQ(GetCapturedStdout(), "Reset detected...resetCounter=5\n");
}

TEST(DeviceReset, IsNotReportedWhenTheCounterIsZeroOrUnreadable) {
  ExpectedRequests driver(opens(0) + readsWord(0, SBR_REG_ADDRESS, ~0x0E000000U) +
                          readsWord(0, SBR_REG_ADDRESS, 0x0E000000U).fails(EIO));
  CaptureStdout();
  EXPECT_EQ(QVR_checkDeviceReset(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_checkDeviceReset(), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(GetCapturedStdout(), "");
}

}  // namespace
