// The start-up parameters that a board file sets.
#pragma once

#include "virtual-board/chip/parameters.h"
#include "virtual-board/description/toml_reader.h"

namespace gfast::board {

// Keys are display names. Parameters of two or four bytes are whole numbers, signed or unsigned; all others
// are texts of hexadecimal bytes.
ParameterSettings readParameterSettings(TomlReader table);

}  // namespace gfast::board
