#include "virtual-board/measured/spectrum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

using namespace gfast;
using namespace gfast::board;

TEST(Spectrum, IsTheDiscreteFourierTransform) {
  constexpr size_t size = 64;
  std::vector<double> samples;
  for (size_t n = 0; n < size; n++) {
    samples.push_back(static_cast<double>((n * n * 37 + 11) % 101) - 50);
  }
  const Spectrum spectrum = spectrumOf(samples);
  for (size_t k = 0; k < size; k++) {
    std::complex<double> sum;
    for (size_t n = 0; n < size; n++) {
      sum += samples[n] * std::polar(1.0, -2 * std::numbers::pi * static_cast<double>(k * n % size) / size);
    }
    EXPECT_NEAR(std::abs(spectrum[k] - sum), 0, 1e-9) << k;
  }
  const auto back = samplesOf(spectrum);
  for (size_t n = 0; n < size; n++) {
    EXPECT_NEAR(back[n], samples[n], 1e-9) << n;
  }
}
