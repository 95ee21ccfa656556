// What each subcarrier carries and suffers, and the attenuation of the whole band, upstream and downstream.
#pragma once

#include <libcli.h>

namespace gfast::console {

int CLI_showBITSps(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showBITSRMCps(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showSNRps(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showALNps(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showHLOGps(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showSATN(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
