#include "qvrcli/session/interpreter_guard.h"

#include <cstring>
#include <string>
#include <vector>

#include "qvrcli/session/abbreviations.h"
#include "qvrcli/session/libcli_structs.h"
#include "qvrcli/session/pattern_size.h"

namespace gfast::console {

namespace {

using FilterInit = int (*)(cli_def*, int, char**, cli_filter*);

struct GuardedFilter {
  const cli_command* command;
  FilterInit init;   // libcli's own
  const char* rest;  // the argument that takes the rest of the line; nullptr if none does
};

std::vector<GuardedFilter>& guardedFilters() {
  static auto& filters = *new std::vector<GuardedFilter>;
  return filters;
}

const GuardedFilter* findGuarded(const cli_command* command) {
  for (const GuardedFilter& filter : guardedFilters()) {
    if (filter.command == command) {
      return &filter;
    }
  }
  return nullptr;
}

std::string joinWords(int from, int count, char** words) {
  std::string joined;
  for (int i = from; i < count; i++) {
    if (i > from) {
      joined += ' ';
    }
    joined += words[i];
  }
  return joined;
}

// libcli calls it in place of the filter's own init when a line runs.
int initGuarded(cli_def* cli, int argc, char** argv, cli_filter* filter) {
  const cli_pipeline_stage& stage = *cli->pipeline->current_stage;
  const GuardedFilter* const guarded = findGuarded(stage.command);
  if (guarded == nullptr) {
    return CLI_ERROR;
  }
  if (guarded->rest != nullptr) {
    const std::string rest = joinWords(stage.first_unmatched - 1, argc, argv);
    if (std::strcmp(stage.command->command, "egrep") == 0 && patternSize(rest) > kLargestPattern) {
      cli_error(cli, "Pattern too large");
      return CLI_ERROR;
    }
    cli_set_optarg_value(cli, guarded->rest, rest.c_str(), 0);
  }
  char* const typed = argv[0];
  argv[0] = stage.command->command;
  const int result = guarded->init(cli, argc, argv, filter);
  argv[0] = typed;
  return result;
}

using Callback = int (*)(cli_def*, const char*, char**, int);

struct GuardedCommand {
  const cli_command* command;
  Callback run;  // libcli's own
};

std::vector<GuardedCommand>& guardedCommands() {
  static auto& commands = *new std::vector<GuardedCommand>;
  return commands;
}

int runGuarded(cli_def* cli, const char* name, char** argv, int argc) {
  if (refusesAbbreviation(cli)) {
    return CLI_ERROR;
  }
  for (const GuardedCommand& guarded : guardedCommands()) {
    if (guarded.command == cli->pipeline->current_stage->command) {
      return guarded.run(cli, name, argv, argc);
    }
  }
  return CLI_ERROR;
}

void guardCommand(cli_command* command) {
  if (command->callback != nullptr) {
    guardedCommands().push_back({command, command->callback});
    command->callback = runGuarded;
  }
}

void guardFilter(cli_command* command) {
  GuardedFilter guarded{command, command->init, nullptr};
  for (cli_optarg* argument = command->optargs; argument != nullptr; argument = argument->next) {
    if ((argument->flags & CLI_CMD_REMAINDER_OF_LINE) != 0) {
      argument->flags &= ~CLI_CMD_REMAINDER_OF_LINE;
      guarded.rest = argument->name;
    }
  }
  command->init = initGuarded;
  guardedFilters().push_back(guarded);
}

}  // namespace

void guardInterpreter(cli_def* cli) {
  guardedFilters().clear();
  guardedCommands().clear();
  for (cli_command* command = cli->commands; command != nullptr; command = command->next) {
    if (command->command_type == CLI_FILTER_COMMAND) {
      guardFilter(command);
    } else {
      guardCommand(command);
    }
  }
}

}  // namespace gfast::console
