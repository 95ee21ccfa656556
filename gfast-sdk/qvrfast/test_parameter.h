// What the test parameters by subcarrier (ITU-T G.997.2) have in common: a direction in the
// network's terms, and values put into their encodings.
#pragma once

#include <qvr.h>

#include <cmath>
#include <limits>

#include "qvrline/tone_memory.h"

namespace gfast {

enum class Direction { kDownstream, kUpstream };

// The end that receives the direction, and the one that sends it.
inline LineEnd receiverOf(const LineInShowtime& line, Direction direction) {
  const bool receivesHere = (direction == Direction::kUpstream) == (line.descriptor.isDPsideLink == TRUE);
  return receivesHere ? LineEnd::kNear : LineEnd::kFar;
}
inline LineEnd senderOf(const LineInShowtime& line, Direction direction) {
  return receiverOf(line, direction) == LineEnd::kNear ? LineEnd::kFar : LineEnd::kNear;
}

// The value without its fraction, or the nearest one up to these bounds; of what is no number, `none`.
template <typename Encoded>
Encoded encode(double value, Encoded lowest, Encoded highest, Encoded none) {
  if (std::isnan(value)) {
    return none;
  }
  if (value <= lowest) {
    return lowest;
  }
  return value >= highest ? highest : static_cast<Encoded>(value);
}

// What a table holds where nothing was read.
template <typename Value>
constexpr Value kNotRead = std::numeric_limits<Value>::quiet_NaN();

}  // namespace gfast
