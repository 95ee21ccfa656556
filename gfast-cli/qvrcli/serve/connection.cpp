#include "qvrcli/serve/connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "qvrcli/serve/web_server.h"

namespace gfast::console {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

bool isPlain(char c) {
  return c >= ' ' && c <= '~';
}

}  // namespace

Connection::Connection(int socket)
    : socket_(socket), answerBy_(steady_clock::now() + milliseconds(kTimeForAnswer_ms)) {}

bool Connection::waitFor(short events, steady_clock::time_point deadline) const {
  const auto left = std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now()).count();
  pollfd peer{socket_, events, 0};
  return left > 0 && poll(&peer, 1, static_cast<int>(left)) > 0;
}

bool Connection::readHead() {
  const auto deadline = steady_clock::now() + milliseconds(kTimeForRequest_ms);
  std::string head;
  while (head.find("\r\n\r\n") == std::string::npos) {
    char piece[1024];
    const ssize_t count = waitFor(POLLIN, deadline) ? recv(socket_, piece, sizeof piece, 0) : 0;
    if (count <= 0 || head.size() + static_cast<size_t>(count) > kLongestHead) {
      return false;
    }
    head.append(piece, static_cast<size_t>(count));
  }
  const std::string_view line = std::string_view(head).substr(0, head.find("\r\n"));
  if (line.size() > kLongestRequestLine || !std::ranges::all_of(line, isPlain)) {
    return false;
  }
  line_ = std::string(line) + "\r\n\r\n";
  return true;
}

bool Connection::is_writable() const {
  return waitFor(POLLOUT, std::min(answerBy_, steady_clock::now() + milliseconds(kTimeForRequest_ms)));
}

ssize_t Connection::read(char* to, size_t size) {
  const size_t count = std::min(size, line_.size());
  line_.copy(to, count);
  line_.erase(0, count);
  return static_cast<ssize_t>(count);
}

ssize_t Connection::write(const char* from, size_t size) {
  return is_writable() ? send(socket_, from, size, MSG_NOSIGNAL | MSG_DONTWAIT) : -1;
}

bool Connection::writeAll(const std::string& text) {
  for (size_t sent = 0; sent < text.size();) {
    const ssize_t count = write(text.data() + sent, text.size() - sent);
    if (count <= 0) {
      return false;
    }
    sent += static_cast<size_t>(count);
  }
  return true;
}

// Nobody asks for these: no answer depends on who asks.
void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
  ip.clear();
  port = 0;
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
  ip.clear();
  port = 0;
}

}  // namespace gfast::console
