#include "qvrdev/device_news.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>

using namespace gfast;

DeviceNews::DeviceNews() : descriptor_(epoll_create1(EPOLL_CLOEXEC)) {}

DeviceNews::~DeviceNews() {
  if (descriptor_ >= 0) {
    close(descriptor_);
  }
}

bool DeviceNews::watch(int device) {
  epoll_event event{};
  event.events = EPOLLIN | EPOLLET;
  return epoll_ctl(descriptor_, EPOLL_CTL_ADD, device, &event) == 0 || errno == EEXIST;
}

void DeviceNews::forget() {
  epoll_event events[8];
  epoll_wait(descriptor_, events, static_cast<int>(std::size(events)), 0);
}
