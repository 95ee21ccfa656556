#include "qvrcli/text/text_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>

namespace gfast::console {

namespace {

constexpr size_t kMaxWordDigits = 8;
constexpr const char* kBlanks = " \t";

}  // namespace

TextFile openForReading(const char* path) {
  const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // opening a pipe waits otherwise
  struct stat status {};
  if (descriptor < 0) {
    return nullptr;
  }
  FILE* const file =
      fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? fdopen(descriptor, "r") : nullptr;
  if (file == nullptr) {
    close(descriptor);
  }
  return TextFile(file);
}

bool LineReader::next(std::string_view& line) {
  size_t length = 0;
  int character = std::getc(file_);
  if (character == EOF) {
    return false;
  }
  for (; character != EOF && character != '\n'; character = std::getc(file_)) {
    if (length < sizeof line_) {
      line_[length++] = static_cast<char>(character);
    }
  }
  if (length > 0 && line_[length - 1] == '\r') {
    length--;
  }
  line = {line_, std::min(length, kMaxLineLength)};
  return true;
}

bool OutputFile::finish() {
  // Some C libraries' fflush and fclose return 0 after a write that failed; the mark on the file always
  // stays.
  const bool flushed = std::fflush(file_.get()) == 0;
  const bool written = std::ferror(file_.get()) == 0;
  const int reason = errno;
  const bool closed = std::fclose(file_.release()) == 0;
  if (!flushed || !written) {
    errno = reason;
  }
  return flushed && written && closed;
}

bool takeHexWord(std::string_view& text, uint32_t& word) {
  const size_t start = std::min(text.find_first_not_of(kBlanks), text.size());
  const char* const first = text.data() + start;
  const char* const last = text.data() + text.size();
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(first, last, value, 16);
  const bool followed = end != last && std::isalnum(static_cast<unsigned char>(*end)) != 0;
  if (error != std::errc() || followed || static_cast<size_t>(end - first) > kMaxWordDigits) {
    return false;
  }
  word = value;
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  return true;
}

void dropWord(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text.remove_prefix(std::min(text.find_first_of(kBlanks), text.size()));
}

}  // namespace gfast::console
