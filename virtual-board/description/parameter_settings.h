// The start-up parameters that a board file sets.
#pragma once

#include "virtual-board/chip/parameters.h"
#include "virtual-board/description/toml_reader.h"

namespace gfast::board {

// By display name; what two or four bytes hold as a whole number, signed or not, the others as text of
// hexadecimal bytes.
ParameterSettings readParameterSettings(TomlReader table);

}  // namespace gfast::board
