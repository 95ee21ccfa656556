// Files that an operator names: anywhere, or inside one folder that nothing leads out of.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>
#include <string>

namespace gfast::console {

// From now on every name is looked for in this folder and below it. An absolute name, one that contains "..",
// and one that leads over a symbolic link are refused with an errno. False, with errno, when it is no folder
// that can be read. The folder itself may be named over links.
bool keepFilesInside(const char* folder);

// A file at the name that was typed; it need not exist. A name that is refused is known when it is opened.
class NamedFile {
 public:
  explicit NamedFile(const char* name);
  ~NamedFile();
  NamedFile(const NamedFile&) = delete;
  NamedFile& operator=(const NamedFile&) = delete;

  // The descriptor, or -1 with errno.
  int open(int flags, mode_t mode = 0) const;

  // False with errno.
  bool examine(struct stat& status) const;

 private:
  void walkTo(const std::string& name);

  int folder_ = AT_FDCWD;
  std::string name_;  // in that folder
  int error_ = 0;     // why the name is refused
  int flags_ = 0;     // for every opening
};

// The name under which somebody else, such as the driver, finds the file: as it was typed, or, where files
// are kept inside a folder, that folder's name before it. Empty, with errno, for a name that is refused there
// or no file that can be read.
std::optional<std::string> nameForOthers(const char* name);

}  // namespace gfast::console
