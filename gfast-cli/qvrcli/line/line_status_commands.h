// How the lines are and what they carry.
#pragma once

#include <libcli.h>
#include <qvr.h>

namespace gfast::console {

// Lines of the devices found, each with a valid line id.
QVR_lineId_t numberOfLinesFound();

// The first two tell libcli of a failure: CLI_ERROR (-1) when a device does not answer or a line has none,
// and 1 when the configuration cannot be read.
int CLI_showLineState(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showLineConfig(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showLineStatus(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showChannelStatus(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showInitFailureCause(cli_def* cli, const char* command, char* argv[], int argc);

int CLI_showNumberOfDevices(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showNumberOfLines(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showNumberOfReboots(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
