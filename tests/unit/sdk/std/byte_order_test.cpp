// Byte order and the small arithmetic of std/.
#include "std/byte_order.h"
#include <algorithm>

#include <gtest/gtest.h>

#include "std/bits.h"

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

TEST(ByteOrder, SwappingTwiceGivesAnyValueBack) {
  uint32_t value = 1;
  for (int i = 0; i < 1000; i++) {
    value = value * 1664525U + 1013904223U;
    const auto half = static_cast<uint16_t>(value >> 16);
    EXPECT_EQ(swapl(swapl(value)), value);
    EXPECT_EQ(swaps(swaps(half)), half);
  }
}

TEST(ByteOrder, ChipWordsReadTheSameOnEveryMachine) {
  const uint8_t bytes[] = {0x11, 0x22, 0x33, 0x84};
  EXPECT_EQ(load_le16(bytes), 0x2211);
  EXPECT_EQ(load_le32(bytes), 0x84332211U);
  EXPECT_EQ(load_be16(bytes), 0x1122);
  EXPECT_EQ(load_be32(bytes), 0x11223384U);
}

TEST(ByteOrder, WordsNeedNoAlignment) {
  const uint8_t bytes[] = {0, 1, 2, 3, 4, 5};
  EXPECT_EQ(load_le32(bytes + 1), 0x04030201U);
  EXPECT_EQ(load_be32(bytes + 1), 0x01020304U);
}

TEST(ByteOrder, WordsAreWrittenByteByByte) {
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

constexpr uint32_t FIELD_SIZE = 3;
constexpr uint32_t FIELD_OFFSET = 25;

TEST(Bits, MaskCoversTheField) {
  EXPECT_EQ(MASK(FIELD), 0x0E000000U);
}

TEST(Bits, MinAndMaxEvaluateTheirArgumentsOnce) {
  int a = 1;
  int b = 5;
  EXPECT_EQ(std::min(a++, b++), 1);
  EXPECT_EQ(a, 2);
  EXPECT_EQ(b, 6);
  EXPECT_EQ(std::max(a++, b++), 6);
  EXPECT_EQ(a, 3);
  EXPECT_EQ(b, 7);
}

TEST(Bits, CountersThatWrappedAreSubtractedAcrossTheWrap) {
  EXPECT_EQ(WA32bSUBTRACT(10, 3), 7U);
  EXPECT_EQ(WA32bSUBTRACT(2, 0xFFFFFFFFU), 3U);
  EXPECT_EQ(WA32bSUBTRACT(0, 1), 0xFFFFFFFFU);
  EXPECT_EQ(WA32bSUBTRACT(5, 5), 0U);
}

}  // namespace
