// Commands that act on a chip as a whole: given what the chip answers, when this is typed, this is printed.
#include <chrono>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/parameters.h"
#include "chip/registers.h"
#include "std/byte_order.h"
#include "support/boot_register.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

const Lines kNothing{};

// A chip with every shown field different.
ChipIdentity shownChip() {
  ChipIdentity chip;
  chip.sbr = 0x01800000;
  chip.setWord(DEV_INF_VERSION, 7);
  const uint8_t version[] = {0x6A, 0x04, 0x09, 0x01};
  std::copy(std::begin(version), std::end(version), chip.info.begin() + DEV_INF_FIRMWARE_VERSION);
  const std::string date = "Mar 30 2017";
  for (size_t i = 0; i < date.size(); i++) {
    chip.info[DEV_INF_DATE + 2 * i] = static_cast<uint8_t>(date[i]);
  }
  chip.info[DEV_INF_TIME] = '2';
  chip.info[DEV_INF_TIME + 2] = '1';
  chip.setWord(DEV_INF_LINK_STARTUP_TIME, 4321);
  chip.setWord(DEV_INF_TEMPERATURE, 47);
  for (uint8_t i = 0; i < 8; i++) {
    chip.info[DEV_INF_VENDOR_ID + i] = static_cast<uint8_t>(0xA0 + i);
  }
  const uint8_t mac[] = {0x02, 0x00, 0x5E, 0x10, 0x00, 0x01};
  std::copy(std::begin(mac), std::end(mac), chip.b0Regs.begin() + B0_REGS_MAC_ADDRESS);
  chip.setLinkState(LS_SHOWTIME);
  return chip;
}

Script isShown(int device, const ChipIdentity& chip) {
  return opens(device) + readsIdentity(device, chip);
}

using ShowDeviceInfo = TypedConsole;

