#include <gtest/gtest.h>

#include "chip/device_information.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

TEST(Memory, ReadsReturnWhatWasWritten) {
  Bench bench;
  EXPECT_EQ(bench.read(0, 0xEF000000, 4), "00 00 00 00");
  EXPECT_EQ(bench.write(0, 0xEF000000, "12 34 56 78"), "ok");
  EXPECT_EQ(bench.read(0, 0xEF000000, 4), "12 34 56 78");
  EXPECT_EQ(bench.read(0, 0xEF000002, 4), "56 78 00 00");
  EXPECT_EQ(bench.read(1, 0xEF000000, 4), "00 00 00 00");
}

TEST(Memory, WritesMayCrossPages) {
  Bench bench;
  EXPECT_EQ(bench.write(0, 0xEC000FFE, "01 02 03 04"), "ok");
  EXPECT_EQ(bench.read(0, 0xEC000FFC, 8), "00 00 01 02 03 04 00 00");
}

TEST(Memory, EndsWithTheAddressSpace) {
  Bench bench;
  EXPECT_EQ(bench.write(0, 0xFFFFFFFE, "aa bb"), "ok");
  EXPECT_EQ(bench.read(0, 0xFFFFFFFC, 4), "00 00 aa bb");
}

TEST(Memory, SurvivesAReset) {
  Bench bench;
  bench.write(0, 0xEF000000, "12 34 56 78");
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.read(0, 0xEF000000, 4), "12 34 56 78");
}

TEST(Memory, WhatTheChipComputesIsNotChangedByWriting) {
  Bench bench;
  EXPECT_EQ(bench.write(0, VIRT_ADDR_B0_REGS + B0_REGS_MAC_ADDRESS, "ff ff"), "ok");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_B0_REGS + B0_REGS_MAC_ADDRESS, 6), "02 00 5e 00 00 01");
}

TEST(Memory, AReadMayCrossIntoAComputedArea) {
  Bench bench;
  bench.write(0, VIRT_ADDR_DEVICE_INFO_READ - 2, "aa bb");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ - 2, 8), "aa bb 04 00 00 00 6a 04");
}

TEST(Memory, BytesOfABoardFileHideWhatIsComputed) {
  Bench bench("[[memory]]\ndevice = 0\naddress = 0xE3100000\nbytes = \"01 00\"");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ, 8), "01 00 00 00 6a 04 09 01");
  EXPECT_EQ(bench.read(1, VIRT_ADDR_DEVICE_INFO_READ, 8), "04 00 00 00 6a 04 09 02");
}

TEST(Memory, BytesOfABoardFileCanBeOverwritten) {
  Bench bench("[[memory]]\ndevice = 0\naddress = 0xEF000000\nbytes = \"01 02 03 04\"");
  EXPECT_EQ(bench.write(0, 0xEF000002, "aa bb cc dd"), "ok");
  EXPECT_EQ(bench.read(0, 0xEF000000, 6), "01 02 aa bb cc dd");
}

TEST(Memory, ABoardFileTakesADumpAsReadMemoryPrintsIt) {
  const TempFile dump("e3100000: 00000007\ne3100004: 02010403\n\n  100000: 11223344 55667788\n", "field.txt");
  const auto config =
      parseBoard("[[memory]]\ndevice = 1\ndump = \"field.txt\"", dump.folder() + "/board.toml");
  Bench bench(config);
  EXPECT_EQ(bench.read(1, VIRT_ADDR_DEVICE_INFO_READ, 8), "07 00 00 00 03 04 01 02");
  EXPECT_EQ(bench.read(1, 0x00100000, 8), "44 33 22 11 88 77 66 55");
}

TEST(Memory, ThePllRegisterIsRestoredByAReset) {
  Bench bench;
  const std::string atPowerUp = bench.read(0, PLL_MUX_REG_ADDRESS, 4);
  EXPECT_EQ(atPowerUp, "01 00 00 00");
  bench.writeWord(0, PLL_MUX_REG_ADDRESS, 0);
  EXPECT_EQ(bench.read(0, PLL_MUX_REG_ADDRESS, 4), "00 00 00 00");
  bench.writeWord(0, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
  bench.wait(2);
  EXPECT_EQ(bench.read(0, PLL_MUX_REG_ADDRESS, 4), atPowerUp);
}
