#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/flash_layout.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

std::vector<uint8_t> bootloader(const FirmwareVersion& version = {1, 5, 6, 7}) {
  return makeFirmware(FirmwareKind::kBootloader, version, "2020-01-02T03:04:05", fromHex("aa bb"));
}

constexpr uint32_t kFirmwareVersion = VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_FIRMWARE_VERSION;

}  // namespace

TEST(Boot, AChipInResetDoesNotAnswer) {
  Bench bench;
  bench.rebootToApp(0);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "EIO");
  EXPECT_EQ(bench.write(0, 0xEF000000, "00 00"), "EIO");
  EXPECT_EQ(bench.erase(0, FLASHERASE_64KB, 0), "EIO");
  EXPECT_EQ(bench.readFlash(0, 0, 4), "EIO");
  EXPECT_EQ(bench.activate(0, ROM_DEFAULT_ENTRY_POINT), "EIO");
  EXPECT_EQ(bench.farEnd(0, 1), "EIO");
  const TempFile image(bootloader());
  EXPECT_EQ(bench.download(0, image.path()), "EIO");
  EXPECT_EQ(bench.program(0, image.path(), 0), "EIO");
  EXPECT_EQ(bench.read(1, SBR_REG_ADDRESS, 4), "00 00 80 01");
}

TEST(Boot, AnswersAgainAfterTheBootTimeOfItsStage) {
  Bench bench;
  bench.rebootToApp(0);
  bench.wait(1.19);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "EIO");
  bench.wait(0.02);
  EXPECT_EQ(bench.stage(0), 3U);
  bench.rebootToB1(0);
  bench.wait(0.69);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "EIO");
  bench.wait(0.02);
  EXPECT_EQ(bench.stage(0), 2U);
  bench.rebootToB0(0);
  bench.wait(0.29);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "EIO");
  bench.wait(0.02);
  EXPECT_EQ(bench.stage(0), 1U);
}

TEST(Boot, WithBothFlashBitsTheRomRuns) {
  Bench bench;
  bench.reboot(0, true, true);
  bench.wait(2);
  EXPECT_EQ(bench.stage(0), 1U);
}

TEST(Boot, AResetIsCountedInTheBootRegister) {
  Bench bench;
  EXPECT_EQ(SBR_RESET_COUNTER(bench.sbr(0)), 0U);
  for (const uint32_t count : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 7U}) {
    bench.writeWord(0, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
    bench.wait(2);
    EXPECT_EQ(SBR_RESET_COUNTER(bench.sbr(0)), count);
    EXPECT_EQ(SBR_BOOT_RESET_COUNTER(bench.sbr(0)), 0U);
  }
  bench.rebootToApp(0);  // clears the counters first
  bench.wait(2);
  EXPECT_EQ(SBR_RESET_COUNTER(bench.sbr(0)), 1U);
}

TEST(Boot, OnlyTheTopBitResets) {
  Bench bench;
  EXPECT_EQ(bench.writeWord(0, RESET_REG_ADDRESS, 0x7FFFFFFF), "ok");
  EXPECT_EQ(bench.stage(0), 3U);
  EXPECT_EQ(bench.read(0, RESET_REG_ADDRESS, 4), "00 00 00 00");
}

TEST(Boot, TheHostCannotSetTheStage) {
  Bench bench;
  bench.writeWord(0, SBR_REG_ADDRESS, 0x00000004);
  EXPECT_EQ(bench.sbr(0), 0x01800004U);
}

TEST(Boot, AResetClearsTheSystemParameterBit) {
  Bench bench;
  bench.writeWord(0, SBR_REG_ADDRESS, bench.sbr(0) | (1U << SBR_SYSTEM_PARAMETER_CHANGE_OFFSET));
  EXPECT_EQ(bench.sbr(0), 0x01810000U);
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.sbr(0) & (1U << SBR_SYSTEM_PARAMETER_CHANGE_OFFSET), 0U);
}

TEST(Boot, RaisesAnEventAtItsEnd) {
  Bench bench("[[device]]\nline = \"idle\"");
  bench.rebootToB1(0);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_FALSE(bench.readable(0));
  bench.wait(1);
  EXPECT_TRUE(bench.readable(0));
  EXPECT_EQ(bench.event(0), "04 00 00 00 00 00 00 00 00 00 00 00");
  EXPECT_FALSE(bench.readable(0));
  EXPECT_FALSE(bench.readable(1));
}

TEST(Boot, EachStageHasItsOwnVersion) {
  Bench bench;
  bench.rebootToB1(0);
  bench.wait(1);
  EXPECT_EQ(bench.read(0, kFirmwareVersion, 4), "00 01 02 01");
  bench.rebootToB0(0);
  bench.wait(1);
  EXPECT_EQ(bench.read(0, kFirmwareVersion, 4), "00 00 01 01");
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.read(0, kFirmwareVersion, 4), "6a 04 09 01");
}

