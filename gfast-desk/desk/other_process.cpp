#include "gfast-desk/desk/other_process.h"

#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace gfast::desk {

namespace {

// Another process's address is a number here and never followed.
void* asPointer(uint64_t address) {
  return reinterpret_cast<void*>(static_cast<uintptr_t>(address));  // NOLINT(performance-no-int-to-ptr)
}

std::string procName(pid_t thread, const char* what) {
  return "/proc/" + std::to_string(thread) + "/" + what;
}

}  // namespace

bool readMemory(pid_t thread, uint64_t address, void* bytes, size_t length) {
  const iovec ours{bytes, length};
  const iovec theirs{asPointer(address), length};
  return ::process_vm_readv(thread, &ours, 1, &theirs, 1, 0) == static_cast<ssize_t>(length);
}

bool writeMemory(pid_t thread, uint64_t address, const void* bytes, size_t length) {
  const iovec ours{const_cast<void*>(bytes), length};
  const iovec theirs{asPointer(address), length};
  return ::process_vm_writev(thread, &ours, 1, &theirs, 1, 0) == static_cast<ssize_t>(length);
}

std::optional<std::string> readText(pid_t thread, uint64_t address, size_t longest) {
  const auto page = static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
  std::string text;
  while (text.size() <= longest) {
    // A text may end on the last page that is there.
    const uint64_t at = address + text.size();
    std::string piece(std::min<uint64_t>(page - at % page, longest + 1 - text.size()), '\0');
    if (!readMemory(thread, at, piece.data(), piece.size())) {
      return std::nullopt;
    }
    const size_t end = piece.find('\0');
    text.append(piece, 0, end);
    if (end != std::string::npos) {
      return text;
    }
  }
  return std::nullopt;
}

std::optional<struct stat> fileBehind(pid_t thread, int descriptor) {
  struct stat file {};
  const std::string name = procName(thread, ("fd/" + std::to_string(descriptor)).c_str());
  return ::stat(name.c_str(), &file) == 0 ? std::optional(file) : std::nullopt;
}

std::string programOf(pid_t thread) {
  std::string name(4096, '\0');
  const ssize_t length = ::readlink(procName(thread, "exe").c_str(), name.data(), name.size());
  name.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
  return name.empty() ? "process " + std::to_string(thread) : name;
}

}  // namespace gfast::desk
