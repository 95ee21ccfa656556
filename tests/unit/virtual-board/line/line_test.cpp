#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kStartupTime = VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_LINK_STARTUP_TIME;
constexpr uint32_t kFailureCause = VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_INIT_FAILURE_CAUSE;

std::string provision(Bench& bench, int device, bool wanted) {
  return bench.writeWord(device, VIRT_ADDR_LINKS_PROVISION(0), wanted ? 1 : 0);
}

std::string reinitialise(Bench& bench, int device) {
  return bench.writeWord(device, VIRT_ADDR_REINIT(0), 0);
}

}  // namespace

TEST(Line, TrainsByItself) {
  Bench bench;
  EXPECT_EQ(bench.lineState(0), 3U);
  EXPECT_EQ(bench.lineState(1), 3U);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.lineState(1), 6U);
  EXPECT_EQ(bench.events(0), "3>4 4>5 5>6");
  EXPECT_EQ(bench.events(1), "3>4 4>5 5>6");
}

TEST(Line, TakesTheStatesUsualTimes) {
  Bench bench;
  double changed[3] = {};
  int changes = 0;
  for (uint32_t state = 3; changes < 3; bench.wait(0.01)) {
    if (bench.lineState(0) != state) {
      state = bench.lineState(0);
      changed[changes++] = bench.now;
    }
  }
  EXPECT_NEAR(changed[0], 1.0, 0.02);
  EXPECT_NEAR(changed[1] - changed[0], 1.2, 0.14);
  EXPECT_NEAR(changed[2] - changed[1], 2.4, 0.26);
  EXPECT_NEAR(bench.word(0, kStartupTime), (changed[2] - changed[0]) * 1000, 30);
  EXPECT_EQ(bench.word(0, kStartupTime), bench.word(1, kStartupTime));
}

TEST(Line, StartupTimeIsDrawnFromTheSeed) {
  const auto startupTime = [](const char* toml) {
    Bench bench(toml);
    bench.wait(kTrainingTime_s);
    return bench.word(0, kStartupTime);
  };
  EXPECT_EQ(startupTime("[board]\nseed = 7"), startupTime("[board]\nseed = 7"));
  EXPECT_NE(startupTime("[board]\nseed = 7"), startupTime("[board]\nseed = 8"));
}

TEST(Line, ShowtimeAtPowerUpIsOnBothEndsWithoutEvents) {
  Bench bench(kShowtime);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.lineState(1), 6U);
  bench.wait(10);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(bench.events(1), "");
  EXPECT_NEAR(bench.word(0, kStartupTime), 3600, 400);
}

TEST(Line, StartsFromTheStateInTheBoardFile) {
  Bench handshake("[[device]]\nline = \"handshake\"");
  EXPECT_EQ(handshake.lineState(1), 4U);
  handshake.wait(kTrainingTime_s);
  EXPECT_EQ(handshake.events(0), "4>5 5>6");

  Bench training("[[device]]\n[[device]]\nline = \"training\"");
  EXPECT_EQ(training.lineState(0), 5U);
  training.wait(kTrainingTime_s);
  EXPECT_EQ(training.events(0), "5>6");

  Bench silent("[[device]]\nline = \"silent\"");
  EXPECT_EQ(silent.lineState(0), 3U);
  silent.wait(kTrainingTime_s);
  EXPECT_EQ(silent.events(0), "3>4 4>5 5>6");

  Bench idle("[[device]]\nline = \"idle\"");
  EXPECT_EQ(idle.lineState(0), 2U);
  EXPECT_EQ(idle.lineState(1), 3U);
  idle.wait(kTrainingTime_s);
  EXPECT_EQ(idle.events(0), "");
}

TEST(Line, OneChipTrainsWithTheRemoteModem) {
  Bench bench("[board]\ndevices = 1");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(Line, TwoEndsOfTheSameSideDoNotTrain) {
  Bench bench("[[device]]\nside = \"dp\"\n[[device]]\nside = \"dp\"");
  bench.wait(60);
  EXPECT_EQ(bench.lineState(0), 3U);
  EXPECT_EQ(bench.word(0, kFailureCause), 4U);
}

TEST(Line, ACutLoopDoesNotTrain) {
  Bench bench("[loop]\ncut = true");
  bench.wait(60);
  EXPECT_EQ(bench.lineState(0), 3U);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(bench.word(0, kFailureCause), 4U);
  bench.board.cutLoop(false);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.word(0, kFailureCause), 0U);
}

