// The client against servers that do not behave as a console does.
#include "gfast-report/console/console_client.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <thread>
#include <vector>

#include "gfast-report/report_error.h"

using namespace gfast::report;
using namespace std::chrono_literals;

namespace {

using testing::Contains;
using testing::HasSubstr;

// Listens, and gives each connection in turn to one of the handlers.
class Server {
 public:
  using Handler = std::function<void(int connection)>;

  explicit Server(std::vector<Handler> handlers) : listener_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in own{};
    own.sin_family = AF_INET;
    own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr*>(&own), sizeof own), 0);
    EXPECT_EQ(listen(listener_, 5), 0);
    socklen_t length = sizeof own;
    getsockname(listener_, reinterpret_cast<sockaddr*>(&own), &length);
    port_ = ntohs(own.sin_port);
    thread_ = std::thread([this, handlers = std::move(handlers)] {
      for (const Handler& handler : handlers) {
        const int connection = accept(listener_, nullptr, nullptr);
        handler(connection);
        close(connection);
      }
    });
  }
  ~Server() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }

  ConsoleClient::Address address() const { return {"127.0.0.1", std::to_string(port_)}; }

 private:
  int listener_;
  uint16_t port_ = 0;
  std::thread thread_;
};

void say(int connection, const std::string& text) {
  send(connection, text.data(), text.size(), MSG_NOSIGNAL);
}

std::string heard(int connection) {
  char text[256];
  const ssize_t size = recv(connection, text, sizeof text, 0);
  return {text, static_cast<size_t>(std::max<ssize_t>(size, 0))};
}

void greet(int connection) {
  say(connection, "\xff\xfb\x01Welcome\r\n\r\n(gfast-cli)> ");
}

void answer(int connection) {
  say(connection, heard(connection) + "42\r\n\r\n(gfast-cli)> ");
}

// Until the client goes.
void stay(int connection) {
  while (!heard(connection).empty()) {
  }
}

class Client : public testing::Test {
 protected:
  // The message when it fails.
  std::string ask(const Server& server, ConsoleClient::Limits limits = {2000ms, 300ms}) {
    ConsoleClient client(server.address(), limits,
                         [this](const std::string& line) { told_.push_back(line); });
    try {
      return client.ask("show number lines");
    } catch (const ReportError& error) {
      return error.what();
    }
  }

  std::vector<std::string> told_;
};

TEST_F(Client, ReturnsWhatIsPrintedWithoutEchoAndPrompt) {
  Server server({[](int connection) {
    greet(connection);
    answer(connection);
  }});
  EXPECT_EQ(ask(server), "42\r\n");
}

TEST_F(Client, QuitsAtTheEnd) {
  std::string last;
  {
    Server server({[&last](int connection) {
      greet(connection);
      answer(connection);
      last = heard(connection);
    }});
    EXPECT_EQ(ask(server), "42\r\n");
  }
  EXPECT_EQ(last, "quit\r\n");
}

TEST_F(Client, BeginsASessionAnewWhenItIsLost) {
  Server server({[](int connection) {
                   greet(connection);
                   heard(connection);
                   say(connection, "show number lines\r\n4");
                 },
                 [](int connection) {
                   greet(connection);
                   answer(connection);
                 }});
  EXPECT_EQ(ask(server), "42\r\n");
  EXPECT_THAT(told_, Contains(HasSubstr("the session is lost")));
}

TEST_F(Client, GivesUpWhenSessionsAreLostAgainAndAgain) {
  const auto lose = [](int connection) {
    greet(connection);
    heard(connection);
  };
  Server server({lose, lose, lose});
  EXPECT_THAT(ask(server), HasSubstr("lost 3 sessions at \"show number lines\""));
}

TEST_F(Client, TakesACommandThatNeverEndsForALostSession) {
  const auto hang = [](int connection) {
    greet(connection);
    stay(connection);
  };
  Server server({hang, hang, hang});
  EXPECT_THAT(ask(server, {2000ms, 50ms}), HasSubstr("lost 3 sessions"));
}

TEST_F(Client, TakesACommandThatIsPrintedByteByByteForALostSession) {
  const auto trickle = [](int connection) {
    greet(connection);
    heard(connection);
    while (send(connection, "x", 1, MSG_NOSIGNAL) == 1) {
      std::this_thread::sleep_for(5ms);
    }
  };
  Server server({trickle, trickle, trickle});
  EXPECT_THAT(ask(server, {2000ms, 15ms}), HasSubstr("lost 3 sessions"));
}

TEST_F(Client, WaitsForABusyConsoleAndGivesUp) {
  Server server({stay});
  EXPECT_THAT(ask(server, {2300ms, 100ms}), HasSubstr("still busy after 2 s"));
  EXPECT_THAT(told_, Contains(HasSubstr("busy with another session; waiting")));
}

TEST_F(Client, SaysThatItIsNotLetIn) {
  Server server({[](int) {}});
  EXPECT_THAT(ask(server), HasSubstr("it may not let this machine in"));
}

TEST_F(Client, TakesNoEndlessReply) {
  Server server({[](int connection) {
    greet(connection);
    const std::string much(65536, 'x');
    for (int i = 0; i < 17; i++) {
      say(connection, much);
    }
    stay(connection);
  }});
  EXPECT_THAT(ask(server), HasSubstr("without a prompt"));
}

}  // namespace
