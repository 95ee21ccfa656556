// The Fourier transform of a symbol and its inverse.
#pragma once

#include <complex>
#include <span>
#include <vector>

namespace gfast::board {

using Spectrum = std::vector<std::complex<double>>;

// X[k] = sum of x[n] e^(-2 pi i k n / N) for all k; N is a power of two.
Spectrum spectrumOf(std::span<const double> samples);

// The real part of the inverse transform.
std::vector<double> samplesOf(const Spectrum& spectrum);

}  // namespace gfast::board
