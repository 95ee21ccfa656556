// The transform's modes, its gains, and the chip's samples as vectors.
#include "qvrtest/fft.h"

#include "support/assertions.h"
#include "support/plain_transform.h"

using namespace gfast;

namespace {

using testing::AllOf;
using testing::Each;
using testing::HasSubstr;

constexpr double kNear = 1e-12;

// The transform by its definition, for small sizes.
Points directTransform(const Points& input, Direction direction) {
  const size_t size = input.size();
  const double sign = direction == Direction::kInverse ? 1 : -1;
  Points output(size);
  for (size_t k = 0; k < size; k++) {
    for (size_t i = 0; i < size; i++) {
      const double turns = static_cast<double>(k * i % size) / static_cast<double>(size);
      output[k] += input[i] * std::polar(1.0, sign * 2 * M_PI * turns);
    }
  }
  return output;
}

double furthest(const Points& a, const Points& b) {
  double distance = 0;
  for (size_t i = 0; i < a.size(); i++) {
    distance = std::max(distance, std::abs(a[i] - b[i]));
  }
  return distance;
}

TEST(Fft, EqualsTheDefinitionInBothDirections) {
  for (int points = 1; points <= 512; points *= 2) {
    const Points input = randomPoints(points);
    Points output(input.size());
    FFT_init(points, FALSE, FALSE);
    EXPECT_EQ(FFT_transform(output.data(), input.data()), 1);
    EXPECT_LE(furthest(output, directTransform(input, Direction::kForward)), kNear * points);
    EXPECT_EQ(FFT_inverseTransform(output.data(), input.data()), 1.0 / points);
    for (QVR_complex_t& point : output) {
      point *= points;
    }
    EXPECT_LE(furthest(output, directTransform(input, Direction::kInverse)), kNear * points);
  }
}

TEST(Fft, MixedTransformsHaveTwiceTheSize) {
  EXPECT_TRUE(FFT_init(2048, TRUE, TRUE));
  const Points input = randomPoints(4096);
  Points output(input.size());
  EXPECT_EQ(FFT_transform(output.data(), input.data()), 1.0 / 64);
  EXPECT_EQ(FFT_inverseTransform(output.data(), input.data()), 1.0 / 64);
}

TEST(Fft, TransformsNothingBeforeInit) {
  Points output(1, {7, 7});
  EXPECT_EQ(FFT_transform(output.data(), output.data()), 0);
  EXPECT_EQ(FFT_inverseTransform(output.data(), output.data()), 0);
  EXPECT_EQ(output[0], QVR_complex_t(7, 7));
}

TEST(Fft, LastInitDecidesTheSize) {
  Points points = randomPoints(64);
  FFT_init(64, FALSE, FALSE);
  FFT_init(4, TRUE, FALSE);
  const Points before = points;
  EXPECT_EQ(FFT_transform(points.data(), points.data()), 0.5);
  EXPECT_EQ(points[4], before[4]);
  FFT_init(64, FALSE, FALSE);
  EXPECT_EQ(FFT_transform(points.data(), points.data()), 1);
}

// The product of both gains is 1/N.
TEST(Fft, ForwardThenInverseReturnsTheInput) {
  for (const BOOL isUnitary : {BOOL{TRUE}, BOOL{FALSE}}) {
    for (int points = 1; points <= 4096; points *= 2) {
      const Points input = randomPoints(points);
      Points output(input.size());
      FFT_init(points, isUnitary, FALSE);
      const double forward = FFT_transform(output.data(), input.data());
      const double inverse = FFT_inverseTransform(output.data(), output.data());
      EXPECT_LE(furthest(output, input), kNear);
      EXPECT_EQ(forward, isUnitary == TRUE ? 1 / std::sqrt(points) : 1);
      EXPECT_EQ(inverse, isUnitary == TRUE ? forward : 1.0 / points);
    }
  }
}

// Only the lower half of the spectrum is read; point 2048 takes the real part of point 0.
TEST(Fft, MixedInverseIsReal) {
  Points half = randomPoints(4096);
  half[2048] = {99, 99};
  Points whole = half;
  whole[0].imag(0);
  whole[2048] = whole[0];
  for (size_t i = 1; i < 2048; i++) {
    whole[4096 - i] = std::conj(whole[i]);
  }
  Points fromHalf(half.size());
  Points fromWhole(half.size());
  FFT_init(2048, FALSE, TRUE);
  FFT_inverseTransform(fromHalf.data(), half.data());
  FFT_inverseTransform(fromWhole.data(), whole.data());
  EXPECT_EQ(fromHalf, fromWhole);
  for (const QVR_complex_t& point : fromHalf) {
    ASSERT_EQ(point.imag(), 0);
  }
  FFT_transform(fromHalf.data(), fromHalf.data());
  EXPECT_LE(furthest(fromHalf, whole), kNear * 100);
}

TEST(Fft, KeepsTheInput) {
  const Points input = randomPoints(256);
  const Points before = input;
  Points output(input.size());
  FFT_init(128, FALSE, TRUE);
  FFT_inverseTransform(output.data(), input.data());
  EXPECT_EQ(input, before);
}

TEST(Fft, PowerSpectrumOfAnImpulseIsFlat) {
  for (const size_t place : {size_t{0}, size_t{5}, size_t{31}}) {
    Points signal(32);
    signal[place] = 1;
    FFT_init(32, FALSE, FALSE);
    EXPECT_EQ(FFT_transformAbsoluteSquare(signal.data(), signal.data()), 1);
    for (const QVR_complex_t& point : signal) {
      EXPECT_NEAR(point.real(), 1, kNear);
      EXPECT_EQ(point.imag(), 0);
    }
  }
}

TEST(Fft, PowerSpectrumHasTheGainOfTheTransform) {
  Points signal(16, 1);
  FFT_init(16, TRUE, FALSE);
  EXPECT_EQ(FFT_transformAbsoluteSquare(signal.data(), signal.data()), 0.25);
  EXPECT_EQ(signal[0], 16.0);
  EXPECT_EQ(signal[1], 0.0);
}

TEST(Fft, AcceptsASizeThatIsNoPowerOfTwo) {
  Points points = randomPoints(6);
  EXPECT_TRUE(FFT_init(6, FALSE, FALSE));
  EXPECT_EQ(FFT_inverseTransform(points.data(), points.data()), 1.0 / 6);
  EXPECT_TRUE(FFT_init(3, FALSE, TRUE));
  EXPECT_EQ(FFT_inverseTransform(points.data(), points.data()), 1.0 / 6);
}

TEST(Fft, AssertsOnASizeBelowOne) {
  for (const int size : {0, -1, -4096, -2147483647 - 1}) {
    EXPECT_ASSERTION(FFT_init(size, FALSE, FALSE),
                     AllOf(asserts(201, "size must be a power of 2", size, "../fft.c"),
                           HasSubstr("in file ../fft.c at line 66\n")));
    EXPECT_ASSERTION(FFT_init(size, FALSE, TRUE),
                     asserts(201, "size must be a power of 2", size, "../fft.c"));
  }
}

TEST(FftConversion, ConvertsComplexSamples) {
  FFT_init(4, FALSE, FALSE);
  const COMPLEX16 samples[] = {
      {.im = 1, .re = 2}, {.im = -1, .re = -2}, {.im = 32767, .re = -32768}, {.im = -32768, .re = 32767}};
  Points output(5, {7, 7});
  FFT_convertToComplexVector(output.data(), samples);
  EXPECT_EQ(output, (Points{{2, 1}, {-2, -1}, {-32768, 32767}, {32767, -32768}, {7, 7}}));
}

TEST(FftConversion, ConvertsRealSamplesTheEarlierFromTheRealPart) {
  FFT_init(2, TRUE, TRUE);
  const COMPLEX16 samples[] = {{.im = 2, .re = 1}, {.im = -32768, .re = 32767}};
  Points output(5, {7, 7});
  FFT_convertToRealVector(output.data(), samples);
  EXPECT_EQ(output, (Points{{1, 0}, {2, 0}, {32767, 0}, {-32768, 0}, {7, 7}}));
}

}  // namespace
