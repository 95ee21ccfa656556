// Resetting chips, and moving the system between line state and configuration state.
#include <chrono>
#include <ostream>

#include "clock/waiting.h"
#include "support/assertions.h"
#include "support/boot_register.h"
#include "support/devices.h"
#include "support/test_clock.h"
#include "support/trace_log.h"

using namespace gfast;

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;

constexpr uint32_t kUserActivation = 0xE9100000;
constexpr uint32_t kConfigurationState = 0x01808000;  // bit 15, application firmware
constexpr uint32_t kLineState = 0x01800000;

struct Reboot {
  const char* name;
  QVR_fwState_t next;
  uint32_t before;
  uint32_t after;
};

void PrintTo(const Reboot& reboot, std::ostream* out) {
  *out << reboot.name;
}

class RebootDevice : public testing::TestWithParam<Reboot> {};

INSTANTIATE_TEST_SUITE_P(Stages, RebootDevice,
                         testing::Values(Reboot{"RomBootStage", FW_B0, 0x01800000, 0x01800211},
                                         Reboot{"BootLoader", FW_B1, 0x01800000, 0x01800310},
                                         Reboot{"Application", FW_APP, 0x01000101, 0x01000210},
                                         Reboot{"CountersAreCleared", FW_APP, 0xFFFFFFFF, 0x81FFFEFE},
                                         Reboot{"RomKeepsBit8", FW_B0, 0x7E000100, 0x00000311},
                                         Reboot{"BootLoaderKeepsBit0", FW_B1, 0x00000001, 0x00000311}),
                         [](const auto& reboot) { return reboot.param.name; });

TEST_P(RebootDevice, WritesTheStageIntoTheBootRegister) {
  ExpectedRequests driver(opens(0) + reboots(0, GetParam().before, GetParam().after));
  EXPECT_EQ(QVR_rebootDevice(0, GetParam().next), QVR_E_STATUS_OK);
}

TEST(RebootDevice, WritesNothingForAnUnknownStage) {
  ExpectedRequests driver(opens(0) + readsWord(0, SBR_REG_ADDRESS, kLineState).times(2));
  EXPECT_EQ(QVR_rebootDevice(0, FW_UNDEFINED), QVR_E_ERROR);
  EXPECT_EQ(QVR_rebootDevice(0, static_cast<QVR_fwState_t>(4)), QVR_E_ERROR);
}

TEST(RebootDevice, FailsWhenTheBootRegisterCannotBeChanged) {
  const Script script = reboots(0, 0x01800000, 0x01800210);
  ExpectedRequests driver(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_rebootDevice(0, FW_APP), QVR_E_DEVICE_NOT_EXISTS);
  openDevice(driver, 0);
  driver.expect(script.failingAt(0, EIO));
  EXPECT_EQ(QVR_rebootDevice(0, FW_APP), QVR_E_MEMREAD_ERROR);
  driver.expect(script.failingAt(1, EIO));
  EXPECT_EQ(QVR_rebootDevice(0, FW_APP), QVR_E_MEMWRITE_ERROR);
}

TEST(RebootDevice, IgnoresFailedResetWrites) {
  const Script script = reboots(0, 0x01800000, 0x01800210);
  ExpectedRequests driver(opens(0) + script.failingAt(2, EIO) +
                          writesWord(0, 0xE0000014, 0x80000000).fails(EIO));
  EXPECT_EQ(QVR_rebootDevice(0, FW_APP), QVR_E_STATUS_OK);
}

TEST(RebootDevice, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  EXPECT_ASSERTION(QVR_rebootDevice(2, FW_APP), asserts(100, "Unknown device handle", 2));
}

TEST(Reset, RebootsIntoTheApplicationOrTheRom) {
  ExpectedRequests driver(opens(1) + reboots(1, 0x01000101, 0x01000210) + reboots(1, 0x01000000, 0x01000211));
  EXPECT_EQ(QVR_reset(1, TRUE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_reset(1, FALSE), QVR_E_STATUS_OK);
}

Script modifiesSBR(int device, uint32_t before, uint32_t after) {
  return readsWord(device, SBR_REG_ADDRESS, before) + writesWord(device, SBR_REG_ADDRESS, after);
}

// Both devices open again after a rediscovery and tell who they are.
Script isRediscovered() {
  return closes(0) + closes(1) + rediscovers() + opens(0) + readsIdentity(0, ChipIdentity()) + opens(1) +
         readsIdentity(1, ChipIdentity());
}

class RestartDevice : public testing::Test {
 protected:
  RestartDevice() {
    testClock();
    openDevice(driver_, 0);
    openDevice(driver_, 1);
  }

  std::vector<microseconds> sleeps() { return testClock().sleeps(); }

  ExpectedRequests driver_{Script()};
  const TraceLog trace_;
};

TEST_F(RestartDevice, FromLineStateIntoConfigurationWaitsForAnIdleLine) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kLineState) + modifiesSBR(0, kLineState, kConfigurationState) +
                 modifiesSBR(1, kLineState, kConfigurationState) +
                 reboots(0, kConfigurationState, kConfigurationState | 0x210) +
                 readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO) +
                 readsIdentity(0, chipWithBootRegister(kConfigurationState, LS_INIT_HS)) +
                 readsIdentity(0, chipWithBootRegister(kConfigurationState, LS_IDLE)) + isRediscovered());
  EXPECT_EQ(QVR_restartDevice(0, TRUE), QVR_E_STATUS_OK);
  EXPECT_THAT(sleeps(), ElementsAre(seconds(1), seconds(1), seconds(1)));
}

