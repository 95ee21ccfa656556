#include "qvrcli/session/server.h"

#include <arpa/inet.h>
#include <fmt/format.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <system_error>

#include "clock/clock.h"
#include "qvrcli/session/doorkeeper.h"
#include "qvrcli/session/session_printer.h"
#include "qvrcli/session/session_relay.h"
#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/standard_output.h"

namespace gfast::console {

namespace {

constexpr int kBacklog = 50;
constexpr auto kPauseAfterFailedAccept = std::chrono::milliseconds(100);

// A peer that is silent for kKeepAliveIdle seconds is probed, and given up after kKeepAliveProbes probes
// without an answer. The relay gives up a peer that does not acknowledge its output.
constexpr int kKeepAliveIdle = 30;
constexpr int kKeepAliveInterval = 10;
constexpr int kKeepAliveProbes = 3;

int failed(int socket, const char* what) {
  std::perror(what);
  if (socket >= 0) {
    close(socket);
  }
  return -1;
}

uint16_t portOf(int listener) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

void setOption(int connection, int level, int option, int value) {
  setsockopt(connection, level, option, &value, sizeof value);
}

// Failures are ignored: the session works without these, only slower, or it ends later.
void setConnectionOptions(int connection) {
  setOption(connection, IPPROTO_TCP, TCP_NODELAY, 1);
  setOption(connection, SOL_SOCKET, SO_OOBINLINE, 1);  // telnet sends the end of an interrupt urgently
  setOption(connection, SOL_SOCKET, SO_KEEPALIVE, 1);
  setOption(connection, IPPROTO_TCP, TCP_KEEPIDLE, kKeepAliveIdle);
  setOption(connection, IPPROTO_TCP, TCP_KEEPINTVL, kKeepAliveInterval);
  setOption(connection, IPPROTO_TCP, TCP_KEEPCNT, kKeepAliveProbes);
}

void announce(int connection) {
  sockaddr_in peer{};
  if (peerOf(connection, peer)) {
    printWithoutWaiting(fmt::format(" * accepted connection from {}\n", inet_ntoa(peer.sin_addr)));
  }
}

void runSession(cli_def* interpreter, int connection) {
  setConnectionOptions(connection);
  try {
    const SessionRelay relay(connection);
    forgetWaiting();
    cli_print_callback(interpreter, printToSession);
    if (cli_loop(interpreter, relay.interpreterSocket()) != CLI_OK) {
      close(relay.interpreterSocket());
    }
  } catch (const std::system_error& error) {
    std::fprintf(stderr, "session: %s\n", error.what());
  }
  cli_print_callback(interpreter, nullptr);
}

// A connection that could not be accepted is a session that ends at once. The pause keeps the processor free
// when accept goes on failing.
void runFailedSession(cli_def* interpreter) {
  cli_loop(interpreter, -1);
  clockSource().sleepOutside(kPauseAfterFailedAccept);
}

}  // namespace

int openListener(uint16_t port, uint32_t address) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener < 0) {
    return failed(listener, "socket");
  }
  setOption(listener, SOL_SOCKET, SO_REUSEADDR, 1);
  sockaddr_in own{};
  own.sin_family = AF_INET;
  own.sin_addr.s_addr = htonl(address);
  own.sin_port = htons(port);
  if (bind(listener, reinterpret_cast<sockaddr*>(&own), sizeof own) < 0) {
    return failed(listener, "bind");
  }
  if (listen(listener, kBacklog) < 0) {
    return failed(listener, "listen");
  }
  return listener;
}

void serveSessions(cli_def* interpreter, int listener, const std::optional<std::vector<Network>>& allowed) {
  std::optional<Doorkeeper> doorkeeper;
  if (allowed) {
    doorkeeper.emplace(listener, *allowed);
  }
  const int port = portOf(listener);
  for (;;) {
    printWithoutWaiting(fmt::format("Listening on port {}\n", port));
    const int connection =
        doorkeeper ? doorkeeper->take() : accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection == 0) {
      return;
    }
    announce(connection);
    if (connection < 0) {
      runFailedSession(interpreter);
    } else {
      runSession(interpreter, connection);
    }
  }
}

}  // namespace gfast::console
