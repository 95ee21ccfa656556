// The start-up parameters of the virtual chips' firmware, and where each lies in the start-up area.
#pragma once

#include <cstdint>
#include <span>

#include "chip/parameter_ids.h"

namespace gfast::board {

struct Parameter {
  eConstParams id;
  uint32_t length;  // bytes; numbers have 2 or 4 and are little-endian, all others are byte strings
  eConfigState state;
  eConfigType type;
  uint64_t initial;  // the first eight bytes, the lowest first; further ones are 0
  uint32_t offset = 0;

  bool number() const { return length == 2 || length == 4; }
  // Can be written to the line's copy while the chip runs. All others apply after a restart.
  bool lineLevel() const { return state == CONFIG_STATE_LINE && type == CONFIG_TYPE_PER_LINE; }
};

// By id: a parameter's id is its index.
std::span<const Parameter, PARAMS_Last> parameterTable();

// The start-up area's size in bytes.
uint32_t parameterAreaSize();

// The name that the console shows, and the name of a parameter that the console shows as a number.
const char* parameterName(eConstParams id);

}  // namespace gfast::board
