#include "qvrcli/text/arguments.h"

#include <gtest/gtest.h>

#include <limits>

using namespace gfast;
using namespace gfast::console;

namespace {

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();
constexpr uint32_t kMostUnsigned = std::numeric_limits<uint32_t>::max();

int parsed(const char* text, int before = 77) {
  isValidNumber(text, kLeast, kMost, &before);
  return before;
}

uint32_t parsedUnsigned(const char* text, uint32_t before = 77) {
  isValidUnsignedNumber(text, 0, kMostUnsigned, &before);
  return before;
}

TEST(Number, IsTakenWithinInclusiveBounds) {
  int value = 0;
  EXPECT_TRUE(isValidNumber("10", 10, 32, &value));
  EXPECT_TRUE(isValidNumber("32", 10, 32, &value));
  EXPECT_FALSE(isValidNumber("9", 10, 32, &value));
  EXPECT_FALSE(isValidNumber("33", 10, 32, &value));
}

TEST(Number, IsStoredEvenWhenItIsOutOfBounds) {
  int value = 5;
  EXPECT_FALSE(isValidNumber("9", 0, 4, &value));
  EXPECT_EQ(value, 9);
}

TEST(Number, EndsBeforeTheFirstCharacterThatIsNotADigit) {
  EXPECT_EQ(parsed("12abc"), 12);
  EXPECT_EQ(parsed("3.9"), 3);
  EXPECT_EQ(parsed("0x10"), 0);
}

TEST(Number, MayBeginWithBlanksAndASign) {
  EXPECT_EQ(parsed(" \t\n12"), 12);
  EXPECT_EQ(parsed("+12"), 12);
  EXPECT_EQ(parsed("-12"), -12);
  EXPECT_EQ(parsed("- 12"), 77);
  EXPECT_EQ(parsed("+-12"), 77);
}

TEST(Number, WithoutDigitsLeavesTheValueToBeJudged) {
  int value = 1;
  EXPECT_TRUE(isValidNumber("abc", 0, 1, &value));
  EXPECT_EQ(value, 1);
  EXPECT_TRUE(isValidNumber("-", 0, 1, &value));
  value = 5;
  EXPECT_FALSE(isValidNumber("abc", 0, 1, &value));
  EXPECT_EQ(value, 5);
}

TEST(Number, IsRefusedWhenThereAreOnlyBlanks) {
  int value = 1;
  EXPECT_FALSE(isValidNumber("", 0, 1, &value));
  EXPECT_FALSE(isValidNumber("  \t", 0, 1, &value));
  uint32_t number = 1;
  EXPECT_FALSE(isValidUnsignedNumber("", 0, 1, &number));
  EXPECT_FALSE(isValidUnsignedNumber(" ", 0, 1, &number));
}

TEST(Number, BeyondTheTypeIsTheNearestItCanHold) {
  EXPECT_EQ(parsed("2147483647"), kMost);
  EXPECT_EQ(parsed("2147483648"), kMost);
  EXPECT_EQ(parsed("-2147483648"), kLeast);
  EXPECT_EQ(parsed("-2147483649"), kLeast);
  EXPECT_EQ(parsed("4294967296"), kMost);
  EXPECT_EQ(parsed("99999999999999999999999999999999999999999999"), kMost);
  EXPECT_EQ(parsed("-99999999999999999999999999999999999999999999"), kLeast);
}

TEST(UnsignedNumber, ReachesTo4294967295) {
  EXPECT_EQ(parsedUnsigned("4294967295"), kMostUnsigned);
  EXPECT_EQ(parsedUnsigned("4294967296"), kMostUnsigned);
  EXPECT_EQ(parsedUnsigned("99999999999999999999999999999999999999999999"), kMostUnsigned);
}

TEST(UnsignedNumber, WrapsAroundWhenNegative) {
  EXPECT_EQ(parsedUnsigned("-1"), kMostUnsigned);
  EXPECT_EQ(parsedUnsigned("-4294967295"), 1U);
  EXPECT_EQ(parsedUnsigned("-0"), 0U);
  EXPECT_EQ(parsedUnsigned("-99999999999"), kMostUnsigned);
}

TEST(UnsignedNumber, IsComparedUnsigned) {
  uint32_t value = 0;
  EXPECT_TRUE(isValidUnsignedNumber("3000000000", 1, kMostUnsigned, &value));
  EXPECT_FALSE(isValidUnsignedNumber("0", 1, kMostUnsigned, &value));
  EXPECT_EQ(value, 0U);
  EXPECT_FALSE(isValidUnsignedNumber("-1", 0, 100, &value));
}

TEST(UnsignedNumber, WithoutDigitsLeavesTheValueToBeJudged) {
  uint32_t value = 1;
  EXPECT_TRUE(isValidUnsignedNumber("many", 1, kMostUnsigned, &value));
  EXPECT_EQ(value, 1U);
}

TEST(LineId, Is0Or1) {
  int line = 7;
  EXPECT_TRUE(isValidLineId("0", &line));
  EXPECT_TRUE(isValidLineId("1", &line));
  EXPECT_EQ(line, 1);
  EXPECT_FALSE(isValidLineId("2", &line));
  EXPECT_FALSE(isValidLineId("-1", &line));
  EXPECT_TRUE(isValidLineId("-0", &line));
  EXPECT_EQ(line, 0);
}

TEST(DeviceId, Is0Or1) {
  int device = 7;
  EXPECT_TRUE(isValidDeviceId("0", &device));
  EXPECT_TRUE(isValidDeviceId("1", &device));
  EXPECT_FALSE(isValidDeviceId("2", &device));
  EXPECT_FALSE(isValidDeviceId("", &device));
}

TEST(Keyword, IsAllLowerOrAllUpperCase) {
  EXPECT_TRUE(isKeyword("all", "all"));
  EXPECT_TRUE(isKeyword("ALL", "all"));
  EXPECT_FALSE(isKeyword("All", "all"));
  EXPECT_FALSE(isKeyword("aLL", "all"));
  EXPECT_FALSE(isKeyword("al", "all"));
  EXPECT_FALSE(isKeyword("allx", "all"));
  EXPECT_FALSE(isKeyword("ALLX", "all"));
  EXPECT_FALSE(isKeyword("", "all"));
  EXPECT_TRUE(isKeyword("B0", "b0"));
}

TEST(Hex, IsTakenWithAndWithoutPrefix) {
  uint32_t value = 0;
  EXPECT_TRUE(parseHex("e0000238", &value));
  EXPECT_EQ(value, 0xE0000238U);
  EXPECT_TRUE(parseHex("0xE0000238", &value));
  EXPECT_EQ(value, 0xE0000238U);
  EXPECT_TRUE(parseHex("0X1f", &value));
  EXPECT_EQ(value, 0x1FU);
  EXPECT_TRUE(parseHex(" 1fzz", &value));
  EXPECT_EQ(value, 0x1FU);
}

TEST(Hex, WithoutDigitsIsRefusedAndChangesNothing) {
  uint32_t value = 5;
  EXPECT_FALSE(parseHex("zz", &value));
  EXPECT_FALSE(parseHex("", &value));
  EXPECT_FALSE(parseHex("-", &value));
  EXPECT_EQ(value, 5U);
}

TEST(Hex, Beyond32BitsIsAllOnes) {
  uint32_t value = 0;
  EXPECT_TRUE(parseHex("123456789", &value));
  EXPECT_EQ(value, 0xFFFFFFFFU);
}

}  // namespace
