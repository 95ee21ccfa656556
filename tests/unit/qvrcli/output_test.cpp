#include "qvrcli/session/session_stream.h"
#include "qvrcli/text/hexadecimal.h"
#include "qvrcli/text/line_buffer.h"
#include "qvrcli/text/link_states.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

using namespace gfast;
using namespace gfast::console;

namespace {

std::vector<std::string> printed;

void remember(cli_def* /*cli*/, const char* line) {
  printed.emplace_back(line);
}

// An interpreter whose lines are remembered.
cli_def* interpreter() {
  cli_def* const cli = cli_init();
  cli_print_callback(cli, remember);
  return cli;
}

std::string printedLine() {
  cli_def* const cli = interpreter();
  PrintMessage(cli);
  cli_done(cli);
  return printed.back();
}

TEST(Line, IsFilledWithBlanksUpToAColumn) {
  AddMessage("ab", 5);
  AddMessage("c", 3);
  EXPECT_EQ(printedLine(), "     abc");
}

TEST(Line, StartsAfreshWhenPrinted) {
  AddMessage("one", 0);
  EXPECT_EQ(printedLine(), "one");
  AddMessage("two", 4);
  EXPECT_EQ(printedLine(), "    two");
  EXPECT_EQ(printedLine(), "");
}

TEST(Line, IsPrintedAsTextNotAsAFormat) {
  AddMessage("100%s %n", 0);
  EXPECT_EQ(printedLine(), "100%s %n");
}

TEST(Line, HoldsAtMost999Characters) {
  AddMessage(std::string(700, 'a').c_str(), 0);
  AddMessage(std::string(700, 'b').c_str(), 0);
  AddMessage("c", 5000);
  EXPECT_EQ(printedLine(), std::string(700, 'a') + std::string(299, 'b'));
  AddMessage("d", 4000000000U);
  EXPECT_EQ(printedLine(), std::string(999, ' '));
}

TEST(LinkState, HasANameThatLinesUp) {
  EXPECT_STREQ(linkStateString(0), "self test      ");
  EXPECT_STREQ(linkStateString(1), "unit fail      ");
  EXPECT_STREQ(linkStateString(2), "idle           ");
  EXPECT_STREQ(linkStateString(3), "silent         ");
  EXPECT_STREQ(linkStateString(4), "init hs        ");
  EXPECT_STREQ(linkStateString(5), "init train     ");
  EXPECT_STREQ(linkStateString(6), "show time      ");
  EXPECT_STREQ(linkStateString(7), "deactivating 1 ");
  EXPECT_STREQ(linkStateString(8), "deactivating 2 ");
  EXPECT_STREQ(linkStateString(9), "pre-deactivating 1");
}

TEST(LinkState, IsUnknownBeyondTheKnown) {
  EXPECT_STREQ(linkStateString(12), "Unknown        ");
  EXPECT_STREQ(linkStateString(10), "Unknown        ");
  EXPECT_STREQ(linkStateString(-1), "Unknown        ");
}

TEST(Filler, RepeatsTheCharacter) {
  EXPECT_STREQ(filler(' ', 3), "   ");
  EXPECT_STREQ(filler('-', 79), std::string(79, '-').c_str());
  EXPECT_STREQ(filler('-', 0), "");
}

TEST(Filler, IsOneBufferThatEveryCallReuses) {
  const char* const first = filler('a', 5);
  EXPECT_EQ(filler('b', 2), first);
  EXPECT_STREQ(first, "bb");
}

TEST(Filler, IsAtMost79Wide) {
  EXPECT_STREQ(filler('x', 255), std::string(79, 'x').c_str());
}

TEST(CopyToString, PutsATerminatorBehindTheBytes) {
  char text[4] = {'x', 'x', 'x', 'x'};
  copyToString(text, "ab", 2);
  EXPECT_STREQ(text, "ab");
  EXPECT_EQ(text[3], 'x');
  copyToString(text, "", 0);
  EXPECT_STREQ(text, "");
}

TEST(HexString, HasThreeCharactersAByte) {
  const uint8_t bytes[] = {0x0A, 0xFF};
  char text[7];
  toHexString(bytes, 2, text);
  EXPECT_STREQ(text, "0A FF ");
  toHexString(bytes, 0, text);
  EXPECT_STREQ(text, "");
}

TEST(HexNumber, TakesTwoCharactersAtEveryThird) {
  uint8_t bytes[3] = {};
  toHexNumber("0A FF:7f", 3, bytes);
  EXPECT_EQ(bytes[0], 0x0A);
  EXPECT_EQ(bytes[1], 0xFF);
  EXPECT_EQ(bytes[2], 0x7F);
}

TEST(HexNumber, IsTheInverseOfHexString) {
  const uint8_t bytes[] = {0x00, 0x01, 0x80, 0xFE};
  char text[13];
  toHexString(bytes, 4, text);
  uint8_t back[4] = {};
  toHexNumber(text, 4, back);
  EXPECT_EQ(std::memcmp(bytes, back, 4), 0);
}

TEST(HexNumber, IsZeroWhereTheTextHasEnded) {
  uint8_t bytes[4] = {9, 9, 9, 9};
  toHexNumber("12:3", 4, bytes);
  EXPECT_EQ(bytes[0], 0x12);
  EXPECT_EQ(bytes[1], 0x03);
  EXPECT_EQ(bytes[2], 0);
  EXPECT_EQ(bytes[3], 0);
}

// An interpreter in a session with this test.
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

TEST_F(Session, IsSentWhatACommandPrintsWhenTheCommandEnds) {
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

TEST_F(Session, IsSentWhatIsThereBeforeAWait) {
  const BufferedSession buffered(cli_);
  cli_print(cli_, "waiting");
  flushSession(cli_);
  EXPECT_EQ(received(), "waiting\r\n");
}

TEST_F(Session, IsSentWhatACommandOfAScriptPrintsWhenThatCommandEnds) {
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

TEST_F(Session, KeepsTheOrderOfMoreThanTheBufferHolds) {
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

TEST_F(Session, IsThereUntilThePeerHangsUp) {
  EXPECT_FALSE(sessionLost(cli_));
  shutdown(peer_, SHUT_WR);
  EXPECT_FALSE(sessionLost(cli_));
  shutdown(peer_, SHUT_RDWR);
  EXPECT_TRUE(sessionLost(cli_));
  const BufferedSession buffered(cli_);
  EXPECT_TRUE(sessionLost(cli_));
}

TEST(NoSession, IsNotLostAndNeedsNoBuffer) {
  cli_def* const cli = interpreter();
  {
    const BufferedSession buffered(cli);
    EXPECT_EQ(cli->client, nullptr);
    EXPECT_FALSE(sessionLost(cli));
    flushSession(cli);
    cli_print(cli, "line");
  }
  EXPECT_EQ(printed.back(), "line");
  cli_done(cli);
}

TEST(PrintLater, WaitsForTheCommandThread) {
  cli_def* const cli = interpreter();
  std::thread other([] {
    printLater("first");
    printLater("50% done");
  });
  other.join();
  EXPECT_TRUE(printed.empty());
  EXPECT_TRUE(printWaiting(cli));
  EXPECT_EQ(printed, (std::vector<std::string>{"first", "50% done"}));
  EXPECT_FALSE(printWaiting(cli));
  cli_done(cli);
}

TEST(PrintLater, TakesLinesWhileOthersArePrinted) {
  cli_def* const cli = interpreter();
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
  EXPECT_FALSE(printed.empty());
  cli_done(cli);
}

TEST(PrintLater, CutsAFlood) {
  cli_def* const cli = interpreter();
  for (int i = 0; i < 1000; i++) {
    printLater("line");
  }
  printWaiting(cli);
  EXPECT_EQ(printed.size(), 100U);
  cli_done(cli);
}

TEST(PrintLater, ForgetsWhatWasMeantForOthers) {
  cli_def* const cli = interpreter();
  printLater("for the session before");
  forgetWaiting();
  EXPECT_FALSE(printWaiting(cli));
  cli_done(cli);
}

}  // namespace
