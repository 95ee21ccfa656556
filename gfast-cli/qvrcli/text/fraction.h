// Fractions in tables: the same text as {fmt} writes for a double, for a fraction of its time.
//
// {fmt} and printf work with the digits of any double. The values of a table are such that one multiplication
// gives all their digits exactly.
#pragma once

#include <fmt/compile.h>
#include <fmt/format.h>

#include <string>
#include <string_view>

namespace gfast::console {

constexpr int kMostFractionDigits = 9;

// Characters in front of the end of a text.
struct FractionText {
  static constexpr int kSize = 24;  // a sign, ten digits, a point, nine digits, and some
  char characters[kSize];
  char* begin = characters + kSize;

  const char* end() const { return characters + kSize; }
  std::string_view view() const { return {begin, static_cast<size_t>(end() - begin)}; }
};

// Writes the value with 1 to kMostFractionDigits digits behind the point, correctly rounded, as "%.*f" does,
// and with zeros in front up to the width. false: it needs more care (NaN, infinite, very large, or small
// with many bits), and nothing was written.
bool writeFraction(double value, int digits, int width, FractionText& text);

// Appends the value, of any kind, with so many digits behind the point.
void appendFraction(std::string& text, double value, int digits);

// A value of a table's row. It understands "{:.5f}" and, with zeros in front, "{:09.5f}".
struct Fraction {
  double value;
};

}  // namespace gfast::console

template <>
class fmt::formatter<gfast::console::Fraction> {
 public:
  constexpr auto parse(format_parse_context& context) {
    const auto* next = context.begin();
    const auto* const end = context.end();
    if (next != end && *next == '0') {
      width_ = number(next, end);
    }
    if (next == end || *next++ != '.') {
      throw format_error("a fraction needs its digits: .Nf");
    }
    digits_ = number(next, end);
    if (next == end || *next++ != 'f' || digits_ < 1 || digits_ > gfast::console::kMostFractionDigits ||
        width_ >= gfast::console::FractionText::kSize) {
      throw format_error("a fraction is .Nf or 0W.Nf");
    }
    return next;
  }

  template <typename Context>
  auto format(const gfast::console::Fraction& fraction, Context& context) const {
    gfast::console::FractionText text;
    if (!gfast::console::writeFraction(fraction.value, digits_, width_, text)) {
      return fmt::format_to(context.out(), "{:0{}.{}f}", fraction.value, width_, digits_);
    }
    return fmt::format_to(context.out(), FMT_COMPILE("{}"), text.view());
  }

 private:
  static constexpr int number(const char*& next, const char* end) {
    int value = 0;
    for (; next != end && *next >= '0' && *next <= '9' && value < 100; ++next) {
      value = 10 * value + (*next - '0');
    }
    return value;
  }

  int width_ = 0;
  int digits_ = 0;
};
