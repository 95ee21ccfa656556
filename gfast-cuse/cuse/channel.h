// A connection to the kernel over which it asks for what programs do with one device: one message a read, one
// a write.
#pragma once

#include <sys/types.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

namespace gfast::cuse {

// Bytes as they lie in memory.
template <typename T>
std::span<const char> bytesOf(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// A message from the kernel, whose every part is checked to be there.
class Message {
 public:
  Message(uint32_t opcode, uint64_t unique, std::span<const char> body)
      : opcode_(opcode), unique_(unique), body_(body) {}

  uint32_t opcode() const { return opcode_; }
  uint64_t unique() const { return unique_; }  // what an answer has to name

  // The structure that the body begins with; none: the body is shorter.
  template <typename T>
  std::optional<T> as() const {
    T value;
    if (body_.size() < sizeof value) {
      return std::nullopt;
    }
    std::memcpy(&value, body_.data(), sizeof value);
    return value;
  }

  // What follows that structure.
  template <typename T>
  std::span<const char> after() const {
    return body_.subspan(std::min(sizeof(T), body_.size()));
  }

 private:
  uint32_t opcode_;
  uint64_t unique_;
  std::span<const char> body_;
};

class Channel {
 public:
  // Takes the descriptor over.
  explicit Channel(int descriptor) : descriptor_(descriptor) {}
  ~Channel();
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  // Waits for a message, which lies in the buffer. What is not a whole message is passed over. None: the
  // connection has ended.
  std::optional<Message> receive(std::vector<char>& buffer);

  // A buffer that has room for every message.
  static std::vector<char> roomForMessage();

  // An answer to the message with that number: 0 or a negative errno, and the parts of the body.
  void answer(uint64_t unique, int error, std::initializer_list<std::span<const char>> body = {});

  // Something to tell without having been asked.
  void notify(int what, std::span<const char> body);

 private:
  void send(uint64_t unique, int error, std::initializer_list<std::span<const char>> body);

  const int descriptor_;
};

// Most bytes that one read or write of a program moves.
constexpr uint32_t kMostTransfer = 131072;

}  // namespace gfast::cuse
