#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kConfiguration = 1U << SBR_USER_ACTIVATION_STATE_OFFSET;

void setConfigurationState(Bench& bench) {
  for (const int device : {0, 1}) {
    bench.writeWord(device, SBR_REG_ADDRESS, bench.sbr(device) | kConfiguration);
  }
}

}  // namespace

TEST(Restart, AChipInConfigurationStateKeepsItsLineIdle) {
  Bench bench(kShowtime);
  setConfigurationState(bench);
  bench.rebootToApp(0);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.sbr(0) & kConfiguration, kConfiguration);
  EXPECT_EQ(bench.lineState(0), 2U);
  EXPECT_EQ(bench.lineState(1), 2U);
}

TEST(Restart, UserActivationBringsTheChipToLineState) {
  Bench bench(kShowtime);
  setConfigurationState(bench);
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(bench.write(1, VIRT_ADDR_USER_ACTIVATION, "00 00 00 00"), "ok");
  EXPECT_EQ(bench.write(0, VIRT_ADDR_USER_ACTIVATION, "00 00 00 00"), "ok");
  EXPECT_EQ(bench.sbr(0) & kConfiguration, kConfiguration);
  bench.wait(0.41);
  EXPECT_EQ(bench.sbr(0) & kConfiguration, 0U);
  EXPECT_EQ(bench.sbr(1) & kConfiguration, 0U);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.lineState(1), 6U);
}

TEST(Restart, UserActivationInLineStateDoesNothing) {
  Bench bench(kShowtime);
  bench.write(0, VIRT_ADDR_USER_ACTIVATION, "00 00 00 00");
  bench.wait(1);
  EXPECT_EQ(bench.sbr(0), 0x01800000U);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(Restart, AResetCancelsAnActivation) {
  Bench bench;
  setConfigurationState(bench);
  bench.write(0, VIRT_ADDR_USER_ACTIVATION, "00 00 00 00");
  bench.rebootToApp(0);
  bench.wait(3);
  EXPECT_EQ(bench.sbr(0) & kConfiguration, kConfiguration);
}

TEST(Restart, TheBootLoaderIgnoresUserActivation) {
  Bench bench("[[device]]\nboot = \"b1\"");
  setConfigurationState(bench);
  bench.write(0, VIRT_ADDR_USER_ACTIVATION, "00 00 00 00");
  bench.wait(1);
  EXPECT_EQ(bench.sbr(0) & kConfiguration, kConfiguration);
}

TEST(Restart, RediscoveryLeavesAnOpenChipReachable) {
  Bench bench;
  bench.rebootToApp(0);
  bench.board.close(bench.descriptors[0]);
  bench.board.rediscover();
  bench.descriptors[0] = bench.board.open(0);
  ASSERT_GE(bench.descriptors[0], 0);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "EIO");
  bench.wait(1.3);
  EXPECT_EQ(bench.stage(0), 3U);
}
