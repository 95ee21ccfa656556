// Transforms return the same bits as the plain loop, for every input and every variant of the stages.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <ostream>

#include "qvrtest/fft.h"
#include "qvrtest/fft_stages.h"
#include "support/plain_transform.h"

using namespace gfast;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();

// Random signs and digits, multiplied by powers of two up to these exponents.
Points scaledPoints(int count, int least, int most) {
  std::mt19937_64 engine(2);
  std::uniform_int_distribution<int> exponent(least, most);
  Points points = randomPoints(count);
  for (QVR_complex_t& point : points) {
    point = {std::ldexp(point.real(), exponent(engine)), std::ldexp(point.imag(), exponent(engine))};
  }
  return points;
}

// Random points, some of which have parts of these values.
Points pointsWith(int count, std::initializer_list<double> values) {
  std::mt19937 engine(3);
  Points points = randomPoints(count);
  for (const double value : values) {
    points[engine() % points.size()].real(value);
    points[engine() % points.size()].imag(value);
  }
  return points;
}

Points zeros(int count) {
  Points points(static_cast<size_t>(count));
  std::mt19937_64 engine(4);
  for (QVR_complex_t& point : points) {
    point = {(engine() & 1) != 0 ? 0.0 : -0.0, (engine() & 1) != 0 ? 0.0 : -0.0};
  }
  return points;
}

Points impulse(int count) {
  Points points = zeros(count);
  points[points.size() / 3] = {1, -0.0};
  return points;
}

struct Input {
  const char* name;
  Points (*points)(int count);

  friend void PrintTo(const Input& input, std::ostream* out) { *out << input.name; }
};

const Input kInputs[] = {
    {"Random", [](int count) { return randomPoints(count); }},
    {"Huge", [](int count) { return scaledPoints(count, 960, 1020); }},
    {"OverTheLimitOfTheFastWay", [](int count) { return scaledPoints(count, 870, 905); }},
    {"Wide", [](int count) { return scaledPoints(count, -1000, 800); }},
    {"Denormal", [](int count) { return scaledPoints(count, -1080, -1020); }},
    {"TinyAmongRandom",
     [](int count) {
       return pointsWith(count, {kTiny, -kTiny});
     }},
    {"Zeros", zeros},
    {"Impulse", impulse},
    {"OneInfinity", [](int count) { return pointsWith(count, {kInfinity}); }},
    {"Infinities",
     [](int count) {
       return pointsWith(count, {kInfinity, -kInfinity, kInfinity});
     }},
    {"NoNumber", [](int count) { return pointsWith(count, {kNotANumber}); }},
    {"NoNumbersAndInfinities",
     [](int count) {
       return pointsWith(count, {kNotANumber, -kInfinity});
     }},
};

// The same bits, or both are not a number.
bool isSame(double a, double b) {
  return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b) || (std::isnan(a) && std::isnan(b));
}

// The first point that differs, or the size.
size_t firstDifference(const Points& a, const Points& b) {
  size_t i = 0;
  while (i < a.size() && isSame(a[i].real(), b[i].real()) && isSame(a[i].imag(), b[i].imag())) {
    i++;
  }
  return i;
}

double transform(Direction direction, Points& output, const Points& input) {
  return direction == Direction::kInverse ? FFT_inverseTransform(output.data(), input.data())
                                          : FFT_transform(output.data(), input.data());
}

class FftBits : public testing::TestWithParam<Input> {
 protected:
  // With the output in a vector of its own, and in that of the input.
  static void expectPlainBits(int points, const Mode& mode, Direction direction) {
    const Points input = GetParam().points(points);
    PlainTransform plain(input.size(), mode, direction);
    Points expected = Points(input.size(), {7, 7});
    plain.run(input, expected);
    ASSERT_TRUE(FFT_init(sizeFor(mode, points), mode.isUnitary, mode.isMixed));
    for (const FftVariant& variant : fftVariants()) {
      selectFftVariant(variant);
      Points output(input.size(), {7, 7});
      EXPECT_EQ(transform(direction, output, input), plain.gain());
      EXPECT_EQ(firstDifference(output, expected), input.size()) << points << variant.name << mode.name;
      output = input;
      transform(direction, output, output);
      EXPECT_EQ(firstDifference(output, expected), input.size()) << points << variant.name << mode.name;
    }
  }
};

TEST_P(FftBits, EqualThoseOfThePlainLoop) {
  for (const Mode& mode : kModes) {
    for (int points = mode.isMixed == TRUE ? 2 : 1; points <= kLargestSize; points *= 2) {
      expectPlainBits(points, mode, Direction::kForward);
      expectPlainBits(points, mode, Direction::kInverse);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Inputs, FftBits, testing::ValuesIn(kInputs),
                         [](const auto& each) { return std::string(each.param.name); });

// Sizes that are no power of two. The vectors are exactly as long as the size, so a sanitizer sees every
// access outside.
TEST(FftOfAnySize, EqualsThePlainLoopInsideItsVectors) {
  for (int points = 1; points <= 300; points++) {
    const Points input = randomPoints(points);
    for (const Direction direction : {Direction::kForward, Direction::kInverse}) {
      const Mode mode{"unitary", TRUE, FALSE};
      Points expected(input.size(), {7, 7});
      PlainTransform(input.size(), mode, direction).run(input, expected);
      ASSERT_TRUE(FFT_init(points, mode.isUnitary, mode.isMixed));
      Points output(input.size(), {7, 7});
      transform(direction, output, input);
      EXPECT_EQ(firstDifference(output, expected), input.size()) << points;
    }
  }
}

TEST(FftOfAnySize, CompletesASpectrumOfAnySize) {
  const Mode mode{"mixed", FALSE, TRUE};
  for (int half = 1; half <= 150; half++) {
    const Points input = randomPoints(2 * half);
    Points expected(input.size(), {7, 7});
    PlainTransform(input.size(), mode, Direction::kInverse).run(input, expected);
    ASSERT_TRUE(FFT_init(half, mode.isUnitary, mode.isMixed));
    Points output(input.size(), {7, 7});
    transform(Direction::kInverse, output, input);
    EXPECT_EQ(firstDifference(output, expected), input.size()) << half;
  }
}

TEST(FftVariants, EveryMachineHasOne) {
  ASSERT_FALSE(fftVariants().empty());
  for (const FftVariant& variant : fftVariants()) {
    EXPECT_GT(std::strlen(variant.name), 0U);
  }
}

}  // namespace
