#include "qvrcli/session/server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "qvrcli/qvrcli.h"
#include "qvrcli/session/interpreter_guard.h"
#include "support/console_session.h"
#include "support/test_clock.h"

using namespace gfast;
using namespace gfast::console;

namespace {

bool failListen = false;

uint16_t portOf(int listener) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohs(address.sin_port);
}

}  // namespace

// The linker replaces listen by this.
extern "C" int __real_listen(int socket, int backlog);
extern "C" int __wrap_listen(int socket, int backlog) {
  if (failListen) {
    errno = EADDRINUSE;
    return -1;
  }
  return __real_listen(socket, backlog);
}

namespace {

TEST(Listener, TakesAnyFreePortForPort0) {
  const int listener = openListener(0);
  ASSERT_GE(listener, 0);
  EXPECT_NE(portOf(listener), 0);
  close(listener);
}

uint32_t addressOf(int listener) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  return ntohl(address.sin_addr.s_addr);
}

TEST(Listener, ListensAtEveryAddressUnlessToldOne) {
  const int everywhere = openListener(0);
  const int atHome = openListener(0, INADDR_LOOPBACK);
  EXPECT_EQ(addressOf(everywhere), INADDR_ANY);
  EXPECT_EQ(addressOf(atHome), INADDR_LOOPBACK);
  close(everywhere);
  close(atHome);
}

// A connection that waits in the system's queue is complete for the client.
TEST(Listener, LetsFiftyClientsWait) {
  const int listener = openListener(0);
  sockaddr_in address{};
  socklen_t length = sizeof address;
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  int clients[50];
  for (int& client : clients) {
    client = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    connect(client, reinterpret_cast<sockaddr*>(&address), length);
    pollfd connected{client, POLLOUT, 0};
    EXPECT_EQ(poll(&connected, 1, 1000), 1);
  }
  for (const int client : clients) {
    close(client);
  }
  close(listener);
}

// The server's end of a connection that it closed first keeps the port for minutes.
TEST(Listener, TakesThePortOfAServerThatEndedJustNow) {
  const int listener = openListener(0);
  const uint16_t port = portOf(listener);
  const ConsoleSession client(port);
  close(accept(listener, nullptr, nullptr));
  close(listener);
  const int next = openListener(port);
  EXPECT_GE(next, 0);
  close(next);
}

TEST(Listener, ReportsThatThereIsNoSocket) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none{3, limit.rlim_max};
  testing::internal::CaptureStderr();
  setrlimit(RLIMIT_NOFILE, &none);
  const int listener = openListener(0);
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "socket: Too many open files\n");
  EXPECT_EQ(listener, -1);
}

TEST(Listener, ReportsThatThePortIsTaken) {
  const int first = openListener(0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(openListener(portOf(first)), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "bind: Address already in use\n");
  close(first);
}

TEST(Listener, ReportsThatItCannotListen) {
  failListen = true;
  testing::internal::CaptureStderr();
  EXPECT_EQ(openListener(0), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "listen: Address already in use\n");
}

// Serves on the thread of the test.
class Server : public testing::Test {
 protected:
  void SetUp() override {
    std::signal(SIGPIPE, SIG_IGN);
    cli_ = cli_init();
    guardInterpreter(cli_);
    listener_ = openListener(0);
    ASSERT_GE(listener_, 0);
    announcement_ = "Listening on port " + std::to_string(portOf(listener_)) + "\n";
  }

  void TearDown() override {
    close(listener_);
    cli_done(cli_);
  }

  cli_def* cli_ = nullptr;
  int listener_ = -1;
  std::string announcement_;
};

TEST_F(Server, EndsWhenAcceptReturnsDescriptor0) {
  ConsoleSession client(portOf(listener_));
  testing::internal::CaptureStdout();
  close(STDIN_FILENO);  // so that the next descriptor is 0
  serveSessions(cli_, listener_);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), announcement_);
}

