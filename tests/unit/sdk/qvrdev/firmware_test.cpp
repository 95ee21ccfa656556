// Images and flash.
#include <ostream>

#include "support/assertions.h"
#include "support/boot_register.h"
#include "support/devices.h"
#include "support/trace_log.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

Script finds(int device, uint32_t sbr) {
  return readsWord(device, SBR_REG_ADDRESS, sbr);
}

Script erasesSectors(int device, uint32_t first, uint32_t last) {
  Script script;
  for (uint32_t sector = first; sector <= last; sector += 0x10000) {
    script = script + erases(device, FLASHERASE_64KB, sector);
  }
  return script;
}

TEST(LoadImageFile, PassesTheNameToTheDriver) {
  ExpectedRequests driver(opens(0) + downloads(0, "image.bin"));
  EXPECT_EQ(QVR_loadImageFile(0, "image.bin"), QVR_E_STATUS_OK);
}

TEST(LoadImageFile, CutsALongNameWithoutTerminator) {
  const std::string name(MAX_FW_FN_SIZE, 'n');
  ExpectedRequests driver(opens(0) + downloads(0, name).times(2));
  EXPECT_EQ(QVR_loadImageFile(0, name.c_str()), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_loadImageFile(0, (name + "beyond").c_str()), QVR_E_STATUS_OK);
}

TEST(LoadImageFile, ReturnsTheCodeOfEachFailure) {
  ExpectedRequests driver(opens(0).fails(ENOENT) + opens(0) + downloads(0, "a").fails(ENOENT));
  EXPECT_EQ(QVR_loadImageFile(0, "a"), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_loadImageFile(0, "a"), QVR_E_IMAGE_DOWNLOAD_ERROR);
}

TEST(LoadImageFile, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  EXPECT_ASSERTION(QVR_loadImageFile(2, "a"), asserts(100, "Unknown device handle", 2));
}

TEST(ActivateImage, PassesTheAddressAlone) {
  ExpectedRequests driver(opens(1) + activates(1, 0x12345678));
  EXPECT_EQ(QVR_activateImage(1, 0x12345678), QVR_E_STATUS_OK);
}

TEST(ActivateImage, PrintsTheSystemsErrorWhenTheDriverRefuses) {
  ExpectedRequests driver(opens(0) + activates(0, 4).fails(EPERM));
  CaptureStderr();
  EXPECT_EQ(QVR_activateImage(0, 4), QVR_E_IMAGE_ACTIVATE_ERROR);
  EXPECT_EQ(GetCapturedStderr(), "QVR_activateImage: Activate image ERROR: Operation not permitted\n");
}

