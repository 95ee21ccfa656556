// Which system calls of the program are shown to this process before the kernel carries them out.
#pragma once

#include <sys/types.h>

#include <cstdint>

struct seccomp_data;

namespace gfast::desk {

// What a system call that is shown may be.
enum class Call {
  kOpen,     // open: path, flags
  kOpenAt,   // openat: folder, path, flags
  kOpenAt2,  // openat2: folder, path, its flags in memory
  kCreate,   // creat: path
  kIoctl,    // ioctl with a code of the driver's
  kForeign   // any call of a program for another kind of processor
};

Call callOf(const seccomp_data& call);

// Puts the filter on this process and everything it will run: a descriptor to receive the calls from, or -1
// with errno.
int installFilter();

}  // namespace gfast::desk
