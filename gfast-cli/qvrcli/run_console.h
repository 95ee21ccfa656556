// Running the console: a script file, or telnet sessions one after the other.
#pragma once

#include <cstdint>

namespace gfast::console {

constexpr uint16_t kConsolePort = 9000;

// The whole console, in front of the installed driver. With a script that can be opened, runs it and returns
// 0. Otherwise listens on the port (0: any free one) and serves sessions; returns 1 when it cannot listen.
// Before that it reads what the environment says about protection (session/settings.h), and returns 2 when
// that is not as it should be. With `http`, an "[address:]port", other machines may read the lines there
// meanwhile; returns 1 when that cannot be. The result is the process's exit status.
int runConsole(const char* script, uint16_t port, const char* http);

}  // namespace gfast::console
