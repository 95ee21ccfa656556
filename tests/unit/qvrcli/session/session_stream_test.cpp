#include "qvrcli/session/session_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "unit/qvrcli/printed_lines.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// An interpreter in a session; the test is its peer.
class Session : public testing::Test {
 protected:
  void SetUp() override {
    int sockets[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
    peer_ = sockets[0];
    cli_ = cli_init();
    cli_->client = fdopen(sockets[1], "w+");
    setbuf(cli_->client, nullptr);
  }

  void TearDown() override {
    fclose(cli_->client);
    cli_done(cli_);
    close(peer_);
  }

  std::string received() const {
    char buffer[256 * 1024];
    const ssize_t count = recv(peer_, buffer, sizeof buffer, MSG_DONTWAIT);
    return count < 0 ? "" : std::string(buffer, static_cast<size_t>(count));
  }

  int peer_ = -1;
  cli_def* cli_ = nullptr;
};

TEST_F(Session, GetsTheOutputOfACommandWhenTheCommandEnds) {
  FILE* const own = cli_->client;
  {
    const BufferedSession buffered(cli_);
    cli_print(cli_, "one");
    cli_print(cli_, "two");
    EXPECT_EQ(received(), "");
  }
  EXPECT_EQ(received(), "one\r\ntwo\r\n");
  EXPECT_EQ(cli_->client, own);
}

TEST_F(Session, GetsTheOutputSoFarBeforeAWait) {
  const BufferedSession buffered(cli_);
  cli_print(cli_, "waiting");
  flushSession(cli_);
  EXPECT_EQ(received(), "waiting\r\n");
}

TEST_F(Session, GetsTheOutputOfACommandInAScriptWhenThatCommandEnds) {
  const BufferedSession script(cli_);
  {
    const BufferedSession command(cli_);
    cli_print(cli_, "inner");
    EXPECT_EQ(received(), "");
  }
  EXPECT_EQ(received(), "inner\r\n");
  cli_print(cli_, "outer");
  EXPECT_EQ(received(), "");
}

TEST_F(Session, GetsMoreThanTheBufferHoldsInOrder) {
  std::string expected;
  std::string got;
  {
    const BufferedSession buffered(cli_);
    for (int i = 0; i < 20000; i++) {
      cli_print(cli_, "row %d", i);
      expected += "row " + std::to_string(i) + "\r\n";
      if (i % 5000 == 0) {
        got += received();
      }
    }
  }
  got += received();
  EXPECT_EQ(got, expected);
}

TEST_F(Session, IsLostWhenThePeerHangsUp) {
  EXPECT_FALSE(sessionLost(cli_));
  shutdown(peer_, SHUT_WR);
  EXPECT_FALSE(sessionLost(cli_));
  shutdown(peer_, SHUT_RDWR);
  EXPECT_TRUE(sessionLost(cli_));
  const BufferedSession buffered(cli_);
  EXPECT_TRUE(sessionLost(cli_));
}

TEST(NoSession, IsNotLostAndNeedsNoBuffer) {
  PrintedLines printed;
  cli_def* const cli = printed.cli();
  {
    const BufferedSession buffered(cli);
    EXPECT_EQ(cli->client, nullptr);
    EXPECT_FALSE(sessionLost(cli));
    flushSession(cli);
    cli_print(cli, "line");
  }
  EXPECT_THAT(printed.take(), ElementsAre("line"));
}

TEST(PrintLater, WaitsForTheCommandThread) {
  PrintedLines printed;
  cli_def* const cli = printed.cli();
  std::thread other([] {
    printLater("first");
    printLater("50% done");
  });
  other.join();
  EXPECT_THAT(printed.take(), IsEmpty());
  EXPECT_TRUE(printWaiting(cli));
  EXPECT_THAT(printed.take(), ElementsAre("first", "50% done"));
  EXPECT_FALSE(printWaiting(cli));
}

TEST(PrintLater, TakesLinesWhileOthersArePrinted) {
  PrintedLines printed;
  cli_def* const cli = printed.cli();
  std::thread other([] {
    for (int i = 0; i < 1000; i++) {
      printLater("line");
    }
  });
  for (int i = 0; i < 1000; i++) {
    printWaiting(cli);
  }
  other.join();
  printWaiting(cli);
  EXPECT_THAT(printed.take(), Not(IsEmpty()));
}

TEST(PrintLater, Keeps5000LinesAndCountsTheOthers) {
  PrintedLines printed;
  cli_def* const cli = printed.cli();
  for (int i = 0; i < 5000; i++) {
    printLater("line");
  }
  printWaiting(cli);
  EXPECT_EQ(printed.take(), std::vector<std::string>(5000, "line"));
  for (int i = 0; i < 5007; i++) {
    printLater("line");
  }
  printWaiting(cli);
  EXPECT_EQ(printed.take().back(), "7 lines lost");
  EXPECT_FALSE(printWaiting(cli));
}

TEST(PrintLater, ForgetsLinesMeantForAnEarlierSession) {
  PrintedLines printed;
  cli_def* const cli = printed.cli();
  printLater("for the session before");
  forgetWaiting();
  EXPECT_FALSE(printWaiting(cli));
}

}  // namespace
