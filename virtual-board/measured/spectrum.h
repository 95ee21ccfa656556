// From a symbol's samples to its spectrum and back.
#pragma once

#include <complex>
#include <span>
#include <vector>

namespace gfast::board {

using Spectrum = std::vector<std::complex<double>>;

// Of as many real samples as a power of two: X[k] = sum of x[n] e^(-2 pi i k n / N), all N of them.
Spectrum spectrumOf(std::span<const double> samples);

// The real samples whose spectrum this is; what of it is not that of real samples is lost.
std::vector<double> samplesOf(const Spectrum& spectrum);

}  // namespace gfast::board
