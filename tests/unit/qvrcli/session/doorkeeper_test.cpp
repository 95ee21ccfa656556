// Who is let in.
#include "qvrcli/session/doorkeeper.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace gfast::console;

namespace {

const std::vector<Network> kThisMachine = *parseNetworks("127.0.0.0/8");
const std::vector<Network> kOthers = *parseNetworks("10.0.0.0/8");

// The server's end of a connection that is made to an IPv6 address of this machine.
class Connection {
 public:
  explicit Connection(const in6_addr& to) {
    const int listener = socket(AF_INET6, SOCK_STREAM, 0);
    const int both = 0;
    setsockopt(listener, IPPROTO_IPV6, IPV6_V6ONLY, &both, sizeof both);
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    socklen_t length = sizeof address;
    bind(listener, reinterpret_cast<sockaddr*>(&address), length);
    listen(listener, 1);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
    address.sin6_addr = to;
    client_ = socket(AF_INET6, SOCK_STREAM, 0);
    connected_ = connect(client_, reinterpret_cast<sockaddr*>(&address), length) == 0;
    server_ = connected_ ? accept(listener, nullptr, nullptr) : -1;
    close(listener);
  }
  ~Connection() {
    close(client_);
    close(server_);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool isThere() const { return connected_; }
  int server() const { return server_; }

 private:
  int client_ = -1;
  int server_ = -1;
  bool connected_ = false;
};

in6_addr mapped127001() {
  in6_addr address{};
  inet_pton(AF_INET6, "::ffff:127.0.0.1", &address);
  return address;
}

TEST(IsAllowed, KnowsAnIpv4AddressInAnIpv6One) {
  const Connection connection(mapped127001());
  if (!connection.isThere()) {
    GTEST_SKIP() << "this machine has no IPv6";
  }
  EXPECT_TRUE(isAllowed(connection.server(), kThisMachine));
  testing::internal::CaptureStdout();
  EXPECT_FALSE(isAllowed(connection.server(), kOthers));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), " * refused connection from 127.0.0.1\n");
}

TEST(IsAllowed, RefusesAnyOtherIpv6Address) {
  const Connection connection(in6addr_loopback);
  if (!connection.isThere()) {
    GTEST_SKIP() << "this machine has no IPv6";
  }
  testing::internal::CaptureStdout();
  EXPECT_FALSE(isAllowed(connection.server(), kThisMachine));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), " * refused connection from ::1\n");
}

TEST(IsAllowed, RefusesAPeerWithoutAnAddress) {
  EXPECT_FALSE(isAllowed(-1, kThisMachine));
}

}  // namespace
