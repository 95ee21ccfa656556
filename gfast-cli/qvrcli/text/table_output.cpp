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

void TableOutput::printRows() {
  if (rows_.size() == 0) {
    return;
  }
  if (file_) {
    std::fwrite(rows_.data(), 1, rows_.size(), file_->get());
  } else {
    rows_.data()[rows_.size() - 1] = '\0';  // the interpreter ends the last row by itself
    cli_print(cli_, "%s", rows_.data());
  }
  rows_.clear();
}

void TableOutput::finish() {
  printRows();
  if (file_ && !file_->finish()) {
    cli_print(cli_, "Could not write file %s", filename_);
  }
}

}  // namespace gfast::console
