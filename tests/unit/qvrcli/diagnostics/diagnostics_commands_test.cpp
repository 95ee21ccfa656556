// Versions, log levels, inventory, restart state, inter-chip links: given what the chip answers, when this is
// typed, this is printed.
#include <cstdio>
#include <numeric>

#include "chip/inventory.h"
#include "qvrcli/diagnostics/diagnostics_commands.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- Versions and log levels ----

using ShowVersion = TypedConsole;

TEST_F(ShowVersion, NamesTheLibrarysRevisionWhateverWordsFollow) {
  constexpr const char* version = "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $";
  EXPECT_THAT(typed("show version"), ElementsAre(version));
  EXPECT_THAT(typed("show version a b c d e f"), ElementsAre(version));
  EXPECT_THAT(typed("show version a b?"), ElementsAre("show version"));
  EXPECT_EQ(result(), CLI_OK);
}

using LogLevel = TypedConsole;

constexpr const char* kBadLevel = "Invalid log level - must be between 0 and 4";

TEST_F(LogLevel, IsShownAsItIsSet) {
  EXPECT_THAT(typed("show log-level"), ElementsAre("LOG_ERR"));
  const char* const names[] = {"LOG_CRIT", "LOG_ERR", "LOG_WARNING", "LOG_INFO", "LOG_DEBUG"};
  for (int level = 0; level < 5; level++) {
    EXPECT_THAT(typed("set log-level " + std::to_string(level)), IsEmpty());
    EXPECT_THAT(typed("show log-level"), ElementsAre(names[level]));
    EXPECT_EQ(QVR_traceLogLevel(), level);
  }
}

