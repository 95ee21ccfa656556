// The inventory of a chip: its own record, which the host can change in part, and that of the other end.
#include <gfast_api.h>
#include <gtest/gtest.h>

#include "chip/inventory_records.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kArea = VIRT_BASE_ADDR_INVENTORY_PER_LINE_PARAMS(0);
constexpr uint32_t kHeard = kArea + INVENTORY_DB_SIZE;
constexpr uint16_t kInventory = MGMT_FAR_END_REQ_TYPE_INVENTORY;

std::string textAt(Bench& bench, int device, uint32_t address, uint16_t length) {
  const auto bytes = fromHex(bench.read(device, address, length));
  return {bytes.begin(), std::find(bytes.begin(), bytes.end(), 0)};
}

// What a host does to set vendor and serial number: it reads the record, changes it and writes it back.
void setInventory(Bench& bench, int device, const std::string& vendor, const std::string& serial) {
  auto record = fromHex(bench.read(device, kArea, INVENTORY_DB_SIZE));
  std::fill_n(record.begin() + INVENTORY_DB_SYSTEM_VENDOR, 40, uint8_t{0});
  std::copy(vendor.begin(), vendor.end(), record.begin() + INVENTORY_DB_SYSTEM_VENDOR);
  std::copy(serial.begin(), serial.end(), record.begin() + INVENTORY_DB_SYSTEM_SERIAL);
  EXPECT_EQ(bench.write(device, kArea, hex(record.data(), record.size())), "ok");
}

}  // namespace

TEST(Inventory, HasOnlyTheOwnRecordBeforeTheFirstShowtime) {
  Bench bench;
  EXPECT_EQ(bench.read(0, kArea, 12), "b5 00 56 42 52 44 00 01 6a 04 09 01");
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "VBOARD");
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_SERIAL, 32), "VB02005E000001");
  EXPECT_EQ(bench.read(0, kArea + INVENTORY_DB_FTU_VENDOR, 8 + INVENTORY_RESPONSE_SIZE), zeros(64));
}

TEST(Inventory, HasTheOtherEndsRecordInShowtime) {
  Bench trained;
  trained.wait(kTrainingTime_s);
  Bench fromPowerUp(kShowtime);
  for (Bench* bench : {&trained, &fromPowerUp}) {
    for (const int device : {0, 1}) {
      EXPECT_EQ(bench->read(device, kHeard, INVENTORY_RESPONSE_SIZE), bench->farEnd(device, kInventory));
      const char* const vendors[] = {"b5 00 56 42 52 44 00 01", "b5 00 56 48 4f 4d 00 02"};
      EXPECT_EQ(bench->read(device, kArea + INVENTORY_DB_FTU_GHS_VENDOR, 8), vendors[device]);
      EXPECT_EQ(bench->read(device, kArea + INVENTORY_DB_FTU_VENDOR, 8), vendors[1 - device]);
    }
    EXPECT_EQ(textAt(*bench, 0, kHeard + INVENTORY_RESPONSE_VERSION_NUMBER, 16), "9.4.106 v2");
    EXPECT_EQ(textAt(*bench, 0, kHeard + INVENTORY_RESPONSE_SERIAL_NUMBER, 32), "VB02005E000002");
  }
}

TEST(Inventory, ABoardFileSetsVendorAndSerialNumber) {
  Bench bench(
      "[[device]]\nline = \"showtime\"\nvendor = \"ABCDEFGH\"\n"
      "serial = \"12345678901234567890123456789012\"\n[[device]]\nserial = \"\"");
  EXPECT_EQ(bench.read(0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "41 42 43 44 45 46 47 48");
  EXPECT_EQ(textAt(bench, 1, kHeard + INVENTORY_RESPONSE_VENDOR_ID, 8), "ABCDEFGH");
  EXPECT_EQ(textAt(bench, 1, kHeard + INVENTORY_RESPONSE_SERIAL_NUMBER, 32),
            "12345678901234567890123456789012");
  EXPECT_EQ(textAt(bench, 1, kArea + INVENTORY_DB_SYSTEM_SERIAL, 32), "");
}

TEST(Inventory, TheOtherEndSeesWhatTheHostSets) {
  Bench bench(kShowtime);
  setInventory(bench, 1, "ACME", "S/N 4711");
  // A message shows it at once, the area after the next start of showtime.
  EXPECT_EQ(bench.farEnd(0, kInventory).substr(0, 8 * 3 - 1), "41 43 4d 45 00 00 00 00");
  EXPECT_EQ(textAt(bench, 0, kHeard, 8), "VBHOME");
  bench.board.cutLoop(true);
  bench.wait(5);
  bench.board.cutLoop(false);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(textAt(bench, 0, kHeard, 8), "ACME");
  EXPECT_EQ(textAt(bench, 0, kHeard + INVENTORY_RESPONSE_SERIAL_NUMBER, 32), "S/N 4711");
}

TEST(Inventory, TheHostCanSetOnlyVendorAndSerialNumber) {
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

TEST(Inventory, SurvivesResetsAndALossOfPower) {
  Bench bench(
      "[[device]]\nline = \"showtime\"\n"
      "[[device_event]]\ndevice = 0\nat_s = 20\nkind = \"power_off\"\nfor_s = 1");
  setInventory(bench, 0, "ACME", "1");
  bench.rebootToApp(0);
  bench.wait(1.5);
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "ACME");
  EXPECT_EQ(textAt(bench, 0, kHeard, 8), "VBHOME");
  bench.wait(21);  // the power is back, the line not trained yet
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "ACME");
  EXPECT_EQ(bench.read(0, kHeard, INVENTORY_RESPONSE_SIZE), zeros(INVENTORY_RESPONSE_SIZE));
}

TEST(Inventory, OnlyTheApplicationHasIt) {
  Bench bench("[[device]]\nboot = \"b1\"");
  EXPECT_EQ(bench.read(0, kArea, NE_AND_FE_INVENTORY_SIZE), zeros(NE_AND_FE_INVENTORY_SIZE));
  EXPECT_EQ(bench.write(0, kArea + INVENTORY_DB_SYSTEM_VENDOR, "41 42 43 44 45 46 47 48"), "ok");
  bench.rebootToApp(0);
  bench.wait(1.5);
  EXPECT_EQ(textAt(bench, 0, kArea + INVENTORY_DB_SYSTEM_VENDOR, 8), "VBOARD");
}

TEST(Inventory, KeepsAnAnswerOfAnyLengthFromTheFarEnd) {
  Bench brief(withShowtime("[[farend]]\nline = 0\nrequest = 1\nresponse = \"41 42\""));
  EXPECT_EQ(brief.read(0, kHeard, INVENTORY_RESPONSE_SIZE), "41 42 " + zeros(54));
  std::string tooMuch;
  for (int i = 0; i < 80; i++) {
    tooMuch += "43 ";
  }
  Bench lengthy(withShowtime("[[farend]]\nline = 0\nrequest = 1\nresponse = \"" + tooMuch + '"'));
  EXPECT_EQ(lengthy.read(0, kHeard, INVENTORY_RESPONSE_SIZE), tooMuch.substr(0, 56 * 3 - 1));
  Bench silent(withShowtime("[[farend]]\nline = 0\nrequest = 1\nerrno = \"EIO\""));
  EXPECT_EQ(silent.read(0, kHeard, INVENTORY_RESPONSE_SIZE), zeros(56));
}