TEST(Line, ReinitialisationGoesDownInOrderAndTrainsAgain) {
  Bench bench(kShowtime);
  EXPECT_EQ(reinitialise(bench, 0), "ok");
  bench.wait(1 + kTrainingTime_s);
  EXPECT_EQ(bench.events(0), "6>7 7>8 8>3 3>4 4>5 5>6");
  EXPECT_EQ(bench.events(1), "6>9 9>8 8>3 3>4 4>5 5>6");
}

TEST(Line, ReinitialisationOutsideShowtimeDoesNothing) {
  Bench bench;
  EXPECT_EQ(reinitialise(bench, 0), "ok");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.events(0), "3>4 4>5 5>6");
}

TEST(Line, DeactivationLeavesTheEndIdle) {
  Bench bench(kShowtime);
  EXPECT_EQ(provision(bench, 0, false), "ok");
  EXPECT_EQ(reinitialise(bench, 0), "ok");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.events(0), "6>7 7>8 8>2");
  EXPECT_EQ(bench.events(1), "6>9 9>8 8>3");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_LINKS_PROVISION(0), 4), "00 00 00 00");
}

TEST(Line, ActivationTrainsAnIdleLine) {
  Bench bench("[[device]]\nline = \"idle\"");
  EXPECT_EQ(provision(bench, 0, true), "ok");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.events(0), "2>3 3>4 4>5 5>6");
  EXPECT_EQ(bench.read(0, VIRT_ADDR_LINKS_PROVISION(0), 4), "01 00 00 00");
}

TEST(Line, ActivationOfALineInShowtimeChangesNothing) {
  Bench bench(kShowtime);
  provision(bench, 0, true);
  bench.wait(5);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(Line, DeactivationDuringTrainingFailsTheTraining) {
  Bench bench("[[device]]\nline = \"training\"");
  provision(bench, 1, false);
  bench.wait(1);
  EXPECT_EQ(bench.events(0), "5>3");
  EXPECT_EQ(bench.events(1), "5>2");
  EXPECT_EQ(bench.word(0, kFailureCause), 3U);
}

TEST(Line, ACutIsReportedAfterASecond) {
  Bench bench(kShowtime);
  bench.board.cutLoop(true);
  bench.wait(0.99);
  EXPECT_EQ(bench.lineState(0), 6U);
  bench.wait(0.02);
  EXPECT_EQ(bench.events(0), "failure 6 6>7");
  EXPECT_EQ(bench.events(1), "failure 6 6>7");
  bench.wait(0.3);
  EXPECT_EQ(bench.events(0), "7>3");
  bench.board.cutLoop(false);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.events(0), "3>4 4>5 5>6");
}

TEST(Line, AShortCutDoesNotEndShowtime) {
  Bench bench(kShowtime);
  bench.board.cutLoop(true);
  bench.wait(0.5);
  bench.board.cutLoop(false);
  bench.wait(5);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(Line, AResetDropsTheLineAndBothEndsTrainAgain) {
  Bench bench(kShowtime);
  bench.rebootToApp(0);
  bench.wait(10);
  EXPECT_EQ(bench.events(0), "boot 2>3 3>4 4>5 5>6");
  EXPECT_EQ(bench.events(1), "failure 6 6>7 7>3 3>4 4>5 5>6");
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(Line, AfterAResetOfBothEndsTheLineTrainsAgain) {
  Bench bench(kShowtime);
  bench.rebootToApp(0);
  bench.rebootToApp(1);
  bench.wait(10);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.events(1), "boot 2>3 3>4 4>5 5>6");
}

TEST(Line, AChipInItsBootLoaderHasNoLine) {
  Bench bench(kShowtime);
  bench.rebootToB1(0);
  bench.wait(10);
  EXPECT_EQ(bench.lineState(0), 0U);
  EXPECT_EQ(bench.word(0, kStartupTime), 0U);
  EXPECT_EQ(bench.lineState(1), 3U);
  EXPECT_EQ(provision(bench, 0, true), "ok");
  bench.wait(10);
  EXPECT_EQ(bench.lineState(1), 3U);
}

TEST(Line, StaysIdleAfterAResetWithAutoActivationDisabled) {
  Bench bench(kShowtime);
  bench.writeWord(0, SBR_REG_ADDRESS, bench.sbr(0) | (1U << SBR_DISABLE_AUTO_ACTIVATE_OFFSET));
  bench.writeWord(0, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
  bench.wait(10);
  EXPECT_EQ(bench.lineState(0), 2U);
  provision(bench, 0, true);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(Line, AResetDuringADeactivation) {
  Bench bench(kShowtime);
  reinitialise(bench, 0);
  bench.wait(0.1);
  bench.rebootToApp(0);
  bench.wait(10);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.lineState(1), 6U);
  EXPECT_EQ(bench.events(1), "6>9 9>8 8>3 3>4 4>5 5>6");
}
