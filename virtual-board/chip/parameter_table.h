// The start-up parameters that the virtual chips' firmware knows, and where each lies in the start-up area.
#pragma once

#include <cstdint>
#include <span>

#include "chip/parameter_ids.h"

namespace gfast::board {

struct Parameter {
  eConstParams id;
  uint32_t length;  // bytes; 2 and 4 are little-endian numbers, others byte strings
  eConfigState state;
  eConfigType type;
  uint64_t initial;  // its bytes from the lowest up; those beyond eight are 0
  uint32_t offset = 0;

  bool number() const { return length == 2 || length == 4; }
  // Written to a line's copy while the chip runs; all others are taken over by a restart.
  bool lineLevel() const { return state == CONFIG_STATE_LINE && type == CONFIG_TYPE_PER_LINE; }
};

// In the order of their ids, which leaves no gap: a parameter's id is its index.
std::span<const Parameter, PARAMS_Last> parameterTable();

// The start-up area's size in bytes.
uint32_t parameterAreaSize();

// As the console shows it; in the same manner that of a parameter which the console knows by number alone.
const char* parameterName(eConstParams id);

}  // namespace gfast::board
