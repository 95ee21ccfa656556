// A line by subcarrier: received level, SNR and loading. Levels and SNR are the same in both directions, the
// loading is not.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

#include "virtual-board/line/tone_plan.h"

namespace gfast::board {

// Symbols over which the SNR is measured.
constexpr uint32_t kSnrWindow = 256;

struct LineSpectrum {
  std::array<std::complex<double>, kTones> gain{};
  // The level of the noise where nothing is sent.
  std::array<double, kTones> received_dbm_hz{};
  std::array<double, kTones> snr{};  // as a ratio; 0 where nothing is sent
  uint32_t snrScale = 0;             // noise energies are 2^snrScale times the window's length over the SNR
  double powerSent_dbm = 0;
  double powerReceived_dbm = 0;
};

LineSpectrum lineSpectrum(const std::vector<std::complex<double>>& gains, const TonePlan& plan,
                          double noise_dbm_hz);

// The loading of one direction. Pilots carry no data; the RMC's subcarriers carry none in the RMC symbol.
struct ToneLoading {
  std::array<uint8_t, kTones> bits{};
  std::array<uint8_t, kTones> rmcBits{};
  std::vector<uint16_t> rmcTones;
  uint32_t bytesPerSymbol = 0;     // B_D
  uint32_t bytesPerRmcSymbol = 0;  // B_DR
  uint32_t rmcBytes = 0;           // B_R: what the RMC itself carries
  // bytesPerSymbol and bytesPerRmcSymbol with fractions of bits, and limited by the chip alone.
  uint32_t attainableBytes = 0;
  uint32_t attainableRmcBytes = 0;
  // The lowest margin of all subcarriers, 0.1 dB.
  uint32_t margin = 0;
  uint32_t rmcMargin = 0;
};

ToneLoading toneLoading(const LineSpectrum& spectrum, const TonePlan& plan, const DirectionPlan& direction);

}  // namespace gfast::board
