// The physical layer of a line: which subcarriers are processed, its front end, and every subcarrier's
// loading, SNR and equaliser in one table.
#pragma once

#include <libcli.h>

namespace gfast::console {

int CLI_showPhyParams(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showAfeParams(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showPhyInfo(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
