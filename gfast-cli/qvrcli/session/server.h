// Running the console: a script file, or telnet sessions one after the other.
#pragma once

#include <libcli.h>

#include <cstdint>

namespace gfast::console {

constexpr uint16_t kConsolePort = 9000;

// The console's life, behind whatever driver was installed. With a script that can be opened, runs it and
// answers 0; otherwise listens on the port (0: any free one) and serves sessions, answering 1 when it cannot
// listen. The result is the process's exit status.
int runConsole(const char* script, uint16_t port);

// A socket that listens on the port, on every IPv4 address; -1 when it cannot, after saying why on standard
// error.
int openListener(uint16_t port);

// Serves one connection after the other, each to its end, until accept answers descriptor 0.
void serveSessions(cli_def* interpreter, int listener);

}  // namespace gfast::console
