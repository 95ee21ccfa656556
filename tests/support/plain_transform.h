// The transform as a plain loop, which defines its results, and inputs for it.
#pragma once

#include <qvr.h>

#include <cmath>
#include <ostream>
#include <random>
#include <vector>

using namespace gfast;

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

// The plain loop of an emulated processor takes half a minute for all sizes.
#ifdef __mips__
constexpr int kLargestSize = 8192;
#else
constexpr int kLargestSize = 65536;
#endif

// What FFT_init is given for a transform of so many points.
inline int sizeFor(const Mode& mode, int points) {
  return mode.isMixed == TRUE ? points / 2 : points;
}

// A plain loop, with nothing done for speed. Points that it does not assign keep what `output` held.
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

  void run(const Points& input, Points& output) {
    work_ = input;
    if (real_) {
      completeSpectrum(input);
    }
    reverse(output);
    butterflies(output);
    for (QVR_complex_t& point : output) {
      if (real_) {
        point.imag(0);
      }
      point = {point.real() * gain_, point.imag() * gain_};
    }
  }

 private:
  void completeSpectrum(const Points& input) {
    for (size_t i = 1; i < size_ / 2; i++) {
      work_[size_ - i] = std::conj(input[i]);
    }
    work_[0].imag(0);
    work_[size_ / 2] = work_[0];
  }

  void reverse(Points& output) const {
    for (size_t i = 0, j = 0; i < size_; i++) {
      if (i < j && j < size_) {
        output[i] = work_[j];
        output[j] = work_[i];
      } else if (i == j) {
        output[i] = work_[i];
      }
      size_t m = size_ / 2;
      for (; m > 1 && m <= j; m /= 2) {
        j -= m;
      }
      j += m;
    }
  }

  void butterflies(Points& output) const {
    const size_t size = size_;
    const bool inverse = inverse_;
    const QVR_complex_t* twiddle = twiddle_.data();
    QVR_complex_t* x = output.data();
    size_t step = size;
    for (size_t span = 1; span < size; span *= 2) {
      step /= 2;
      for (size_t b = 0; b < size; b += 2 * span) {
        for (size_t t = 0; t < span && b + t + span < size; t++) {  // within the vector, of any size
          const QVR_complex_t w = inverse ? std::conj(twiddle[t * step]) : twiddle[t * step];
          const QVR_complex_t p = w * x[b + t + span];
          const QVR_complex_t u = x[b + t];
          x[b + t] = u + p;
          x[b + t + span] = u - p;
        }
      }
    }
  }

  size_t size_;
  bool inverse_;
  bool real_;
  double gain_;
  Points twiddle_;
  Points work_;
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
