// For yardsticks that serve: a listener at any free port of this machine's own address.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

struct LoopbackListener {
  int socket;
  uint16_t port;
};

// Ends the process, with one line, when there is none to be had.
inline LoopbackListener listenOnLoopback() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (bind(listener, generic, length) != 0 || listen(listener, 1) != 0 ||
      getsockname(listener, generic, &length) != 0) {
    std::perror("listening on loopback");
    std::exit(EXIT_FAILURE);
  }
  return {listener, ntohs(address.sin_port)};
}
