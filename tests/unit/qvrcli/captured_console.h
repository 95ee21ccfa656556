// An interpreter with the console's vocabulary whose printed lines are kept, without session and chips.
#pragma once

#include <libcli.h>

#include <string>
#include <vector>

#include "qvrcli/session/interpreter_guard.h"
#include "qvrcli/vocabulary/command_tree.h"

using namespace gfast;
using namespace gfast::console;

class CapturedConsole {
 public:
  CapturedConsole() : cli_(cli_init()) {
    guardInterpreter(cli_);
    registerCommandTree(cli_);
    cli_print_callback(cli_, keep);
    lines().clear();
  }

  ~CapturedConsole() { cli_done(cli_); }
  CapturedConsole(const CapturedConsole&) = delete;
  CapturedConsole& operator=(const CapturedConsole&) = delete;

  cli_def* cli() { return cli_; }

  // What the line prints.
  std::vector<std::string> run(const std::string& line) {
    lines().clear();
    result_ = cli_run_command(cli_, line.c_str());
    return lines();
  }

  // What the last line answered to the interpreter.
  int result() const { return result_; }

 private:
  static std::vector<std::string>& lines() {
    static auto& kept = *new std::vector<std::string>;
    return kept;
  }

  static void keep(cli_def* /*cli*/, const char* line) { lines().emplace_back(line); }

  cli_def* cli_;
  int result_ = CLI_OK;
};
