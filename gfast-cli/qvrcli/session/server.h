// Telnet sessions, one after the other.
#pragma once

#include <libcli.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "qvrcli/session/networks.h"

namespace gfast::console {

constexpr uint32_t kEveryAddress = 0;

// Returns a socket that listens on the port and the IPv4 address, or -1 after a message on standard error.
int openListener(uint16_t port, uint32_t address = kEveryAddress);

// Serves one connection after the other, each to its end, until accept returns descriptor 0. With networks,
// only clients whose addresses are in one of them.
void serveSessions(cli_def* interpreter, int listener,
                   const std::optional<std::vector<Network>>& allowed = std::nullopt);

}  // namespace gfast::console
