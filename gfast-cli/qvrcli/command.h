// What a command is: one row of the console's vocabulary. Each family of commands publishes its own rows.
#pragma once

#include <libcli.h>

#include <limits>

namespace gfast::console {

// A handler checks, calls, prints. It has libcli's signature: interpreter, the command's full name, the words
// after the keyword path, their count. It returns CLI_OK, also after a failure, which it prints; a handler
// that returns something else says so.
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

// What a command does to chips, their flash and the operator's files. A console that is read-only refuses
// what changes them.
struct Effect {
  int wordsThatChange;  // with this many words or more it changes something

  constexpr bool changes(int argc) const { return argc >= wordsThatChange; }
};

constexpr Effect kReads = {std::numeric_limits<int>::max()};
constexpr Effect kChanges = {0};

// Writes a file when its name is typed, as the word at this position; otherwise it only reads.
constexpr Effect writesFile(int position) {
  return {position + 1};
}

struct Command {
  const char* path;  // keyword path, words separated by one blank
  int mode;          // MODE_EXEC or MODE_CONFIG
  Effect effect;
  const char* help;       // as help shows it; nullptr for a keyword-only word
  Handler handler;        // nullptr for a keyword-only word
  ArgumentCount accepts;  // any other count prints the usage line
  const char* usage;
};

// A word that only leads to others.
constexpr Command keyword(const char* path) {
  return {path, MODE_EXEC, kReads, nullptr, nullptr, anyNumber, nullptr};
}

// A command of exec mode.
constexpr Command exec(const char* path, const char* help, Handler handler, ArgumentCount accepts,
                       Effect effect, const char* usage) {
  return {path, MODE_EXEC, effect, help, handler, accepts, usage};
}

// A command of configuration mode.
constexpr Command config(const char* path, const char* help, Handler handler, ArgumentCount accepts,
                         Effect effect, const char* usage) {
  return {path, MODE_CONFIG, effect, help, handler, accepts, usage};
}

}  // namespace gfast::console
