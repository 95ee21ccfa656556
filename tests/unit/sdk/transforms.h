// The transform as its definition has it, and inputs for it.
#pragma once

#include <qvr.h>

#include <cmath>
#include <ostream>
#include <random>
#include <vector>

using Points = std::vector<QVR_complex_t>;

enum class Direction { kForward, kInverse };

// How a transform is set up.
struct Mode {
  const char* name;
  BOOL isUnitary;
  BOOL isMixed;

  friend void PrintTo(const Mode& mode, std::ostream* out) { *out << mode.name; }
};

constexpr Mode kModes[] = {{"plain", FALSE, FALSE}, {"unitary", TRUE, FALSE}, {"mixed", FALSE, TRUE}};

constexpr int kLargestSize = 65536;

// What FFT_init is given for a transform of so many points.
inline int sizeFor(const Mode& mode, int points) {
  return mode.isMixed == TRUE ? points / 2 : points;
}

// One loop over everything, with nothing done for speed. `output` is what stands there before.
class PlainTransform {
 public:
  PlainTransform(size_t points, const Mode& mode, Direction direction)
      : size_(points), inverse_(direction == Direction::kInverse), real_(inverse_ && mode.isMixed == TRUE) {
    const auto n = static_cast<double>(size_);
    gain_ = mode.isUnitary == TRUE ? 1 / std::sqrt(n) : (inverse_ ? 1 / n : 1);
    for (size_t k = 0; k < size_ / 2; k++) {
      const double x = -(static_cast<double>(k) * 6.283185307179586) / n;
      twiddle_.emplace_back(std::cos(x), std::sin(x));
    }
  }

  double gain() const { return gain_; }

  void run(const Points& input, Points& output) const {
    const Points work = completed(input);
    reverse(work, output);
    butterflies(output);
    for (QVR_complex_t& point : output) {
      if (real_) {
        point.imag(0);
      }
      point = {point.real() * gain_, point.imag() * gain_};
    }
  }

 private:
  Points completed(const Points& input) const {
    Points work = input;
    if (real_) {
      for (size_t i = 1; i < size_ / 2; i++) {
        work[size_ - i] = std::conj(input[i]);
      }
      work[0].imag(0);
      work[size_ / 2] = work[0];
    }
    return work;
  }

  void reverse(const Points& work, Points& output) const {
    for (size_t i = 0, j = 0; i < size_; i++) {
      if (i < j && j < size_) {
        output[i] = work[j];
        output[j] = work[i];
      } else if (i == j) {
        output[i] = work[i];
      }
      size_t m = size_ / 2;
      for (; m > 1 && m <= j; m /= 2) {
        j -= m;
      }
      j += m;
    }
  }

  void butterflies(Points& output) const {
    size_t step = size_;
    for (size_t span = 1; span < size_; span *= 2) {
      step /= 2;
      for (size_t b = 0; b < size_; b += 2 * span) {
        for (size_t t = 0; t < span; t++) {
          if (b + t + span >= size_) {
            continue;  // only for sizes that are no power of two
          }
          const QVR_complex_t w = inverse_ ? std::conj(twiddle_[t * step]) : twiddle_[t * step];
          const QVR_complex_t p = w * output[b + t + span];
          const QVR_complex_t u = output[b + t];
          output[b + t] = u + p;
          output[b + t + span] = u - p;
        }
      }
    }
  }

  size_t size_;
  bool inverse_;
  bool real_;
  double gain_;
  Points twiddle_;
};

inline Points randomPoints(int count, unsigned seed = 1) {
  std::mt19937_64 engine(seed);
  std::normal_distribution<double> normal;
  Points points(static_cast<size_t>(count));
  for (QVR_complex_t& point : points) {
    point = {normal(engine), normal(engine)};
  }
  return points;
}
