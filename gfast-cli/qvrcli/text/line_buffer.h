// Building a line of a table column by column, and fill text for labels.
#pragma once

#include <libcli.h>

#include <cstdint>

namespace gfast::console {

// Appends blanks up to the column, then the text. A column already passed adds no blanks. The line holds 999
// characters; what does not fit is dropped.
void AddMessage(const char* xi_text, uint32_t xi_column);

// Prints the line built so far and starts the next.
void PrintMessage(cli_def* xi_cli);

// Copies xi_length bytes and puts a terminator behind them.
void copyToString(char* xo_text, const void* xi_bytes, int xi_length);

// That many fill characters (at most 79), in one buffer that every call reuses.
const char* filler(char xi_fillCharacter, uint8_t xi_width);

}  // namespace gfast::console
