// The clock of a running system.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "clock/clock.h"

using namespace gfast;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kShort{20};
constexpr milliseconds kLong{30000};

milliseconds timeOf(auto&& action) {
  const auto start = steady_clock::now();
  action();
  return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

// Two ends of a TCP connection on loopback.
class Connection {
 public:
  Connection() {
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), length), 0);
    EXPECT_EQ(listen(listener, 1), 0);
    EXPECT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
    peer = socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(connect(peer, reinterpret_cast<sockaddr*>(&address), length), 0);
    own = accept(listener, nullptr, nullptr);
    close(listener);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    close(own);
    close(peer);
  }

  void resetByPeer() {
    const linger abort{1, 0};
    setsockopt(peer, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    close(peer);
    peer = -1;
  }

  int own = -1;
  int peer = -1;
};

TEST(SystemClock, ReturnsTheTimeOfDay) {
  const time_t before = time(nullptr);
  const time_t now = clockSource().now();
  EXPECT_GE(now, before);
  EXPECT_LE(now, time(nullptr));
}

TEST(SystemClock, SteadyTimeGoesOnWhileItSleeps) {
  const std::chrono::microseconds before = clockSource().steady();
  clockSource().sleep(kShort);
  EXPECT_GE(clockSource().steady() - before, kShort);
}

TEST(SystemClock, SleepsAtLeastAsLongAsAsked) {
  EXPECT_GE(timeOf([] { clockSource().sleep(kShort); }), kShort);
}

TEST(SystemClock, WaitEndsWhenADescriptorIsReadable) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  fd_set descriptors;
  FD_ZERO(&descriptors);
  FD_SET(ends[0], &descriptors);
  EXPECT_LT(timeOf([&] { EXPECT_EQ(clockSource().waitReadable(descriptors, ends[0] + 1, kLong), 1); }),
            kLong);
  EXPECT_TRUE(FD_ISSET(ends[0], &descriptors));
}

TEST(SystemClock, WaitEndsAfterTheGivenTimeWhenNothingIsReadable) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  fd_set descriptors;
  FD_ZERO(&descriptors);
  FD_SET(ends[0], &descriptors);
  EXPECT_GE(timeOf([&] { EXPECT_EQ(clockSource().waitReadable(descriptors, ends[0] + 1, kShort), 0); }),
            kShort);
  EXPECT_FALSE(FD_ISSET(ends[0], &descriptors));
}

TEST(SystemClock, WaitsTheGivenTimeWhenADescriptorIsClosed) {
  const int gone = dup(STDERR_FILENO);
  close(gone);
  fd_set descriptors;
  FD_ZERO(&descriptors);
  FD_SET(gone, &descriptors);
  EXPECT_GE(timeOf([&] { EXPECT_EQ(clockSource().waitReadable(descriptors, gone + 1, kShort), 0); }), kShort);
  EXPECT_FALSE(FD_ISSET(gone, &descriptors));
}

TEST(SystemClock, SleepsTheWholeTimeWhileConnected) {
  const Connection connection;
  EXPECT_GE(timeOf([&] { EXPECT_TRUE(clockSource().sleepWhileConnected(connection.own, kShort)); }), kShort);
}

TEST(SystemClock, PeerThatFinishedSendingCountsAsConnected) {
  const Connection connection;
  shutdown(connection.peer, SHUT_WR);
  EXPECT_TRUE(clockSource().sleepWhileConnected(connection.own, kShort));
}

TEST(SystemClock, SleepEndsWhenThePeerResetsTheConnection) {
  Connection connection;
  connection.resetByPeer();
  EXPECT_LT(timeOf([&] { EXPECT_FALSE(clockSource().sleepWhileConnected(connection.own, kLong)); }), kLong);
}

TEST(SystemClock, SleepsTheWholeTimeWithoutAConnection) {
  EXPECT_GE(timeOf([] { EXPECT_TRUE(clockSource().sleepWhileConnected(-1, kShort)); }), kShort);
}

}  // namespace
