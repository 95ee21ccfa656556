#include "qvrcli/session/session_relay.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>

#include "qvrcli/session/typed_input.h"

namespace gfast::console {

namespace {

constexpr size_t kChunk = size_t{16} * 1024;

ssize_t receiveSome(int socket, char* buffer, size_t size) {
  ssize_t received;
  do {
    received = recv(socket, buffer, size, 0);
  } while (received < 0 && errno == EINTR);
  return received;
}

// False when the other side has closed.
bool sendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<size_t>(sent));
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace

SessionRelay::SessionRelay(int connection) : connection_(connection) {
  int sockets[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) < 0) {
    const int error = errno;
    close(connection_);
    throw std::system_error(error, std::generic_category(), "socketpair");
  }
  relaySocket_ = sockets[0];
  interpreterSocket_ = sockets[1];
  try {
    input_ = std::thread(&SessionRelay::relayInput, this);
    output_ = std::thread(&SessionRelay::relayOutput, this);
  } catch (const std::system_error&) {
    giveUp();
    if (input_.joinable()) {
      input_.join();
    }
    close(interpreterSocket_);
    close(relaySocket_);
    close(connection_);
    throw;
  }
}

SessionRelay::~SessionRelay() {
  output_.join();
  shutdown(connection_, SHUT_RDWR);
  input_.join();
  close(relaySocket_);
  close(connection_);
}

void SessionRelay::relayInput() {
  TypedInput input;
  std::string typed;
  char received[kChunk];
  for (;;) {
    const ssize_t count = receiveSome(connection_, received, sizeof received);
    if (count < 0) {
      giveUp();
      return;
    }
    if (count == 0) {
      shutdown(relaySocket_, SHUT_WR);
      awaitLoss();
      return;
    }
    typed.clear();
    input.receive({received, static_cast<size_t>(count)}, typed);
    if (!sendAll(relaySocket_, typed)) {
      discardInput();
      return;
    }
  }
}

void SessionRelay::relayOutput() {
  char output[kChunk];
  for (;;) {
    const ssize_t count = receiveSome(relaySocket_, output, sizeof output);
    if (count <= 0) {
      shutdown(connection_, SHUT_WR);
      return;
    }
    if (!sendAll(connection_, {output, static_cast<size_t>(count)})) {
      giveUp();
      return;
    }
  }
}

// A connection that is closed with unread input is reset, and the peer may lose output that it has not read
// yet. So a little input is read and thrown away. A peer that sends more than that is reset: it may be
// waiting for room, and would wait for ever.
void SessionRelay::discardInput() {
  constexpr int most = 2;  // chunks
  char received[kChunk];
  for (int i = 0; i < most && receiveSome(connection_, received, sizeof received) > 0; i++) {
  }
}

// Nothing more will be received, but the peer may still break the connection.
void SessionRelay::awaitLoss() {
  pollfd peer{connection_, 0, 0};
  while (poll(&peer, 1, -1) < 0 && errno == EINTR) {
  }
  giveUp();
}

void SessionRelay::giveUp() {
  shutdown(relaySocket_, SHUT_RDWR);
  shutdown(connection_, SHUT_RDWR);
}

}  // namespace gfast::console
