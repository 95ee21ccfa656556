// Running a file of commands.
#pragma once

#include <libcli.h>

namespace gfast::console {

// Runs a script, as often as told, through the interpreter it is called from. Scripts may run scripts, ten
// deep: a script that runs itself is stopped there, together with the scripts that led to it. CLI_QUIT is how
// the scripts in between are stopped; the first of them answers CLI_OK.
int CLI_runScript(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
