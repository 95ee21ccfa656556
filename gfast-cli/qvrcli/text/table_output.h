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

  // Sends the rows to this file, which is created or emptied; nullptr: to the session. False after a message.
  bool open(const char* filename);

  bool goesToFile() const { return file_.has_value(); }

  // One row. A session ends it by itself; in a file a line end is written. By {fmt}, because printf would
  // take most of the time of a table of fractions.
  template <typename... Values>
  void row(fmt::format_string<const Values&...> format, const Values&... values) const {
    fmt::memory_buffer text;
    fmt::format_to(std::back_inserter(text), format, values...);
    print(text);
  }

  // Closes the file, and reports one that did not take all rows.
  void finish();

 private:
  void print(fmt::memory_buffer& text) const;

  cli_def* cli_;
  const char* filename_ = nullptr;
  std::optional<OutputFile> file_;
};

}  // namespace gfast::console
