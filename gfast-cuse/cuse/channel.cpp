#include "gfast-cuse/cuse/channel.h"

#include <linux/fuse.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace gfast::cuse {

Channel::~Channel() {
  ::close(descriptor_);
}

std::vector<char> Channel::roomForMessage() {
  return std::vector<char>(kMostTransfer + FUSE_MIN_READ_BUFFER);
}

std::optional<Message> Channel::receive(std::vector<char>& buffer) {
  for (;;) {
    const ssize_t got = ::read(descriptor_, buffer.data(), buffer.size());
    if (got == 0) {
      return std::nullopt;
    }
    if (got < 0) {
      // ENOENT: whoever asked has given up meanwhile.
      if (errno == EINTR || errno == EAGAIN || errno == ENOENT) {
        continue;
      }
      return std::nullopt;
    }
    const std::span<const char> message(buffer.data(), static_cast<size_t>(got));
    fuse_in_header head;
    if (message.size() < sizeof head) {
      continue;
    }
    std::memcpy(&head, message.data(), sizeof head);
    if (head.len == message.size()) {
      return Message(head.opcode, head.unique, message.subspan(sizeof head));
    }
    answer(head.unique, -EINVAL);
  }
}

void Channel::answer(uint64_t unique, int error, std::initializer_list<std::span<const char>> body) {
  send(unique, error, body);
}

void Channel::notify(int what, std::span<const char> body) {
  send(0, what, {body});
}

void Channel::send(uint64_t unique, int error, std::initializer_list<std::span<const char>> body) {
  fuse_out_header head{sizeof head, error, unique};
  std::array<iovec, 4> parts{{{&head, sizeof head}}};
  size_t count = 1;
  for (const std::span<const char> part : body) {
    parts[count++] = {const_cast<char*>(part.data()), part.size()};
    head.len += static_cast<uint32_t>(part.size());
  }
  // It fails when whoever asked has given up meanwhile.
  static_cast<void>(!::writev(descriptor_, parts.data(), static_cast<int>(count)));
}

}  // namespace gfast::cuse
