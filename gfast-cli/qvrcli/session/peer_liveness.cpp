#include "qvrcli/session/peer_liveness.h"

#include <netinet/in.h>
#include <sys/socket.h>

namespace gfast::console {

namespace {

constexpr unsigned kLongestSilence_ms = 60 * 1000;

}  // namespace

bool answers(const tcp_info& connection) {
  // One question for room may be on its way. The next ones come up to two minutes later.
  const bool awaited = connection.tcpi_unacked > 0 || connection.tcpi_probes > 1;
  return !awaited || connection.tcpi_last_ack_recv < kLongestSilence_ms;
}

bool peerAnswers(int socket) {
  tcp_info info{};
  socklen_t size = sizeof info;
  return getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) < 0 || answers(info);
}

}  // namespace gfast::console