TEST_F(Server, TakesAFailedAcceptForASessionThatEndsAtOnce) {
#ifdef GFAST_UBSAN
  GTEST_SKIP() << "UBSan needs descriptors of its own to look at an object's type";
#endif
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  ConsoleSession client(portOf(listener_));
  const rlimit none{static_cast<rlim_t>(client.socket()) + 1, limit.rlim_max};
  testing::internal::CaptureStdout();
  testClock().onSleep([&] {
    if (testClock().sleeps().size() == 3) {
      setrlimit(RLIMIT_NOFILE, &limit);
      close(STDIN_FILENO);
    }
  });
  setrlimit(RLIMIT_NOFILE, &none);
  serveSessions(cli_, listener_);
  std::string expected;
  for (int i = 0; i < 4; i++) {
    expected += announcement_;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
  const auto sleeps = testClock().sleeps();
  ASSERT_EQ(sleeps.size(), 3U);
  // The network's pauses are no shorter where the chips' time runs faster.
  EXPECT_EQ(testClock().outsideSleeps(), sleeps);
  for (const auto& pause : sleeps) {
    EXPECT_GT(pause.count(), 0);
    EXPECT_LE(pause, std::chrono::seconds(1));
  }
}

int freeDescriptor0(cli_def* /*cli*/, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  close(STDIN_FILENO);
  return CLI_OK;
}

TEST_F(Server, PrintsWhoConnectedAndThatItListensAgain) {
  cli_register_command(cli_, nullptr, "free", freeDescriptor0, PRIVILEGE_UNPRIVILEGED, MODE_EXEC, nullptr);
  ConsoleSession first(portOf(listener_));
  first.send("free\rquit\r");
  ConsoleSession second(portOf(listener_));
  testing::internal::CaptureStdout();
  serveSessions(cli_, listener_);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            announcement_ + " * accepted connection from 127.0.0.1\n" + announcement_);
}

TEST_F(Server, ServesWhoeverIsOnItsListUntilAcceptReturnsDescriptor0) {
#ifdef GFAST_UBSAN
  GTEST_SKIP() << "UBSan opens descriptors of its own, and may take 0 before accept does";
#endif
  cli_register_command(cli_, nullptr, "free", freeDescriptor0, PRIVILEGE_UNPRIVILEGED, MODE_EXEC, nullptr);
  const uint16_t port = portOf(listener_);
  std::atomic<bool> ended = false;
  testing::internal::CaptureStdout();
  std::thread clients([port, &ended] {
    // While descriptor 0 is taken. The accept that waits has its descriptor already, so the one behind gets
    // 0, unless the session that begins meanwhile is quicker: then one behind a later client gets it.
    int last[50];
    std::ranges::generate(last, [] { return socket(AF_INET, SOCK_STREAM, 0); });
    const ConsoleSession refused(port, 0x7F000002);
    ConsoleSession first(port);
    first.send("free\rquit\r");
    first.readToEnd();
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    for (const int each : last) {
      if (!ended) {
        EXPECT_EQ(connect(each, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
      }
      close(each);
      std::this_thread::sleep_for(std::chrono::milliseconds(ended ? 0 : 20));
    }
  });
  serveSessions(cli_, listener_, parseNetworks("10.0.0.0/8,127.0.0.1"));
  ended = true;
  clients.join();
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_THAT(printed, testing::HasSubstr(" * refused connection from 127.0.0.2\n"));
  EXPECT_THAT(printed, testing::HasSubstr(" * accepted connection from 127.0.0.1\n" + announcement_));
}

TEST_F(Server, TakesAFailedAcceptForASessionThatEndsAtOnceAlsoWithAList) {
#ifdef GFAST_UBSAN
  GTEST_SKIP() << "UBSan needs descriptors of its own to look at a new thread's type";
#endif
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const ConsoleSession client(portOf(listener_));
  const rlimit none{static_cast<rlim_t>(client.socket()) + 1, limit.rlim_max};
  testClock().onSleep([&] {
    // The list's thread may accept at any moment, and must find no other descriptor free.
    if (testClock().sleeps().size() == 4) {
      close(STDIN_FILENO);
    }
  });
  testing::internal::CaptureStdout();
  setrlimit(RLIMIT_NOFILE, &none);
  serveSessions(cli_, listener_, parseNetworks("127.0.0.1"));
  setrlimit(RLIMIT_NOFILE, &limit);
  testing::internal::GetCapturedStdout();
  EXPECT_GE(testClock().sleeps().size(), 4U);
}

}  // namespace
