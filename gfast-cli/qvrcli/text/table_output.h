// Where the rows of a table go: to the session, or to a file that the operator names.
#pragma once

#include <fmt/format.h>
#include <libcli.h>

#include <cstdio>
#include <iterator>
#include <optional>
#include <type_traits>

#include "qvrcli/text/fraction.h"
#include "qvrcli/text/text_files.h"

namespace gfast::console {

class TableOutput {
  template <typename Value>
  using Printed = std::conditional_t<std::is_same_v<Value, double>, Fraction, const Value&>;

 public:
  explicit TableOutput(cli_def* cli) : cli_(cli) {}

  // Sends the rows to this file, which is created or emptied; nullptr: to the session. False after a message.
  bool open(const char* filename);

  bool goesToFile() const { return file_.has_value(); }

  // One row. A session ends it by itself; in a file a line end is written. Fractions would take most of the
  // time of a table, so their digits are not left to {fmt}.
  template <typename... Values>
  void row(fmt::format_string<Printed<Values>...> format, const Values&... values) const {
    fmt::memory_buffer text;
    fmt::format_to(std::back_inserter(text), format, Printed<Values>{values}...);
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
