#include "qvrcli/text/named_files.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace gfast::console {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

// The one folder of all files. It stays open, so that it is the same one also when it is renamed.
int root = -1;
std::string& rootName() {
  static auto& name = *new std::string;
  return name;
}

// What stands between slashes. Empty when the name could lead out of the folder it starts in, or names no
// file.
std::vector<std::string> partsOf(std::string_view name) {
  std::vector<std::string> parts;
  if (name.starts_with('/') || name.ends_with('/')) {
    return {};
  }
  while (!name.empty()) {
    const std::string_view part = name.substr(0, name.find('/'));
    name.remove_prefix(part.size() < name.size() ? part.size() + 1 : part.size());
    if (part == "..") {
      return {};
    }
    if (!part.empty() && part != ".") {
      parts.emplace_back(part);
    }
  }
  return parts;
}

}  // namespace

bool keepFilesInside(const char* folder) {
  char fullName[PATH_MAX];
  if (realpath(folder, fullName) == nullptr) {
    return false;
  }
  rootName() = fullName;
  root = ::open(rootName().c_str(), kFolderFlags);
  return root >= 0;
}

NamedFile::NamedFile(const char* name) {
  if (root < 0) {
    name_ = name;
  } else {
    flags_ = O_NOFOLLOW;
    walkTo(name);
  }
}

// Step by step, because every step of a name could be a link. Not with openat2, which older kernels do not
// have: the same names are to be refused on all of them.
void NamedFile::walkTo(const std::string& name) {
  const std::vector<std::string> parts = partsOf(name);
  if (parts.empty()) {
    error_ = EACCES;
    return;
  }
  folder_ = openat(root, ".", kFolderFlags);
  for (size_t i = 0; i + 1 < parts.size() && folder_ >= 0; i++) {
    const int next = openat(folder_, parts[i].c_str(), kFolderFlags | O_NOFOLLOW);
    const int reason = errno;
    ::close(std::exchange(folder_, next));
    errno = reason;
  }
  if (folder_ < 0) {
    error_ = errno;
  }
  name_ = parts.back();
}

NamedFile::~NamedFile() {
  if (folder_ >= 0) {
    const int kept = errno;
    ::close(folder_);
    errno = kept;
  }
}

int NamedFile::open(int flags, mode_t mode) const {
  if (error_ != 0) {
    errno = error_;
    return -1;
  }
  return openat(folder_, name_.c_str(), flags | flags_, mode);
}

bool NamedFile::examine(struct stat& status) const {
  if (error_ != 0) {
    errno = error_;
    return false;
  }
  return fstatat(folder_, name_.c_str(), &status, flags_ == 0 ? 0 : AT_SYMLINK_NOFOLLOW) == 0;
}

std::optional<std::string> nameForOthers(const char* name) {
  if (root < 0) {
    return name;
  }
  const NamedFile file(name);
  struct stat status {};
  if (!file.examine(status)) {
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) {
    errno = S_ISLNK(status.st_mode) ? ELOOP : EACCES;
    return std::nullopt;
  }
  return rootName() + '/' + name;
}

}  // namespace gfast::console
