// The program's system calls that come here first: those on the driver's files are answered, all others go on
// to the kernel.
#pragma once

#include <linux/seccomp.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <queue>
#include <thread>
#include <vector>

#include "gfast-desk/desk/open_files.h"

namespace gfast::desk {

class SystemCalls {
 public:
  // Several calls at a time: an exchange with the far end takes its time, and others must not wait for it.
  SystemCalls(OpenFiles& files, int listener);
  ~SystemCalls();
  SystemCalls(const SystemCalls&) = delete;
  SystemCalls& operator=(const SystemCalls&) = delete;

  // Takes one call that waits; called when the listener is readable.
  void receive();

  // The last program for another kind of processor that was ended, or 0.
  pid_t foreigner() const { return foreigner_; }

 private:
  struct Reply {
    enum class Kind { kNotOurs, kResult, kSent };
    Kind kind = Kind::kNotOurs;
    int result = 0;  // negative: an errno
  };

  void work();
  void serve(const seccomp_notif& call);
  Reply replyTo(const seccomp_notif& call);
  Reply open(const seccomp_notif& call, uint64_t path, int flags);
  Reply give(const seccomp_notif& call, Descriptor file, int flags);
  Reply ioctl(const seccomp_notif& call);
  int carry(const seccomp_notif& call, OpenDevice& device);
  Reply endForeigner(const seccomp_notif& call);

  // Still the thread that made the call: its number may have passed to another.
  bool waits(const seccomp_notif& call) const;
  bool read(const seccomp_notif& call, uint64_t address, void* bytes, size_t length) const;
  bool write(const seccomp_notif& call, uint64_t address, const void* bytes, size_t length) const;

  OpenFiles& files_;
  const int listener_;
  size_t messageSize_;  // the kernel's may be longer than ours
  std::atomic<pid_t> foreigner_ = 0;
  std::mutex mutex_;  // guards everything below
  std::condition_variable changed_;
  std::queue<seccomp_notif> waiting_;
  bool ending_ = false;
  std::vector<std::thread> workers_;
};

}  // namespace gfast::desk
