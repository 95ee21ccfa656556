#include <gmock/gmock.h>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

using testing::StartsWith;

TEST(Identity, BootRegisterOfARunningChipNamesTheApplication) {
  Bench bench;
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "00 00 80 01");
  EXPECT_EQ(bench.read(1, SBR_REG_ADDRESS, 4), "00 00 80 01");
}

TEST(Identity, DeviceInformationImageHoldsVersionDateTimeTemperatureAndVendor) {
  Bench bench;
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ, 36),
            "04 00 00 00 6a 04 09 01 "
            "4d 00 61 00 72 00 20 00 33 00 30 00 20 00 32 00 30 00 31 00 37 00 00 00 "  // Mar 30 2017
            "32 00 31 00");                                                             // 21
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_TEMPERATURE, 4), "2f 00 00 00");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_VENDOR_ID, 12),
            "00 00 00 b5 44 52 42 56 00 00 01 00");
  // Another maker's.
  EXPECT_EQ(bench.read(1, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_VENDOR_ID, 12),
            "00 00 00 b5 4d 4f 48 56 00 00 02 00");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ, 260).size(), 260U * 3 - 1);
}

TEST(Identity, TheSubscriberSideRunsAnotherChipset) {
  Bench bench;
  EXPECT_EQ(bench.read(1, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_FIRMWARE_VERSION, 4), "6a 04 09 02");
}

TEST(Identity, ABoardFileSetsVersionMacAndTemperature) {
  Bench bench(R"(
    [[device]]
    firmware = "3.2.1.0"
    mac = "0a:1b:2c:3d:4e:5f"
    temperature_c = 63
  )");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_FIRMWARE_VERSION, 4), "00 01 02 03");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_TEMPERATURE, 4), "3f 00 00 00");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_B0_REGS + B0_REGS_MAC_ADDRESS, 6), "0a 1b 2c 3d 4e 5f");
}

TEST(Identity, BootStageBlockHoldsMacAndLinkState) {
  Bench bench("[[device]]\nline = \"showtime\"");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_B0_REGS, B0_REGS_SIZE),
            zeros(10) + " 02 00 5e 00 00 01 " + zeros(20) + " 06 00 00 00 " + zeros(20) + " 00 00 00 00");
  EXPECT_EQ(bench.read(1, VIRT_ADDR_B0_REGS + B0_REGS_MAC_ADDRESS, 6), "02 00 5e 00 00 02");
}

TEST(Identity, ABoardFileSetsTheNumberOfChips) {
  for (const int devices : {0, 1, 2}) {
    Bench bench(("[board]\ndevices = " + std::to_string(devices)));
    EXPECT_EQ(bench.descriptors[0] >= 0, devices >= 1) << devices;
    EXPECT_EQ(bench.descriptors[1] >= 0, devices >= 2) << devices;
  }
}

TEST(Identity, AChipThatIsNotThereCannotBeOpened) {
  Bench bench("[board]\ndevices = 1");
  for (const int device : {-1, 1, 2, 1000}) {
    errno = 0;
    EXPECT_EQ(bench.board.open(device), -1);
    EXPECT_EQ(errno, ENODEV);
  }
}

TEST(Identity, ReadAndClearReturnsTheImageAndClearsTheAssertions) {
  Bench bench(R"(
    [[memory]]
    device = 0
    address = 0xE3100028   # the framer's assertion record
    bytes = "01 00 00 00 2a 00 00 00"
    [[memory]]
    device = 0
    address = 0xE31000F4   # when the control processor asserted
    bytes = "10 00 00 00"
    [[memory]]
    device = 0
    address = 0xE3100098   # the temperature is no assertion
    bytes = "11 00 00 00"
  )");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + 40, 8), "01 00 00 00 2a 00 00 00");
  const std::string before = bench.read(0, VIRT_ADDR_DEVICE_INFO_READ, DEV_INF_SIZE);
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ_AND_CLEAR, DEV_INF_SIZE), before);
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + 40, 8), "00 00 00 00 00 00 00 00");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + 0xF4, 4), "00 00 00 00");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_TEMPERATURE, 4), "11 00 00 00");
}

TEST(Identity, ReadAndClearOfAPartClearsThatPart) {
  Bench bench("[[memory]]\ndevice = 0\naddress = 0xE3100028\nbytes = \"01 00 00 00 2a 00 00 00\"");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ_AND_CLEAR + 40, 4), "01 00 00 00");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ + 40, 8), "00 00 00 00 2a 00 00 00");
}
