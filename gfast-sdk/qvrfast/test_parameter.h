// What the test parameters per subcarrier (ITU-T G.997.2) share: which end sends and which end receives a
// direction, and how values are encoded.
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

// Cuts off the fraction and limits the value to these bounds. Returns `none` for a value that is not a
// number.
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

// The value of a table entry that was not read.
template <typename Value>
constexpr Value kNotRead = std::numeric_limits<Value>::quiet_NaN();

}  // namespace gfast
