// What a process has at this moment, and how large the soak tests are.
#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>

// GFAST_SOAK=full in the environment takes the sizes that docs/robustness.md tells of, and holds times
// against the clock. It wants the machine for itself; the small sizes run beside other tests.
inline bool isFull() {
  const char* const wanted = std::getenv("GFAST_SOAK");
  return wanted != nullptr && std::string(wanted) == "full";
}

inline int sizeOf(int full, int small) {
  return isFull() ? full : small;
}

// Resident memory. 0 where it tells nothing: under an emulator, and under a sanitizer, which keeps what is
// freed.
inline long residentKib([[maybe_unused]] pid_t process) {
#ifdef GFAST_MEASURABLE
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) {
      return std::stol(line.substr(6));
    }
  }
#endif
  return 0;
}

inline int openDescriptors(pid_t process) {
  int count = 0;
  if (DIR* const folder = opendir(("/proc/" + std::to_string(process) + "/fd").c_str()); folder != nullptr) {
    while (readdir(folder) != nullptr) {
      count++;
    }
    closedir(folder);
  }
  return count;
}

// What an allocator may keep without that anything is lost.
constexpr long kAllowedGrowth_KiB = 512;
