// Bit fields, and counters that wrap.
#include "std/bits.h"

#include <gtest/gtest.h>

using namespace gfast;

namespace {

constexpr uint32_t FIELD_SIZE = 3;
constexpr uint32_t FIELD_OFFSET = 25;

TEST(Bits, MaskCoversTheField) {
  EXPECT_EQ(MASK(FIELD), 0x0E000000U);
}

TEST(Bits, WrappedCountersAreSubtractedAcrossTheWrap) {
  EXPECT_EQ(WA32bSUBTRACT(10, 3), 7U);
  EXPECT_EQ(WA32bSUBTRACT(2, 0xFFFFFFFFU), 3U);
  EXPECT_EQ(WA32bSUBTRACT(0, 1), 0xFFFFFFFFU);
  EXPECT_EQ(WA32bSUBTRACT(5, 5), 0U);
}

}  // namespace
