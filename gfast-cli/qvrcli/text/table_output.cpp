#include "qvrcli/text/table_output.h"

namespace gfast::console {

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

void TableOutput::print(fmt::memory_buffer& text) const {
  if (file_) {
    text.push_back('\n');
    std::fwrite(text.data(), 1, text.size(), file_->get());
  } else {
    text.push_back('\0');
    cli_print(cli_, "%s", text.data());
  }
}

void TableOutput::finish() {
  if (file_ && !file_->finish()) {
    cli_print(cli_, "Could not write file %s", filename_);
  }
}

}  // namespace gfast::console
