// The console's vocabulary: one table row a command, in registration order. The order is the order of the
// rows, and help lists the commands in it.
#pragma once

#include <libcli.h>

#include <span>

namespace gfast::console {

// A handler checks, calls, prints. It has libcli's signature: interpreter, the command's full name, the words
// after the keyword path, their count. It answers CLI_OK, failures included (they are printed), unless its
// own comment says otherwise.
using Handler = int (*)(cli_def* cli, const char* command, char* argv[], int argc);

// Whether a command takes this many words.
using ArgumentCount = bool (*)(int argc);

template <int Least, int Most>
constexpr bool between(int argc) {
  return argc >= Least && argc <= Most;
}
template <int Number>
constexpr bool exactly(int argc) {
  return argc == Number;
}
template <int Least>
constexpr bool atLeast(int argc) {
  return argc >= Least;
}
constexpr bool anyNumber(int /*argc*/) {
  return true;
}

struct Command {
  const char* path;       // keyword path, words separated by one blank
  int mode;               // MODE_EXEC or MODE_CONFIG
  const char* help;       // as help shows it; nullptr for a keyword-only word
  Handler handler;        // nullptr for a keyword-only word
  ArgumentCount accepts;  // any other count prints the usage line
  const char* usage;
};

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
