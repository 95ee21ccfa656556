#include "qvrcli/text/report_sink.h"

#include <cstdarg>
#include <cstring>

#include "qvrcli/text/line_buffer.h"

namespace gfast::console {

namespace {

constexpr size_t kValueColumn = 40;  // a field's name and its run of blanks

}  // namespace

void ReportSink::field(const char* name, const char* format, ...) const {
  char value[64];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(value, sizeof value, format, arguments);
  va_end(arguments);
  const size_t length = std::strlen(name);
  const char* blanks = filler(' ', static_cast<uint8_t>(length < kValueColumn ? kValueColumn - length : 0));
  if (file_ != nullptr) {
    std::fprintf(file_, "%s %s %s\n", name, blanks, value);
  } else {
    cli_print(cli_, "%s %s %s", name, blanks, value);
  }
}

void ReportSink::heading(const char* text) const {
  if (file_ != nullptr) {
    std::fputs(text, file_);
  } else {
    cli_print(cli_, "%s", text);
  }
}

}  // namespace gfast::console
