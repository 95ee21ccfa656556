#include "qvrcli/text/hexadecimal.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace gfast;
using namespace gfast::console;

namespace {

TEST(HexString, HasThreeCharactersAByte) {
  const uint8_t bytes[] = {0x0A, 0xFF};
  char text[7];
  toHexString(bytes, 2, text);
  EXPECT_STREQ(text, "0A FF ");
  toHexString(bytes, 0, text);
  EXPECT_STREQ(text, "");
}

TEST(HexNumber, TakesTwoCharactersAtEveryThirdPosition) {
  uint8_t bytes[3] = {};
  toHexNumber("0A FF:7f", 3, bytes);
  EXPECT_EQ(bytes[0], 0x0A);
  EXPECT_EQ(bytes[1], 0xFF);
  EXPECT_EQ(bytes[2], 0x7F);
}

TEST(HexNumber, IsTheInverseOfHexString) {
  const uint8_t bytes[] = {0x00, 0x01, 0x80, 0xFE};
  char text[13];
  toHexString(bytes, 4, text);
  uint8_t back[4] = {};
  toHexNumber(text, 4, back);
  EXPECT_EQ(std::memcmp(bytes, back, 4), 0);
}

TEST(HexNumber, IsZeroBehindTheEndOfTheText) {
  uint8_t bytes[4] = {9, 9, 9, 9};
  toHexNumber("12:3", 4, bytes);
  EXPECT_EQ(bytes[0], 0x12);
  EXPECT_EQ(bytes[1], 0x03);
  EXPECT_EQ(bytes[2], 0);
  EXPECT_EQ(bytes[3], 0);
}

}  // namespace
