#include "qvrcli/text/fraction.h"

#include <bit>
#include <cstdint>

namespace gfast::console {

namespace {

constexpr uint32_t kPowersOfTen[kMostFractionDigits + 1] = {1,      10,      100,      1000,      10000,
                                                            100000, 1000000, 10000000, 100000000, 1000000000};

constexpr int kMantissaBits = 52;
constexpr int kExponentMask = 0x7FF;
constexpr int kExponentOfOne = 1023;
constexpr uint64_t kHiddenBit = uint64_t{1} << kMantissaBits;

// The whole part fits 32 bits.
constexpr int kMostExponent = kExponentOfOne + 30;
// The last bit that is set counts 2^-64 or more, if the mantissa has few of them.
constexpr int kLeastExponent = kExponentOfOne - 64;
constexpr int kBelowBits = 64;

struct Parts {
  uint32_t whole = 0;
  uint64_t below = 0;  // the point, in units of 2^-64
};

// false: bits count less than 2^-64.
bool split(uint64_t mantissa, int exponent, Parts& parts) {
  const int fractionBits = kMantissaBits - (exponent - kExponentOfOne);
  if (fractionBits < kBelowBits) {
    parts = {static_cast<uint32_t>(mantissa >> fractionBits), mantissa << (kBelowBits - fractionBits)};
    return true;
  }
  const int tooMany = fractionBits - kBelowBits;
  parts = {0, mantissa >> tooMany};
  return parts.below << tooMany == mantissa;
}

// The decimals, rounded to the nearest and from the middle to the even one: as many as the power of ten has.
uint32_t roundedDecimals(uint64_t below, uint32_t power) {
  constexpr uint64_t half = uint64_t{1} << 63;
  const uint64_t low = (below & 0xFFFFFFFF) * power;
  const uint64_t high = (below >> 32) * power + (low >> 32);
  const auto decimals = static_cast<uint32_t>(high >> 32);
  const uint64_t rest = high << 32 | (low & 0xFFFFFFFF);
  const bool up = rest > half || (rest == half && decimals % 2 != 0);
  return decimals + (up ? 1 : 0);
}

void writeDigits(FractionText& text, uint32_t value, int count) {
  for (int i = 0; i < count; i++) {
    *--text.begin = static_cast<char>('0' + value % 10);
    value /= 10;
  }
}

void writeWhole(FractionText& text, uint32_t value) {
  do {
    *--text.begin = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
}

}  // namespace

bool writeFraction(double value, int digits, int width, FractionText& text) {
  const auto bits = std::bit_cast<uint64_t>(value);
  const bool isNegative = bits >> 63 != 0;
  const int exponent = static_cast<int>(bits >> kMantissaBits) & kExponentMask;
  const uint64_t mantissa = bits & (kHiddenBit - 1);
  Parts parts;
  const bool isZero = exponent == 0 && mantissa == 0;
  if (!isZero && (exponent < kLeastExponent || exponent > kMostExponent ||
                  !split(mantissa | kHiddenBit, exponent, parts))) {
    return false;
  }
  const uint32_t power = kPowersOfTen[digits];
  const uint32_t decimals = roundedDecimals(parts.below, power);
  const bool carries = decimals == power;
  writeDigits(text, carries ? 0 : decimals, digits);
  *--text.begin = '.';
  writeWhole(text, parts.whole + (carries ? 1 : 0));
  const int sign = isNegative ? 1 : 0;
  while (text.end() - text.begin < width - sign) {
    *--text.begin = '0';
  }
  if (isNegative) {
    *--text.begin = '-';
  }
  return true;
}

void appendFraction(std::string& text, double value, int digits) {
  FractionText written;
  if (writeFraction(value, digits, 0, written)) {
    text += written.view();
  } else {
    text += fmt::format("{:.{}f}", value, digits);
  }
}

}  // namespace gfast::console
