#include "qvrcli/session/session_relay.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

#include "qvrcli/session/peer_liveness.h"

using namespace gfast;
using namespace gfast::console;

namespace {

// Two ends of one TCP connection.
struct Connection {
  int peer = -1;
  int server = -1;
};

Connection connectLoopback() {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), length), 0);
  listen(listener, 1);
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  Connection connection;
  connection.peer = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(connect(connection.peer, reinterpret_cast<sockaddr*>(&address), length), 0);
  connection.server = accept(listener, nullptr, nullptr);
  close(listener);
  return connection;
}

class Relay : public testing::Test {
 protected:
  void SetUp() override {
    std::signal(SIGPIPE, SIG_IGN);
    connection_ = connectLoopback();
    relay_ = std::make_unique<SessionRelay>(connection_.server);
    interpreter_ = relay_->interpreterSocket();
  }

  void TearDown() override {
    endInterpreter();
    endPeer();
  }

  void endInterpreter() {
    if (relay_ != nullptr) {
      close(interpreter_);
      relay_.reset();
    }
  }

  void endPeer() {
    if (connection_.peer >= 0) {
      close(connection_.peer);
      connection_.peer = -1;
    }
  }

  void resetPeer() {
    const linger atOnce{1, 0};
    setsockopt(connection_.peer, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    endPeer();
  }

  static std::string readAll(int descriptor) {
    std::string all;
    char buffer[65536];
    for (ssize_t count; (count = read(descriptor, buffer, sizeof buffer)) > 0;) {
      all.append(buffer, static_cast<size_t>(count));
    }
    return all;
  }

  static std::string readExactly(int descriptor, size_t size) {
    std::string text(size, '\0');
    const ssize_t count = recv(descriptor, text.data(), size, MSG_WAITALL);
    text.resize(count < 0 ? 0 : static_cast<size_t>(count));
    return text;
  }

  static void write(int descriptor, const std::string& text) {
    ASSERT_EQ(send(descriptor, text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
  }

  bool hangsUp() const {
    pollfd interpreter{interpreter_, 0, 0};
    return poll(&interpreter, 1, 30000) == 1 && (interpreter.revents & POLLHUP) != 0;
  }

  Connection connection_;
  std::unique_ptr<SessionRelay> relay_;
  int interpreter_ = -1;
};

TEST_F(Relay, MovesBytesBothWays) {
  write(connection_.peer, "show version\r");
  EXPECT_EQ(readExactly(interpreter_, 13), "show version\r");
  write(interpreter_, "an answer\r\n");
  EXPECT_EQ(readExactly(connection_.peer, 11), "an answer\r\n");
}

TEST_F(Relay, TakesTelnetOutOfTheInputOnly) {
  write(connection_.peer, "a\xFF\xFB\x03z");
  EXPECT_EQ(readExactly(interpreter_, 2), "az");
  write(interpreter_, "a\xFF\xFB\x03z");
  EXPECT_EQ(readExactly(connection_.peer, 5), "a\xFF\xFB\x03z");
}

TEST_F(Relay, SendsAllThatTheInterpreterWroteBeforeItEnded) {
  const std::string much(300000, 'x');
  std::string got;
  std::thread peer([&] { got = readAll(connection_.peer); });
  write(interpreter_, much);
  endInterpreter();
  peer.join();
  EXPECT_EQ(got, much);
}

TEST_F(Relay, SendsOutputToAPeerThatSendsNoMore) {
  write(connection_.peer, "show version\rquit\r");
  shutdown(connection_.peer, SHUT_WR);
  EXPECT_EQ(readAll(interpreter_), "show version\rquit\r");
  pollfd interpreter{interpreter_, 0, 0};
  EXPECT_EQ(poll(&interpreter, 1, 100), 0) << "a hang-up, though the peer still reads";
  write(interpreter_, "the answer");
  endInterpreter();
  EXPECT_EQ(readAll(connection_.peer), "the answer");
}

TEST_F(Relay, HangsUpWhenThePeerResets) {
  resetPeer();
  EXPECT_TRUE(hangsUp());
  EXPECT_EQ(send(interpreter_, "x", 1, MSG_NOSIGNAL), -1);
}

TEST_F(Relay, HangsUpWhenThePeerResetsAfterItsInputEnded) {
  shutdown(connection_.peer, SHUT_WR);
  EXPECT_EQ(readAll(interpreter_), "");
  resetPeer();
  EXPECT_TRUE(hangsUp());
}

TEST_F(Relay, HangsUpWhenThereIsOutputForAPeerThatIsGone) {
  endPeer();
  EXPECT_EQ(readAll(interpreter_), "");
  for (int i = 0; i < 1000 && send(interpreter_, "output", 6, MSG_NOSIGNAL) > 0; i++) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_TRUE(hangsUp());
}

constexpr const char* kTelnet = "\xFF\xFD\x03";

TEST_F(Relay, HangsUpWhenATelnetClientIsGone) {
  write(connection_.peer, kTelnet);
  endPeer();
  EXPECT_EQ(readAll(interpreter_), "");
  pollfd interpreter{interpreter_, 0, 0};
  EXPECT_EQ(poll(&interpreter, 1, 2000), 1);
}

TEST_F(Relay, HangsUpWhenATelnetClientIsGoneThatTypedMoreThanTheInterpreterTakes) {
  const std::string much(1000000, 'x');
  write(connection_.peer, kTelnet + much);
  endPeer();
  pollfd interpreter{interpreter_, 0, 0};
  EXPECT_EQ(poll(&interpreter, 1, 2000), 1);
}

TEST_F(Relay, HangsUpWhenThePeerResetsThatTypedMoreThanTheInterpreterTakes) {
  const std::string much(1000000, 'x');
  write(connection_.peer, much);
  resetPeer();
  pollfd interpreter{interpreter_, 0, 0};
  EXPECT_EQ(poll(&interpreter, 1, 2000), 1);
}

TEST_F(Relay, AsksATelnetClientThatSendsNoMoreWhetherItIsThere) {
  write(connection_.peer, kTelnet);
  shutdown(connection_.peer, SHUT_WR);
  EXPECT_EQ(readExactly(connection_.peer, 4), "\xFF\xF1\xFF\xF1");
  pollfd interpreter{interpreter_, 0, 0};
  EXPECT_EQ(poll(&interpreter, 1, 100), 0);
}

TEST_F(Relay, SendsNothingOfItsOwnToAClientWithoutTelnet) {
  shutdown(connection_.peer, SHUT_WR);
  pollfd peer{connection_.peer, POLLIN, 0};
  EXPECT_EQ(poll(&peer, 1, 1200), 0);
}

TEST_F(Relay, WaitsForAPeerThatDoesNotReadLongerThanASendTimeout) {
  const timeval timeout{0, 100000};
  setsockopt(connection_.server, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
  constexpr size_t much = 20'000'000;
  std::thread interpreter([this] { write(interpreter_, std::string(much, 'x')); });
  pollfd socket{interpreter_, 0, 0};
  EXPECT_EQ(poll(&socket, 1, 1000), 0);
  EXPECT_EQ(readExactly(connection_.peer, much).size(), much);
  interpreter.join();
}

TEST(PeerLiveness, IsLostWithoutAnAnswerForAMinute) {
  tcp_info connection{};
  connection.tcpi_last_ack_recv = 100'000;
  EXPECT_TRUE(answers(connection)) << "it was sent nothing";
  connection.tcpi_unacked = 1;
  EXPECT_FALSE(answers(connection)) << "output";
  connection.tcpi_last_ack_recv = 59'000;
  EXPECT_TRUE(answers(connection));
  connection = {};
  connection.tcpi_last_ack_recv = 119'000;
  connection.tcpi_probes = 1;
  EXPECT_TRUE(answers(connection)) << "a question that may be on its way";
  connection.tcpi_probes = 2;
  EXPECT_FALSE(answers(connection)) << "two questions";
}

TEST_F(Relay, EndsWithTheInterpreterWhileThePeerGoesOnSending) {
  std::thread peer([socket = connection_.peer] {
    const std::string chunk(65536, 'x');
    while (send(socket, chunk.data(), chunk.size(), MSG_NOSIGNAL) > 0) {
    }
  });
  EXPECT_EQ(readExactly(interpreter_, 100).size(), 100U);
  endInterpreter();
  peer.join();
}

TEST_F(Relay, EndsWithTheInterpreterWhileThePeerIsSilent) {
  endInterpreter();
  EXPECT_EQ(readAll(connection_.peer), "");
}

TEST(RelayWithoutDescriptors, ClosesTheConnectionAndThrows) {
  const Connection connection = connectLoopback();
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none{static_cast<rlim_t>(connection.server) + 1, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_THROW(SessionRelay relay(connection.server), std::system_error);
  setrlimit(RLIMIT_NOFILE, &limit);
  char byte;
  EXPECT_EQ(read(connection.peer, &byte, 1), 0);
  close(connection.peer);
}

}  // namespace
