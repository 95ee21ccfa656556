// Whether the system of a connection's peer still answers.
#pragma once

#include <netinet/tcp.h>

namespace gfast::console {

// False when the peer has acknowledged nothing for a minute though it was sent something: output, or a
// question whether it has room again. A peer that does not read, but whose system says that it has no room,
// answers. One that is sent nothing is judged by the connection's keep-alive probes instead.
bool answers(const tcp_info& connection);

// The same for a connection's socket; true when nothing is known.
bool peerAnswers(int socket);

}  // namespace gfast::console
