// One direction of a line by subcarrier: received level, SNR and loading.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

#include "virtual-board/base/receiver.h"
#include "virtual-board/line/tone_plan.h"

namespace gfast::board {

// Symbols over which the SNR is measured.
constexpr uint32_t kSnrWindow = 256;

// The gap to the capacity at an error ratio of 1e-7, without coding.
constexpr double kShannonGap_db = 9.8;

// What lies between transmitter and receiver, by subcarrier.
struct Path {
  std::vector<std::complex<double>> gain;
  std::vector<double> noise_mw_hz;  // at the receiver, without the receiver's own
};

struct LineSpectrum {
  std::array<std::complex<double>, kTones> gain{};
  std::array<double, kTones> received_dbm_hz{};  // signal and noise together
  std::array<double, kTones> snr{};              // as a ratio; 0 where nothing is sent
  uint32_t snrScale = 0;  // noise energies are 2^snrScale times the window's length over (1 + SNR)
  double powerSent_dbm = 0;
  double powerReceived_dbm = 0;
};

LineSpectrum lineSpectrum(const Path& path, const DirectionPlan& plan, const Receiver& receiver);

// The loading of one direction. Pilots carry no data; the RMC's subcarriers carry none in the RMC symbol.
struct ToneLoading {
  std::array<uint8_t, kTones> bits{};
  std::array<uint8_t, kTones> rmcBits{};
  std::vector<uint16_t> rmcTones;
  uint32_t bytesPerSymbol = 0;     // B_D
  uint32_t bytesPerRmcSymbol = 0;  // B_DR
  uint32_t rmcBytes = 0;           // B_R: what the RMC itself carries
};

// With so much margin above the plan's, dB.
ToneLoading toneLoading(const LineSpectrum& spectrum, const DirectionPlan& plan, double above_db = 0);

// Takes the sums of bits anew.
void sumUp(ToneLoading& loading);

// The margin of a subcarrier with this SNR and so many bits, dB.
double marginOf(double snr, uint32_t bits);

// What a line with this loading has to spare, and what it could carry.
struct LoadingState {
  // The lowest margin of all subcarriers, 0.1 dB; 0 when none is loaded.
  int32_t margin = 0;
  int32_t rmcMargin = 0;
  // bytesPerSymbol and bytesPerRmcSymbol with fractions of bits, and limited by the chip alone.
  uint32_t attainableBytes = 0;
  uint32_t attainableRmcBytes = 0;
};

LoadingState loadingState(const LineSpectrum& spectrum, const DirectionPlan& plan,
                          const ToneLoading& loading);

}  // namespace gfast::board
