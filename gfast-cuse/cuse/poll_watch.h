// Tells the kernel when a descriptor of the board becomes readable on which a program waits.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <thread>

#include "gfast-cuse/cuse/channel.h"

namespace gfast::cuse {

class PollWatch {
 public:
  explicit PollWatch(Channel& channel);
  ~PollWatch();
  PollWatch(const PollWatch&) = delete;
  PollWatch& operator=(const PollWatch&) = delete;

  // The kernel's handle is told once, when the descriptor is readable, which it may be already.
  void tellWhenReadable(int descriptor, uint64_t handle);

  // Before the descriptor is closed.
  void forget(int descriptor);

 private:
  void run();

  Channel& channel_;
  const int epoll_;
  const int ending_;  // readable when the thread is to end
  std::mutex mutex_;  // guards the map
  std::map<int, uint64_t> waiting_;
  std::thread thread_;
};

}  // namespace gfast::cuse
