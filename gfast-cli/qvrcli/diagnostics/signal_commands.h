// Commands that generate, send and capture test signals and measure the analogue front end with them.
#pragma once

#include <libcli.h>

namespace gfast::console {

int CLI_generateRandomSignal(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_transmitSignal(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_receiveSignal(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_testAfeTxRxPath(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_testAfePerformanceMTPR(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_testAfePerformanceMTPRInLoop(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
