// Reads what a board file says about the limits of what a line sends.
#pragma once

#include "virtual-board/description/toml_reader.h"
#include "virtual-board/line/spectrum_limits.h"

namespace gfast::board {

SpectrumLimits readSpectrumTable(TomlReader& table);

}  // namespace gfast::board
