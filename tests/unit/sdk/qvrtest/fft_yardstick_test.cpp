// Transforms compared with FFTW's: the same numbers but for rounding.
#include <fftw3.h>
#include <gtest/gtest.h>

#include "qvrtest/fft.h"
#include "support/plain_transform.h"

using namespace gfast;

namespace {

// Relative to the output's root mean square.
constexpr double kMostError = 1e-12;

Points yardstick(Points input, Direction direction, double gain) {
  Points output(input.size());
  auto* in = reinterpret_cast<fftw_complex*>(input.data());
  auto* out = reinterpret_cast<fftw_complex*>(output.data());
  const int sign = direction == Direction::kInverse ? FFTW_BACKWARD : FFTW_FORWARD;
  fftw_plan plan = fftw_plan_dft_1d(static_cast<int>(input.size()), in, out, sign, FFTW_ESTIMATE);
  fftw_execute(plan);
  fftw_destroy_plan(plan);
  for (QVR_complex_t& point : output) {
    point *= gain;
  }
  return output;
}

// The spectrum of a real signal that has this lower half.
Points completed(Points spectrum) {
  const size_t half = spectrum.size() / 2;
  spectrum[0].imag(0);
  spectrum[half] = spectrum[0];
  for (size_t i = 1; i < half; i++) {
    spectrum[spectrum.size() - i] = std::conj(spectrum[i]);
  }
  return spectrum;
}

double relativeError(const Points& a, const Points& b) {
  double error = 0;
  double power = 0;
  for (size_t i = 0; i < a.size(); i++) {
    error = std::max(error, std::abs(a[i] - b[i]));
    power += std::norm(b[i]);
  }
  return error / std::sqrt(power / static_cast<double>(a.size()));
}

class FftYardstick : public testing::TestWithParam<Mode> {};

TEST_P(FftYardstick, Forward) {
  const Mode& mode = GetParam();
  for (int points = 2; points <= kLargestSize; points *= 2) {
    const Points input = randomPoints(points, static_cast<unsigned>(points));
    Points output(input.size());
    ASSERT_TRUE(FFT_init(sizeFor(mode, points), mode.isUnitary, mode.isMixed));
    const double gain = FFT_transform(output.data(), input.data());
    EXPECT_LE(relativeError(output, yardstick(input, Direction::kForward, gain)), kMostError) << points;
  }
}

TEST_P(FftYardstick, Inverse) {
  const Mode& mode = GetParam();
  for (int points = 2; points <= kLargestSize; points *= 2) {
    const Points input = randomPoints(points, static_cast<unsigned>(points));
    Points output(input.size());
    ASSERT_TRUE(FFT_init(sizeFor(mode, points), mode.isUnitary, mode.isMixed));
    const double gain = FFT_inverseTransform(output.data(), input.data());
    const Points expected =
        yardstick(mode.isMixed == TRUE ? completed(input) : input, Direction::kInverse, gain);
    EXPECT_LE(relativeError(output, expected), kMostError) << points;
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, FftYardstick, testing::ValuesIn(kModes),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
