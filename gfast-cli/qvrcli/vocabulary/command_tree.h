// The console's vocabulary: one table row a command, in registration order. The order is the order of the
// rows, and help lists the commands in it.
#pragma once

#include <libcli.h>

#include <span>

#include "qvrcli/vocabulary/command.h"

namespace gfast::console {

// Every registration, parents directly before their children.
std::span<const Command> commandTable();

// Registers the table with libcli, each handler behind dispatchCommand, and `configure` in place of libcli's
// own.
void registerCommandTree(cli_def* cli);

// What libcli calls for every command of the table. The usage convention lives here, once: a last word that
// contains '?', or a number of words the command does not take, prints the usage line and does nothing else.
// The session's output is buffered for the length of the command.
int dispatchCommand(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
