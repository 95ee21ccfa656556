// Running a file of commands.
#pragma once

#include <libcli.h>

#include <cstdint>

namespace gfast::console {

// Runs a script that many times, through the interpreter it is called from; the result is for libcli. Scripts
// may run scripts, ten deep: a script that runs itself is stopped there, together with the scripts that led
// to it.
//   CLI_OK    done, or this is the outermost of the scripts that were stopped
//   CLI_QUIT  one of the scripts inside was stopped, and the script that called this one stops as well
int runScript(cli_def* cli, const char* filename, uint32_t iterations);

}  // namespace gfast::console
