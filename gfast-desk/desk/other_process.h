// The memory and the descriptors of a thread of another process, by the thread's id.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace gfast::desk {

// False: some of it is not there, or is not ours to touch.
bool readMemory(pid_t thread, uint64_t address, void* bytes, size_t length);
bool writeMemory(pid_t thread, uint64_t address, const void* bytes, size_t length);

// The text that ends at the first zero byte; none when it is longer than `longest` or not there.
std::optional<std::string> readText(pid_t thread, uint64_t address, size_t longest);

// What file the descriptor is, whichever of its copies it is; none: no such descriptor.
std::optional<struct stat> fileBehind(pid_t thread, int descriptor);

// The program that the thread runs.
std::string programOf(pid_t thread);

}  // namespace gfast::desk
