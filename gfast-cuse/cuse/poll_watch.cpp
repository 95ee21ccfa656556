#include "gfast-cuse/cuse/poll_watch.h"

#include <linux/fuse.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace gfast::cuse {

namespace {

int watch(int epoll, int operation, int descriptor) {
  epoll_event event{};
  event.events = EPOLLIN | EPOLLONESHOT;
  event.data.fd = descriptor;
  return ::epoll_ctl(epoll, operation, descriptor, &event);
}

}  // namespace

PollWatch::PollWatch(Channel& channel)
    : channel_(channel),
      epoll_(::epoll_create1(EPOLL_CLOEXEC)),
      ending_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { run(); }) {
  watch(epoll_, EPOLL_CTL_ADD, ending_);
}

PollWatch::~PollWatch() {
  ::eventfd_write(ending_, 1);
  thread_.join();
  ::close(ending_);
  ::close(epoll_);
}

void PollWatch::tellWhenReadable(int descriptor, uint64_t handle) {
  const std::lock_guard lock(mutex_);
  waiting_[descriptor] = handle;
  if (watch(epoll_, EPOLL_CTL_MOD, descriptor) != 0) {
    watch(epoll_, EPOLL_CTL_ADD, descriptor);
  }
}

void PollWatch::forget(int descriptor) {
  const std::lock_guard lock(mutex_);
  waiting_.erase(descriptor);
  ::epoll_ctl(epoll_, EPOLL_CTL_DEL, descriptor, nullptr);
}

void PollWatch::run() {
  for (epoll_event event{};;) {
    if (::epoll_wait(epoll_, &event, 1, -1) != 1) {
      continue;
    }
    if (event.data.fd == ending_) {
      return;
    }
    fuse_notify_poll_wakeup_out wakeup{};
    {
      const std::lock_guard lock(mutex_);
      const auto found = waiting_.extract(event.data.fd);
      if (found.empty()) {
        continue;
      }
      wakeup.kh = found.mapped();
    }
    channel_.notify(FUSE_NOTIFY_POLL, bytesOf(wakeup));
  }
}

}  // namespace gfast::cuse
