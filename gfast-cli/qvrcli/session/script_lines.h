// The lines of a script, run one after the other.
#pragma once

#include <libcli.h>

#include <cstdio>

namespace gfast::console {

// Runs the file's lines in exec mode without privilege, and then restores both, as cli_file does. A line that
// is too long is refused whole, where cli_file runs each of its pieces. Ends when
// the script may not go on.
void runLines(cli_def* cli, FILE* script);

}  // namespace gfast::console
