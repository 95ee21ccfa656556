// Board files: a board's description in TOML.
#pragma once

#include <string>

#include "virtual-board/board/board_config.h"
#include "virtual-board/description/board_file_error.h"

namespace gfast::board {

// The board that the file describes; every key may be left out. Throws BoardFileError at the first mistake:
// an unknown key, a wrong type, an impossible value, a file that is not there.
BoardConfig readBoardFile(const std::string& path);

// The same from the file's text; `path` names it in errors, and names in the text are relative to its folder.
BoardConfig parseBoard(const std::string& text, const std::string& path);

}  // namespace gfast::board
