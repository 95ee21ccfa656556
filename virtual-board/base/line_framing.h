// How the virtual chips frame what a line carries (ITU-T G.9701), and the rates that follow.
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
// 4000 of them take three seconds.
constexpr uint32_t kFramesPer3s = 4000;
static_assert(kFramesPer3s * kSymbolsPerFrame == 3 * kSymbolRate_hz);

// Data transfer units: four Reed-Solomon codewords each.
constexpr uint32_t kCodewordSize = 240;
constexpr uint32_t kCodewordRedundancy = 16;
constexpr uint32_t kCodewordData = kCodewordSize - kCodewordRedundancy;
constexpr uint32_t kCodewordsPerDtu = 4;
constexpr uint32_t kDtuSize = kCodewordsPerDtu * kCodewordSize;
constexpr uint32_t kDtuOverhead = 7;
constexpr uint32_t kDtuPayload = kCodewordsPerDtu * kCodewordData - kDtuOverhead;

// What the embedded operations channel takes of a stream.
constexpr uint32_t kEocBytesPer3s = 1500;
constexpr uint32_t kEocRate_kbps = 4;

// Subcarriers: all, those from the first to the last that carry data, and what one carries at the most.
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
  uint32_t symbolsPerFrame = 0;              // of them, this direction's
  uint32_t bytesPerSymbol = 0;               // B_D
  uint32_t bytesPerRmcSymbol = 0;            // B_DR: what the RMC leaves of its symbol
  // Whether the receiver may ask for these adaptations.
  bool seamlessRateAdaptation = true;
  bool fastRateAdaptation = true;

  uint64_t bytesPerFrame() const {
    return uint64_t{symbolsPerFrame - 1} * bytesPerSymbol + bytesPerRmcSymbol;
  }
};

// In kbit/s. The expected throughput is what retransmission leaves of the net rate.
struct StreamRates {
  uint32_t line = 0;
  uint32_t net = 0;
  uint32_t expected = 0;
};

// All zero for a stream that carries nothing.
StreamRates streamRates(const StreamFraming& framing);

}  // namespace gfast::board
