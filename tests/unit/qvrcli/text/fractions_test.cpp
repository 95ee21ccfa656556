// Fractions as sessions and files show them: {fmt} writes them, because C libraries differ in how they round
// .5. What glibc's printf writes is what users know.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <string>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// With the formats of the commands that show fractions.
const struct Fraction {
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
  for (const Fraction& fraction : kFractions) {
    EXPECT_EQ(fmt::format(fmt::runtime(fraction.format), fraction.value), fraction.text) << fraction.format;
#if defined(__GLIBC__) && !defined(__UCLIBC__)
    char text[64];
    std::snprintf(text, sizeof text, fraction.printfFormat, fraction.value);
    EXPECT_STREQ(text, fraction.text) << fraction.printfFormat;
#endif
  }
}

}  // namespace
