#include "qvrcli/text/labelled_lines.h"

#include <algorithm>
#include <string>

#include "qvrcli/text/line_buffer.h"

namespace gfast::console {

const char* padding(std::string_view label, uint8_t width) {
  return filler(' ', static_cast<uint8_t>(width - std::min<size_t>(width, label.size())));
}

void LabelledLines::printFlag(std::string_view label, bool flag) const {
  print(label, flag ? 'T' : 'F');
}

void LabelledLines::heading(const char* text) const {
  if (file_ != nullptr) {
    std::fputs(text, file_);
  } else {
    cli_print(session_, "%s", text);
  }
}

void LabelledLines::printArguments(std::string_view label, fmt::string_view format,
                                   fmt::format_args values) const {
  const std::string line =
      fmt::format("{} {} {}", label, padding(label, width_), fmt::vformat(format, values));
  if (file_ != nullptr) {
    std::fprintf(file_, "%s\n", line.c_str());
  } else {
    cli_print(session_, "%s", line.c_str());
  }
}

}  // namespace gfast::console
