#include "virtual-board/measured/spectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace gfast::board {

namespace {

// Puts the points into bit-reversed order, as the transform needs it.
void reorder(Spectrum& points) {
  const size_t size = points.size();
  for (size_t i = 0, j = 0; i < size; i++) {
    if (i < j) {
      std::swap(points[i], points[j]);
    }
    size_t bit = size / 2;
    for (; bit > 0 && (j & bit) != 0; bit /= 2) {
      j ^= bit;
    }
    j |= bit;
  }
}

void transform(Spectrum& points) {
  reorder(points);
  const size_t size = points.size();
  Spectrum turns(size / 2);
  for (size_t i = 0; i < turns.size(); i++) {
    turns[i] = std::polar(1.0, -2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(size));
  }
  for (size_t span = 1; span < size; span *= 2) {
    const size_t step = size / (2 * span);
    for (size_t block = 0; block < size; block += 2 * span) {
      for (size_t i = 0; i < span; i++) {
        std::complex<double>& even = points[block + i];
        std::complex<double>& odd = points[block + i + span];
        const std::complex<double> turned = turns[i * step] * odd;
        odd = even - turned;
        even += turned;
      }
    }
  }
}

}  // namespace

Spectrum spectrumOf(std::span<const double> samples) {
  Spectrum points(samples.begin(), samples.end());
  transform(points);
  return points;
}

std::vector<double> samplesOf(const Spectrum& spectrum) {
  // The inverse transform is the conjugate of the transform of the conjugate.
  Spectrum points(spectrum.size());
  std::transform(spectrum.begin(), spectrum.end(), points.begin(),
                 [](const std::complex<double>& point) { return std::conj(point); });
  transform(points);
  std::vector<double> samples(points.size());
  std::transform(points.begin(), points.end(), samples.begin(),
                 [size = static_cast<double>(points.size())](const std::complex<double>& point) {
                   return point.real() / size;
                 });
  return samples;
}

}  // namespace gfast::board
