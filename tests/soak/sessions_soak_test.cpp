// Clients in numbers, and bad ones: memory and descriptors stay, and the next client is served at once.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "console/programs.h"
#include "soak/process_figures.h"

namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// 16,384 lines.
constexpr const char* kLongestTable = "read memory 0 d0000000 65536\r";

class SessionsSoak : public testing::Test {
 protected:
  SessionsSoak() {
    serveNext();
    descriptors_ = settledDescriptors();
    for (int i = 0; i < 5; i++) {
      serveNext();
      OpenSession session(lab_.port());
      session.send(kLongestTable);
      session.readUntil("d000fffc");
    }
    awaitIdle();
    resident_KiB_ = residentKib(pid());
  }

  ~SessionsSoak() override {
    awaitIdle();
    const long resident_KiB = residentKib(pid());
    EXPECT_LE(resident_KiB, resident_KiB_ + kAllowedGrowth_KiB);
    EXPECT_EQ(openDescriptors(pid()), descriptors_);
    if (isFull()) {
      EXPECT_LE(late_, 1 + served_ / 100) << "clients not served within 100 ms";
    }
    std::printf(
        "resident memory: %ld KiB before, %ld KiB after; the next client waited at most %.1f ms, %d of %d "
        "more than 100 ms\n",
        resident_KiB_, resident_KiB, 1000 * longestWait_s_, late_, served_);
  }

  pid_t pid() { return lab_.program().pid(); }

  // From the connection to the answer of a first command.
  void serveNext() {
    lab_.program().output();  // its lines about sessions are read, or it would wait for that in the end
    const auto start = steady_clock::now();
    OpenSession session(lab_.port());
    EXPECT_EQ(session.type("show version"), kVersion);
    const double wait_s = Seconds(steady_clock::now() - start).count();
    longestWait_s_ = std::max(longestWait_s_, wait_s);
    served_++;
    late_ += wait_s < 0.1 ? 0 : 1;
  }

  // All threads have started, and the last session is over.
  int settledDescriptors() {
    int count = 0;
    for (int same = 0; same < 20; same++) {
      std::this_thread::sleep_for(10ms);
      const int now = openDescriptors(pid());
      same = now == count ? same : 0;
      count = now;
    }
    return count;
  }

  // The server closes a connection a little after its client.
  void awaitIdle() {
    serveNext();
    for (int i = 0; i < 100 && openDescriptors(pid()) > descriptors_; i++) {
      std::this_thread::sleep_for(10ms);
    }
  }

  LabServer lab_;

 private:
  long resident_KiB_ = 0;
  int descriptors_ = 0;
  double longestWait_s_ = 0;
  int served_ = 0;
  int late_ = 0;
};

TEST_F(SessionsSoak, ManyInARow) {
  for (int i = 0; i < sizeOf(10000, 60); i++) {
    serveNext();
  }
}

TEST_F(SessionsSoak, ResetsInTheMiddleOfTheLongestTable) {
  for (int i = 0; i < sizeOf(1000, 15); i++) {
    {
      OpenSession session(lab_.port());
      session.send(kLongestTable);
      session.readUntil("d0000100");
      session.reset();
    }
    serveNext();
  }
}

TEST_F(SessionsSoak, OneNeverReads) {
  {
    ConsoleSession session(lab_.port());
    const timeval patience{0, 300000};
    setsockopt(session.socket(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    std::string tables;
    for (int i = 0; i < 3000; i++) {
      tables += kLongestTable;
    }
    while (::send(session.socket(), tables.data(), tables.size(), MSG_NOSIGNAL) > 0) {
    }
  }
  serveNext();
}

TEST_F(SessionsSoak, AMegabyteWithoutALineEnd) {
  OpenSession session(lab_.port());
  session.send(std::string(size_t{1} << 20, 'x'));
  session.send("\r");
  EXPECT_NE(session.readUntil(kPrompt).find("Line too long"), std::string::npos);
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST_F(SessionsSoak, OnlyTelnetOptions) {
  OpenSession session(lab_.port());
  std::string options;
  for (int i = 0; i < 350000; i++) {
    options += "\xFF\xFB";
    options += static_cast<char>(i % 50);
  }
  session.send(options);
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST_F(SessionsSoak, FiftyWaiting) {
  std::vector<std::unique_ptr<ConsoleSession>> waiting;
  OpenSession first(lab_.port());
  for (int i = 0; i < 50; i++) {
    waiting.push_back(std::make_unique<ConsoleSession>(lab_.port()));
  }
  EXPECT_EQ(first.type("show version"), kVersion);
  first.close();
  for (auto& next : waiting) {
    const auto start = steady_clock::now();
    next->awaitPrompt();
    if (isFull()) {
      EXPECT_LT(steady_clock::now() - start, 100ms);
    }
    EXPECT_EQ(next->type("show version"), kVersion);
    next.reset();
  }
}

}  // namespace
