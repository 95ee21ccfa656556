// Fractions as sessions and files show them: {fmt} writes them, because C libraries differ in how they round
// .5. What glibc's printf writes is what users know.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include "qvrcli/text/fraction.h"

namespace {

using gfast::console::Fraction;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// With the formats of the commands that show fractions.
const struct WrittenFraction {
  const char* printfFormat;
  const char* format;
  double value;
  const char* text;
} kFractions[] = {
    {"%.1f", "{:.1f}", 0.25, "0.2"},
    {"%.1f", "{:.1f}", 0.75, "0.8"},
    {"%.1f", "{:.1f}", -0.25, "-0.2"},
    {"%.1f", "{:.1f}", 31967.0, "31967.0"},
    {"%3.1f", "{:3.1f}", 6.35, "6.3"},
    {"%3.1f", "{:3.1f}", -12.8, "-12.8"},
    {"%4.0f", "{:4.0f}", 0.5, "   0"},
    {"%4.0f", "{:4.0f}", 1.5, "   2"},
    {"%4.0f", "{:4.0f}", 2.5, "   2"},
    {"%4.0f", "{:4.0f}", 9999.4, "9999"},
    {"%5.1f", "{:5.1f}", 0.25, "  0.2"},
    {"%5.1f", "{:5.1f}", 1234.75, "1234.8"},
    {"%02.03f", "{:02.3f}", 0.0625, "0.062"},
    {"%02.03f", "{:02.3f}", 12.3, "12.300"},
    {"%.5f", "{:.5f}", 0.015625, "0.01562"},
    {"%09.5f", "{:09.5f}", 2.22525, "002.22525"},
    {"%09.5f", "{:09.5f}", 0.015625, "000.01562"},
    {"%09.5f", "{:09.5f}", 1234.015625, "1234.01562"},
    {"%.6f", "{:.6f}", 0.0078125, "0.007812"},
    {"%f", "{:f}", 0.0078125, "0.007812"},
    {"%f", "{:f}", 0.0234375, "0.023438"},
    {"%f", "{:f}", -0.0, "-0.000000"},
    {"%f", "{:f}", 1e22, "10000000000000000000000.000000"},
    {"%f", "{:f}", 1e-300, "0.000000"},
    {"%f", "{:f}", kInfinity, "inf"},
    {"%f", "{:f}", -kInfinity, "-inf"},
    {"%f", "{:f}", kNan, "nan"},
};

TEST(Fractions, ReadTheSameOnEveryMachine) {
  for (const WrittenFraction& fraction : kFractions) {
    EXPECT_EQ(fmt::format(fmt::runtime(fraction.format), fraction.value), fraction.text) << fraction.format;
#if defined(__GLIBC__) && !defined(__UCLIBC__)
    char text[64];
    std::snprintf(text, sizeof text, fraction.printfFormat, fraction.value);
    EXPECT_STREQ(text, fraction.text) << fraction.printfFormat;
#endif
  }
}

// A table's fraction is what {fmt} writes for the number.
void expectSame(double value) {
  EXPECT_EQ(fmt::format("{:.1f}", Fraction{value}), fmt::format("{:.1f}", value));
  EXPECT_EQ(fmt::format("{:.5f}", Fraction{value}), fmt::format("{:.5f}", value));
  EXPECT_EQ(fmt::format("{:.9f}", Fraction{value}), fmt::format("{:.9f}", value));
  EXPECT_EQ(fmt::format("{:09.5f}", Fraction{value}), fmt::format("{:09.5f}", value));
  std::string text = "x";
  gfast::console::appendFraction(text, value, 6);
  EXPECT_EQ(text, fmt::format("x{:f}", value));
}

TEST(TableFractions, AreWrittenAsOthersAre) {
  for (const Fraction fraction :
       {Fraction{2.22525}, Fraction{105.93225}, Fraction{-140.5}, Fraction{99.99999}}) {
    expectSame(fraction.value);
  }
  for (uint32_t subcarrier = 0; subcarrier < 2048; subcarrier++) {
    expectSame(subcarrier * 0.05175);
  }
}

TEST(TableFractions, RoundTheMiddleToTheEvenDigit) {
  for (int i = -1000; i <= 1000; i++) {
    expectSame(i / 4.0);
    expectSame(i / 64.0);
    expectSame(i / 1024.0);
  }
}

TEST(TableFractions, CarryIntoTheWholePart) {
  for (const double value : {0.95, 0.96, 9.95, 9.96, 99.999996, 0.9999999996, 1999999999.96}) {
    expectSame(value);
    expectSame(-value);
  }
}

TEST(TableFractions, TakeCoefficientsOfSixteenBits) {
  for (int i = -32768; i < 32768; i += 7) {
    expectSame(std::ldexp(i, -14));
    expectSame(std::ldexp(i, -60));
  }
}

TEST(TableFractions, TakeEveryNumber) {
  for (const double value : {0.0, 0x1p-11, 0x1.fffffffffffffp-12, 0x1p-1022, 5e-324, 0x1p31,
                             0x1.fffffffffffffp30, 1e22, 1e300, kInfinity, kNan}) {
    expectSame(value);
    expectSame(-value);
  }
}

TEST(TableFractions, AreTheSameForNumbersDrawnAtRandom) {
  constexpr int kTries = 2000;
  std::mt19937_64 random(1);
  for (int i = 0; i < kTries; i++) {
    const double mantissa = std::bit_cast<double>(random() >> 12 | 0x3FF0000000000000);
    const int exponent = static_cast<int>(random() % 110) - 75;
    expectSame(std::ldexp(mantissa, exponent));
    expectSame(-std::ldexp(mantissa, exponent));
  }
}

}  // namespace
