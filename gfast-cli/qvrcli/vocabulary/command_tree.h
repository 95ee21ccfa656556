// The vocabulary inside libcli: registering it, and what happens when one of its commands is typed.
#pragma once

#include <libcli.h>

namespace gfast::console {

// Registers the table with libcli, each handler behind dispatchCommand, and `configure` in place of libcli's
// own.
void registerCommandTree(cli_def* cli);

// From now on every command is refused, with one line, that would change a chip, its flash or a file.
void refuseChanges();

// What libcli calls for every command of the table. A last word that contains '?', or a number of words that
// the command does not take, prints the usage line and does nothing else. A line of too many words and an
// abbreviation that fits two commands are refused. The session's output is buffered
// while the command runs.
int dispatchCommand(cli_def* cli, const char* command, char* argv[], int argc);

}  // namespace gfast::console