TEST(ActivateImage, PrintsNothingWithoutTheDevice) {
  ExpectedRequests driver(opens(0).fails(ENOENT));
  CaptureStderr();
  EXPECT_EQ(QVR_activateImage(0, 4), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(GetCapturedStderr(), "");
}

TEST(ActivateImage, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  EXPECT_ASSERTION(QVR_activateImage(-1, 0), asserts(100, "Unknown device handle", -1));
}

TEST(LoadBootloader, DownloadsAndStartsAtTheRomEntryPoint) {
  ExpectedRequests driver(opens(0) + finds(0, kInB0) + downloads(0, "b1.bin") + activates(0, 0xFFFFFFF0));
  EXPECT_EQ(QVR_loadBootloader(0, "b1.bin"), QVR_E_STATUS_OK);
}

TEST(LoadBootloader, FailsOutsideTheRomBootStage) {
  ExpectedRequests driver(opens(0) + finds(0, kInB1) + finds(0, kInApp) + finds(0, 0));
  for (int i = 0; i < 3; i++) {
    EXPECT_EQ(QVR_loadBootloader(0, "b1.bin"), QVR_E_INVALID_FW_STATE);
  }
}

TEST(LoadBootloader, WarnsWhenTheFileCannotBeLoaded) {
  const TraceLog trace;
  ExpectedRequests driver(opens(0) + finds(0, kInB0) + downloads(0, "b1.bin").fails(ENOENT));
  EXPECT_EQ(QVR_loadBootloader(0, "b1.bin"), QVR_E_IMAGE_DOWNLOAD_ERROR);
  EXPECT_THAT(trace.lines(),
              ElementsAre(warns("QVR_loadBootloader", "Failed loading image file b1\\.bin\n")));
}

TEST(LoadBootloader, ReturnsTheCodeOfEachOtherFailure) {
  const TraceLog trace;
  ExpectedRequests driver(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_loadBootloader(0, "b"), QVR_E_DEVICE_NOT_EXISTS);
  openDevice(driver, 0);
  driver.expect(finds(0, kInB0).fails(EIO));
  EXPECT_EQ(QVR_loadBootloader(0, "b"), QVR_E_MEMREAD_ERROR);
  driver.expect(finds(0, kInB0) + downloads(0, "b") + activates(0, 0xFFFFFFF0).fails(EIO));
  EXPECT_EQ(QVR_loadBootloader(0, "b"), QVR_E_IMAGE_ACTIVATE_ERROR);
  EXPECT_TRUE(trace.lines().empty());
}

TEST(LoadBootloader, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  EXPECT_ASSERTION(QVR_loadBootloader(2, "b"), asserts(100, "Unknown device handle", 2));
}

TEST(EraseFlashSector, PassesTypeAndAddressToTheDriver) {
  ExpectedRequests driver(opens(0) + erases(0, FLASHERASE_4KB, 0x13000) +
                          erases(0, FLASHERASE_64KB, 0x20000));
  EXPECT_EQ(QVR_eraseFlashSector(0, FLASHERASE_4KB, 0x13000), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_eraseFlashSector(0, FLASHERASE_64KB, 0x20000), QVR_E_STATUS_OK);
}

TEST(EraseFlashSector, ReturnsTheCodeOfEachFailure) {
  ExpectedRequests driver(opens(0).fails(ENOENT) + opens(0) + erases(0, FLASHERASE_4KB, 0).fails(EIO));
  EXPECT_EQ(QVR_eraseFlashSector(0, FLASHERASE_4KB, 0), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_eraseFlashSector(0, FLASHERASE_4KB, 0), QVR_E_ERASE_ERROR);
}

TEST(EraseFlashSector, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  EXPECT_ASSERTION(QVR_eraseFlashSector(2, FLASHERASE_4KB, 0), asserts(100, "Unknown device handle", 2));
  EXPECT_ASSERTION(QVR_eraseFlash(2), asserts(100, "Unknown device handle", 2));
}

TEST(EraseFlash, ErasesEverythingInAnyStage) {
  ExpectedRequests driver(opens(0) + erases(0, FLASHERASE_ALL, 0) + erases(0, FLASHERASE_ALL, 0).fails(EIO));
  EXPECT_EQ(QVR_eraseFlash(0), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_eraseFlash(0), QVR_E_ERASE_ERROR);
}

// The three regions of flash, with their operations and messages.
struct Region {
  const char* name;
  uint32_t firstSector;
  uint32_t lastSector;
  QVR_retval_t (*erase)(QVR_deviceId_t);
  const char* eraseName;
  QVR_retval_t (*upgrade)(QVR_deviceId_t, const char*);
  const char* upgradeName;
  const char* failedErasing;
};

void PrintTo(const Region& region, std::ostream* out) {
  *out << region.name;
}

class FlashRegion : public testing::TestWithParam<Region> {
 protected:
  Script erasesIt() const { return erasesSectors(0, GetParam().firstSector, GetParam().lastSector); }
  auto warnsOfSector(uint32_t sector) const {
    char text[64];
    std::snprintf(text, sizeof text, "Failed erasing sector at address \\(%08x\\)\n", sector);
    return warns(GetParam().eraseName, text);
  }

  const TraceLog trace_;
};

INSTANTIATE_TEST_SUITE_P(
    Regions, FlashRegion,
    testing::Values(Region{"AppFirmware", 0x20000, 0xF0000, QVR_eraseAppFirmware, "QVR_eraseAppFirmware",
                           QVR_upgradeAppFirmware, "QVR_upgradeAppFirmware",
                           "Failed erasing APP firmware for device \\(0\\)\n"},
                    Region{"Bootloader", 0x00000, 0x00000, QVR_eraseBootloader, "QVR_eraseBootloader",
                           QVR_upgradeBootloader, "QVR_upgradeBootloader",
                           "Failed erasing boot loader for device \\(0\\)\n"},
                    Region{"ManufacturerBlock", 0x10000, 0x10000, QVR_eraseManufacturerBlock,
                           "QVR_eraseManufacturerBlock", QVR_upgradeManufactureBlock,
                           "QVR_upgradeManufactureBlock",
                           "Failed erasing Manufacturer Block for device \\(0\\)\n"}),
    [](const auto& region) { return region.param.name; });

TEST_P(FlashRegion, IsErasedInAscendingSectors) {
  ExpectedRequests driver(opens(0) + finds(0, kInB1) + erasesIt());
  EXPECT_EQ(GetParam().erase(0), QVR_E_STATUS_OK);
  EXPECT_TRUE(trace_.lines().empty());
}

TEST_P(FlashRegion, IsErasedOnlyInTheBootLoader) {
  ExpectedRequests driver(opens(0) + finds(0, kInApp));
  EXPECT_EQ(GetParam().erase(0), QVR_E_INVALID_FW_STATE);
  EXPECT_THAT(trace_.lines(), ElementsAre(warns(GetParam().eraseName, "Invalid FW state \\(29\\)\n")));
}

TEST_P(FlashRegion, IsNotErasedWhenTheStateCannotBeRead) {
  ExpectedRequests driver(opens(0).fails(ENOENT));
  EXPECT_EQ(GetParam().erase(0), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_THAT(trace_.lines(), ElementsAre(warns(GetParam().eraseName, "Invalid FW state \\(18\\)\n")));
}

TEST_P(FlashRegion, ErasingStopsAtTheFirstSectorThatFails) {
  ExpectedRequests driver{Script()};
  openDevice(driver, 0);
  const Script sectors = erasesIt();
  for (size_t position = 0; position < sectors.size(); position++) {
    trace_.lines().clear();
    driver.expect(finds(0, kInB1) + sectors.failingAt(position, EIO));
    EXPECT_EQ(GetParam().erase(0), QVR_E_ERASE_ERROR);
    driver.verify();
    const uint32_t sector = GetParam().firstSector + static_cast<uint32_t>(position) * 0x10000;
    EXPECT_THAT(trace_.lines(), ElementsAre(warnsOfSector(sector)));
  }
}

TEST_P(FlashRegion, IsUpgradedByErasingAndProgramming) {
  ExpectedRequests driver(opens(0) + finds(0, kInB1).times(2) + erasesIt() +
                          programs(0, "file.bin", GetParam().firstSector));
  EXPECT_EQ(GetParam().upgrade(0, "file.bin"), QVR_E_STATUS_OK);
  EXPECT_TRUE(trace_.lines().empty());
}

TEST_P(FlashRegion, UpgradeCutsALongNameWithoutTerminator) {
  const std::string name(200, 'n');
  ExpectedRequests driver(opens(0) + finds(0, kInB1).times(2) + erasesIt() +
                          programs(0, name, GetParam().firstSector));
  EXPECT_EQ(GetParam().upgrade(0, name.c_str()), QVR_E_STATUS_OK);
}

TEST_P(FlashRegion, UpgradeFailsInTheApplication) {
  ExpectedRequests driver(opens(0) + finds(0, kInApp));
  EXPECT_EQ(GetParam().upgrade(0, "file.bin"), QVR_E_INVALID_FW_STATE);
  EXPECT_THAT(trace_.lines(), ElementsAre(warns(GetParam().upgradeName, "Invalid FW state \\(29\\)\n")));
}

TEST_P(FlashRegion, UpgradeWarnsWhenTheStateCannotBeRead) {
  ExpectedRequests driver(opens(0) + finds(0, kInB1).fails(EIO));
  EXPECT_EQ(GetParam().upgrade(0, "file.bin"), QVR_E_MEMREAD_ERROR);
  EXPECT_THAT(trace_.lines(), ElementsAre(warns(GetParam().upgradeName, "Invalid FW state \\(12\\)\n")));
}

TEST_P(FlashRegion, UpgradeWarnsWhenErasingFails) {
  ExpectedRequests driver(opens(0) + finds(0, kInB1).times(2) + erasesIt().fails(EIO));
  EXPECT_EQ(GetParam().upgrade(0, "file.bin"), QVR_E_ERASE_ERROR);
  EXPECT_THAT(trace_.lines(), ElementsAre(warnsOfSector(GetParam().lastSector),
                                          warns(GetParam().upgradeName, GetParam().failedErasing)));
}

TEST_P(FlashRegion, UpgradeFailsWhenProgrammingFails) {
  ExpectedRequests driver(opens(0) + finds(0, kInB1).times(2) + erasesIt() +
                          programs(0, "file.bin", GetParam().firstSector).fails(EFBIG));
  EXPECT_EQ(GetParam().upgrade(0, "file.bin"), QVR_E_FLASH_PROGRAM_ERROR);
  EXPECT_TRUE(trace_.lines().empty());
}

TEST_P(FlashRegion, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  EXPECT_ASSERTION(GetParam().erase(2), asserts(100, "Invalid device id", 2));
  EXPECT_ASSERTION(GetParam().upgrade(2, "file.bin"), asserts(100, "Invalid device id", 2));
}

}  // namespace
