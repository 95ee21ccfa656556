// The kernel driver's contract, as far as it does not depend on the width of a pointer, and the two drivers
// of the library.
#include <gfast_api.h>
#include <gtest/gtest.h>
#include <qvr/kernel_driver.h>

#include <cerrno>

#include "chip/boot_register.h"
#include "driver/driver.h"
#include "driver/envelope.h"
#include "driver/kernel_driver.h"
#include "std/bits.h"

using namespace gfast;

namespace {

TEST(DriverInterface, RequestCodesAreTheSameOnEveryMachine) {
  const uint32_t codes[] = {DFEIOCMEMRD,      DFEIOCMEMWR,      DFEIOCIMGACT,    DFEIOCIMGDNLD,
                            DFEIOCFLASHRD,    DFEIOCFLASHERASE, DFEIOCFLASHPROG, DFEIOCOAMGET,
                            DFEIOCOAMSET,     DFEIOCLOGCFG,     DFEIOCLOGRD,     DFEIOCALMRD,
                            DFEIOCSETPORTTAG, DFEIOCGETRESULT,  DFEIOCDEVINFO,   DFEIOCFARENDMSG};
  uint32_t number = 1;
  for (const uint32_t code : codes) {
    EXPECT_EQ(code, 0xC0044B00U + number++);
  }
}

TEST(DriverInterface, TheFarEndMessageIsNumber16BehindADeclaredHighestOf15) {
  EXPECT_EQ(DFEIOC_MAX_NUM, 15U);
  EXPECT_EQ(DFEIOCFARENDMSG, 0xC0044B10U);
}

TEST(DriverInterface, RecordsWithoutPointersHaveTheSameSizeEverywhere) {
  EXPECT_EQ(sizeof(gfast_imgdnld), 128U);
  EXPECT_EQ(sizeof(gfast_flashprog), 132U);
  EXPECT_EQ(sizeof(gfast_flasherase), 8U);
  EXPECT_EQ(sizeof(gfast_setporttag), 6U);
  EXPECT_EQ(offsetof(gfast_flashprog, hw_flash_addr), 128U);
  EXPECT_EQ(offsetof(gfast_flasherase, erasetype), 6U);
}

TEST(DriverInterface, AnEmptyRequestIsZeroInEveryByte) {
  const gfast_iocreq request = emptyRequest();
  const auto* bytes = reinterpret_cast<const unsigned char*>(&request);
  for (size_t i = 0; i < sizeof request; i++) {
    EXPECT_EQ(bytes[i], 0) << i;
  }
}

TEST(DriverInterface, TheBootRegistersFieldsFillItFromBit0) {
  EXPECT_EQ(MASK(SBR_DISABLE_FLASH), 0x00000001U);
  EXPECT_EQ(MASK(SBR_SGMII_ACTIVE_LANE), 0x00000018U);
  EXPECT_EQ(MASK(SBR_DISABLE_FLASH_B1), 0x00000080U);
  EXPECT_EQ(MASK(SBR_DISABLE_FLASH_OVERRIDE), 0x00000100U);
  EXPECT_EQ(MASK(SBR_DISABLE_FLASH_B1_OVERRIDE), 0x00004000U);
  EXPECT_EQ(MASK(SBR_USER_ACTIVATION_STATE), 0x00008000U);
  EXPECT_EQ(MASK(SBR_SYSTEM_PARAMETER_CHANGE), 0x00010000U);
  EXPECT_EQ(MASK(SBR_RESERVED), 0x007E0000U);
  EXPECT_EQ(MASK(SBR_FW_STATE), 0x01800000U);
  EXPECT_EQ(MASK(SBR_RESET_COUNTER), 0x0E000000U);
  EXPECT_EQ(MASK(SBR_BOOT_RESET_COUNTER), 0x70000000U);
  EXPECT_EQ(MASK(SBR_WD_INDICATOR), 0x80000000U);
}

TEST(DriverInterface, TheBootRegistersCountersAreExtracted) {
  EXPECT_EQ(SBR_FW_STATE(0x01000000U), 2U);
  EXPECT_EQ(SBR_RESET_COUNTER(0x0A000000U), 5U);
  EXPECT_EQ(SBR_BOOT_RESET_COUNTER(0x60000000U), 6U);
  EXPECT_EQ(SBR_FW_STATE(0xFE7FFFFFU), 0U);
}

TEST(DriverInterface, WithoutADriverNoDeviceOpens) {
  errno = 0;
  EXPECT_EQ(driver().open(0), -1);
  EXPECT_EQ(errno, ENODEV);
  gfast_iocreq request = emptyRequest();
  EXPECT_EQ(driver().request(3, DFEIOCMEMRD, request), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(KernelDriver, ADeviceFileThatDoesNotExistCannotBeOpened) {
  KernelDriver kernel;
  errno = 0;
  EXPECT_EQ(kernel.open(7), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST(KernelDriver, ARequestOnAClosedDescriptorFails) {
  KernelDriver kernel;
  gfast_iocreq request = emptyRequest();
  errno = 0;
  EXPECT_EQ(kernel.request(-1, DFEIOCMEMRD, request), -1);
  // User-mode emulation refuses codes it does not know before it looks at the descriptor.
  EXPECT_TRUE(errno == EBADF || errno == ENOSYS) << errno;
}

TEST(KernelDriver, CarriesTheRequestsOnceAProgramUsesIt) {
  QVR_useKernelDriver();
  Driver* const used = &driver();
  EXPECT_NE(dynamic_cast<KernelDriver*>(used), nullptr);
  QVR_useKernelDriver();
  EXPECT_EQ(&driver(), used);
}

}  // namespace
