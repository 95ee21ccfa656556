#include "qvrcli/session/doorkeeper.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "qvrcli/text/standard_output.h"

namespace gfast::console {

namespace {

// More stay in the system's own queue.
constexpr size_t kMostWaitingClients = 50;

// Where an IPv6 address carries the IPv4 address that it stands for.
constexpr size_t kMappedAt = 12;

struct Peer {
  std::string name;
  std::optional<uint32_t> address;  // in host order; none has an IPv6 address
};

Peer nameAndAddress(const sockaddr_storage& peer) {
  char name[INET6_ADDRSTRLEN] = "";
  in_addr v4{};
  if (peer.ss_family == AF_INET) {
    v4 = reinterpret_cast<const sockaddr_in&>(peer).sin_addr;
  } else {
    const in6_addr& v6 = reinterpret_cast<const sockaddr_in6&>(peer).sin6_addr;
    if (!IN6_IS_ADDR_V4MAPPED(&v6)) {
      return {inet_ntop(AF_INET6, &v6, name, sizeof name), std::nullopt};
    }
    std::memcpy(&v4, v6.s6_addr + kMappedAt, sizeof v4);
  }
  return {inet_ntop(AF_INET, &v4, name, sizeof name), ntohl(v4.s_addr)};
}

}  // namespace

bool peerOf(int connection, sockaddr_in& peer) {
  socklen_t length = sizeof peer;
  return getpeername(connection, reinterpret_cast<sockaddr*>(&peer), &length) == 0;
}

bool isAllowed(int connection, const std::vector<Network>& allowed) {
  sockaddr_storage peer{};
  socklen_t length = sizeof peer;
  if (getpeername(connection, reinterpret_cast<sockaddr*>(&peer), &length) != 0) {
    return false;
  }
  const Peer who = nameAndAddress(peer);
  if (who.address &&
      std::ranges::any_of(allowed, [&](const Network& network) { return network.contains(*who.address); })) {
    return true;
  }
  printWithoutWaiting(fmt::format(" * refused connection from {}\n", who.name));
  return false;
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
    if (connection <= 0 || isAllowed(connection, allowed_)) {
      put(connection);
    } else {
      close(connection);
    }
  } while (connection != 0);
}

// When accept fails, the next is tried only when this failure was taken: the server pauses behind it.
void Doorkeeper::put(int connection) {
  std::unique_lock guard(lock_);
  waiting_.push_back(connection);
  changed_.notify_all();
  const size_t most = connection < 0 ? 0 : kMostWaitingClients - 1;
  changed_.wait(guard, [=, this] { return waiting_.size() <= most; });
}

}  // namespace gfast::console
