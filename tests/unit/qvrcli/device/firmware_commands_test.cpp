// Boot loaders and flash at the console: given what the driver answers, when this is typed, this is printed.
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "chip/boot_register.h"
#include "chip/flash_layout.h"
#include "chip/registers.h"
#include "qvrcli/text/named_files.h"
#include "support/boot_register.h"
#include "support/temporary_folder.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kWrongState = "Invalid FW state - must be in B1 bootloader state";

using LoadBootloader = TypedConsole;

Script loads(int device, const std::string& filename) {
  return readsIdentity(device, chipWithBootRegister(kInB0)) + readsWord(device, SBR_REG_ADDRESS, kInB0) +
         downloads(device, filename) + activates(device, ROM_DEFAULT_ENTRY_POINT);
}

TEST_F(LoadBootloader, DownloadsAndStartsTheDefaultFile) {
  expect(opens(0) + loads(0, "B1.bin"));
  EXPECT_THAT(typed("load bootloader"), IsEmpty());
}

TEST_F(LoadBootloader, TakesAFileAndADevice) {
  expect(opens(1) + loads(1, "/tmp/other.bin"));
  EXPECT_THAT(typed("load bootloader /tmp/other.bin 1"), IsEmpty());
}

TEST_F(LoadBootloader, RefusesAnUnknownDevice) {
  EXPECT_THAT(typed("load bootloader B1.bin 2"), ElementsAre("invalid device number 2"));
}

TEST_F(LoadBootloader, NeedsTheRomStage) {
  expect(opens(0) + readsIdentity(0, chipWithBootRegister(kInB1)));
  EXPECT_THAT(typed("load bootloader"), ElementsAre("Device must be in B0 state"));
}

TEST_F(LoadBootloader, ReportsAFailureOfEachRequest) {
  const Script whole = loads(0, "B1.bin");
  expect(opens(0));
  for (size_t position = 0; position < whole.size(); position++) {
    expect(whole.failingAt(position, ENOENT));
    EXPECT_THAT(typed("load bootloader"),
                ElementsAre(position < 3 ? "Could not refresh the data"
                                         : "Error loading image - No such file or directory"))
        << position;
  }
}

TEST_F(LoadBootloader, RefusesANameThatFillsTheRecord) {
  expect(opens(0) + readsIdentity(0, chipWithBootRegister(kInB0)));
  EXPECT_THAT(typed("load bootloader " + std::string(128, 'x')),
              ElementsAre("Error loading image - File name too long"));
  expect(loads(0, std::string(127, 'x')));
  EXPECT_THAT(typed("load bootloader " + std::string(127, 'x')), IsEmpty());
}

TEST_F(LoadBootloader, ReportsAnAbsentDevice) {
  expect(opens(0).fails(ENOENT));
  EXPECT_THAT(typed("load bootloader"), ElementsAre("Could not refresh the data"));
}

// The three regions of the flash, whose commands differ in names only.
struct Region {
  const char* words;
  const char* defaultFile;
  uint32_t start;
  uint32_t sectors;
  const char* upgradeFailure;
  const char* eraseFailure;
};

void PrintTo(const Region& region, std::ostream* out) {
  *out << region.words;
}

class FlashRegion : public TypedConsole, public testing::WithParamInterface<Region> {
 protected:
  static Script erased(int device) {
    Script script = readsWord(device, SBR_REG_ADDRESS, kInB1);
    for (uint32_t sector = 0; sector < GetParam().sectors; sector++) {
      script = script + erases(device, FLASHERASE_64KB, GetParam().start + sector * FLASH_SECTOR_64KB);
    }
    return script;
  }
  static Script upgraded(int device, const std::string& filename) {
    return readsWord(device, SBR_REG_ADDRESS, kInB1) + erased(device) +
           programs(device, filename, GetParam().start);
  }
  static std::string upgrade(const std::string& rest) {
    return std::string("upgrade ") + GetParam().words + rest;
  }
  static std::string erase(const std::string& rest) {
    return std::string("erase ") + GetParam().words + rest;
  }
};

TEST_P(FlashRegion, IsUpgradedFromTheDefaultFile) {
  expect(opens(0) + upgraded(0, GetParam().defaultFile));
  EXPECT_THAT(typed(upgrade("")), IsEmpty());
}

TEST_P(FlashRegion, IsUpgradedFromAFileOnTheOtherDevice) {
  expect(opens(1) + upgraded(1, "new.bin"));
  EXPECT_THAT(typed(upgrade(" new.bin 1")), IsEmpty());
}

TEST_P(FlashRegion, RefusesAnUnknownDevice) {
  EXPECT_THAT(typed(upgrade(" new.bin 2")), ElementsAre("invalid device number 2"));
  EXPECT_THAT(typed(erase(" 3")), ElementsAre("invalid device number 3"));
}

