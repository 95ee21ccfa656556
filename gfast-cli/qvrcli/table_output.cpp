#include "qvrcli/table_output.h"

#include <cstdarg>

bool TableOutput::open(const char* filename) {
  if (filename == nullptr) {
    return true;
  }
  filename_ = filename;
  file_.emplace(filename);
  if (file_->isOpen()) {
    return true;
  }
  cli_print(cli_, "Could not open file %s", filename);
  return false;
}

void TableOutput::row(const char* format, ...) const {
  char text[128];
  va_list values;
  va_start(values, format);
  std::vsnprintf(text, sizeof text, format, values);
  va_end(values);
  if (file_) {
    std::fprintf(file_->get(), "%s\n", text);
  } else {
    cli_print(cli_, "%s", text);
  }
}

void TableOutput::finish() {
  if (file_ && !file_->finish()) {
    cli_print(cli_, "Could not write file %s", filename_);
  }
}
