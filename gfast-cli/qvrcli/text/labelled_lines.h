// Lines of a label, blanks up to a common column, and a value: to the session or to a file, in the same
// words.
#pragma once

#include <fmt/format.h>
#include <libcli.h>

#include <cstdint>
#include <cstdio>
#include <string_view>

namespace gfast::console {

// The blanks that fill a label up to `width` characters (at most 79); none for a longer label. They are in
// filler's buffer, which the next call changes.
const char* padding(std::string_view label, uint8_t width);

class LabelledLines {
 public:
  // Label and padding together take `width` characters. A session ends each line by itself; in a file the
  // line end is written.
  LabelledLines(cli_def* session, uint8_t width) : session_(session), width_(width) {}
  LabelledLines(FILE* file, uint8_t width) : file_(file), width_(width) {}

  // A number in decimal, or a text.
  template <typename Value>
  void print(std::string_view label, Value value) const {
    printAs(label, "{}", value);
  }

  // Whatever {fmt} renders: "{:x}" for hexadecimal, "{} " for a trailing blank.
  template <typename... Values>
  void printAs(std::string_view label, fmt::format_string<const Values&...> format,
               const Values&... values) const {
    printArguments(label, format, fmt::make_format_args(values...));
  }

  // T or F.
  void printFlag(std::string_view label, bool flag) const;

  // A line without label and padding. In a file it must bring its own line end.
  void heading(const char* text) const;

 private:
  void printArguments(std::string_view label, fmt::string_view format, fmt::format_args values) const;

  cli_def* session_ = nullptr;
  FILE* file_ = nullptr;
  uint8_t width_;
};

}  // namespace gfast::console
