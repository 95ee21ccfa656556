// Reads what a board file says about faults of the line.
#pragma once

#include "virtual-board/description/toml_reader.h"
#include "virtual-board/line/loop_config.h"

namespace gfast::board {

// One [[line_fault]] of this loop.
LineFault readLineFaultTable(TomlReader& table, const LoopConfig& loop);

// The name of a wire type that is known.
std::optional<std::string> readCable(TomlReader& table);

}  // namespace gfast::board
