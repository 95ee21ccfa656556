// The console's one interpreter.
#pragma once

#include <libcli.h>

namespace gfast::console {

// Set once, when the console starts. A handler prints through the interpreter that calls it; this is for the
// library's callbacks, which carry no context.
extern cli_def* cli;

}  // namespace gfast::console
