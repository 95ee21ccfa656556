// An interpreter with the console's vocabulary whose printed lines are kept, without session and chips.
#pragma once

#include <libcli.h>

#include <string>
#include <vector>

#include "qvrcli/session/interpreter_guard.h"
#include "qvrcli/vocabulary/command_tree.h"
#include "unit/qvrcli/printed_lines.h"

using namespace gfast;
using namespace gfast::console;

class CapturedConsole {
 public:
  CapturedConsole() {
    guardInterpreter(cli());
    registerCommandTree(cli());
  }

  cli_def* cli() { return printed_.cli(); }

  // What the line prints.
  std::vector<std::string> run(const std::string& line) {
    printed_.take();
    result_ = cli_run_command(cli(), line.c_str());
    return printed_.take();
  }

  // What was printed since the last line.
  std::vector<std::string> take() { return printed_.take(); }

  // What the last line returned to the interpreter.
  int result() const { return result_; }

 private:
  PrintedLines printed_;
  int result_ = CLI_OK;
};
