// Who the chips say they are, what the host may say about it, and what each end learns of the other.
#include <gfast_api.h>
#include <gtest/gtest.h>

#include "chip/device_information.h"
#include "chip/inventory.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kArea = VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(0);
constexpr uint32_t kHeard = kArea + INVENTORY_DB_SIZE;
constexpr const char* kShowtime = "[[device]]\nline = \"showtime\"\n";
constexpr uint16_t kInventory = MGMT_FAR_END_REQ_TYPE_INVENTORY;

std::string textAt(Bench& bench, int device, uint32_t address, uint16_t length) {
  const auto bytes = fromHex(bench.read(device, address, length));
  return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}

std::string mistake(const std::string& toml) {
  try {
    parseBoard(toml, "b");
    return "none";
  } catch (const BoardFileError& error) {
    return error.what();
  }
}

std::string zeros(size_t bytes) {
  std::string text;
  for (size_t i = 0; i < bytes; i++) {
    text += i == 0 ? "00" : " 00";
  }
  return text;
}

// As the host sets vendor and serial number: the record read, changed and written back.
void setInventory(Bench& bench, int device, const std::string& vendor, const std::string& serial) {
  auto record = fromHex(bench.read(device, kArea, INVENTORY_DB_SIZE));
  std::fill_n(record.begin() + INVENTORY_DB_SYSTEM_VENDOR, 40, uint8_t{0});
  std::copy(vendor.begin(), vendor.end(), record.begin() + INVENTORY_DB_SYSTEM_VENDOR);
  std::copy(serial.begin(), serial.end(), record.begin() + INVENTORY_DB_SYSTEM_SERIAL);
  EXPECT_EQ(bench.write(device, kArea, hex(record.data(), record.size())), "ok");
}

}  // namespace

TEST(Inventory, BeforeAShowtimeAChipKnowsOnlyItself) {
  Bench bench;
  EXPECT_EQ(bench.read(0, kArea, 12), "b5 00 56 42 52 44 00 01 6a 04 09 01");
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "VBOARD");
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_SERIAL, 32), "VB02005E000001");
  EXPECT_EQ(bench.read(0, kArea + INVENTORY_DB_FTU_VENDOR, 8 + INVENTORY_RESPONSE_SIZE), zeros(64));
}

TEST(Inventory, InShowtimeEachEndKnowsTheOther) {
  Bench trained;
  trained.wait(kTrainingTime_s);
  Bench fromPowerUp(kShowtime);
  for (Bench* bench : {&trained, &fromPowerUp}) {
    for (const int device : {0, 1}) {
      EXPECT_EQ(bench->read(device, kHeard, INVENTORY_RESPONSE_SIZE), bench->farEnd(device, kInventory));
      EXPECT_EQ(bench->read(device, kArea + INVENTORY_DB_FTU_VENDOR, 8), "b5 00 56 42 52 44 00 01");
    }
    EXPECT_EQ(textAt(*bench, 0, kHeard + INVENTORY_RESPONSE_VERSION_NUMBER, 16), "9.4.106 v2");
    EXPECT_EQ(textAt(*bench, 0, kHeard + INVENTORY_RESPONSE_SERIAL_NUMBER, 32), "VB02005E000002");
  }
}

TEST(Inventory, ABoardFileNamesVendorAndSerialNumber) {
  Bench bench(
      "[[device]]\nline = \"showtime\"\nvendor = \"ABCDEFGH\"\n"
      "serial = \"12345678901234567890123456789012\"\n[[device]]\nserial = \"\"");
  EXPECT_EQ(bench.read(0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "41 42 43 44 45 46 47 48");
  EXPECT_EQ(textAt(bench, 1, kHeard + INVENTORY_RESPONSE_VENDOR_ID, 8), "ABCDEFGH");
  EXPECT_EQ(textAt(bench, 1, kHeard + INVENTORY_RESPONSE_SERIAL_NUMBER, 32),
            "12345678901234567890123456789012");
  EXPECT_EQ(textAt(bench, 1, kArea + INVENTORY_DB_SYSTEM_SERIAL, 32), "");
}

TEST(Inventory, WhatTheHostSetsIsSeenAtTheOtherEnd) {
  Bench bench(kShowtime);
  setInventory(bench, 1, "ACME", "S/N 4711");
  // At once by a question, with the next showtime in the area.
  EXPECT_EQ(bench.farEnd(0, kInventory).substr(0, 8 * 3 - 1), "41 43 4d 45 00 00 00 00");
  EXPECT_EQ(textAt(bench, 0, kHeard, 8), "VBOARD");
  bench.board.cutLoop(true);
  bench.wait(5);
  bench.board.cutLoop(false);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(textAt(bench, 0, kHeard, 8), "ACME");
  EXPECT_EQ(textAt(bench, 0, kHeard + INVENTORY_RESPONSE_SERIAL_NUMBER, 32), "S/N 4711");
}

TEST(Inventory, OnlyVendorAndSerialNumberAreTheHosts) {
  Bench bench(kShowtime);
  const std::string before = bench.read(0, kArea, NE_AND_FE_INVENTORY_SIZE);
  std::string ones;
  for (uint32_t i = 0; i < NE_AND_FE_INVENTORY_SIZE; i++) {
    ones += i == 0 ? "2e" : " 2e";
  }
  EXPECT_EQ(bench.write(0, kArea, ones), "ok");
  const std::string after = bench.read(0, kArea, NE_AND_FE_INVENTORY_SIZE);
  EXPECT_EQ(after.substr(0, 36), before.substr(0, 36));
  EXPECT_EQ(after.substr(36, 120), ones.substr(36, 120));
  EXPECT_EQ(after.substr(156), before.substr(156));
}

TEST(Inventory, OutlivesResetsAndTheLossOfPower) {
  Bench bench(
      "[[device]]\nline = \"showtime\"\n"
      "[[device_event]]\ndevice = 0\nat_s = 20\nkind = \"power_off\"\nfor_s = 1");
  setInventory(bench, 0, "ACME", "1");
  bench.rebootToApp(0);
  bench.wait(1.5);
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "ACME");
  EXPECT_EQ(textAt(bench, 0, kHeard, 8), "VBOARD");
  bench.wait(21);  // powered again, and not trained yet
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "ACME");
  EXPECT_EQ(bench.read(0, kHeard, INVENTORY_RESPONSE_SIZE), zeros(INVENTORY_RESPONSE_SIZE));
}

