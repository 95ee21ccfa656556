// The throughput to be expected of a line, and the rates it comes from.
#pragma once

#include <libcli.h>

namespace gfast::console {

int CLI_showLineETR(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
