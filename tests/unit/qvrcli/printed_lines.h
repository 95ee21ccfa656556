// An interpreter whose printed lines are kept, without vocabulary, session and chips.
#pragma once

#include <libcli.h>

#include <string>
#include <utility>
#include <vector>

class PrintedLines {
 public:
  PrintedLines() : cli_(cli_init()) {
    cli_set_context(cli_, this);
    cli_print_callback(cli_, keep);
  }

  ~PrintedLines() { cli_done(cli_); }
  PrintedLines(const PrintedLines&) = delete;
  PrintedLines& operator=(const PrintedLines&) = delete;

  cli_def* cli() { return cli_; }

  // What was printed since the last call.
  std::vector<std::string> take() { return std::exchange(lines_, {}); }

 private:
  static void keep(cli_def* cli, const char* line) {
    static_cast<PrintedLines*>(cli_get_context(cli))->lines_.emplace_back(line);
  }

  cli_def* cli_;
  std::vector<std::string> lines_;
};
