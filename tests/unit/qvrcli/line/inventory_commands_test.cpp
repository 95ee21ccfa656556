// The inventory of the ends of a line at the console: given these records, this is printed; when this is
// typed, this is written.
#include <algorithm>
#include <numeric>

#include "chip/inventory_records.h"
#include "support/chip_identity.h"
#include "support/inventory.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ShowInventory : public TypedConsole {
 protected:
  ShowInventory() { enterBothLines(); }

  void SetUp() override {
    for (const int device : {0, 1}) {
      expect(opens(device) + readsIdentity(device, chipWithLine(LS_SHOWTIME)));
      QVR_getDeviceInfo(device, nullptr);
    }
    verify();
  }
};

TEST_F(ShowInventory, ShowsBothEndsFromTheNetworkSide) {
  for (const std::string words : {"", " 0"}) {
    expect(readsInventory(0, {}));
    EXPECT_THAT(typed("show inventory" + words),
                ElementsAre("", "FTU-O:", "", "GHS_VENDOR:    GHSLOCAL", "SYSTEM_VENDOR: SYSLOCAL",
                            "SERIALNR:      local serial", "VERSION:       1.9.4.106", "", "FTU-R:", "",
                            "GHS_VENDOR:    GHSOTHER", "SYSTEM_VENDOR: SYSOTHER",
                            "SERIALNR:      0123456789abcdef0123456789ABCDEF", "VERSION:       7.1.4 rel"));
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowInventory, ShowsBothEndsFromTheSubscriberSide) {
  expect(readsInventory(1, {}) + asksInventory(1, {.version = field("0123456789abcdef", 16)}));
  EXPECT_THAT(
      typed("show inventory 1"),
      ElementsAre("", "FTU-O:", "", "GHS_VENDOR:    GHSLOCAL", "SYSTEM_VENDOR: SYSOTHER",
                  "SERIALNR:      0123456789abcdef0123456789ABCDEF", "VERSION:       0123456789abcdef", "",
                  "FTU-R:", "", "GHS_VENDOR:    GHSLOCAL", "SYSTEM_VENDOR: SYSLOCAL",
                  "SERIALNR:      local serial", "VERSION:       1.9.4.106"));
}

TEST_F(ShowInventory, ShowsVendorIdsWholeAndTextsUpToTheirTerminator) {
  const Bytes vendorId{0xB5, 0x00, 'V', 'B', 'R', 'D', 0x00, 0x01};
  Bytes serial = field("12", 32);
  serial[3] = '4';
  expect(readsInventory(0, {.ghsVendor = vendorId, .systemVendor = Bytes(8), .serial = serial}));
  const Lines lines = typed("show inventory");
  EXPECT_EQ(lines[3], "GHS_VENDOR:    ..VBRD..");
  EXPECT_EQ(lines[4], "SYSTEM_VENDOR: ");
  EXPECT_EQ(lines[5], "SERIALNR:      12");
}

TEST_F(ShowInventory, ReplacesControlCharacters) {
  expect(readsInventory(0, {.serial = field("\x1B[2J\r\n\x7F\x9B%s%n\tx", 32)},
                        {.version = field("\x1B]0;1.2.3\n rel", 16)}));
  const Lines lines = typed("show inventory");
  ASSERT_EQ(lines.size(), 14U);
  EXPECT_EQ(lines[5], "SERIALNR:      .[2J....%s%n.x");
  EXPECT_EQ(lines[13], "VERSION:       .]0;1.2.3. rel");
}

TEST_F(ShowInventory, ReportsTheResultOfAFailedRead) {
  expect(readsInventory(0, {}).fails(EIO));
  EXPECT_THAT(typed("show inventory"), ElementsAre("QVR_getInventory failed (12)"));
  expect(readsInventory(1, {}) + asksInventory(1).fails(ETIMEDOUT));
  EXPECT_THAT(typed("show inventory 1"), ElementsAre("QVR_getInventory failed (32)"));
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show inventory 1"), ElementsAre("QVR_getInventory failed (17)"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowInventory, RefusesAnUnknownLine) {
  for (const std::string line : {"2", "-1"}) {
    EXPECT_THAT(typed("show inventory " + line),
                ElementsAre("invalid parameter - line number must be between 0..1"));
  }
  const auto usage = ElementsAre("show inventory [<line-id>] : { 0 }");
  EXPECT_THAT(typed("show inventory ?"), usage);
  EXPECT_THAT(typed("show inventory 0 1"), usage);
}

using SetInventory = TypedConsole;

// A record in which no two bytes are equal.
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

TEST_F(SetInventory, RefusesFourWordsOnly) {
  const std::string usage =
      "set inventory <device-id> <vendor-id> <serial-number> : vendor-id (hex string) "
      "XX:XX:XX:XX:XX:XX:XX:XX, serial-number (string)";
  EXPECT_THAT(typed("set inventory 0 01:02:03:04:05:06:07:08 SN1 extra"), ElementsAre(usage));
  EXPECT_THAT(typed("set inventory 0 ?"), ElementsAre(usage));
  expect(opens(0) + setsInventory(0, {1, 0, 0, 0, 0, 0, 0, 0}, "SN1"));
  EXPECT_THAT(typed("set inventory 0 01 SN1 more words"), IsEmpty());
}

TEST_F(SetInventory, RefusesAnUnknownDevice) {
  EXPECT_THAT(typed("set inventory 2 01 SN1"), ElementsAre("invalid device number 2"));
  EXPECT_THAT(typed("set inventory -1"), ElementsAre("invalid device number -1"));
  EXPECT_THAT(typed("set inventory \"\" 01"), ElementsAre("invalid device number "));
}

TEST_F(SetInventory, ReportsAFailureOfEachRequest) {
  const Script whole = setsInventory(0, kNoVendor, "SN1");
  expect(opens(0) + whole.failingAt(0, EIO));
  EXPECT_THAT(typed("set inventory 0 00 SN1"), ElementsAre("Failed setting inventory parameters (12)"));
  expect(whole.failingAt(1, EIO));
  EXPECT_THAT(typed("set inventory 0 00 SN1"), ElementsAre("Failed setting inventory parameters (13)"));
}

TEST_F(SetInventory, ReportsAnAbsentDevice) {
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("set inventory 1 00 SN1"), ElementsAre("Failed setting inventory parameters (18)"));
}

}  // namespace