TEST_F(ShowDeviceInfo, ShowsEveryField) {
  expect(isShown(0, shownChip()));
  EXPECT_THAT(typed("show device-info 0"),
              ElementsAre("MAC address                 02:00:5e:10:00:01",   //
                          "Device Info Version                      0007",   //
                          "Firmware Version                    1.9.4.106",   //
                          "Compiled at              Mar 30 2017 21",         //
                          "FW State                                  APP",   //
                          "Config State                       LINE (LCS)",   //
                          "Device temperature [Cel.]                0047",   //
                          "Vendor ID             A0 A1 A2 A3 A4 A5 A6 A7 ",  //
                          "",                                                //
                          "Link ID         Status          Startup Time",    //
                          "0               show time       4.321 seconds"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowDeviceInfo, WithoutADeviceShowsTheFirst) {
  expect(isShown(0, shownChip()));
  EXPECT_EQ(typed("show device-info").size(), 11U);
}

TEST_F(ShowDeviceInfo, ALineInSelfTestHasNoStartupTime) {
  ChipIdentity chip = shownChip();
  chip.setLinkState(LS_SELFTEST);
  expect(isShown(1, chip));
  EXPECT_EQ(typed("show device-info 1").back(), "0               self test       N/A");
}

TEST_F(ShowDeviceInfo, ALongStateNameMovesTheRest) {
  ChipIdentity chip = shownChip();
  chip.setLinkState(LS_PRE_DEACTIVATING1_E);
  expect(isShown(0, chip));
  EXPECT_EQ(typed("show device-info 0").back(), "0               pre-deactivating 14.321 seconds");
}

TEST_F(ShowDeviceInfo, NamesEveryFirmwareStage) {
  expect(opens(0));
  for (const auto& [state, name] :
       {std::pair{FW_B0, " BO"}, {FW_B1, " B1"}, {FW_APP, "APP"}, {FW_UNDEFINED, "UNDEFINED"}}) {
    ChipIdentity chip = shownChip();
    chip.sbr = state << SBR_FW_STATE_OFFSET;
    expect(readsIdentity(0, chip));
    EXPECT_EQ(typed("show device-info 0")[4],
              std::string("FW State                                  ") + name);
  }
}

TEST_F(ShowDeviceInfo, TellsTheConfigurationStateFromTheBootRegister) {
  ChipIdentity chip = shownChip();
  chip.sbr |= 0x8000;
  expect(isShown(0, chip));
  EXPECT_EQ(typed("show device-info 0")[5], "Config State                     SYSTEM (SCS)");
}

TEST_F(ShowDeviceInfo, SaysWhatIsNoDevice) {
  EXPECT_THAT(typed("show device-info 2"), ElementsAre("invalid device number 2"));
  EXPECT_THAT(typed("show device-info -1"), ElementsAre("invalid device number -1"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowDeviceInfo, EachReadMayFail) {
  expect(opens(0));
  for (size_t position = 0; position < 3; position++) {
    expect(readsIdentity(0, shownChip()).failingAt(position, EIO));
    EXPECT_THAT(typed("show device-info 0"), ElementsAre("Could not refresh the data"));
    EXPECT_EQ(result(), CLI_ERROR);
  }
}

TEST_F(ShowDeviceInfo, AnAbsentDeviceIsNotRefreshed) {
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("show device-info 1"), ElementsAre("Could not refresh the data"));
}

using Reboot = TypedConsole;

TEST_F(Reboot, IntoTheApplicationByDefault) {
  expect(opens(0) + reboots(0, 0x01800101, 0x01800210));
  EXPECT_THAT(typed("reboot"), IsEmpty());
}

TEST_F(Reboot, IntoTheBootLoaderOfTheOtherDevice) {
  expect(opens(1) + reboots(1, 0x01800000, 0x01800310));
  EXPECT_THAT(typed("reboot b1 1"), IsEmpty());
}

TEST_F(Reboot, IntoTheRomStage) {
  expect(opens(0) + reboots(0, 0x01800000, 0x01800211) + reboots(0, 0x01800000, 0x01800211));
  EXPECT_THAT(typed("reboot B0"), IsEmpty());
  EXPECT_THAT(typed("reboot b0 0"), IsEmpty());
}

TEST_F(Reboot, TakesStagesInTwoFormsOnly) {
  EXPECT_THAT(typed("reboot x"), ElementsAre("invalid state x"));
  EXPECT_THAT(typed("reboot App"), ElementsAre("invalid state App"));
}

TEST_F(Reboot, SaysWhatIsNoDevice) {
  EXPECT_THAT(typed("reboot APP 2"), ElementsAre("invalid device number 2"));
}

TEST_F(Reboot, SaysThatTheBootRegisterCouldNotBeChanged) {
  const Script whole = reboots(0, 0x01800000, 0x01800210);
  expect(opens(0) + whole.failingAt(0, EIO));
  EXPECT_THAT(typed("reboot"), ElementsAre("failed resetting device"));
  expect(whole.failingAt(1, EIO));
  EXPECT_THAT(typed("reboot"), ElementsAre("failed resetting device"));
}

TEST_F(Reboot, TheChipMayBeGoneBeforeItsResetIsAnswered) {
  expect(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0x01800000) + writesWord(0, SBR_REG_ADDRESS, 0x01800210) +
         writesWord(0, PLL_MUX_REG_ADDRESS, 0).fails(EIO) +
         writesWord(0, RESET_REG_ADDRESS, RESET_REGISTER_VALUE).fails(EIO));
  EXPECT_THAT(typed("reboot"), IsEmpty());
}

TEST_F(Reboot, AnAbsentDeviceIsNotReset) {
  expect(opens(0).fails(ENOENT));
  EXPECT_THAT(typed("reboot"), ElementsAre("failed resetting device"));
}

// A restart is followed by a look at line 0's configuration, of which the chip has none to tell.
Script looksAtConfiguration() {
  return reads(0, VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY, Bytes(12)).fails(EIO);
}

using RestartSystem = TypedConsole;

TEST_F(RestartSystem, SaysWhatIsNoDevice) {
  EXPECT_THAT(typed("restart system T 2"), ElementsAre("invalid device number"));
}

TEST_F(RestartSystem, WaitsForConfigurationFromTheFirstDevice) {
  for (const char* line : {"restart system T", "restart system t"}) {
    // A system in configuration state is where it should be.
    const bool first = line[15] == 'T';
    expect((first ? opens(0) : Script()) + readsWord(0, SBR_REG_ADDRESS, 0x01808000) +
           (first ? looksAtConfiguration() : Script()));
    EXPECT_THAT(typed(line), IsEmpty()) << line;
    verify();
  }
}

TEST_F(RestartSystem, AnyOtherWordDoesNotWait) {
  // Leaving configuration state is asked of both devices, and each is watched until it has.
  ChipIdentity inLineState;
  expect(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0x01808000) + opens(1) +
         writesWord(1, VIRT_ADDR_USER_ACTIVATION, 0) + writesWord(0, VIRT_ADDR_USER_ACTIVATION, 0) +
         readsIdentity(0, inLineState) + readsIdentity(1, inLineState) + looksAtConfiguration());
  EXPECT_THAT(typed("restart system yes"), IsEmpty());
}

TEST_F(RestartSystem, AFailureIsNotReported) {
  expect(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO) + looksAtConfiguration());
  EXPECT_THAT(typed("restart system"), IsEmpty());
}

