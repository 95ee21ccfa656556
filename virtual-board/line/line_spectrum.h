// A line by subcarrier: what arrives of what is sent, above which noise, and what is loaded on it. The same
// pair carries the same levels in both directions; only what is loaded differs.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

#include "virtual-board/line/tone_plan.h"

namespace gfast::board {

// An SNR is measured over so many symbols.
constexpr uint32_t kSnrWindow = 256;

struct LineSpectrum {
  std::array<std::complex<double>, kTones> gain{};
  // On a subcarrier that is not sent on, what arrives is the noise.
  std::array<double, kTones> received_dbm_hz{};
  std::array<double, kTones> snr{};  // as a ratio; 0 where nothing is sent
  uint32_t snrScale = 0;             // noise energies are 2^snrScale times the window's length over the SNR
  double powerSent_dbm = 0;
  double powerReceived_dbm = 0;
};

LineSpectrum lineSpectrum(const std::vector<std::complex<double>>& gains, const TonePlan& plan,
                          double noise_dbm_hz);

// One direction's loading. The RMC's subcarriers are set aside in the RMC symbol, the pilots in every one.
struct ToneLoading {
  std::array<uint8_t, kTones> bits{};
  std::array<uint8_t, kTones> rmcBits{};
  std::vector<uint16_t> rmcTones;
  uint32_t bytesPerSymbol = 0;     // B_D
  uint32_t bytesPerRmcSymbol = 0;  // B_DR
  uint32_t rmcBytes = 0;           // B_R: what the RMC itself carries
  // As the first two, if bits could be divided and the line's limit were the chip's.
  uint32_t attainableBytes = 0;
  uint32_t attainableRmcBytes = 0;
  // The noise by which the least sheltered subcarrier could rise, 0.1 dB.
  uint32_t margin = 0;
  uint32_t rmcMargin = 0;
};

ToneLoading toneLoading(const LineSpectrum& spectrum, const TonePlan& plan, const DirectionPlan& direction);

}  // namespace gfast::board