TEST(Boot, ABoardFileSetsTheStageAtPowerUp) {
  Bench bench("[[device]]\nboot = \"b0\"\n[[device]]\nboot = \"b1\"");
  EXPECT_EQ(bench.sbr(0), 0x00800001U);
  EXPECT_EQ(bench.sbr(1), 0x01000100U);
  EXPECT_EQ(bench.lineState(0), 0U);
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.stage(0), 3U);
}

TEST(Boot, AnEmptyApplicationRegionLeavesTheChipInTheBootLoader) {
  Bench bench;
  for (uint32_t sector = FLASH_APP_FIRMWARE_START; sector < FLASH_SIZE; sector += FLASH_SECTOR_64KB) {
    ASSERT_EQ(bench.erase(0, FLASHERASE_64KB, sector), "ok");
  }
  EXPECT_EQ(bench.stage(0), 3U);  // the application that runs goes on
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.stage(0), 2U);
  EXPECT_EQ(SBR_BOOT_RESET_COUNTER(bench.sbr(0)), 1U);
}

TEST(Boot, AnEmptyBootLoaderRegionLeavesTheChipInTheRom) {
  Bench bench;
  ASSERT_EQ(bench.erase(0, FLASHERASE_64KB, FLASH_BOOTLOADER_START), "ok");
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.stage(0), 1U);
}

TEST(Boot, ABoardFileSetsWhatFlashHoldsAtPowerUp) {
  Bench bench("[[device]]\nflash = [\"bootloader\"]\n[[device]]\nflash = []");
  EXPECT_EQ(bench.stage(0), 2U);
  EXPECT_EQ(bench.stage(1), 1U);
  EXPECT_EQ(bench.readFlash(0, FLASH_APP_FIRMWARE_START, 4), "ff ff ff ff");
  EXPECT_EQ(bench.readFlash(0, FLASH_MANUFACTURER_BLOCK_START, 4), "ff ff ff ff");
}

TEST(Boot, AnUpgradedApplicationRunsAfterTheReset) {
  const TempFile image(
      makeFirmware(FirmwareKind::kApplication, {1, 9, 5, 106}, "2024-05-02T09:15:00", fromHex("01 02 03")));
  Bench bench;
  for (uint32_t sector = FLASH_APP_FIRMWARE_START; sector < FLASH_SIZE; sector += FLASH_SECTOR_64KB) {
    bench.erase(0, FLASHERASE_64KB, sector);
  }
  EXPECT_EQ(bench.program(0, image.path(), FLASH_APP_FIRMWARE_START), "ok");
  EXPECT_EQ(bench.read(0, kFirmwareVersion, 4), "6a 04 09 01");
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(
      bench.read(0, kFirmwareVersion, 32),
      "6a 05 09 01 4d 00 61 00 79 00 20 00 20 00 32 00 20 00 32 00 30 00 32 00 34 00 00 00 30 00 39 00");
}

TEST(Boot, AnImageProgrammedOverAnotherDoesNotRun) {
  const TempFile image(
      makeFirmware(FirmwareKind::kApplication, {1, 9, 5, 106}, "2024-05-02T09:15:00", fromHex("01 02 03")));
  Bench bench;
  EXPECT_EQ(bench.program(0, image.path(), FLASH_APP_FIRMWARE_START), "ok");
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.stage(0), 2U);
}

TEST(Boot, ADownloadedBootLoaderRunsWhenActivated) {
  const TempFile image(bootloader());
  Bench bench("[[device]]\nflash = []");
  EXPECT_EQ(bench.download(0, image.path()), "ok");
  EXPECT_EQ(bench.stage(0), 1U);
  EXPECT_EQ(bench.activate(0, ROM_DEFAULT_ENTRY_POINT), "ok");
  EXPECT_EQ(bench.stage(0), 2U);
  EXPECT_EQ(bench.read(0, kFirmwareVersion, 4), "07 06 05 01");
  bench.writeWord(0, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
  bench.wait(2);
  EXPECT_EQ(bench.stage(0), 1U);  // the download was in memory only
}

TEST(Boot, ActivationNeedsABootLoaderAtTheRomsEntryPoint) {
  const TempFile application(
      makeFirmware(FirmwareKind::kApplication, {1, 1, 1, 1}, "2020-01-02T03:04:05", {}));
  const TempFile image(bootloader());
  Bench bench("[[device]]\nboot = \"b0\"");
  EXPECT_EQ(bench.activate(0, ROM_DEFAULT_ENTRY_POINT), "ENOEXEC");
  EXPECT_EQ(bench.download(0, application.path()), "ok");
  EXPECT_EQ(bench.activate(0, ROM_DEFAULT_ENTRY_POINT), "ENOEXEC");
  EXPECT_EQ(bench.download(0, image.path()), "ok");
  EXPECT_EQ(bench.activate(0, 0x1000), "EFAULT");
  EXPECT_EQ(bench.stage(0), 1U);
}

TEST(Boot, OnlyTheRomTakesDownloadsAndActivations) {
  const TempFile image(bootloader());
  Bench bench;
  EXPECT_EQ(bench.download(0, image.path()), "EBUSY");
  EXPECT_EQ(bench.activate(0, ROM_DEFAULT_ENTRY_POINT), "EBUSY");
}