TEST_F(RestartDevice, FromLineStateToLineStateWaitsUntilTheDeviceAnswers) {
  driver_.expect(readsWord(1, SBR_REG_ADDRESS, kLineState) + modifiesSBR(0, kLineState, kLineState) +
                 modifiesSBR(1, kConfigurationState, kLineState) +
                 reboots(1, kLineState, kLineState | 0x210) +
                 readsIdentity(1, chipWithBootRegister(kLineState, LS_INIT_HS)) + isRediscovered());
  EXPECT_EQ(QVR_restartDevice(1, FALSE), QVR_E_STATUS_OK);
  EXPECT_THAT(sleeps(), ElementsAre(seconds(1)));
}

TEST_F(RestartDevice, EndsWhenTheProgramEndsTheWait) {
  static int left = 2;
  installMayGoOn([] { return left-- > 0; });
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kLineState) + modifiesSBR(0, kLineState, kConfigurationState) +
                 modifiesSBR(1, kLineState, kConfigurationState) +
                 reboots(0, kConfigurationState, kConfigurationState | 0x210) +
                 readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO) + readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO));
  EXPECT_EQ(QVR_restartDevice(0, TRUE), QVR_E_TIMEOUT_ERROR);
  EXPECT_THAT(sleeps(), ElementsAre(seconds(1), seconds(1), seconds(1)));
}

TEST_F(RestartDevice, GoesOnWhenTheResetFails) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kLineState) + modifiesSBR(0, kLineState, kLineState) +
                 modifiesSBR(1, kLineState, kLineState) + readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO) +
                 readsIdentity(0, chipWithBootRegister(kLineState)) + isRediscovered());
  EXPECT_EQ(QVR_restartDevice(0, FALSE), QVR_E_STATUS_OK);
}

TEST_F(RestartDevice, FailsAtOnceWhenTheBootRegisterCannotBeRead) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kLineState).fails(EIO));
  EXPECT_EQ(QVR_restartDevice(0, TRUE), QVR_E_MEMREAD_ERROR);
  EXPECT_TRUE(trace_.lines().empty());
}

TEST_F(RestartDevice, WarnsWhenTheBootRegisterCannotBeChanged) {
  const Script changes =
      modifiesSBR(0, kLineState, kConfigurationState) + modifiesSBR(1, kLineState, kConfigurationState);
  for (size_t position = 0; position < changes.size(); position++) {
    trace_.lines().clear();
    driver_.expect(readsWord(0, SBR_REG_ADDRESS, kLineState) + changes.failingAt(position, EIO));
    EXPECT_EQ(QVR_restartDevice(0, TRUE), position % 2 == 0 ? QVR_E_MEMREAD_ERROR : QVR_E_MEMWRITE_ERROR);
    driver_.verify();
    EXPECT_THAT(trace_.lines(),
                ElementsAre(warns("QVR_restartDevice", "Failed on ReadModifyWrite of SBR\n")));
  }
}

TEST_F(RestartDevice, IntoConfigurationDoesNothingInConfigurationState) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kConfigurationState));
  EXPECT_EQ(QVR_restartDevice(0, TRUE), QVR_E_STATUS_OK);
  EXPECT_TRUE(sleeps().empty());
}

TEST_F(RestartDevice, EndingConfigurationActivatesDevice1FirstAndPollsDevice0First) {
  driver_.expect(
      readsWord(0, SBR_REG_ADDRESS, kConfigurationState) + writesWord(1, kUserActivation, 0) +
      writesWord(0, kUserActivation, 0) + readsIdentity(0, chipWithBootRegister(kConfigurationState)) +
      readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO) + readsIdentity(0, chipWithBootRegister(kLineState)) +
      readsIdentity(1, chipWithBootRegister(kLineState)));
  EXPECT_EQ(QVR_restartDevice(0, FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(sleeps(), std::vector<microseconds>(4, milliseconds(250)));
}

TEST_F(RestartDevice, EndingConfigurationIgnoresFailedWrites) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kConfigurationState) +
                 writesWord(1, kUserActivation, 0).fails(EIO) + writesWord(0, kUserActivation, 0).fails(EIO) +
                 readsIdentity(0, chipWithBootRegister(kLineState)) +
                 readsIdentity(1, chipWithBootRegister(kLineState)));
  EXPECT_EQ(QVR_restartDevice(0, FALSE), QVR_E_STATUS_OK);
}

TEST_F(RestartDevice, EndingConfigurationGivesUpAfter41Reads) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kConfigurationState) + writesWord(1, kUserActivation, 0) +
                 writesWord(0, kUserActivation, 0) +
                 readsIdentity(0, chipWithBootRegister(kConfigurationState)).times(41));
  EXPECT_EQ(QVR_restartDevice(0, FALSE), QVR_E_ERROR);
  EXPECT_EQ(sleeps(), std::vector<microseconds>(41, milliseconds(250)));
}

TEST_F(RestartDevice, EndingConfigurationAllowsDevice1Its41Reads) {
  driver_.expect(readsWord(0, SBR_REG_ADDRESS, kConfigurationState) + writesWord(1, kUserActivation, 0) +
                 writesWord(0, kUserActivation, 0) +
                 readsIdentity(0, chipWithBootRegister(kConfigurationState)).times(40) +
                 readsIdentity(0, chipWithBootRegister(kLineState)) +
                 readsWord(1, SBR_REG_ADDRESS, 0).fails(EIO).times(41));
  EXPECT_EQ(QVR_restartDevice(0, FALSE), QVR_E_ERROR);
}

TEST_F(RestartDevice, AssertsOnAnUnknownDevice) {
  EXPECT_ASSERTION(QVR_restartDevice(2, TRUE), asserts(100, "Unknown device handle", 2));
}

}  // namespace
