// A chip as a whole: given what the chip answers, when this is typed, this is printed.
#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/parameter_records.h"
#include "chip/registers.h"
#include "std/byte_order.h"
#include "support/boot_register.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A chip in which no two of the shown fields are equal.
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

TEST_F(ShowDeviceInfo, ShowsNoControlCharactersOfTheBuildTime) {
  ChipIdentity chip = shownChip();
  chip.info[DEV_INF_DATE] = 0x1B;
  chip.info[DEV_INF_DATE + 2] = 0xFF;
  chip.info[DEV_INF_TIME] = '\r';
  expect(isShown(0, chip));
  EXPECT_EQ(typed("show device-info 0")[3], "Compiled at              ..r 30 2017 .1");
}

TEST_F(ShowDeviceInfo, TakesTheFirstDeviceByDefault) {
  expect(isShown(0, shownChip()));
  EXPECT_EQ(typed("show device-info").size(), 11U);
}

TEST_F(ShowDeviceInfo, ShowsNoStartupTimeOfALineInSelfTest) {
  ChipIdentity chip = shownChip();
  chip.setLinkState(LS_SELFTEST);
  expect(isShown(1, chip));
  EXPECT_EQ(typed("show device-info 1").back(), "0               self test       N/A");
}

TEST_F(ShowDeviceInfo, MovesTheRestBehindALongStateName) {
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

TEST_F(ShowDeviceInfo, TakesTheConfigurationStateFromTheBootRegister) {
  ChipIdentity chip = shownChip();
  chip.sbr |= 0x8000;
  expect(isShown(0, chip));
  EXPECT_EQ(typed("show device-info 0")[5], "Config State                     SYSTEM (SCS)");
}

TEST_F(ShowDeviceInfo, RefusesAnUnknownDevice) {
  EXPECT_THAT(typed("show device-info 2"), ElementsAre("invalid device number 2"));
  EXPECT_THAT(typed("show device-info -1"), ElementsAre("invalid device number -1"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowDeviceInfo, ReportsAFailureOfEachRead) {
  expect(opens(0));
  for (size_t position = 0; position < 3; position++) {
    expect(readsIdentity(0, shownChip()).failingAt(position, EIO));
    EXPECT_THAT(typed("show device-info 0"), ElementsAre("Could not refresh the data"));
    EXPECT_EQ(result(), CLI_ERROR);
  }
}

TEST_F(ShowDeviceInfo, ReportsAnAbsentDevice) {
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("show device-info 1"), ElementsAre("Could not refresh the data"));
}

using Reboot = TypedConsole;

// A reboot changes the boot register and then resets the chip.
Script reboots(int device, uint32_t before, uint32_t after) {
  return readsWord(device, SBR_REG_ADDRESS, before) + writesWord(device, SBR_REG_ADDRESS, after) +
         writesWord(device, PLL_MUX_REG_ADDRESS, 0) +
         writesWord(device, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
}

TEST_F(Reboot, StartsTheApplicationByDefault) {
  expect(opens(0) + reboots(0, 0x01800101, 0x01800210));
  EXPECT_THAT(typed("reboot"), IsEmpty());
}

TEST_F(Reboot, StartsTheBootLoaderOfTheOtherDevice) {
  expect(opens(1) + reboots(1, 0x01800000, 0x01800310));
  EXPECT_THAT(typed("reboot b1 1"), IsEmpty());
}

TEST_F(Reboot, StartsTheRomStage) {
  expect(opens(0) + reboots(0, 0x01800000, 0x01800211) + reboots(0, 0x01800000, 0x01800211));
  EXPECT_THAT(typed("reboot B0"), IsEmpty());
  EXPECT_THAT(typed("reboot b0 0"), IsEmpty());
}

TEST_F(Reboot, RefusesStagesInMixedCase) {
  EXPECT_THAT(typed("reboot x"), ElementsAre("invalid state x"));
  EXPECT_THAT(typed("reboot App"), ElementsAre("invalid state App"));
}

TEST_F(Reboot, RefusesAnUnknownDevice) {
  EXPECT_THAT(typed("reboot APP 2"), ElementsAre("invalid device number 2"));
}

TEST_F(Reboot, ReportsABootRegisterThatCannotBeChanged) {
  const Script whole = reboots(0, 0x01800000, 0x01800210);
  expect(opens(0) + whole.failingAt(0, EIO));
  EXPECT_THAT(typed("reboot"), ElementsAre("failed resetting device"));
  expect(whole.failingAt(1, EIO));
  EXPECT_THAT(typed("reboot"), ElementsAre("failed resetting device"));
}

TEST_F(Reboot, IgnoresAResetThatIsNotAnswered) {
  expect(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0x01800000) + writesWord(0, SBR_REG_ADDRESS, 0x01800210) +
         writesWord(0, PLL_MUX_REG_ADDRESS, 0).fails(EIO) +
         writesWord(0, RESET_REG_ADDRESS, RESET_REGISTER_VALUE).fails(EIO));
  EXPECT_THAT(typed("reboot"), IsEmpty());
}

TEST_F(Reboot, ReportsAnAbsentDevice) {
  expect(opens(0).fails(ENOENT));
  EXPECT_THAT(typed("reboot"), ElementsAre("failed resetting device"));
}

// After a restart the configuration of line 0 is read. This chip has none.
Script looksAtConfiguration() {
  return reads(0, VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY, Bytes(12)).fails(EIO);
}

using RestartSystem = TypedConsole;

TEST_F(RestartSystem, RefusesAnUnknownDevice) {
  EXPECT_THAT(typed("restart system T 2"), ElementsAre("invalid device number"));
}

TEST_F(RestartSystem, WaitsForConfigurationFromTheFirstDevice) {
  for (const char* line : {"restart system T", "restart system t"}) {
    // The system is in configuration state already.
    const bool first = line[15] == 'T';
    expect((first ? opens(0) : Script()) + readsWord(0, SBR_REG_ADDRESS, 0x01808000) +
           (first ? looksAtConfiguration() : Script()));
    EXPECT_THAT(typed(line), IsEmpty()) << line;
    verify();
  }
}

TEST_F(RestartSystem, DoesNotWaitAfterAnotherWord) {
  // Both devices are told to leave configuration state, and read until they have left it.
  ChipIdentity inLineState;
  expect(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0x01808000) + opens(1) +
         writesWord(1, VIRT_ADDR_USER_ACTIVATION, 0) + writesWord(0, VIRT_ADDR_USER_ACTIVATION, 0) +
         readsIdentity(0, inLineState) + readsIdentity(1, inLineState) + looksAtConfiguration());
  EXPECT_THAT(typed("restart system yes"), IsEmpty());
}

TEST_F(RestartSystem, ReportsNoFailure) {
  expect(opens(0) + readsWord(0, SBR_REG_ADDRESS, 0).fails(EIO) + looksAtConfiguration());
  EXPECT_THAT(typed("restart system"), IsEmpty());
}

using Rediscover = TypedConsole;

TEST_F(Rediscover, ReadsEveryDeviceThatAnswers) {
  expect(rediscovers() + opens(0) + readsIdentity(0, {}) + opens(1).fails(ENOENT));
  EXPECT_THAT(typed("rediscover"), IsEmpty());
}

TEST_F(Rediscover, TakesNoWords) {
  EXPECT_THAT(typed("rediscover now"), ElementsAre("rediscover"));
}

}  // namespace
