// What the two ends of a line agree on before they train, from the start-up parameters of both: which
// subcarriers are used and at what level, how the frame is shared, and how much each may carry.
//
// The network side manages the line: its frame, margins and adaptations are those of both ends. Spectrum that
// one end has to spare both spare: the bands in RFIBand and IARBands, what lies outside the first and the
// last bandStart, and whatever its bands are lowered by. Of two bit-loading limits the lower one holds.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <vector>

#include "virtual-board/base/line_framing.h"
#include "virtual-board/chip/parameters.h"

namespace gfast::board {

using ToneMask = std::bitset<kTones>;

// Subcarriers from first to last, both included.
struct ToneBand {
  uint16_t first;
  uint16_t last;
  bool operator==(const ToneBand&) const = default;
};

struct DirectionPlan {
  uint32_t symbols = 0;       // of a frame, the RMC symbol included
  uint32_t targetMargin = 0;  // 0.1 dB
  uint32_t mostBits = 0;      // a subcarrier
  bool seamlessRateAdaptation = false;
  bool fastRateAdaptation = false;
  bool operator==(const DirectionPlan&) const = default;
};

struct TonePlan {
  ToneMask medley;                           // the same in both directions
  std::vector<ToneBand> bands;               // the medley set as bands
  ToneMask pilots;                           // of the medley set: they carry no data
  std::array<double, kTones> sent_dbm_hz{};  // of the medley set
  double highest_dbm_hz = 0;                 // of these
  uint32_t frameSymbols = 0;                 // M_F
  bool vectoring = false;
  DirectionPlan downstream;
  DirectionPlan upstream;
  bool operator==(const TonePlan&) const = default;
};

TonePlan tonePlan(const Parameters& network, const Parameters& subscriber);

}  // namespace gfast::board
