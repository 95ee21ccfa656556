// Who is at the ends of a line.
#pragma once

#include <libcli.h>

namespace gfast::console {

int CLI_showInventory(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
