// A demonstration of the quarter-hour callback.
#pragma once

#include <libcli.h>

#include <ctime>

namespace gfast::console {

// No keyword leads to it.
int CLI_register15minCallback(cli_def* cli, const char* command, char* argv[], int argc);

// What it registers. Has the time of the boundary printed in the session.
void CLI_15minEventCallback(time_t boundary);

}  // namespace gfast::console
