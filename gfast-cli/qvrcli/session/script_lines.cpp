#include "qvrcli/session/script_lines.h"

#include <cstring>
#include <string>

#include "qvrcli/session/line_limit.h"
#include "qvrcli/session/stop.h"

namespace gfast::console {

namespace {

constexpr const char* kBlanks = " \t\v\f";

class ScriptLines {
 public:
  explicit ScriptLines(FILE* script) : script_(script) {}

  // False at the end of the script.
  bool next() {
    text_.clear();
    length_ = 0;
    int character = std::getc(script_);
    if (character == EOF) {
      return false;
    }
    for (; character != EOF && character != '\n'; character = std::getc(script_)) {
      if (++length_ <= kLongestLine + 1) {
        text_ += static_cast<char>(character);
      }
    }
    if (length_ > 0 && length_ == text_.size() && text_.back() == '\r') {
      length_--;
    }
    number_++;
    return true;
  }

  size_t number() const { return number_; }
  bool tooLong() const { return length_ > kLongestLine; }

  // Without comment and without blanks around it.
  std::string command() const {
    std::string command = text_.substr(0, text_.find_first_of(std::string("#\r\0", 3)));
    command.erase(command.find_last_not_of(kBlanks) + 1);
    command.erase(0, command.find_first_not_of(kBlanks));
    return command;
  }

 private:
  FILE* script_;
  std::string text_;
  size_t length_ = 0;
  size_t number_ = 0;
};

// False when the script ends with this line.
bool runLine(cli_def* cli, const ScriptLines& lines) {
  if (lines.tooLong()) {
    cli_error(cli, "Line %zu of the script is too long (more than %zu characters)", lines.number(),
              kLongestLine);
    return true;
  }
  const std::string command = lines.command();
  if (command.empty()) {
    return true;
  }
  return strcasecmp(command.c_str(), "quit") != 0 && cli_run_command(cli, command.c_str()) != CLI_QUIT;
}

}  // namespace

void runLines(cli_def* cli, FILE* script) {
  const int privilege = cli_set_privilege(cli, PRIVILEGE_UNPRIVILEGED);
  const int mode = cli_set_configmode(cli, MODE_EXEC, nullptr);
  ScriptLines lines(script);
  while (mayGoOn(cli) && lines.next() && runLine(cli, lines)) {
  }
  cli_set_privilege(cli, privilege);
  cli_set_configmode(cli, mode, nullptr);
}

}  // namespace gfast::console
