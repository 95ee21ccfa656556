#include "qvrcli/session/abbreviations.h"

#include <cstring>
#include <string>

#include "qvrcli/session/libcli_structs.h"

namespace gfast::console {

namespace {

bool canBeTyped(const cli_def* cli, const cli_command& command) {
  return command.command_type == CLI_REGULAR_COMMAND && command.privilege <= cli->privilege &&
         (command.mode == cli->mode || command.mode == MODE_ANY);
}

// Whether the word fits two commands of the list, and is neither's full name.
bool isAmbiguous(const cli_def* cli, const cli_command* commands, const char* word) {
  const size_t length = std::strlen(word);
  int fitting = 0;
  for (const cli_command* command = commands; command != nullptr; command = command->next) {
    if (canBeTyped(cli, *command) && strncasecmp(command->command, word, length) == 0) {
      if (std::strlen(command->command) == length) {
        return false;
      }
      fitting++;
    }
  }
  return fitting > 1;
}

// The words that lead to the command, and a blank behind each.
std::string pathTo(const cli_command* command) {
  return command == nullptr ? "" : pathTo(command->parent) + command->command + ' ';
}

}  // namespace

bool refusesAbbreviation(cli_def* cli) {
  const cli_pipeline_stage& stage = *cli->pipeline->current_stage;
  int word = stage.first_unmatched;
  for (const cli_command* command = stage.command; command != nullptr; command = command->parent) {
    word--;
    const cli_command* const parent = command->parent;
    if (isAmbiguous(cli, parent == nullptr ? cli->commands : parent->children, stage.words[word])) {
      cli_error(cli, "Invalid command \"%s%s\"", pathTo(parent).c_str(), stage.words[word]);
      return true;
    }
  }
  return false;
}

}  // namespace gfast::console
