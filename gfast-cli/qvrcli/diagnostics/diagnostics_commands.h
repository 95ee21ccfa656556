// Commands that look at the system itself: versions, logs, inventory, inter-chip links.
#pragma once

#include <libcli.h>

namespace gfast::console {

// diagnostics_commands.cpp
int CLI_showVersion(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showLogLevel(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_setLogLevel(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showSystemRestartState(cli_def* cli, const char* command, char* argv[],
                               int argc);  // the failed read's result code

// set_inventory.cpp
int CLI_setInventory(cli_def* cli, const char* command, char* argv[], int argc);

// logging_commands.cpp
int CLI_startLogging(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_stopLogging(cli_def* cli, const char* command, char* argv[], int argc);

// extcom_commands.cpp
int CLI_startExtcomTest(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showExtcomTestResults(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
