#include "virtual-board/base/line_framing.h"

#include <algorithm>

namespace gfast::board {

namespace {

constexpr double kRetransmissionShare = 0.005;
constexpr double kEocOverhead_bps = 1000;

}  // namespace

StreamRates streamRates(const StreamFraming& framing) {
  if (framing.bytesPerSymbol == 0) {
    return {};
  }
  const double f = kSampleRate_hz;
  const double k = framing.dtu.codewordData();
  const double q = framing.dtu.codewords;
  const double overhead = f * kDtuOverhead;
  const double perFrame =
      static_cast<double>(kSamplesPerSymbol) * framing.frameSymbols * framing.dtu.codewordSize;
  // The RMC symbol is missing once a superframe.
  const double data = f * k * (framing.symbolsPerFrame - 1) - framing.symbolsPerFrame * overhead / q -
                      f * k / kFramesPerSuperframe + overhead / q + overhead / (kFramesPerSuperframe * q);
  const double inData = framing.bytesPerSymbol * 8 * data / perFrame;
  const double inRmc = framing.bytesPerRmcSymbol * 8 * f * (q * k - kDtuOverhead) / (perFrame * q);
  // A very long loop may carry less than the eoc takes.
  const double expected = std::max(0.0, (inData + inRmc - kEocOverhead_bps) / 1000);
  const double net = expected / (1 - kRetransmissionShare);
  return {static_cast<uint32_t>(framing.bytesPerSymbol * 8.0 * f / kSamplesPerSymbol / 1000),
          static_cast<uint32_t>(net), static_cast<uint32_t>(expected)};
}

}  // namespace gfast::board
