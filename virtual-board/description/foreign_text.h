// What a board file's text may do to the program and to a terminal, before it can.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace gfast::board {

// The number of the first line in which more than 100 names are joined by dots, 0 without one. The parser and
// its tables call themselves for each, and end the process when there are very many.
size_t lineNestedTooDeeply(std::string_view text);

// The text on one line, cut after 400 bytes; what is not printable ASCII is a question mark.
std::string printable(std::string_view text);

}  // namespace gfast::board
