// What an operator allows a line to send, beside the chips' own parameters (ITU-T G.9701, G.997.2):
// subcarriers that carry nothing (CARMASK), highest levels (PSDMASK), and upstream power back-off (UPBO), so
// that a near modem does not drown the signals of farther ones.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace gfast::board {

// From first to last subcarrier, both included.
struct ToneBand {
  uint16_t first;
  uint16_t last;
  bool operator==(const ToneBand&) const = default;
};

struct LevelPoint {
  uint16_t tone;
  double dbm_hz;
};

struct DirectionSpectrumLimits {
  std::vector<ToneBand> masked;
  std::vector<LevelPoint> levels;  // rising tones, straight lines between, level outside
};

// The highest level at f MHz is -a - b * sqrt(f) + k * sqrt(f), where k is the line's loss at 1 MHz as the
// subscriber's modem estimates it, or as it is forced.
struct PowerBackOff {
  double a_dbm_hz;
  double b_dbm_hz;
  double reference_db = 0;  // lines with less loss than this are raised to equal crosstalk; 0: none is
  std::optional<double> forced_db{};
};

struct SpectrumLimits {
  DirectionSpectrumLimits downstream;
  DirectionSpectrumLimits upstream;
  std::optional<PowerBackOff> backOff{};
};

}  // namespace gfast::board
