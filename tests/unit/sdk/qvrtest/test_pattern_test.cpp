// The pattern that test signals carry.
#include "qvrtest/test_pattern.h"

#include <gtest/gtest.h>

#include <vector>

using namespace gfast;

namespace {

TEST(Pattern, StartsAndEndsWithItsDigits) {
  EXPECT_EQ(kpatternFreq.size(), 2048U);
  EXPECT_EQ(kpatternFreq[0], QVR_complex_t(1, 0));
  // 7D: 01 11 11 01
  EXPECT_EQ(kpatternFreq[1], QVR_complex_t(1, -1));
  EXPECT_EQ(kpatternFreq[2], QVR_complex_t(-1, -1));
  EXPECT_EQ(kpatternFreq[3], QVR_complex_t(-1, -1));
  EXPECT_EQ(kpatternFreq[4], QVR_complex_t(1, -1));
  // ... C158: 11 00 00 01 01 01 10, and two bits of padding
  EXPECT_EQ(kpatternFreq[2041], QVR_complex_t(-1, -1));
  EXPECT_EQ(kpatternFreq[2042], QVR_complex_t(1, 1));
  EXPECT_EQ(kpatternFreq[2043], QVR_complex_t(1, 1));
  EXPECT_EQ(kpatternFreq[2044], QVR_complex_t(1, -1));
  EXPECT_EQ(kpatternFreq[2045], QVR_complex_t(1, -1));
  EXPECT_EQ(kpatternFreq[2046], QVR_complex_t(1, -1));
  EXPECT_EQ(kpatternFreq[2047], QVR_complex_t(-1, 1));
}

// The first digits of some rows, which have 128 subcarriers.
TEST(Pattern, RowsStartWithTheirDigits) {
  EXPECT_EQ(kpatternFreq[129], QVR_complex_t(1, -1));  // 53: 01 01 00 11
  EXPECT_EQ(kpatternFreq[132], QVR_complex_t(-1, -1));
  EXPECT_EQ(kpatternFreq[1025], QVR_complex_t(-1, 1));  // 8E: 10 00 11 10
  EXPECT_EQ(kpatternFreq[1027], QVR_complex_t(-1, -1));
  EXPECT_EQ(kpatternFreq[1921], QVR_complex_t(1, -1));  // 46: 01 00 01 10
  EXPECT_EQ(kpatternFreq[1924], QVR_complex_t(-1, 1));
}

TEST(Pattern, LoadsTheBandExceptEveryTwentiethTone) {
  std::vector<QVR_complex_t> spectrum(2048, {7, 7});
  writePattern(spectrum.data(), 2048);
  int loaded = 0;
  for (uint32_t tone = 0; tone < 2048; tone++) {
    const bool isEmpty = tone <= 42 || tone >= 1973 || tone % 20 == 0;
    EXPECT_EQ(spectrum[tone], isEmpty ? QVR_complex_t() : kpatternFreq[tone]) << tone;
    loaded += isEmpty ? 0 : 1;
  }
  EXPECT_EQ(loaded, 1834);
  EXPECT_NE(spectrum[1972], QVR_complex_t());
}

}  // namespace