TEST(Inventory, IsTheApplicationsToKnow) {
  Bench bench("[[device]]\nboot = \"b1\"");
  EXPECT_EQ(bench.read(0, kArea, NE_AND_FE_INVENTORY_SIZE), zeros(NE_AND_FE_INVENTORY_SIZE));
  EXPECT_EQ(bench.write(0, kArea + INVENTORY_DB_SYSTEM_VENDOR, "41 42 43 44 45 46 47 48"), "ok");
  bench.rebootToApp(0);
  bench.wait(1.5);
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "VBOARD");
}

TEST(Inventory, AFarEndThatAnswersOtherwiseIsTakenAtItsWord) {
  Bench brief((std::string(kShowtime) + "[[farend]]\nline = 0\nrequest = 1\nresponse = \"41 42\"").c_str());
  EXPECT_EQ(brief.read(0, kHeard, INVENTORY_RESPONSE_SIZE), "41 42 " + zeros(54));
  std::string tooMuch;
  for (int i = 0; i < 80; i++) {
    tooMuch += "43 ";
  }
  Bench lengthy(
      (std::string(kShowtime) + "[[farend]]\nline = 0\nrequest = 1\nresponse = \"" + tooMuch + '"').c_str());
  EXPECT_EQ(lengthy.read(0, kHeard, INVENTORY_RESPONSE_SIZE), tooMuch.substr(0, 56 * 3 - 1));
  Bench silent((std::string(kShowtime) + "[[farend]]\nline = 0\nrequest = 1\nerrno = \"EIO\"").c_str());
  EXPECT_EQ(silent.read(0, kHeard, INVENTORY_RESPONSE_SIZE), zeros(56));
}

TEST(Inventory, TextsThatDoNotFitAreMistakes) {
  EXPECT_EQ(mistake("[[device]]\nvendor = \"ABCDEFGHI\""), "b:2: \"vendor\" must be at most 8 bytes");
  EXPECT_EQ(mistake("[[device]]\nserial = \"123456789012345678901234567890123\""),
            "b:2: \"serial\" must be at most 32 bytes");
  EXPECT_EQ(mistake("[[device]]\nserial = 1"), "b:2: \"serial\" must be a text in quotes");
}

namespace {

// The last signals, downstream then upstream.
std::string lastSignals(Bench& bench, int device) {
  const auto bytes = fromHex(bench.read(device, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_LAST_SIGNAL, 4));
  return std::to_string(bytes[0]) + ' ' + std::to_string(bytes[2]);
}

}  // namespace

TEST(LastSignals, OfALineThatIsUp) {
  Bench bench;
  EXPECT_EQ(lastSignals(bench, 0), "0 0");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(lastSignals(bench, 0), "4 4");
  EXPECT_EQ(lastSignals(bench, 1), "4 4");
  bench.rebootToApp(0);
  bench.wait(1.3);
  EXPECT_EQ(lastSignals(bench, 0), "0 0");
  EXPECT_EQ(lastSignals(bench, 1), "4 4");
}

TEST(LastSignals, OfAnEndThatFoundNobody) {
  Bench bench("[loop]\ncut = true");
  bench.wait(6);
  EXPECT_EQ(lastSignals(bench, 0), "0 0");  // it waits to be spoken to
  EXPECT_EQ(lastSignals(bench, 1), "0 1");  // it speaks first
}

TEST(LastSignals, OfAnInitialisationThatWasInterrupted) {
  const struct {
    double at_s;
    const char* signals;
  } cases[] = {{1.5, "1 1"}, {2.5, "2 2"}, {4.0, "3 3"}};
  for (const auto& each : cases) {
    Bench bench;
    bench.wait(each.at_s);
    bench.board.cutLoop(true);
    EXPECT_EQ(lastSignals(bench, 0), each.signals) << each.at_s;
    EXPECT_EQ(lastSignals(bench, 1), each.signals) << each.at_s;
  }
}

TEST(LastSignals, OfALoopThatIsTooLong) {
  Bench bench("[loop]\nlength_m = 600");
  bench.wait(5);
  EXPECT_EQ(lastSignals(bench, 0), "3 3");
  EXPECT_EQ(lastSignals(bench, 1), "3 3");
}
