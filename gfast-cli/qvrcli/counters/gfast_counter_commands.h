// The chip's counter blocks and what the far end tells of itself, as it comes.
#pragma once

#include <libcli.h>

namespace gfast::console {

int CLI_showGfastCounters(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showRemoteManagementCounters(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showPMDTestParameters(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