TEST_P(FlashRegion, IsChangedOnlyWhileTheBootLoaderRuns) {
  for (const uint32_t sbr : {kInB0, kInApp}) {
    expect((sbr == kInB0 ? opens(0) : Script()) + readsWord(0, SBR_REG_ADDRESS, sbr).times(2));
    EXPECT_THAT(typed(upgrade("")), ElementsAre(kWrongState));
    EXPECT_THAT(typed(erase("")), ElementsAre(kWrongState));
  }
}

TEST_P(FlashRegion, ReportsAFailureOfEachRequestOfAnUpgrade) {
  const Script whole = upgraded(0, "new.bin");
  expect(opens(0));
  for (size_t position = 0; position < whole.size(); position++) {
    expect(whole.failingAt(position, EIO));
    EXPECT_THAT(typed(upgrade(" new.bin")), ElementsAre(GetParam().upgradeFailure)) << position;
    verify();
  }
}

TEST_P(FlashRegion, ReportsAFailureOfEachRequestOfAnErasure) {
  const Script whole = erased(0);
  expect(opens(0) + whole);
  EXPECT_THAT(typed(erase(" 0")), IsEmpty());
  for (size_t position = 0; position < whole.size(); position++) {
    expect(whole.failingAt(position, EIO));
    EXPECT_THAT(typed(erase("")), ElementsAre(GetParam().eraseFailure)) << position;
    verify();
  }
}

TEST_P(FlashRegion, IsNotTouchedForANameThatFillsTheRecord) {
  EXPECT_THAT(typed(upgrade(" " + std::string(128, 'x'))), ElementsAre(GetParam().upgradeFailure));
}

TEST_P(FlashRegion, OfAnAbsentDeviceIsReported) {
  expect(opens(1).fails(ENOENT).times(2));
  EXPECT_THAT(typed(upgrade(" new.bin 1")), ElementsAre(GetParam().upgradeFailure));
  EXPECT_THAT(typed(erase(" 1")), ElementsAre(GetParam().eraseFailure));
}

INSTANTIATE_TEST_SUITE_P(
    Flash, FlashRegion,
    testing::Values(Region{"firmware", "triplet_dp_2_94.bin", 0x20000, 14, "failed upgrading firmware image",
                           "failed erasing firmware image"},
                    Region{"bootloader", "B1.bin", 0x00000, 1, "failed upgrading bootloader",
                           "failed erasing bootloader"},
                    Region{"manufacturer-block", "ManufacturerBlock_DP.bin", 0x10000, 1,
                           "failed upgrading manufacturer block", "failed erasing manufacturer block"}));

// The driver opens the file itself, so it is given a name that was looked at, with the folder before it.
TEST_F(LoadBootloader, FindsTheFileInTheOneFolder) {
  const TemporaryFolder folder;
  folder.write("B1.bin", "image");
  ASSERT_TRUE(keepFilesInside(folder.path().c_str()));
  expect(opens(0) + loads(0, std::filesystem::canonical(folder.file("B1.bin"))));
  EXPECT_THAT(typed("load bootloader"), IsEmpty());
}

TEST_F(LoadBootloader, RefusesFilesOutsideTheOneFolder) {
  const TemporaryFolder folder;
  const TemporaryFolder other;
  const std::string outside = other.write("B1.bin", "image");
  ASSERT_EQ(symlink(outside.c_str(), folder.file("link").c_str()), 0);
  ASSERT_TRUE(keepFilesInside(folder.path().c_str()));
  expect(opens(0) + readsIdentity(0, chipWithBootRegister(kInB0)).times(3));
  EXPECT_THAT(typed("load bootloader " + outside), ElementsAre("Error loading image - Permission denied"));
  EXPECT_THAT(typed("load bootloader ../B1.bin"), ElementsAre("Error loading image - Permission denied"));
  EXPECT_THAT(typed("load bootloader link"),
              ElementsAre("Error loading image - Too many levels of symbolic links"));
}

TEST_P(FlashRegion, IsNotTouchedForAFileOutsideTheOneFolder) {
  const TemporaryFolder folder;
  const TemporaryFolder other;
  ASSERT_TRUE(keepFilesInside(folder.path().c_str()));
  EXPECT_THAT(typed(upgrade(" " + other.write("new.bin", "image"))), ElementsAre(GetParam().upgradeFailure));
  EXPECT_THAT(typed(upgrade(" missing.bin")), ElementsAre(GetParam().upgradeFailure));
}

using EraseFlash = TypedConsole;

TEST_F(EraseFlash, ErasesTheWholeFlashInAnyStage) {
  expect(opens(1) + erases(1, FLASHERASE_ALL, 0));
  EXPECT_THAT(typed("erase flash 1"), IsEmpty());
}

TEST_F(EraseFlash, ReportsAFailure) {
  expect(opens(0) + erases(0, FLASHERASE_ALL, 0).fails(EIO));
  EXPECT_THAT(typed("erase flash"), ElementsAre("Failed erasing flash"));
  EXPECT_THAT(typed("erase flash 2"), ElementsAre("invalid device number 2"));
}

}  // namespace
