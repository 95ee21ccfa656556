// Configuration mode: a line configuration that is edited word by word, then shown, saved or read again. The
// record belongs to the console; editing it sends nothing to a chip.
#pragma once

#include <libcli.h>
#include <qvr.h>

#include <span>

#include "qvrcli/command.h"

namespace gfast::console {

// The record being edited: line 0's configuration when the console starts and after a restart of the system.
// Only the command thread uses it, and it is kept from one session to the next.
extern QVR_lineConfig_t configParams;

// One command for each word that edits the record: CLI_setNoiseMargin and so on.
#define CONFIG_WORD(handler, ...) int handler(cli_def* cli, const char* command, char* argv[], int argc);
#include "qvrcli/config/config_words.inc"
#undef CONFIG_WORD

int CLI_setDefaultConfigParams(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_saveLineConfig(cli_def* cli, const char* command, char* argv[], int argc);
int CLI_showConfigParams(cli_def* cli, const char* command, char* argv[], int argc);

// Returns 1 to libcli when the configuration cannot be read.
int CLI_getConfigParams(cli_def* cli, const char* command, char* argv[], int argc);

// All commands of configuration mode, in the order in which they are registered.
std::span<const Command> configCommands();

}  // namespace gfast::console