TEST_F(LogLevel, OutOfRangeIsReportedAndSetAllTheSame) {
  EXPECT_THAT(typed("set log-level 9"), ElementsAre(kBadLevel));
  EXPECT_EQ(QVR_traceLogLevel(), 9);
  EXPECT_THAT(typed("show log-level"), ElementsAre("LOG_UNKNOWN"));
  EXPECT_THAT(typed("set log-level -1"), ElementsAre(kBadLevel));
  EXPECT_EQ(QVR_traceLogLevel(), static_cast<QVR_logSeverity_t>(0xFFFFFFFF));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(LogLevel, WithoutANumberStaysAsItIs) {
  typed("set log-level 3");
  EXPECT_THAT(typed("set log-level LOG_DEBUG"), IsEmpty());
  EXPECT_THAT(typed("set log-level \"\""), ElementsAre(kBadLevel));
  EXPECT_THAT(typed("show log-level"), ElementsAre("LOG_INFO"));
}

TEST_F(LogLevel, TakesOneWord) {
  const std::string usage =
      "set log-level <0..4> : 0=LOG_CRIT, 1=LOG_ERR, 2=LOG_WARNING, 3=LOG_INFO, 4=LOG_DEBUG";
  EXPECT_THAT(typed("set log-level"), ElementsAre(usage));
  EXPECT_THAT(typed("set log-level 1 2"), ElementsAre(usage));
  EXPECT_THAT(typed("show log-level 1"), ElementsAre("show log-level"));
}

// ---- Inventory ----

using SetInventory = TypedConsole;

// A record of which every byte differs.
Bytes inventory() {
  Bytes record(INVENTORY_DB_SIZE);
  std::iota(record.begin(), record.end(), uint8_t{0x80});
  return record;
}

Bytes inventoryWith(const Bytes& vendor, const std::string& serialNumber) {
  Bytes record = inventory();
  Bytes serial(serialNumber.begin(), serialNumber.end());
  serial.resize(32);
  std::copy(vendor.begin(), vendor.end(), record.begin() + 12);
  std::copy(serial.begin(), serial.end(), record.begin() + 20);
  return record;
}

Script setsInventory(int device, const Bytes& vendor, const std::string& serialNumber) {
  return reads(device, 0xF1000000, inventory()) +
         writes(device, 0xF1000000, inventoryWith(vendor, serialNumber));
}

const Bytes kNoVendor(8, 0);

TEST_F(SetInventory, WritesVendorAndSerialNumber) {
  expect(opens(1) + setsInventory(1, {1, 2, 3, 4, 5, 6, 0xAB, 0xFF}, "SN1"));
  EXPECT_THAT(typed("set inventory 1 01:02:03:04:05:06:ab:FF SN1"), IsEmpty());
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(SetInventory, CutsALongSerialNumber) {
  const std::string exact = "0123456789abcdef0123456789abcdef";
  expect(opens(0) + setsInventory(0, kNoVendor, exact).times(2));
  EXPECT_THAT(typed("set inventory 0 00 " + exact), IsEmpty());
  EXPECT_THAT(typed("set inventory 0 00 " + exact + "0"), IsEmpty());
}

TEST_F(SetInventory, TakesMissingWordsAsEmpty) {
  expect(opens(0) + setsInventory(0, {0xA0, 0xB0, 0, 0, 0, 0, 0, 0}, ""));
  EXPECT_THAT(typed("set inventory 0 A0:B0"), IsEmpty());
  verify();
  expect(setsInventory(0, kNoVendor, "").times(2));
  EXPECT_THAT(typed("set inventory 0"), IsEmpty());
  EXPECT_THAT(typed("set inventory"), IsEmpty());
}

TEST_F(SetInventory, RefusesFourWordsAndNoOtherNumber) {
  const std::string usage =
      "set inventory <device-id> <vendor-id> <serial-number> : vendor-id (hex string) "
      "XX:XX:XX:XX:XX:XX:XX:XX, serial-number (string)";
  EXPECT_THAT(typed("set inventory 0 01:02:03:04:05:06:07:08 SN1 extra"), ElementsAre(usage));
  EXPECT_THAT(typed("set inventory 0 ?"), ElementsAre(usage));
  expect(opens(0) + setsInventory(0, {1, 0, 0, 0, 0, 0, 0, 0}, "SN1"));
  EXPECT_THAT(typed("set inventory 0 01 SN1 more words"), IsEmpty());
}

TEST_F(SetInventory, SaysWhatIsNoDevice) {
  EXPECT_THAT(typed("set inventory 2 01 SN1"), ElementsAre("invalid device number 2"));
  EXPECT_THAT(typed("set inventory -1"), ElementsAre("invalid device number -1"));
  EXPECT_THAT(typed("set inventory \"\" 01"), ElementsAre("invalid device number "));
}

TEST_F(SetInventory, EachRequestMayFail) {
  const Script whole = setsInventory(0, kNoVendor, "SN1");
  expect(opens(0) + whole.failingAt(0, EIO));
  EXPECT_THAT(typed("set inventory 0 00 SN1"), ElementsAre("Failed setting inventory parameters (12)"));
  expect(whole.failingAt(1, EIO));
  EXPECT_THAT(typed("set inventory 0 00 SN1"), ElementsAre("Failed setting inventory parameters (13)"));
}

TEST_F(SetInventory, AnAbsentDeviceHasNone) {
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("set inventory 1 00 SN1"), ElementsAre("Failed setting inventory parameters (18)"));
}

// ---- Restart state ----

using RestartState = TypedConsole;

TEST_F(RestartState, IsBit16OfTheBootRegister) {
  expect(opens(0) + readsWord(0, 0xE0000238, 0x00010000));
  EXPECT_THAT(typed("show system restart-state"),
              ElementsAre("system requires restart (system parameter changed)"));
  expect(reads(0, 0xE0000238, {0xFF, 0xFF, 0xFE, 0xFF}));
  EXPECT_THAT(typed("show system restart-state"), ElementsAre("system does NOT require restart"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(RestartState, ThatCannotBeReadIsTheLibrarysResult) {
  expect(opens(0) + readsWord(0, 0xE0000238, 0).fails(EIO));
  EXPECT_THAT(typed("show system restart-state"), IsEmpty());
  EXPECT_EQ(result(), 12);
}

TEST_F(RestartState, OfAnAbsentDeviceIsTheLibrarysResult) {
  expect(opens(0).fails(ENOENT));
  EXPECT_THAT(typed("show system restart-state"), IsEmpty());
  EXPECT_EQ(result(), 18);
}

TEST_F(RestartState, TakesNoWord) {
  EXPECT_THAT(typed("show system restart-state 0"), ElementsAre("show system restart-state"));
}

// ---- Inter-chip links ----

using Extcom = TypedConsole;

// What both programs begin with: a command to the first unit of device 0's first block.
Script firstStep(uint32_t command) {
  return writes(0, 0xA00B0140,
                {static_cast<uint8_t>(command >> 24), static_cast<uint8_t>(command >> 16),
                 static_cast<uint8_t>(command >> 8), static_cast<uint8_t>(command)});
}

TEST_F(Extcom, ATestThatDoesNotStartIsReported) {
  expect(opens(0) + firstStep(0x10150000).fails(EIO));
  EXPECT_THAT(typed("start extcom-test"), ElementsAre("Failed starting Extcom Connectivity Test (13)"));
  expect(firstStep(0x10150000).fails(EIO));
  EXPECT_THAT(typed("start extcom-test anything"),
              ElementsAre("Failed starting Extcom Connectivity Test (13)"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Extcom, ResultsThatCannotBeReadAreShownAsNotMeasured) {
  expect(opens(0) + firstStep(0x10170000).fails(EIO));
  Lines expected = {"Failed getting Extcom Connectivity Test (13)", "[device, port, lane] = errors"};
  for (int device = 0; device < 2; device++) {
    for (int port = 0; port < 6; port++) {
      for (int lane = 0; lane < 2; lane++) {
        char line[32];
        std::snprintf(line, sizeof line, "[%02d, %02d, %02d] = -1", device, port, lane);
        expected.emplace_back(line);
      }
    }
  }
  EXPECT_EQ(typed("show extcom-results"), expected);
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Extcom, OfAnAbsentDeviceIsReported) {
  expect(opens(0).fails(ENOENT) + opens(0).fails(ENOENT));
  EXPECT_THAT(typed("start extcom-test"), ElementsAre("Failed starting Extcom Connectivity Test (18)"));
  const Lines lines = typed("show extcom-results 0");
  EXPECT_EQ(lines.size(), 26U);
  EXPECT_EQ(lines.front(), "Failed getting Extcom Connectivity Test (18)");
  EXPECT_EQ(lines.back(), "[01, 05, 01] = -1");
}

TEST_F(Extcom, TakesOneWordAtMost) {
  EXPECT_THAT(typed("start extcom-test 1 2"), ElementsAre("start extcom-text"));
  EXPECT_THAT(typed("show extcom-results 1 2"), ElementsAre("start extcom-text"));
  EXPECT_THAT(typed("show extcom-results ?"), ElementsAre("start extcom-text"));
}

}  // namespace
