// What the interpreter prints to a session goes through here.
#pragma once

#include <libcli.h>

namespace gfast::console {

// The interpreter's print callback in a session: one line, to the session's stream.
void printToSession(cli_def* cli, const char* line);

}  // namespace gfast::console
