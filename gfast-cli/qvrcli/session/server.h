// Telnet sessions, one after the other.
#pragma once

#include <libcli.h>

#include <cstdint>

namespace gfast::console {

// Returns a socket that listens on the port, on every IPv4 address, or -1 after a message on standard error.
int openListener(uint16_t port);

// Serves one connection after the other, each to its end, until accept returns descriptor 0.
void serveSessions(cli_def* interpreter, int listener);

}  // namespace gfast::console
