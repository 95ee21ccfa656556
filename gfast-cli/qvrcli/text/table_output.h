// Where the rows of a table go: to the session, or to a file that the operator names.
#pragma once

#include <fmt/compile.h>
#include <fmt/format.h>
#include <libcli.h>

#include <cstddef>
#include <cstdio>
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

  // One row; its format is an FMT_COMPILE. Most of the time of a table would go into reading the format anew
  // for each row, and into the digits of its fractions, which are not left to {fmt}.
  template <typename Format, typename... Values>
  void row(const Format& format, const Values&... values) {
    fmt::format_to(fmt::appender(rows_), format, Printed<Values>{values}...);
    rows_.push_back('\n');
    if (rows_.size() >= kMostHeld) {
      printRows();
    }
  }

  // Prints the rows that are still held, closes the file, and reports one that did not take all rows.
  void finish();

 private:
  // Rows are printed some at a time: that the interpreter formats each text once more counts less then.
  static constexpr size_t kMostHeld = 4096;

  void printRows();

  cli_def* cli_;
  fmt::memory_buffer rows_;  // each with its line end
  const char* filename_ = nullptr;
  std::optional<OutputFile> file_;
};

}  // namespace gfast::console
