// Refuses clients that are not on a list, also while a session is served.
#pragma once

#include <netinet/in.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "qvrcli/session/networks.h"

namespace gfast::console {

// The IPv4 address of a connection's peer; false when it has none any more.
bool peerOf(int connection, sockaddr_in& peer);

// Whether a connection's peer is one of those. If not, one line on standard output says so. A peer with an
// IPv6 address is none, but for one that stands for an IPv4 address; so is one that has reset its connection.
bool isAllowed(int connection, const std::vector<Network>& allowed);

// Accepts connections on a thread of its own. It closes those of other clients at once, with one line on
// standard output, and keeps the others, in the order in which they came, until they are taken.
class Doorkeeper {
 public:
  Doorkeeper(int listener, std::vector<Network> allowed);

  // To be called when take() has returned descriptor 0.
  ~Doorkeeper();

  Doorkeeper(const Doorkeeper&) = delete;
  Doorkeeper& operator=(const Doorkeeper&) = delete;

  // Waits for the next connection. What accept returned: also -1 when it failed. Descriptor 0 is the last.
  int take();

 private:
  void keepDoor();
  void put(int connection);

  const int listener_;
  const std::vector<Network> allowed_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<int> waiting_;
  std::thread thread_;
};

}  // namespace gfast::console
