// The inventory of both ends of a line, read at either side.
#include <atomic>
#include <cstring>
#include <thread>

#include "chip/inventory_records.h"
#include "qvrline/eoc.h"
#include "support/assertions.h"
#include "support/devices.h"
#include "support/inventory.h"
#include "support/lines.h"

using namespace gfast;

namespace {

template <size_t Size>
std::string bytesOf(const char (&field)[Size]) {
  return {field, Size};
}

// A field of this size with the text, and zeros behind it.
std::string padded(const std::string& text, size_t size) {
  std::string bytes = text;
  bytes.resize(size);
  return bytes;
}

const std::string kFarEndSerial = "0123456789abcdef0123456789ABCDEF";  // fills its field

void expectLocal(const QVR_inventoryParameters_t& end) {
  EXPECT_EQ(bytesOf(end.GHS_VENDOR), "GHSLOCAL");
  EXPECT_EQ(bytesOf(end.SYSTEM_VENDOR), "SYSLOCAL");
  EXPECT_EQ(bytesOf(end.VERSION), padded("1.9.4.106", 16));
  EXPECT_EQ(bytesOf(end.SERIALNR), padded("local serial", 32));
}

class Inventory : public testing::Test {
 protected:
  void SetUp() override {
    enterBothLines();
    startDevice(driver_, 0, LS_SHOWTIME);
    startDevice(driver_, 1, LS_SHOWTIME);
    std::memset(&inventory_, 0x55, sizeof inventory_);
    std::memset(&farEnd_, 0x55, sizeof farEnd_);
  }

