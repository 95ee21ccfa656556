// How long a line may be, in a session and in a script. A longer one is refused whole: its beginning could be
// another command.
#pragma once

#include <libcli.h>

#include <cstddef>

namespace gfast::console {

constexpr size_t kLongestLine = CLI_MAX_LINE_LENGTH - 1;  // characters

constexpr size_t kMostWords = CLI_MAX_LINE_WORDS - 2;  // libcli drops all words behind one more than that

// Takes the place of a typed line that is too long. Nobody can type it.
constexpr char kRefusedLine = '\x1f';

}  // namespace gfast::console