using Rediscover = TypedConsole;

TEST_F(Rediscover, ReadsWhateverAnswers) {
  expect(rediscovers() + opens(0) + readsIdentity(0, {}) + opens(1).fails(ENOENT));
  EXPECT_THAT(typed("rediscover"), IsEmpty());
}

TEST_F(Rediscover, SaysItsName) {
  EXPECT_THAT(typed("rediscover now"), ElementsAre("rediscover"));
}

using Sleep = TypedConsole;

TEST_F(Sleep, SleepsTheSecondsItIsTold) {
  EXPECT_THAT(typed("sleep 1"), IsEmpty());
  EXPECT_THAT(typed("sleep 86400"), IsEmpty());
  EXPECT_THAT(testClock().sleeps(), ElementsAre(microseconds(seconds(1)), microseconds(seconds(86400))));
}

TEST_F(Sleep, RefusesWhatLiesOutside) {
  for (const char* line : {"sleep 0", "sleep 86401", "sleep -1", "sleep x"}) {
    EXPECT_THAT(typed(line), ElementsAre("invalid parameter - must enter value between 1..86400")) << line;
  }
  EXPECT_THAT(testClock().sleeps(), IsEmpty());
}

using LineControl = TypedConsole;

constexpr const char* kNoLine = "invalid parameter - line number must be between 0..1";

TEST_F(LineControl, RestartsALineThatIsUp) {
  ChipIdentity up;
  up.setLinkState(LS_SHOWTIME);
  expect(opens(0) + readsIdentity(0, up) + writesWord(0, VIRT_ADDR_REINIT(0), 0));
  EXPECT_THAT(typed("restart line 0"), IsEmpty());
}

TEST_F(LineControl, ALineThatIsDownIsLeftAlone) {
  ChipIdentity idle;
  idle.setLinkState(LS_IDLE);
  expect(opens(0) + readsIdentity(0, idle));
  EXPECT_THAT(typed("restart line 0"), IsEmpty());
}

TEST_F(LineControl, RestartsAllLinesThatWereFound) {
  EXPECT_THAT(typed("restart line all"), IsEmpty());  // none was
  EXPECT_THAT(typed("restart line ALL"), IsEmpty());
}

TEST_F(LineControl, ActivatesALineOrAll) {
  // Until devices were found every line is looked for on the first.
  expect(opens(0) + writesWord(0, VIRT_ADDR_LINKS_PROVISION(0), 1).times(3));
  EXPECT_THAT(typed("activate line 0"), IsEmpty());
  EXPECT_THAT(typed("activate line all"), IsEmpty());
}

TEST_F(LineControl, DeactivatesALineOrAll) {
  const Script down = writesWord(0, VIRT_ADDR_LINKS_PROVISION(0), 0) + writesWord(0, VIRT_ADDR_REINIT(0), 0);
  expect(opens(0) + down.times(3));
  EXPECT_THAT(typed("deactivate line 0"), IsEmpty());
  EXPECT_THAT(typed("deactivate line ALL"), IsEmpty());
}

TEST_F(LineControl, DeactivatingNoLineDoesNothing) {
  EXPECT_THAT(typed("deactivate line"), IsEmpty());
}

TEST_F(LineControl, SaysWhatIsNoLine) {
  for (const char* line : {"restart line 2", "activate line -1", "deactivate line 17"}) {
    EXPECT_THAT(typed(line), ElementsAre(kNoLine)) << line;
  }
}

TEST_F(LineControl, AWordWithoutDigitsLeavesTheFirstLine) {
  expect(opens(0) + writesWord(0, VIRT_ADDR_LINKS_PROVISION(0), 1));
  EXPECT_THAT(typed("activate line All"), IsEmpty());
}

TEST_F(LineControl, ActivateWantsItsLine) {
  EXPECT_THAT(typed("activate line"), ElementsAre("activate line [<line-id> | all] : { 0 }"));
  EXPECT_THAT(typed("restart line"), ElementsAre("restart line <line-id> | all"));
}

TEST_F(LineControl, AFailureIsNotReported) {
  expect(opens(0).fails(ENOENT).times(3));
  EXPECT_THAT(typed("activate line 0"), IsEmpty());
  EXPECT_THAT(typed("deactivate line 0"), IsEmpty());
}

}  // namespace
