// A system that refuses every further thread, on any C library and under any emulator.
#pragma once

// While it lives, no std::thread starts: its constructor throws, as when the system has no room for one. The
// test program links refused-threads.
class RefusedThreads {
 public:
  RefusedThreads();
  ~RefusedThreads();
  RefusedThreads(const RefusedThreads&) = delete;
  RefusedThreads& operator=(const RefusedThreads&) = delete;
};
