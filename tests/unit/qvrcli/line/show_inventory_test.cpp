// Who is at the ends of a line, at the console; what equipment writes cannot leave its field or steer the
// terminal.
#include "support/chip_identity.h"
#include "support/inventory.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;

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

TEST_F(ShowInventory, ShowsVendorIdsWholeAndTextsUpToTheirEnd) {
  const Bytes vendorId{0xB5, 0x00, 'V', 'B', 'R', 'D', 0x00, 0x01};
  Bytes serial = field("12", 32);
  serial[3] = '4';
  expect(readsInventory(0, {.ghsVendor = vendorId, .systemVendor = Bytes(8), .serial = serial}));
  const Lines lines = typed("show inventory");
  EXPECT_EQ(lines[3], "GHS_VENDOR:    ..VBRD..");
  EXPECT_EQ(lines[4], "SYSTEM_VENDOR: ");
  EXPECT_EQ(lines[5], "SERIALNR:      12");
}

TEST_F(ShowInventory, KeepsTheTerminalFromWhatEquipmentWrites) {
  expect(readsInventory(0, {.serial = field("\x1B[2J\r\n\x7F\x9B%s%n\tx", 32)},
                        {.version = field("\x1B]0;1.2.3\n rel", 16)}));
  const Lines lines = typed("show inventory");
  ASSERT_EQ(lines.size(), 14U);
  EXPECT_EQ(lines[5], "SERIALNR:      .[2J....%s%n.x");
  EXPECT_EQ(lines[13], "VERSION:       .]0;1.2.3. rel");
}

TEST_F(ShowInventory, SaysWhichReadFailed) {
  expect(readsInventory(0, {}).fails(EIO));
  EXPECT_THAT(typed("show inventory"), ElementsAre("QVR_getInventory failed (12)"));
  expect(readsInventory(1, {}) + asksInventory(1).fails(ETIMEDOUT));
  EXPECT_THAT(typed("show inventory 1"), ElementsAre("QVR_getInventory failed (32)"));
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show inventory 1"), ElementsAre("QVR_getInventory failed (17)"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowInventory, SaysWhatIsNoLine) {
  for (const std::string line : {"2", "-1"}) {
    EXPECT_THAT(typed("show inventory " + line),
                ElementsAre("invalid parameter - line number must be between 0..1"));
  }
  const auto usage = ElementsAre("show inventory [<line-id>] : { 0 }");
  EXPECT_THAT(typed("show inventory ?"), usage);
  EXPECT_THAT(typed("show inventory 0 1"), usage);
}

}  // namespace
