#include "qvrcli/text/text_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>

#include "qvrcli/text/named_files.h"

namespace gfast::console {

namespace {

constexpr size_t kMaxWordDigits = 8;
constexpr const char* kBlanks = " \t";

// Opening a pipe without O_NONBLOCK waits for its other end.
constexpr int kOpenFlags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// A file, a terminal, or what takes everything. Anything else may wait for somebody who reads.
bool mayBeWritten(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) < 0) {
    return false;
  }
  const bool takesAll = status.st_rdev == makedev(1, 3) || status.st_rdev == makedev(1, 7);  // null, full
  return S_ISREG(status.st_mode) || (S_ISCHR(status.st_mode) && (takesAll || isatty(descriptor) != 0));
}

int refuse(int descriptor) {
  if (descriptor >= 0) {
    close(descriptor);
  }
  errno = ENOTSUP;
  return -1;
}

int openForWriting(const char* path) {
  const NamedFile file(path);
  struct stat status {};
  if (file.examine(status) && !S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode) &&
      !S_ISDIR(status.st_mode)) {
    return refuse(-1);
  }
  constexpr mode_t everybody = 0666;  // less the umask
  const int descriptor = file.open(O_WRONLY | O_CREAT | O_TRUNC | kOpenFlags, everybody);
  if (descriptor < 0) {
    return -1;
  }
  if (!mayBeWritten(descriptor)) {
    return refuse(descriptor);
  }
  // A terminal may take its time.
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
  return descriptor;
}

FILE* createFile(const char* path) {
  const int descriptor = openForWriting(path);
  FILE* const file = descriptor < 0 ? nullptr : fdopen(descriptor, "w");
  if (file == nullptr && descriptor >= 0) {
    close(descriptor);
  }
  return file;
}

}  // namespace

OutputFile::OutputFile(const char* path) : file_(createFile(path)) {}

TextFile openForReading(const char* path) {
  const int descriptor = NamedFile(path).open(O_RDONLY | kOpenFlags);
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
