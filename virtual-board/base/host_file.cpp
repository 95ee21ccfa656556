#include "virtual-board/base/host_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace gfast::board {

namespace {

HostFile readDescriptor(int descriptor, size_t limit) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) {
    return {errno, {}};
  }
  if (!S_ISREG(status.st_mode)) {
    return {S_ISDIR(status.st_mode) ? EISDIR : EINVAL, {}};
  }
  HostFile file;
  file.bytes.resize(limit + 1);
  size_t length = 0;
  while (length < file.bytes.size()) {
    const ssize_t got = ::read(descriptor, file.bytes.data() + length, file.bytes.size() - length);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      return {errno, {}};
    }
    if (got == 0) {
      break;
    }
    length += static_cast<size_t>(got);
  }
  if (length == 0 || length > limit) {
    return {length == 0 ? ENODATA : EFBIG, {}};
  }
  file.bytes.resize(length);
  return file;
}

}  // namespace

HostFile readHostFile(std::span<const char> nameField, size_t limit) {
  const auto end = std::find(nameField.begin(), nameField.end(), '\0');
  if (end == nameField.end()) {
    return {ENAMETOOLONG, {}};
  }
  const std::string name(nameField.begin(), end);
  // Without O_NONBLOCK, opening a pipe would wait until somebody writes to it.
  const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    return {errno, {}};
  }
  HostFile file = readDescriptor(descriptor, limit);
  ::close(descriptor);
  return file;
}

}  // namespace gfast::board
