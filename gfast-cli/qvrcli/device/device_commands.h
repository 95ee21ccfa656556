// Commands that act on a chip as a whole: identity, memory, boot stages, firmware, lines, restarts.
#pragma once

#include <libcli.h>
#include <qvr.h>

#include <cstdio>
#include <ctime>

namespace gfast::console {

// device_commands.cpp
int CLI_showDeviceInfo(cli_def* cli, const char* command, char* argv[],
                       int argc);  // CLI_ERROR: not refreshed
int CLI_rediscoverDevices(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_rebootDevice(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_restartSystem(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_sleep(cli_def* cli, const char* command, char* argv[], int argc);

// line_control_commands.cpp
int CLI_resetLine(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_activateLine(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_deactivateLine(cli_def* cli, const char* command, char* argv[], int argc);

// memory_commands.cpp; a bad address or length answers 1 to libcli
int CLI_readMemory(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_readSBR(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_writeMemory(cli_def* cli, const char* command, char* argv[], int argc);

// Writes chip memory to an open file, one line per 4 bytes as `read memory` shows them. What could not be
// read is reported on standard output and dumped as zeros.
void dumpMemoryToFile(FILE* file, QVR_deviceId_t deviceId, uint32_t address, uint32_t length);

// firmware_commands.cpp
int CLI_loadBootloader(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_upgradeBootloader(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_upgradeManufacturerBlock(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_upgradeFirmwareImage(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_eraseBootloader(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_eraseManufacturerBlock(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_eraseFirmwareImage(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_eraseFlash(cli_def* cli, const char* command, char* argv[], int argc);

// callback_commands.cpp: a demonstration of the quarter-hour callback. No keyword leads to it.
int CLI_register15minCallback(cli_def* cli, const char* command, char* argv[], int argc);
void CLI_15minEventCallback(time_t boundary);

}  // namespace gfast::console
