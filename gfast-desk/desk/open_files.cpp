#include "gfast-desk/desk/open_files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "device-files/device_names.h"

namespace gfast::desk {

namespace {

constexpr size_t kLongestLine = 16;  // of the rediscovery file; longer than any that means something

short eventsOf(int descriptor, short asked) {
  pollfd file{descriptor, asked, 0};
  return ::poll(&file, 1, 0) == 1 ? file.revents : static_cast<short>(0);
}

// Another open file on the same pipe.
Descriptor reopen(const Descriptor& pipe, int flags) {
  const std::string name = "/proc/self/fd/" + std::to_string(pipe.number());
  return Descriptor(::open(name.c_str(), flags | O_CLOEXEC));
}

struct Pipe {
  Descriptor reader;
  Descriptor writer;
};

Pipe makePipe() {
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
    return {};
  }
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

ino_t inodeOf(const Descriptor& pipe) {
  struct stat file {};
  ::fstat(pipe.number(), &file);
  return file.st_ino;
}

}  // namespace

Descriptor::~Descriptor() {
  if (number_ >= 0) {
    const int error = errno;
    ::close(number_);
    errno = error;
  }
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(number_, other.number_);
  return *this;
}

int OpenDevice::request(uint32_t code, gfast_iocreq& envelope) {
  return board_.request(boardDescriptor_, code, envelope) < 0 ? -errno : 0;
}

void OpenDevice::showReadiness() {
  const bool ready = (eventsOf(boardDescriptor_, POLLIN) & POLLIN) != 0;
  if (ready == shown_) {
    return;
  }
  shown_ = ready;
  char byte = 0;
  if (ready) {
    static_cast<void>(!::write(readiness(), &byte, 1));
    return;
  }
  const Descriptor reader = reopen(readiness_, O_RDONLY | O_NONBLOCK);
  while (::read(reader.number(), &byte, 1) == 1) {
  }
}

// The pipe has no reader left.
bool OpenDevice::abandoned() const {
  return (eventsOf(readiness(), 0) & POLLERR) != 0;
}

OpenFiles::OpenFiles(Driver& board) : board_(board), epoll_(::epoll_create1(EPOLL_CLOEXEC)) {
  if (!epoll_) {
    throw std::system_error(errno, std::generic_category(), "epoll_create1");
  }
}

void OpenFiles::watch(int descriptor, uint32_t events) {
  epoll_event event{};
  event.events = events;
  ::epoll_ctl(epoll_.number(), EPOLL_CTL_ADD, descriptor, &event);
}

Descriptor OpenFiles::openDevice(int device, int flags) {
  const int boardDescriptor = board_.open(device);
  if (boardDescriptor < 0) {
    return Descriptor();
  }
  Pipe pipe = makePipe();
  // Open for reading and writing, as the program asked.
  Descriptor theirs = pipe.reader ? reopen(pipe.reader, O_RDWR | (flags & O_NONBLOCK)) : Descriptor();
  if (!theirs) {
    const int error = errno;
    board_.close(boardDescriptor);
    errno = error;
    return theirs;
  }
  const ino_t inode = inodeOf(theirs);
  const auto opened = std::make_shared<OpenDevice>(board_, boardDescriptor, std::move(pipe.writer));
  const std::lock_guard lock(mutex_);
  devices_[inode] = opened;
  watch(boardDescriptor, EPOLLIN | EPOLLET);
  watch(opened->readiness(), 0);  // its error, which needs no asking: nobody reads any more
  return theirs;
}

Descriptor OpenFiles::openRediscovery() {
  Pipe pipe = makePipe();
  // A program that writes waits, should it ever have to.
  Descriptor theirs = pipe.writer ? reopen(pipe.writer, O_WRONLY) : Descriptor();
  if (!theirs) {
    return theirs;
  }
  const ino_t inode = inodeOf(theirs);
  const std::lock_guard lock(mutex_);
  watch(pipe.reader.number(), EPOLLIN);
  rediscoveries_[inode].reader = std::move(pipe.reader);
  return theirs;
}

std::shared_ptr<OpenDevice> OpenFiles::find(const struct stat& file) {
  const std::lock_guard lock(mutex_);
  const auto found = S_ISFIFO(file.st_mode) ? devices_.find(file.st_ino) : devices_.end();
  if (found == devices_.end()) {
    return nullptr;
  }
  // A named pipe on a disk may have the same number.
  struct stat ours {};
  const bool same = ::fstat(found->second->readiness(), &ours) == 0 && ours.st_dev == file.st_dev;
  return same ? found->second : nullptr;
}

void OpenFiles::showReadiness() {
  const std::lock_guard lock(mutex_);
  for (const auto& [inode, device] : devices_) {
    device->showReadiness();
  }
}

void OpenFiles::attend() {
  // The events themselves say little: which files they are about is looked up with the lock held.
  std::array<epoll_event, 16> taken;
  ::epoll_wait(epoll_.number(), taken.data(), static_cast<int>(taken.size()), 0);
  settle();
  showReadiness();
}

void OpenFiles::settle() {
  // Nobody goes on before another who settles has closed what it found.
  const std::lock_guard lock(settling_);
  // Each closes its board descriptor as soon as no request needs it, and without the files' lock.
  takeAbandoned().clear();
  for (int asked = takeRediscoveries(); asked > 0; asked--) {
    board_.rediscover();
  }
}

OpenFiles::Devices OpenFiles::takeAbandoned() {
  Devices abandoned;
  const std::lock_guard lock(mutex_);
  for (auto next = devices_.begin(); next != devices_.end();) {
    const auto device = next++;
    if (device->second->abandoned()) {
      ::epoll_ctl(epoll_.number(), EPOLL_CTL_DEL, device->second->readiness(), nullptr);
      ::epoll_ctl(epoll_.number(), EPOLL_CTL_DEL, device->second->boardDescriptor(), nullptr);
      abandoned.insert(devices_.extract(device));
    }
  }
  return abandoned;
}

// How often it was asked for since the last time.
int OpenFiles::takeRediscoveries() {
  int asked = 0;
  const std::lock_guard lock(mutex_);
  for (auto file = rediscoveries_.begin(); file != rediscoveries_.end();) {
    auto& [reader, line] = file->second;
    char byte = 0;
    ssize_t got = 0;
    while ((got = ::read(reader.number(), &byte, 1)) == 1) {
      if (byte != '\n') {
        line.resize(std::min(line.size(), kLongestLine));
        line += byte;
      } else {
        asked += std::exchange(line, {}) == device_files::kRediscoverRequest ? 1 : 0;
      }
    }
    const bool ended = got == 0;
    asked += ended && line == device_files::kRediscoverRequest ? 1 : 0;
    file = ended ? rediscoveries_.erase(file) : std::next(file);
  }
  return asked;
}

}  // namespace gfast::desk
