#include "qvrtest/fft.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "qvrassert/qvrassert.h"
#include "qvrtest/fft_stages.h"

using namespace gfast;

namespace {

constexpr double k2Pi = 6.283185307179586;

// A line of the processor's cache, which holds whole vectors.
constexpr std::align_val_t kAlignment{64};

// Doubles between real and imaginary parts: places that are a power of two apart would share a few lines of
// the cache.
constexpr size_t kGap = 16;

// FFT_init sets these. The vectors live until the process ends.
int m_nSize = 0;
BOOL m_isUnitary = TRUE;
BOOL m_isMixed = FALSE;
size_t tableSize = 0;  // the least power of two that is not below m_nSize; 0: nothing is allocated

// The factors e^(-2*pi*i*k/N), laid out for the stages: that of span s finds its own at s .. 2s-1. All real
// parts, then, behind the gap, all imaginary parts, tableSize each.
double* m_twiddles = nullptr;

QVR_complex_t* m_work = nullptr;  // tableSize points, and room for the gap

const FftVariant* stagesVariant = nullptr;  // the fastest, unless one was selected

FftWorkspace workspace() {
  auto* work = reinterpret_cast<double*>(m_work);
  const size_t imaginary = tableSize + kGap;
  return {static_cast<size_t>(m_nSize), m_twiddles, m_twiddles + imaginary, work, work + imaginary};
}

// True for every positive size, because the bits that are shifted out are not checked.
bool isAcceptedSize(int nSize) {
  while (nSize >= 2) {
    nSize >>= 1;
  }
  return nSize == 1;
}

template <typename Item>
Item* allocate(size_t count) {
  return new (kAlignment, std::nothrow) Item[count];
}

void release(void* items) {
  ::operator delete[](items, kAlignment);
}

bool reserve(size_t points) {
  const size_t wanted = std::bit_ceil(points);
  if (wanted == tableSize) {
    return true;
  }
  release(m_twiddles);
  release(m_work);
  m_twiddles = allocate<double>(2 * wanted + kGap);
  m_work = allocate<QVR_complex_t>(wanted + kGap / 2);
  if (m_twiddles == nullptr || m_work == nullptr) {
    release(m_twiddles);
    release(m_work);
    m_twiddles = nullptr;
    m_work = nullptr;
  }
  tableSize = m_work == nullptr ? 0 : wanted;
  return m_work != nullptr;
}

// For a power of two, the factors of a stage are also factors of the next stage, bit for bit. For another
// size each stage has its own step.
void fillTwiddles(size_t points) {
  double* re = m_twiddles;
  double* im = m_twiddles + tableSize + kGap;
  for (size_t span = tableSize / 2; span > 0; span /= 2) {
    const bool isRepeated = points == tableSize && span < points / 2;
    const size_t step = points / (2 * span);
    for (size_t t = 0; t < span; t++) {
      const double x = -(static_cast<double>(t * step) * k2Pi) / static_cast<double>(points);
      re[span + t] = isRepeated ? re[2 * (span + t)] : std::cos(x);
      im[span + t] = isRepeated ? im[2 * (span + t)] : std::sin(x);
    }
  }
}

double gainOf(FftDirection direction) {
  const double points = m_nSize;
  if (m_isUnitary == TRUE) {
    return 1 / std::sqrt(points);
  }
  return direction == FftDirection::kInverse ? 1 / points : 1;
}

// The lower half of a spectrum becomes the whole spectrum of a real signal. The point between the halves
// takes the real value of point 0.
void completeSpectrum(QVR_complex_t* whole, const QVR_complex_t* half) {
  const auto size = static_cast<size_t>(m_nSize);
  whole[0] = half[0].real();
  whole[size / 2] = whole[0];
  for (size_t i = 1; i < size / 2; i++) {
    whole[i] = half[i];
    whole[size - i] = std::conj(half[i]);
  }
}

void reverseBits(QVR_complex_t* output, const QVR_complex_t* work) {
  const auto size = static_cast<size_t>(m_nSize);
  size_t j = 0;
  for (size_t i = 0; i < size; i++) {
    if (i <= j && j < size) {
      output[i] = work[j];
      output[j] = work[i];
    }
    size_t m = size / 2;
    while (m > 1 && m <= j) {
      j -= m;
      m /= 2;
    }
    j += m;
  }
}

void plainButterflies(QVR_complex_t* points, FftDirection direction) {
  const FftWorkspace work = workspace();
  for (size_t span = 1; span < work.size; span *= 2) {
    for (size_t block = 0; block < work.size; block += 2 * span) {
      for (size_t t = 0; t < span && block + t + span < work.size; t++) {
        const QVR_complex_t twiddle(work.twiddleRe[span + t], work.twiddleIm[span + t]);
        const QVR_complex_t factor = direction == FftDirection::kInverse ? std::conj(twiddle) : twiddle;
        const QVR_complex_t product = factor * points[block + t + span];
        const QVR_complex_t upper = points[block + t];
        points[block + t] = upper + product;
        points[block + t + span] = upper - product;
      }
    }
  }
}

// The loop that defines the results. It works for every size and value.
void plainTransform(QVR_complex_t* output, const QVR_complex_t* input, FftDirection direction,
                    const FftOutput& rule) {
  const auto size = static_cast<size_t>(m_nSize);
  if (rule.realOnly) {
    completeSpectrum(m_work, input);
  } else {
    std::copy_n(input, size, m_work);
  }
  reverseBits(output, m_work);
  plainButterflies(output, direction);
  for (size_t i = 0; i < size; i++) {
    output[i] = {output[i].real() * rule.gain, rule.realOnly ? 0 : output[i].imag() * rule.gain};
  }
}

// The same results, faster; false when the size or the values need the plain loop.
bool fastTransform(QVR_complex_t* output, const QVR_complex_t* input, FftDirection direction,
                   const FftOutput& rule) {
  const FftWorkspace work = workspace();
  if (work.size != tableSize || work.size < kLeastStagesSize) {
    return false;
  }
  if (rule.realOnly) {
    completeSpectrum(output, input);
    input = output;
  }
  const FftVariant& variant = stagesVariant == nullptr ? fftVariants().front() : *stagesVariant;
  return variant.stages(work, direction, rule, reinterpret_cast<const double*>(input),
                        reinterpret_cast<double*>(output));
}

double apply(QVR_complex_t* output, const QVR_complex_t* input, FftDirection direction) {
  if (m_nSize == 0) {
    return 0;
  }
  const FftOutput rule{gainOf(direction), m_isMixed == TRUE && direction == FftDirection::kInverse};
  if (!fastTransform(output, input, direction, rule)) {
    plainTransform(output, input, direction, rule);
  }
  return rule.gain;
}

}  // namespace

