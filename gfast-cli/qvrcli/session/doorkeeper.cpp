#include "qvrcli/session/doorkeeper.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "qvrcli/text/standard_output.h"

namespace gfast::console {

namespace {

// More stay in the system's own queue.
constexpr size_t kMostWaiting = 50;

}  // namespace

bool peerOf(int connection, sockaddr_in& peer) {
  socklen_t length = sizeof peer;
  return getpeername(connection, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
}

Doorkeeper::Doorkeeper(int listener, std::vector<Network> allowed)
    : listener_(listener), allowed_(std::move(allowed)), thread_(&Doorkeeper::keepDoor, this) {}

Doorkeeper::~Doorkeeper() {
  thread_.join();
}

int Doorkeeper::take() {
  std::unique_lock guard(lock_);
  changed_.wait(guard, [this] { return !waiting_.empty(); });
  const int connection = waiting_.front();
  waiting_.pop_front();
  changed_.notify_all();
  return connection;
}

void Doorkeeper::keepDoor() {
  int connection = 0;
  do {
    connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection <= 0 || admits(connection)) {
      put(connection);
    } else {
      close(connection);
    }
  } while (connection != 0);
}

// A client that has reset its connection meanwhile has no address any more, and gets no session.
bool Doorkeeper::admits(int connection) const {
  sockaddr_in peer{};
  if (!peerOf(connection, peer)) {
    return false;
  }
  const uint32_t address = ntohl(peer.sin_addr.s_addr);
  if (std::ranges::any_of(allowed_, [=](const Network& network) { return network.contains(address); })) {
    return true;
  }
  printWithoutWaiting(fmt::format(" * refused connection from {}\n", inet_ntoa(peer.sin_addr)));
  return false;
}

// When accept fails, the next is tried only when this failure was taken: the server pauses behind it.
void Doorkeeper::put(int connection) {
  std::unique_lock guard(lock_);
  waiting_.push_back(connection);
  changed_.notify_all();
  const size_t most = connection < 0 ? 0 : kMostWaiting - 1;
  changed_.wait(guard, [=, this] { return waiting_.size() <= most; });
}

}  // namespace gfast::console
