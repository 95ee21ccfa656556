// A radix-2 fast Fourier transform over complex vectors, with one configuration for the whole process: the
// last FFT_init applies to every caller. Only the command thread uses it.
//
// Results are those of the textbook loop (bit reversal, then one stage of butterflies after the other, each
// product that of C99) to the last bit, on every machine and with every variant of the stages. Only
// the bits of a NaN are not defined.
#pragma once

#include <qvr.h>

namespace gfast {

// The chip's sample pair as its word is read: the imaginary part is the word's high half.
struct COMPLEX16 {
  int16_t im;
  int16_t re;
};

// Sets the size, a power of two, and the mode:
//   unitary  both directions are scaled by 1/sqrt(size); otherwise the inverse by 1/size and the forward not
//   mixed    for real signals: the transform has 2 * nSize points, and the inverse takes the lower half of a
//            spectrum, completes it to that of a real signal and returns a signal without imaginary parts
// false: there is no memory for so large a transform, and until the next FFT_init no transform takes place.
// A size below 1 is assertion 201. A size that is no power of two is accepted; its transforms are wrong, but
// stay inside their vectors: butterflies that would reach outside are left out, and points that the bit
// reversal does not assign keep what the output held.
bool FFT_init(int nSize, BOOL isUnitary, BOOL isMixed);

// Transform vectors of as many points as FFT_init has set, which may be the same, and answer the gain
// applied, or 0 without a transform before the first FFT_init and after one that failed. In mixed mode the
// inverse reads points 0 .. size/2-1 only: the upper half is their mirror image, and the point between takes
// the real value of point 0.
double FFT_transform(QVR_complex_t* output, const QVR_complex_t* input);
double FFT_inverseTransform(QVR_complex_t* output, const QVR_complex_t* input);

// The forward transform as a power spectrum: every point is its squared magnitude.
double FFT_transformAbsoluteSquare(QVR_complex_t* output, const QVR_complex_t* input);

// The chip's samples as a vector of the transform's size: that many complex ones, or half as many pairs of
// successive real ones, the real part being the earlier.
void FFT_convertToComplexVector(QVR_complex_t* output, const COMPLEX16* input);
void FFT_convertToRealVector(QVR_complex_t* output, const COMPLEX16* input);

}  // namespace gfast
