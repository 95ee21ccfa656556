#include "qvrcli/vocabulary/command_tree.h"

#include <cstring>
#include <map>
#include <string_view>

#include "qvrcli/session/abbreviations.h"
#include "qvrcli/session/libcli_structs.h"
#include "qvrcli/session/line_limit.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/session/stop.h"
#include "qvrcli/vocabulary/command_table.h"

namespace gfast::console {

namespace {

bool readOnly = false;

// Only commands with a handler are looked for, and their paths differ from each other.
const Command* findCommand(const char* path) {
  for (const Command& command : commandTable()) {
    if (command.handler != nullptr && std::strcmp(command.path, path) == 0) {
      return &command;
    }
  }
  return nullptr;
}

// Of a line without arguments the last word is a keyword, and no keyword contains a question mark.
bool asksForUsage(char* argv[], int argc) {
  return argc > 0 && std::strchr(argv[argc - 1], '?') != nullptr;
}

// libcli drops the words for which it has no room.
bool hasTooManyWords(const cli_def* cli) {
  return static_cast<size_t>(cli->pipeline->num_words) > kMostWords;
}

int run(const Command& row, cli_def* cli, const char* command, char* argv[], int argc) {
  if (asksForUsage(argv, argc) || !row.accepts(argc)) {
    cli_print(cli, "%s", row.usage);
    return CLI_OK;
  }
  if (readOnly && row.effect.changes(argc)) {
    cli_error(cli, "Refused: this console is read-only");
    return CLI_OK;
  }
  return row.handler(cli, command, argv, argc);
}

int enterConfigurationMode(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  cli_set_configmode(cli, MODE_CONFIG, nullptr);
  return CLI_OK;
}

// libcli's own `configure` needs privilege and a second word.
void registerConfigure(cli_def* cli) {
  cli_unregister_command(cli, "configure");
  cli_register_command(cli, nullptr, "configure", enterConfigurationMode, PRIVILEGE_UNPRIVILEGED, MODE_EXEC,
                       "Enter configuration mode");
}

}  // namespace

void registerCommandTree(cli_def* cli) {
  registerConfigure(cli);
  std::map<std::string_view, cli_command*> keywords;
  for (const Command& command : commandTable()) {
    const std::string_view path = command.path;
    const size_t blank = path.rfind(' ');
    const bool nested = blank != std::string_view::npos;
    cli_command* const parent = nested ? keywords.at(path.substr(0, blank)) : nullptr;
    const char* const word = nested ? command.path + blank + 1 : command.path;
    cli_command* const registered =
        cli_register_command(cli, parent, word, command.handler != nullptr ? dispatchCommand : nullptr,
                             PRIVILEGE_UNPRIVILEGED, command.mode, command.help);
    if (command.handler == nullptr) {
      keywords[path] = registered;
    }
  }
}

void refuseChanges() {
  readOnly = true;
}

int dispatchCommand(cli_def* cli, const char* command, char* argv[], int argc) {
  const Command* const row = findCommand(command);
  if (row == nullptr) {
    return CLI_ERROR;
  }
  if (sessionLost(cli)) {
    return CLI_QUIT;
  }
  if (hasTooManyWords(cli)) {
    cli_error(cli, "Line too long (more than %zu words)", kMostWords);
    return CLI_OK;
  }
  if (refusesAbbreviation(cli)) {
    return CLI_ERROR;
  }
  const BufferedSession buffered(cli);
  int result = CLI_OK;
  {
    const RunningCommand running(cli);
    result = run(*row, cli, command, argv, argc);
  }
  if (!interrupted()) {
    printWaiting(cli);
  }
  return result;
}

}  // namespace gfast::console
