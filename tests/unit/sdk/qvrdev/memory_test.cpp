// Chip memory, which is read and written in pieces.
#include <numeric>

#include "support/assertions.h"
#include "support/devices.h"

using namespace gfast;

namespace {

constexpr uint32_t kAddress = 0xE1000000;

Bytes pattern(size_t length, uint8_t first) {
  Bytes bytes(length);
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

TEST(ReadMemory, OpensTheDeviceOnFirstUseOnly) {
  ExpectedRequests driver(opens(0) + reads(0, kAddress, {1, 2}) + reads(0, kAddress, {3, 4}));
  uint8_t bytes[2];
  EXPECT_EQ(QVR_readmem(0, kAddress, bytes, 2), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_readmem(0, kAddress, bytes, 2), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes[0], 3);
  EXPECT_EQ(bytes[1], 4);
}

TEST(ReadMemory, Reads2000BytesInThreeRequests) {
  const Bytes a = pattern(900, 1);
  const Bytes b = pattern(900, 2);
  const Bytes c = pattern(200, 3);
  ExpectedRequests driver(opens(1) + reads(1, kAddress, a) + reads(1, kAddress + 900, b) +
                          reads(1, kAddress + 1800, c));
  Bytes bytes(2000);
  EXPECT_EQ(QVR_readmem(1, kAddress, bytes.data(), 2000), QVR_E_STATUS_OK);
  EXPECT_EQ(bytes, a + b + c);
}

TEST(ReadMemory, Reads1800BytesInTwoRequests) {
  ExpectedRequests driver(opens(0) + reads(0, kAddress, pattern(900, 1)) +
                          reads(0, kAddress + 900, pattern(900, 2)));
  Bytes bytes(1800);
  EXPECT_EQ(QVR_readmem(0, kAddress, bytes.data(), 1800), QVR_E_STATUS_OK);
}

TEST(ReadMemory, Reads902BytesAs900And2) {
  ExpectedRequests driver(opens(0) + reads(0, kAddress, pattern(900, 1)) + reads(0, kAddress + 900, {8, 9}));
  Bytes bytes(902);
  EXPECT_EQ(QVR_readmem(0, kAddress, bytes.data(), 902), QVR_E_STATUS_OK);
}

TEST(ReadMemory, ReadsZeroBytesInOneRequest) {
  ExpectedRequests driver(opens(0) + reads(0, kAddress, {}));
  EXPECT_EQ(QVR_readmem(0, kAddress, nullptr, 0), QVR_E_STATUS_OK);
}

TEST(ReadMemory, KeepsTheBufferWhenTheFirstRequestFails) {
  ExpectedRequests driver(opens(0) + reads(0, kAddress, pattern(900, 1)).fails(EIO));
  Bytes bytes(1800, 0xEE);
  EXPECT_EQ(QVR_readmem(0, kAddress, bytes.data(), 1800), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(bytes, Bytes(1800, 0xEE));
}

TEST(ReadMemory, KeepsWhatWasReadWhenALaterRequestFails) {
  const Bytes first = pattern(900, 1);
  ExpectedRequests driver(opens(0) + reads(0, kAddress, first) +
                          reads(0, kAddress + 900, pattern(900, 2)).fails(EIO));
  Bytes bytes(2000, 0xEE);
  EXPECT_EQ(QVR_readmem(0, kAddress, bytes.data(), 2000), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(bytes, first + Bytes(1100, 0xEE));
}

TEST(ReadMemory, TriesToOpenAMissingDeviceAtEachRead) {
  ExpectedRequests driver(opens(1).fails(ENOENT) + opens(1).fails(ENOENT));
  uint8_t bytes[2];
  EXPECT_EQ(QVR_readmem(1, kAddress, bytes, 2), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_readmem(1, kAddress, bytes, 2), QVR_E_DEVICE_NOT_EXISTS);
}

TEST(ReadMemory, AssertsOnAnUnknownDevice) {
  ExpectedRequests driver{Script()};
  uint8_t bytes[2];
  EXPECT_ASSERTION(QVR_readmem(2, kAddress, bytes, 2), asserts(100, "Unknown device handle", 2));
  EXPECT_ASSERTION(QVR_readmem(-1, kAddress, bytes, 2), asserts(100, "Unknown device handle", -1));
}

TEST(ReadMemory, AssertsOnAnOddCountBeforeAnyRequest) {
  ExpectedRequests driver{Script()};
  uint8_t bytes[4];
  EXPECT_ASSERTION(QVR_readmem(0, kAddress, bytes, 3),
                   asserts(101, "Length must be an even number of bytes", 3));
}

TEST(WriteMemory, Writes130BytesAs128And2) {
  const Bytes bytes = pattern(130, 5);
  ExpectedRequests driver(opens(0) + writes(0, kAddress, pattern(128, 5)) +
                          writes(0, kAddress + 128, {bytes[128], bytes[129]}));
  EXPECT_EQ(QVR_writemem(0, kAddress, bytes.data(), 130), QVR_E_STATUS_OK);
}

TEST(WriteMemory, WritesZeroBytesInOneRequest) {
  ExpectedRequests driver(opens(1) + writes(1, kAddress, {}));
  EXPECT_EQ(QVR_writemem(1, kAddress, nullptr, 0), QVR_E_STATUS_OK);
}

TEST(WriteMemory, StopsAtAnyFailedRequest) {
  const Bytes bytes(256, 7);
  const Script script = writes(0, kAddress, Bytes(128, 7)) + writes(0, kAddress + 128, Bytes(128, 7));
  ExpectedRequests driver{Script()};
  openDevice(driver, 0);
  for (size_t position = 0; position < script.size(); position++) {
    driver.expect(script.failingAt(position, EIO));
    EXPECT_EQ(QVR_writemem(0, kAddress, bytes.data(), 256), QVR_E_MEMWRITE_ERROR);
    driver.verify();
  }
}

TEST(WriteMemory, FailsWithoutTheDevice) {
  ExpectedRequests driver(opens(0).fails(ENOENT));
  const uint8_t bytes[2] = {};
  EXPECT_EQ(QVR_writemem(0, kAddress, bytes, 2), QVR_E_DEVICE_NOT_EXISTS);
}

TEST(WriteMemory, AssertsOnAnUnknownDeviceOrAnOddCount) {
  ExpectedRequests driver{Script()};
  const uint8_t bytes[4] = {};
  EXPECT_ASSERTION(QVR_writemem(2, kAddress, bytes, 2), asserts(100, "Unknown device handle", 2));
  EXPECT_ASSERTION(QVR_writemem(0, kAddress, bytes, 3),
                   asserts(101, "Length must be an even number of bytes", 3));
}

}  // namespace
