// Byte order: what is loaded from and stored into bytes.
#include "std/byte_order.h"

#include <gtest/gtest.h>

using namespace gfast;

namespace {

TEST(ByteOrder, SwaplReversesTheFourBytes) {
  EXPECT_EQ(swapl(0x11223344U), 0x44332211U);
  EXPECT_EQ(QVRNTOHL(0x11223344U), 0x44332211U);
  EXPECT_EQ(QVRHTONL(0x11223344U), 0x44332211U);
}

TEST(ByteOrder, SwapsExchangesTheTwoBytes) {
  EXPECT_EQ(swaps(0x1122), 0x2211);
  EXPECT_EQ(swaps(0x00FF), 0xFF00);
  EXPECT_EQ(QVRNTOHS(0x1122), 0x2211);
  EXPECT_EQ(QVRHTONS(0x1122), 0x2211);
}

TEST(ByteOrder, SwappingTwiceReturnsTheValue) {
  uint32_t value = 1;
  for (int i = 0; i < 1000; i++) {
    value = value * 1664525U + 1013904223U;
    const auto half = static_cast<uint16_t>(value >> 16);
    EXPECT_EQ(swapl(swapl(value)), value);
    EXPECT_EQ(swaps(swaps(half)), half);
  }
}

TEST(ByteOrder, LoadsReturnTheSameOnEveryMachine) {
  const uint8_t bytes[] = {0x11, 0x22, 0x33, 0x84};
  EXPECT_EQ(load_le16(bytes), 0x2211);
  EXPECT_EQ(load_le32(bytes), 0x84332211U);
  EXPECT_EQ(load_be16(bytes), 0x1122);
  EXPECT_EQ(load_be32(bytes), 0x11223384U);
}

TEST(ByteOrder, LoadsNeedNoAlignment) {
  const uint8_t bytes[] = {0, 1, 2, 3, 4, 5};
  EXPECT_EQ(load_le32(bytes + 1), 0x04030201U);
  EXPECT_EQ(load_be32(bytes + 1), 0x01020304U);
}

TEST(ByteOrder, StoresWriteTheSameBytesOnEveryMachine) {
  uint8_t bytes[4] = {};
  store_le32(bytes, 0x84332211U);
  EXPECT_EQ(bytes[0], 0x11);
  EXPECT_EQ(bytes[3], 0x84);
  store_be32(bytes, 0x84332211U);
  EXPECT_EQ(bytes[0], 0x84);
  EXPECT_EQ(bytes[3], 0x11);
  store_le16(bytes, 0x1122);
  EXPECT_EQ(bytes[0], 0x22);
  EXPECT_EQ(bytes[1], 0x11);
}

}  // namespace