void gfast::selectFftVariant(const FftVariant& variant) {
  stagesVariant = &variant;
}

bool gfast::FFT_init(int nSize, BOOL isUnitary, BOOL isMixed) {
  if (!isAcceptedSize(nSize)) {
    DoAssert(QVR_K_ASSERT_FFT_SIZE, "../fft.c", 66, "size must be a power of 2", 1, nSize);
  }
  m_isUnitary = isUnitary;
  m_isMixed = isMixed;
  const bool isCountable = isMixed == FALSE || nSize <= std::numeric_limits<int>::max() / 2;
  const int points = isMixed == TRUE && isCountable ? 2 * nSize : nSize;
  const int before = std::exchange(m_nSize, 0);
  if (!isCountable || !reserve(static_cast<size_t>(points))) {
    return false;
  }
  if (points != before) {
    fillTwiddles(static_cast<size_t>(points));
  }
  m_nSize = points;
  return true;
}

double gfast::FFT_transform(QVR_complex_t* output, const QVR_complex_t* input) {
  return apply(output, input, FftDirection::kForward);
}

double gfast::FFT_inverseTransform(QVR_complex_t* output, const QVR_complex_t* input) {
  return apply(output, input, FftDirection::kInverse);
}

double gfast::FFT_transformAbsoluteSquare(QVR_complex_t* output, const QVR_complex_t* input) {
  const double gain = FFT_transform(output, input);
  for (int i = 0; i < m_nSize; i++) {
    const double magnitude = std::abs(output[i]);
    output[i] = magnitude * magnitude;
  }
  return gain;
}

void gfast::FFT_convertToComplexVector(QVR_complex_t* output, const COMPLEX16* input) {
  for (int i = 0; i < m_nSize; i++) {
    output[i] = {static_cast<double>(input[i].re), static_cast<double>(input[i].im)};
  }
}

void gfast::FFT_convertToRealVector(QVR_complex_t* output, const COMPLEX16* input) {
  for (int i = 0; i < m_nSize / 2; i++) {
    *output++ = input[i].re;
    *output++ = input[i].im;
  }
}
