// Board files: a board's description in TOML.
#pragma once

#include <string>

#include "virtual-board/board/board_config.h"
#include "virtual-board/description/board_file_error.h"

namespace gfast::board {

// Reads the description of a board from a file. Every key may be left out. Throws BoardFileError at the first
// mistake: an unknown key, a wrong type, an impossible value, a missing file.
BoardConfig readBoardFile(const std::string& path);

// The same from the file's text. `path` is its name in errors; file names in the text are relative to its
// folder.
BoardConfig parseBoard(const std::string& text, const std::string& path);

}  // namespace gfast::board
