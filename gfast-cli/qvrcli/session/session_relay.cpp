#include "qvrcli/session/session_relay.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

#include "qvrcli/session/peer_liveness.h"

namespace gfast::console {

namespace {

constexpr size_t kChunk = size_t{16} * 1024;
constexpr int kProbeInterval_ms = 500;
constexpr int kLivenessInterval_ms = 10 * 1000;

ssize_t receiveSome(int socket, char* buffer, size_t size) {
  ssize_t received;
  do {
    received = recv(socket, buffer, size, 0);
  } while (received < 0 && errno == EINTR);
  return received;
}

bool hungUp(int socket) {
  pollfd other{socket, 0, 0};
  return poll(&other, 1, 0) > 0;
}

// Waits until the descriptor is ready, in steps. False when the peer no longer answers meanwhile.
bool awaitReady(int descriptor, short events, int connection) {
  pollfd ready{descriptor, events, 0};
  while (poll(&ready, 1, kLivenessInterval_ms) <= 0) {
    if (!peerAnswers(connection)) {
      return false;
    }
  }
  return true;
}

// False when the peer is lost. A peer that does not read is waited for.
bool sendAll(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent >= 0) {
      bytes.remove_prefix(static_cast<size_t>(sent));
    } else if (errno == EAGAIN ? !awaitReady(connection, POLLOUT, connection) : errno != EINTR) {
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
  input_.join();
  close(relaySocket_);
  close(connection_);
}

void SessionRelay::relayInput() {
  std::string typed;
  char received[kChunk];
  while (!endsBeforeInput()) {
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
    typedInput_.receive({received, static_cast<size_t>(count)}, typed);
    if (!deliver(typed)) {
      break;
    }
  }
  discardInput();
}

// Waits for input, the end of the peer's included. True when the interpreter closes its socket before.
bool SessionRelay::endsBeforeInput() const {
  pollfd both[] = {{connection_, POLLIN, 0}, {relaySocket_, 0, 0}};
  while (poll(both, std::size(both), -1) < 0 && errno == EINTR) {
  }
  return both[1].revents != 0;
}

void SessionRelay::relayOutput() {
  char output[kChunk];
  while (awaitReady(relaySocket_, POLLIN, connection_)) {
    const ssize_t count = receiveSome(relaySocket_, output, sizeof output);
    if (count <= 0) {
      shutdown(connection_, SHUT_WR);
      return;
    }
    if (!sendAll(connection_, {output, static_cast<size_t>(count)})) {
      break;
    }
  }
  giveUp();
}

// A connection that is closed with unread input is reset, and the peer may lose output that it has not read
// yet. So a little input is read and thrown away. A peer that sends more than that is reset: it would wait
// for room. The connection is not shut down for receiving, because such a peer would then not be told of the
// room there is, and would wait for minutes.
void SessionRelay::discardInput() {
  constexpr int most = 2;  // chunks
  char received[kChunk];
  for (int i = 0; i < most && recv(connection_, received, sizeof received, MSG_DONTWAIT) > 0; i++) {
  }
}

// Gives the interpreter what was typed. It may not take it for as long as a command runs, so the peer is
// watched meanwhile. False when the interpreter has closed, or the peer is given up.
bool SessionRelay::deliver(std::string_view typed) {
  while (!typed.empty()) {
    const ssize_t sent = send(relaySocket_, typed.data(), typed.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent >= 0) {
      typed.remove_prefix(static_cast<size_t>(sent));
      continue;
    }
    if (errno != EAGAIN && errno != EINTR) {
      return false;
    }
    pollfd both[] = {{connection_, POLLRDHUP, 0}, {relaySocket_, POLLOUT, 0}};
    poll(both, std::size(both), -1);
    if ((both[0].revents & POLLRDHUP) != 0 && !askForPeer(POLLOUT)) {
      giveUp();
      return false;
    }
  }
  return true;
}

// Nothing more will be received, but the peer may still break the connection.
void SessionRelay::awaitLoss() {
  while (!hungUp(relaySocket_)) {
    if (!askForPeer(0)) {
      giveUp();
    }
  }
}

// Waits a while for the interpreter to be ready, or for the loss of the peer, which has sent its end. One
// that has closed altogether answers whatever it is sent with a reset. Only a telnet client takes out what it
// is sent here. False when the peer is lost.
bool SessionRelay::askForPeer(short ready) const {
  constexpr std::string_view noOperation = "\xFF\xF1";
  pollfd both[] = {{connection_, 0, 0}, {relaySocket_, ready, 0}};
  const int changed = poll(both, std::size(both), kProbeInterval_ms);
  if (changed == 0 && typedInput_.speaksTelnet()) {
    send(connection_, noOperation.data(), noOperation.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  return changed <= 0 || both[0].revents == 0;
}

void SessionRelay::giveUp() {
  shutdown(relaySocket_, SHUT_RDWR);
  shutdown(connection_, SHUT_RDWR);
}

}  // namespace gfast::console
