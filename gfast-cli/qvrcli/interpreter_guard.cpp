#include "qvrcli/interpreter_guard.h"

#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "std/bits.h"

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

// Stands in for libcli's function that sets a filter up when a line is run.
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

constexpr size_t kTooLarge = kLargestPattern + 1;

size_t add(size_t a, size_t b) {
  return min(a + b, kTooLarge);
}

size_t multiply(size_t a, size_t b) {
  return min(min(a, kTooLarge) * min(b, kTooLarge), kTooLarge);
}

// Walks a pattern once and adds up its pieces.
class PatternMeter {
 public:
  explicit PatternMeter(std::string_view pattern) : pattern_(pattern) {}

  size_t measure() {
    while (next_ < pattern_.size()) {
      step(pattern_[next_++]);
    }
    size_t size = 0;
    for (const Group& open : groups_) {
      size = add(size, open.size);
    }
    return size;
  }

 private:
  struct Group {
    size_t size = 0;  // of all pieces so far
    size_t last = 0;  // of the piece that a repetition would repeat
  };

  void step(char character) {
    switch (character) {
      case '(':
        groups_.emplace_back();
        break;
      case ')':
        closeGroup();
        break;
      case '[':
        skipBracket();
        piece(1);
        break;
      case '+':
        repeat(2);  // once, and then any number of times
        break;
      case '{':
        repeatCounted();
        break;
      case '\\':
        next_ = min(next_ + 1, pattern_.size());
        piece(1);
        break;
      default:
        piece(character == '*' || character == '?' ? 0 : 1);
    }
  }

  void piece(size_t size) {
    Group& group = groups_.back();
    if (size == 0) {
      group.size = add(group.size, 1);  // repeats in place
      return;
    }
    group.size = add(group.size, size);
    group.last = size;
  }

  void closeGroup() {
    const size_t size = add(groups_.back().size, 1);
    if (groups_.size() > 1) {
      groups_.pop_back();
    }
    piece(size);
  }

  void repeat(size_t copies) {
    Group& group = groups_.back();
    const size_t repeated = multiply(group.last, copies);
    group.size = add(group.size, repeated);
    group.last = max<size_t>(repeated, 1);
  }

  size_t number() {
    size_t value = 0;
    while (next_ < pattern_.size() && std::isdigit(static_cast<unsigned char>(pattern_[next_])) != 0) {
      value = add(multiply(value, 10), static_cast<size_t>(pattern_[next_++] - '0'));
    }
    return value;
  }

  // "{3}", "{2,5}", "{2,}", "{,5}". What turns out to be no such thing is text, and counted as if it were
  // one.
  void repeatCounted() {
    const size_t least = number();
    size_t most = least;
    if (next_ < pattern_.size() && pattern_[next_] == ',') {
      next_++;
      most = max(number(), least + 1);
    }
    if (next_ < pattern_.size() && pattern_[next_] == '}') {
      next_++;
    }
    repeat(add(most, 1));
  }

  // Moves behind the next occurrence of the text, or to the end.
  void skipPast(std::string_view text) {
    const size_t found = pattern_.find(text, next_);
    next_ = found == std::string_view::npos ? pattern_.size() : found + text.size();
  }

  // "[abc]", "[^]x]", "[[:alpha:]_]".
  void skipBracket() {
    if (next_ < pattern_.size() && pattern_[next_] == '^') {
      next_++;
    }
    for (bool first = true; next_ < pattern_.size(); first = false) {
      const char character = pattern_[next_++];
      if (character == ']' && !first) {
        return;
      }
      const char kind = next_ < pattern_.size() ? pattern_[next_] : '\0';
      if (character == '[' && (kind == ':' || kind == '.' || kind == '=')) {
        next_++;
        const char end[] = {kind, ']'};
        skipPast(std::string_view(end, sizeof end));
      }
    }
  }

  std::string_view pattern_;
  size_t next_ = 0;
  std::vector<Group> groups_{1};
};

}  // namespace

void guardInterpreter(cli_def* cli) {
  guardedFilters().clear();
  for (cli_command* command = cli->commands; command != nullptr; command = command->next) {
    if (command->command_type == CLI_FILTER_COMMAND) {
      guardFilter(command);
    }
  }
}

size_t patternSize(std::string_view pattern) {
  return PatternMeter(pattern).measure();
}
