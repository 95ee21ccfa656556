// The start-up parameters that a board file sets.
#pragma once

#include "board_config.h"
#include "toml_reader.h"

// By display name; what two or four bytes hold as a whole number, signed or not, the others as text of
// hexadecimal bytes.
ParameterSettings readParameterSettings(TomlReader table);
