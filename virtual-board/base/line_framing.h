// Framing of the virtual chips (ITU-T G.9701), and the rates that follow from it.
#pragma once

#include <cstdint>

namespace gfast::board {

// Symbols and frames.
constexpr uint32_t kSampleRate_hz = 211968000;
constexpr uint32_t kSamplesPerSymbol = 4416;  // 48,000 symbols a second
constexpr uint32_t kSymbolRate_hz = kSampleRate_hz / kSamplesPerSymbol;
// The usual frame.
constexpr uint32_t kSymbolsPerFrame = 36;
constexpr uint32_t kDownstreamSymbols = 28;  // of a frame, the RMC symbol included
constexpr uint32_t kUpstreamSymbols = 7;
constexpr uint32_t kFramesPerSuperframe = 8;
// A whole number of frames takes three seconds.
constexpr uint32_t kFramesPer3s = 4000;
static_assert(kFramesPer3s * kSymbolsPerFrame == 3 * kSymbolRate_hz);

// Data transfer units of some Reed-Solomon codewords each.
constexpr uint32_t kDtuOverhead = 7;
struct DtuFraming {
  uint32_t codewordSize;  // N_FEC, bytes
  uint32_t redundancy;    // R_FEC, of these
  uint32_t codewords;     // Q, in a unit

  constexpr uint32_t codewordData() const { return codewordSize - redundancy; }
  constexpr uint32_t size() const { return codewords * codewordSize; }
  constexpr uint32_t payload() const { return codewords * codewordData() - kDtuOverhead; }
  bool operator==(const DtuFraming&) const = default;
};
// What the firmware uses in each direction.
constexpr DtuFraming kDownstreamDtu{240, 16, 4};
constexpr DtuFraming kUpstreamDtu{224, 12, 5};

// Taken from each direction by the embedded operations channel (eoc).
constexpr uint32_t kEocBytesPer3s = 1500;
constexpr uint32_t kEocRate_kbps = 4;

// Subcarriers. Those from the first to the last carry data, at most kMostToneBits each.
constexpr uint32_t kTones = 2048;
constexpr double kSubcarrierSpacing_hz = 51750;
constexpr double kSubcarrierSpacing_mhz = kSubcarrierSpacing_hz / 1e6;
constexpr uint32_t kFirstTone = 43;
constexpr uint32_t kLastTone = 1971;
constexpr uint32_t kProcessedTones = kLastTone - kFirstTone + 1;
constexpr uint32_t kMostToneBits = 12;

// One direction of a line.
struct StreamFraming {
  uint32_t frameSymbols = kSymbolsPerFrame;  // M_F
  uint32_t symbolsPerFrame = 0;              // of a frame, in this direction
  uint32_t bytesPerSymbol = 0;               // B_D
  uint32_t bytesPerRmcSymbol = 0;            // B_DR: data beside the RMC in its symbol
  DtuFraming dtu = kDownstreamDtu;
  // Whether the receiver may ask for these adaptations.
  bool seamlessRateAdaptation = true;
  bool fastRateAdaptation = true;

  uint64_t bytesPerFrame() const {
    return uint64_t{symbolsPerFrame - 1} * bytesPerSymbol + bytesPerRmcSymbol;
  }
};

// In kbit/s. The expected throughput is the net rate less the share of retransmissions.
struct StreamRates {
  uint32_t line = 0;
  uint32_t net = 0;
  uint32_t expected = 0;
};

// All zero when bytesPerSymbol is 0.
StreamRates streamRates(const StreamFraming& framing);

}  // namespace gfast::board
