// All lines on one page: what each can carry and what it carries.
#pragma once

#include <libcli.h>

namespace gfast::console {

// One row a line, rates in Mbit/s. What a device does not tell is zero.
int CLI_showNetworkInfo(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
