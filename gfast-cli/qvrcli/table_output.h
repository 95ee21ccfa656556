// Where the rows of a table go: to the session, or to a file that the operator names.
#pragma once

#include <libcli.h>

#include <cstdio>
#include <optional>

#include "qvrcli/text_files.h"

class TableOutput {
 public:
  explicit TableOutput(cli_def* cli) : cli_(cli) {}

  // From here on to this file, which is emptied if it was there; nullptr: to the session. False after a
  // message.
  bool open(const char* filename);

  // The file, for rows of any length; nullptr: rows go to the session.
  FILE* file() const { return file_ ? file_->get() : nullptr; }

  // One row of at most 127 characters. A session ends it by itself; in a file a line end is written.
  void row(const char* format, ...) const __attribute__((format(printf, 2, 3)));

  // All rows are there. A file that did not take them all is reported.
  void finish();

 private:
  cli_def* cli_;
  const char* filename_ = nullptr;
  std::optional<OutputFile> file_;
};
