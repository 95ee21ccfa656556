// What the two ends of a line agree on before training, from the start-up parameters of both: subcarriers,
// levels, the share of the frame, and limits of the loading.
//
// Frame, margins and adaptations are set by the network side. Both ends spare what either has to
// spare: the bands of RFIBand and IARBands, the subcarriers outside of the first and the last bandStart, and
// the levels by which the bands are lowered, and both keep to the limits of the operator. The lower of both
// bit-loading limits applies. Upstream ends a few subcarriers below downstream and is sent with less power.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <vector>

#include "virtual-board/base/line_framing.h"
#include "virtual-board/chip/parameters.h"
#include "virtual-board/line/spectrum_limits.h"

namespace gfast::board {

using ToneMask = std::bitset<kTones>;

struct DirectionPlan {
  ToneMask medley;
  std::vector<ToneBand> bands;               // the medley set as bands
  ToneMask pilots;                           // of the medley set: they carry no data
  std::array<double, kTones> sent_dbm_hz{};  // of the medley set
  double highest_dbm_hz = 0;                 // the highest of sent_dbm_hz
  uint32_t symbols = 0;                      // of a frame, the RMC symbol included
  uint32_t targetMargin = 0;                 // 0.1 dB
  uint32_t reserve = 0;                      // what the receiver keeps above the target, 0.1 dB
  uint32_t mostBits = 0;                     // a subcarrier
  uint32_t mostRmcBits = 0;                  // a subcarrier of the RMC
  DtuFraming dtu = kDownstreamDtu;
  bool seamlessRateAdaptation = false;
  bool fastRateAdaptation = false;
  bool operator==(const DirectionPlan&) const = default;
};

struct TonePlan {
  uint32_t frameSymbols = 0;  // M_F
  size_t networkEnd = 0;      // the device at the network side
  bool vectoring = false;
  DirectionPlan downstream;
  DirectionPlan upstream;
  bool operator==(const TonePlan&) const = default;
};

// With the loss at 1 MHz that the subscriber's modem estimates.
TonePlan tonePlan(const Parameters& network, const Parameters& subscriber, const SpectrumLimits& limits = {},
                  double electricalLength_db = 0);

}  // namespace gfast::board
