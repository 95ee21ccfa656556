// What a chip says about itself, as a device record.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "chip/device_information.h"
#include "chip/registers.h"
#include "qvrdev/device_table.h"
#include "support/assertions.h"
#include "support/chip_identity.h"
#include "support/expected_requests.h"

using namespace gfast;

namespace {

class DeviceInfo : public testing::Test {
 protected:
  // The record that a caller receives from device 0.
  QVR_deviceInfo_t infoOf(const ChipIdentity& chip, int device = 0) {
    driver_.expect((openDescriptor(device) < 0 ? opens(device) : Script()) + readsIdentity(device, chip));
    QVR_deviceInfo_t info{};
    EXPECT_EQ(QVR_getDeviceInfo(device, &info), QVR_E_STATUS_OK);
    return info;
  }

  ExpectedRequests driver_{Script()};
};

TEST_F(DeviceInfo, TakesStatesFromTheBootRegister) {
  ChipIdentity chip;
  chip.sbr = 0x01008000;
  QVR_deviceInfo_t info = infoOf(chip);
  EXPECT_EQ(info.deviceState, SS_RUN_STATE);
  EXPECT_EQ(info.fwState, FW_B1);
  EXPECT_EQ(info.configState, CONFIG_STATE_SYSTEM);
  chip.sbr = 0xFEFF7FFF;
  info = infoOf(chip);
  EXPECT_EQ(info.fwState, FW_B0);
  EXPECT_EQ(info.configState, CONFIG_STATE_LINE);
}

TEST_F(DeviceInfo, SplitsTheVersionIntoProfileRcGaChipset) {
  ChipIdentity chip;
  const uint8_t version[] = {0x00, 0x01, 0x02, 0x03};
  std::copy(std::begin(version), std::end(version), chip.info.begin() + DEV_INF_FIRMWARE_VERSION);
  const QVR_deviceInfo_t info = infoOf(chip);
  EXPECT_EQ(info.firmwareVersion.versionProfile, 0);
  EXPECT_EQ(info.firmwareVersion.versionRc, 1);
  EXPECT_EQ(info.firmwareVersion.versionGa, 2);
  EXPECT_EQ(info.firmwareVersion.versionChipset, 3);
}

TEST_F(DeviceInfo, TakesChipsets1And3AsTheNetworkSide) {
  const BOOL expected[] = {FALSE, TRUE, FALSE, TRUE, FALSE};
  for (uint32_t chipset = 0; chipset < std::size(expected); chipset++) {
    ChipIdentity chip;
    chip.setWord(DEV_INF_FIRMWARE_VERSION, chipset << 24);
    const QVR_deviceInfo_t info = infoOf(chip);
    EXPECT_EQ(info.isDPdevice, expected[chipset]) << chipset;
    EXPECT_EQ(info.numberOfLines, 1) << chipset;
  }
}

TEST_F(DeviceInfo, TakesElevenDateCharactersTwoFromEachWord) {
  ChipIdentity chip;
  const char* date = "Jan 23 2017X";
  for (size_t i = 0; i < 6; i++) {
    chip.info[DEV_INF_DATE + 4 * i] = static_cast<uint8_t>(date[2 * i]);
    chip.info[DEV_INF_DATE + 4 * i + 1] = 0xEE;
    chip.info[DEV_INF_DATE + 4 * i + 2] = static_cast<uint8_t>(date[2 * i + 1]);
    chip.info[DEV_INF_DATE + 4 * i + 3] = 0xEE;
  }
  EXPECT_STREQ(infoOf(chip).date, "Jan 23 2017");
}

TEST_F(DeviceInfo, TakesTwoTimeCharactersFromTheChip) {
  ChipIdentity chip;
  chip.setWord(DEV_INF_TIME, 0xEE37EE31);
  const QVR_deviceInfo_t info = infoOf(chip);
  EXPECT_EQ(std::string(info.time, sizeof info.time), std::string("17\0\0\0\0\0\0\0", 9));
}

TEST_F(DeviceInfo, KeepsTheByteOrderOfMacAddressAndVendorId) {
  ChipIdentity chip;
  for (size_t i = 0; i < 16; i++) {
    chip.b0Regs[B0_REGS_MAC_ADDRESS - 5 + i] = static_cast<uint8_t>(0xA0 + i);
  }
  const std::string vendor = "ABCDEFGHIJKL";
  std::copy(vendor.begin(), vendor.end(), chip.info.begin() + DEV_INF_VENDOR_ID);
  const QVR_deviceInfo_t info = infoOf(chip);
  EXPECT_THAT(info.mainDFEMacAddress, testing::ElementsAre(0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA));
  EXPECT_EQ(std::string(info.vendorId, sizeof info.vendorId), "ABCDEFGH");
}

TEST_F(DeviceInfo, TakesTheLineStateFromTheLowestNibble) {
  ChipIdentity chip;
  const uint8_t states[] = {0x96, 0x12, 0x34, 0x56};
  std::copy(std::begin(states), std::end(states), chip.b0Regs.begin() + 36);
  EXPECT_EQ(infoOf(chip).lineState[0], LS_SHOWTIME);
}

TEST_F(DeviceInfo, CopiesTheOtherWords) {
  ChipIdentity chip;
  chip.setWord(DEV_INF_VERSION, 0x01020304);
  chip.setWord(DEV_INF_LINK_STARTUP_TIME, 12345);
  chip.setWord(DEV_INF_LAST_SIGNAL, 0x44332211);
  chip.setWord(DEV_INF_INIT_FAILURE_CAUSE, 6);
  chip.setWord(DEV_INF_TEMPERATURE, 71);
  const QVR_deviceInfo_t info = infoOf(chip);
  EXPECT_EQ(info.devInfVersion, 0x01020304U);
  EXPECT_EQ(info.lineStartupTime[0], 12345U);
  EXPECT_EQ(info.initLastSignalds[0], 0x11);
  EXPECT_EQ(info.initLastSignalus[0], 0x33);
  EXPECT_EQ(info.initsFcause[0], 6U);
  EXPECT_EQ(info.temperatureInCelcius, 71U);
  EXPECT_EQ(info.lineFailureReason[0], LF_REASON_NO_ERROR);
}

TEST_F(DeviceInfo, TableHoldsInternalLineIds) {
  const QVR_deviceInfo_t info = infoOf({}, 1);
  EXPECT_EQ(info.lineIDs[0], QVR_int2log(1));
  EXPECT_EQ(QVR_deviceInfoForDevice(1)->lineIDs[0], 1);
}

TEST_F(DeviceInfo, KeepsTheRecordWhenAReadFails) {
  ChipIdentity before;
  before.setWord(DEV_INF_TEMPERATURE, 40);
  infoOf(before);
  ChipIdentity after;
  after.setWord(DEV_INF_TEMPERATURE, 60);
  const Script script = readsIdentity(0, after);
  for (size_t position = 0; position < script.size(); position++) {
    driver_.expect(script.failingAt(position, EIO));
    QVR_deviceInfo_t info{};
    EXPECT_EQ(QVR_getDeviceInfo(0, &info), QVR_E_MEMREAD_ERROR);
    driver_.verify();
    EXPECT_EQ(info.temperatureInCelcius, 0U);
    EXPECT_EQ(deviceRecord(0).temperatureInCelcius, 40U);
    EXPECT_EQ(deviceRecord(0).deviceState, SS_RUN_STATE);
  }
}

TEST_F(DeviceInfo, CountsADeviceOnceWhenItIsReadTwice) {
  infoOf({});
  infoOf({});
  EXPECT_EQ(QVR_numberOfDevices(), 1U);
}

TEST_F(DeviceInfo, AssertsOnAnUnknownDevice) {
  EXPECT_ASSERTION(QVR_getDeviceInfo(2, nullptr), asserts(100, "Invalid device id", 2));
  EXPECT_ASSERTION(QVR_getDeviceInfo(-1, nullptr), asserts(100, "Invalid device id", -1));
  EXPECT_ASSERTION(QVR_deviceInfoForDevice(2), asserts(100, "Invalid Device Identifier", 2));
  EXPECT_ASSERTION(QVR_deviceInfoForDevice(-1), asserts(100, "Invalid Device Identifier", -1));
  EXPECT_ASSERTION(QVR_isDeviceActive(2), asserts(100, "Invalid Device Identifier", 2));
  EXPECT_ASSERTION(QVR_isDeviceActive(-1), asserts(100, "Invalid Device Identifier", -1));
}

TEST_F(DeviceInfo, StoresANotifiedStateOnlyForALineItHas) {
  setLineState(0, 0, LS_SHOWTIME);
  EXPECT_EQ(deviceRecord(0).lineState[0], LS_SELFTEST);
  infoOf({});
  setLineState(0, 0, LS_SHOWTIME);
  setLineState(0, 1, LS_SILENT);
  setLineState(0, -1, LS_SILENT);
  EXPECT_EQ(deviceRecord(0).lineState[0], LS_SHOWTIME);
}

TEST_F(DeviceInfo, UnknownDeviceHasNoHandle) {
  EXPECT_EQ(QVR_deviceHandle(2), -1);
  EXPECT_EQ(QVR_deviceHandle(-1), -1);
  EXPECT_EQ(openDescriptor(2), -1);
}

}  // namespace
