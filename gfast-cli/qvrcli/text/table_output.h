// Where the rows of a table go: to the session, or to a file that the operator names.
#pragma once

#include <fmt/format.h>
#include <libcli.h>

#include <cstdio>
#include <iterator>
#include <optional>

#include "qvrcli/text/text_files.h"

namespace gfast::console {

class TableOutput {
 public:
  explicit TableOutput(cli_def* cli) : cli_(cli) {}

  // From here on to this file, which is emptied if it was there; nullptr: to the session. False after a
  // message.
  bool open(const char* filename);

  bool isFile() const { return file_.has_value(); }

  // One row. A session ends it by itself; in a file a line end is written. {fmt} renders it: of a table of
  // fractions, printf would take most of the time.
  template <typename... Values>
  void row(fmt::format_string<const Values&...> format, const Values&... values) const {
    fmt::memory_buffer text;
    fmt::format_to(std::back_inserter(text), format, values...);
    print(text);
  }

  // All rows are there. A file that did not take them all is reported.
  void finish();

 private:
  void print(fmt::memory_buffer& text) const;

  cli_def* cli_;
  const char* filename_ = nullptr;
  std::optional<OutputFile> file_;
};

}  // namespace gfast::console
