// Where a report of named fields goes: to the session or to a file, in the same words.
#pragma once

#include <libcli.h>

#include <cstdio>

namespace gfast::console {

// A session ends each line by itself; a file needs the line end written.
class ReportSink {
 public:
  explicit ReportSink(cli_def* cli) : cli_(cli) {}
  explicit ReportSink(FILE* file) : file_(file) {}

  // One line: the name, blanks up to a common column, the value (of at most 63 characters).
  void field(const char* name, const char* format, ...) const __attribute__((format(printf, 3, 4)));

  // A heading brings its own line ends.
  void heading(const char* text) const;

 private:
  cli_def* cli_ = nullptr;
  FILE* file_ = nullptr;
};

}  // namespace gfast::console