  ExpectedRequests driver_{Script()};
  QVR_inventoryObject_t inventory_;
  QVR_inventoryParameters_t farEnd_;
};

using FarEndInventoryRequest = Inventory;
using InventoryWriting = Inventory;

TEST_F(Inventory, ReadsBothEndsFromTheDeviceAtTheNetworkSide) {
  driver_.expect(readsInventory(0, {}));
  EXPECT_EQ(QVR_getInventory(0, &inventory_), QVR_E_STATUS_OK);
  expectLocal(inventory_.FTU_O);
  EXPECT_EQ(bytesOf(inventory_.FTU_R.GHS_VENDOR), "GHSOTHER");
  EXPECT_EQ(bytesOf(inventory_.FTU_R.SYSTEM_VENDOR), "SYSOTHER");
  EXPECT_EQ(bytesOf(inventory_.FTU_R.VERSION), padded("7.1.4 rel", 16));
  EXPECT_EQ(bytesOf(inventory_.FTU_R.SERIALNR), kFarEndSerial);
}

TEST_F(Inventory, IsReadAtTheLinesIndexOnItsDevice) {
  addLine(0, 1, 2, TRUE);
  driver_.expect(reads(1, 0xF1200000, Bytes(NE_AND_FE_INVENTORY_SIZE)).fails(EIO));
  EXPECT_EQ(QVR_getInventory(0, &inventory_), QVR_E_MEMREAD_ERROR);
}

TEST_F(Inventory, AsksTheFarEndAtTheSubscriberSide) {
  driver_.expect(readsInventory(1, {}, {.vendor = field("stale", 8)}) + asksInventory(1));
  EXPECT_EQ(QVR_getInventory(1, &inventory_), QVR_E_STATUS_OK);
  expectLocal(inventory_.FTU_R);
  EXPECT_EQ(bytesOf(inventory_.FTU_O.GHS_VENDOR), "GHSLOCAL");
  EXPECT_EQ(bytesOf(inventory_.FTU_O.SYSTEM_VENDOR), "SYSOTHER");
  EXPECT_EQ(bytesOf(inventory_.FTU_O.VERSION), padded("7.1.4 rel", 16));  // unchanged
  EXPECT_EQ(bytesOf(inventory_.FTU_O.SERIALNR), kFarEndSerial);
}

TEST_F(Inventory, FormatsTheLongestAndTheShortestLocalVersion) {
  driver_.expect(readsInventory(0, {.version = {255, 255, 255, 255}}));
  EXPECT_EQ(QVR_getInventory(0, &inventory_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytesOf(inventory_.FTU_O.VERSION), padded("255.255.255.255", 16));
  driver_.expect(readsInventory(0, {.version = {0, 0, 0, 0}}));
  EXPECT_EQ(QVR_getInventory(0, &inventory_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytesOf(inventory_.FTU_O.VERSION), padded("0.0.0.0", 16));
}

TEST_F(Inventory, KeepsTheRecordWhenTheReadFails) {
  for (const int line : {0, 1}) {
    driver_.expect(readsInventory(line, {}).fails(EIO));
    EXPECT_EQ(QVR_getInventory(line, &inventory_), QVR_E_MEMREAD_ERROR);
    for (size_t i = 0; i < sizeof inventory_; i++) {
      ASSERT_EQ(reinterpret_cast<const char*>(&inventory_)[i], 0x55) << i;
    }
  }
}

TEST_F(Inventory, KeepsTheLocalEndWhenTheFarEndDoesNotAnswer) {
  driver_.expect(readsInventory(1, {}) + asksInventory(1).fails(ETIMEDOUT));
  EXPECT_EQ(QVR_getInventory(1, &inventory_), QVR_E_FAILED_SENDING_FAR_END_MSG);
  expectLocal(inventory_.FTU_R);
  EXPECT_EQ(bytesOf(inventory_.FTU_O.GHS_VENDOR), std::string(8, 0x55));
  EXPECT_EQ(bytesOf(inventory_.FTU_O.VERSION), std::string(16, 0x55));
}

TEST_F(Inventory, RefusesLinesWithoutADeviceAndInvalidLines) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_EQ(QVR_getInventory(1, &inventory_), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getInventoryFarEnd(1, &farEnd_), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_ASSERTION(QVR_getInventory(2, &inventory_),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  EXPECT_ASSERTION(QVR_getInventoryFarEnd(-1, &farEnd_),
                   asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
}

TEST_F(FarEndInventoryRequest, AddsAFourthVersionNumberAtTheNetworkSide) {
  driver_.expect(asksInventory(0));
  EXPECT_EQ(QVR_getInventoryFarEnd(0, &farEnd_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytesOf(farEnd_.GHS_VENDOR), std::string(8, '\0'));
  EXPECT_EQ(bytesOf(farEnd_.SYSTEM_VENDOR), "SYSOTHER");
  EXPECT_EQ(bytesOf(farEnd_.VERSION), padded("7.1.4.0 rel", 16));
  EXPECT_EQ(bytesOf(farEnd_.SERIALNR), kFarEndSerial);
}

TEST_F(FarEndInventoryRequest, CopiesTheVersionAtTheSubscriberSide) {
  driver_.expect(asksInventory(1));
  EXPECT_EQ(QVR_getInventoryFarEnd(1, &farEnd_), QVR_E_STATUS_OK);
  EXPECT_EQ(bytesOf(farEnd_.VERSION), padded("7.1.4 rel", 16));
}

TEST_F(FarEndInventoryRequest, KeepsTheRecordWithoutACompleteAnswer) {
  Bytes tooShort = FarEndInventory{}.bytes();
  tooShort.pop_back();
  const Script failures[] = {
      asksInventory(0).fails(ETIMEDOUT, 56),
      sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_INVENTORY, {}, 56, {}),
      sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_INVENTORY, {}, 56, tooShort),
  };
  for (const Script& failure : failures) {
    driver_.expect(failure);
    EXPECT_EQ(QVR_getInventoryFarEnd(0, &farEnd_), QVR_E_FAILED_SENDING_FAR_END_MSG);
    for (size_t i = 0; i < sizeof farEnd_; i++) {
      ASSERT_EQ(reinterpret_cast<const char*>(&farEnd_)[i], 0x55) << i;
    }
  }
}

TEST_F(FarEndInventoryRequest, FailsWithoutARequestOnALineThatIsDown) {
  driver_.expect(readsIdentity(0, chipWithLine(LS_IDLE)));
  ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_getInventoryFarEnd(0, &farEnd_), QVR_E_FAILED_SENDING_FAR_END_MSG);
}

TEST_F(FarEndInventoryRequest, WaitsUntilTheLineIsReleased) {
  QVR_EOC_CaptureLine(0);
  std::atomic<bool> answered = false;
  std::thread asking([&] {
    EXPECT_EQ(QVR_getInventoryFarEnd(0, &farEnd_), QVR_E_STATUS_OK);
    answered = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(answered);  // no request is expected yet either
  driver_.expect(asksInventory(0));
  QVR_EOC_ReleaseLine(0);
  asking.join();
}

TEST_F(InventoryWriting, ReplacesOnlyVendorAndSerialNumber) {
  QVR_inventoryParameters_t wanted;
  std::memset(&wanted, 'x', sizeof wanted);
  std::memcpy(wanted.SYSTEM_VENDOR, "\xB5\0NEWV\0\1", 8);
  std::memcpy(wanted.SERIALNR, padded("new serial", 32).data(), 32);
  LocalInventory after;
  after.systemVendor = {0xB5, 0, 'N', 'E', 'W', 'V', 0, 1};
  after.serial = field("new serial", 32);
  driver_.expect(reads(1, 0xF1000000, LocalInventory{}.bytes()) + writes(1, 0xF1000000, after.bytes()));
  EXPECT_EQ(QVR_setInventoryParams(1, &wanted), QVR_E_STATUS_OK);
}

TEST_F(InventoryWriting, FailsWhenTheAreaCannotBeReadOrWritten) {
  const QVR_inventoryParameters_t wanted{};
  driver_.expect(reads(0, 0xF1000000, Bytes(60)).fails(EIO));
  EXPECT_EQ(QVR_setInventoryParams(0, &wanted), QVR_E_MEMREAD_ERROR);
  LocalInventory after;
  after.systemVendor = Bytes(8);
  after.serial = Bytes(32);
  driver_.expect(reads(0, 0xF1000000, LocalInventory{}.bytes()) +
                 writes(0, 0xF1000000, after.bytes()).fails(EIO));
  EXPECT_EQ(QVR_setInventoryParams(0, &wanted), QVR_E_MEMWRITE_ERROR);
}

TEST_F(InventoryWriting, FailsWhenTheDeviceCannotBeOpened) {
  const QVR_inventoryParameters_t wanted{};
  driver_.expect(closes(0) + closes(1) + rediscovers() + opens(0).fails(ENOENT) + opens(1).fails(ENOENT));
  QVR_rediscoverDevices();
  driver_.verify();
  driver_.expect(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_setInventoryParams(0, &wanted), QVR_E_DEVICE_NOT_EXISTS);
}

}  // namespace
