// A board that answers from a trace: each request, in each thread's order, at its time.
#include "gfast-lab/replay/replayed_board.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "clock/clock.h"
#include "driver/envelope.h"
#include "gfast-lab/replay/replay_clock.h"

using namespace gfast;
using namespace gfast::replay;

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint64_t kSecond_us = 1000000;

// A board whose time the test sets. What it reports is kept.
class Replayed {
 public:
  explicit Replayed(const std::string& lines, const char* title = "gfast-trace 1\n")
      : board_(
            parseTrace(title + lines), [this](const std::string& line) { reports_.push_back(line); },
            [this] { return uint64_t{time_us_}; }) {
    descriptor_ = board_.open(0);
  }

  ReplayedBoard& board() { return board_; }
  int descriptor() const { return descriptor_; }
  const std::vector<std::string>& reports() const { return reports_; }
  void setTime(double seconds) { time_us_ = static_cast<uint32_t>(seconds * kSecond_us); }

  // The first byte of four that are read, or minus the errno.
  int read(uint32_t address = 0xD0000000) {
    char bytes[4] = {};
    gfast_iocreq request = emptyRequest();
    request.req_u.memread = {address, 4, bytes, 4, 0, 0};
    return board_.request(descriptor_, DFEIOCMEMRD, request) < 0 ? -errno : bytes[0];
  }

  // The first byte of the next event or log record; 0: none.
  int record(uint32_t code) {
    char bytes[16] = {};
    gfast_iocreq request = emptyRequest();
    request.req_u.logalm_read = {bytes, sizeof bytes, 0, 0};
    if (board_.request(descriptor_, code, request) < 0) {
      return -errno;
    }
    return request.req_u.logalm_read.datalen_copied_to_user == 0 ? 0 : bytes[0];
  }
  int event() { return record(DFEIOCALMRD); }
  int log() { return record(DFEIOCLOGRD); }

  void configureLogs() {
    char body[GFAST_LOGCFG_BODY_SIZE] = {};
    gfast_iocreq request = emptyRequest();
    request.req_u.logcfg = {body, sizeof body};
    EXPECT_EQ(board_.request(descriptor_, DFEIOCLOGCFG, request), 0);
  }

  bool readable(std::chrono::milliseconds patience = 0ms) const {
    pollfd waiting{descriptor_, POLLIN, 0};
    return ::poll(&waiting, 1, static_cast<int>(patience.count())) == 1;
  }

 private:
  std::atomic<uint32_t> time_us_{0};  // the board's processor has no atomic words of 64 bits
  std::vector<std::string> reports_;
  ReplayedBoard board_;
  int descriptor_ = -1;
};

// An action of the other thread.
template <typename Action>
auto notified(Action action) {
  return std::async(std::launch::async, action).get();
}

const std::string kOpen = "0.000000 c 0 open = ok\n";

std::string reading(const char* time, const char* thread, const char* word) {
  return std::string(time) + ' ' + thread + " 0 memread d0000000 4 = ok 4\n  < " + word + '\n';
}

TEST(ReplayedBoard, GivesTheAnswersInTheirOrderAndTheLastOneAgain) {
  Replayed replay(kOpen + reading("1.000000", "c", "01000000") + reading("2.000000", "c", "02000000"));
  EXPECT_EQ(replay.read(), 1);
  EXPECT_EQ(replay.read(), 2);
  EXPECT_EQ(replay.read(), 2);
}

TEST(ReplayedBoard, GivesRecordedErrors) {
  Replayed replay(kOpen +
                  "1.000000 c 0 memread d0000000 4 = ETIMEDOUT\n"
                  "0.000001 c 1 open = ENODEV\n");
  EXPECT_EQ(replay.read(), -ETIMEDOUT);
  EXPECT_EQ(replay.board().open(1), -1);
  EXPECT_EQ(errno, ENODEV);
}

TEST(ReplayedBoard, GivesEachThreadItsOwnAnswersHoweverTheyInterleave) {
  Replayed replay(kOpen + reading("1.000000", "c", "01000000") + reading("1.500000", "n", "09000000") +
                  reading("2.000000", "c", "02000000"));
  EXPECT_EQ(notified([&] { return replay.read(); }), 9);
  EXPECT_EQ(replay.read(), 1);
  EXPECT_EQ(notified([&] { return replay.read(); }), 9);
  EXPECT_EQ(replay.read(), 2);
}

TEST(ReplayedBoard, GivesTheOtherThreadsLatestAnswerWhenThereIsNoOwn) {
  Replayed replay(kOpen + reading("1.000000", "n", "01000000") + reading("2.000000", "n", "02000000") +
                  reading("3.000000", "n", "03000000"));
  EXPECT_EQ(replay.read(), 1);
  replay.setTime(2.5);
  EXPECT_EQ(replay.read(), 2);
  EXPECT_EQ(notified([&] { return replay.read(); }), 1);
}

TEST(ReplayedBoard, TellsRequestsApartByWhatTheySend) {
  Replayed replay(kOpen +
                  "1.000000 c 0 memwrite d0000000 2 = ok\n  > 0001\n"
                  "1.000000 c 0 memwrite d0000000 2 = EIO\n  > 0002\n");
  const auto write = [&replay](char last) {
    char bytes[] = {0, last};
    gfast_iocreq request = emptyRequest();
    request.req_u.memwrite = {0xD0000000, 2, bytes, 2};
    return replay.board().request(replay.descriptor(), DFEIOCMEMWR, request);
  };
  EXPECT_EQ(write(2), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(write(1), 0);
  EXPECT_EQ(write(3), -1);
  EXPECT_EQ(errno, ENODATA);
  EXPECT_THAT(replay.reports(),
              ElementsAre("the trace holds no answer to: device 0 memwrite d0000000 2 > 0003"));
}

TEST(ReplayedBoard, NamesWhatTheTraceDoesNotHoldOnce) {
  Replayed replay(kOpen);
  EXPECT_EQ(replay.read(), -ENODATA);
  EXPECT_EQ(replay.read(), -ENODATA);
  EXPECT_EQ(replay.board().open(1), -1);
  EXPECT_EQ(errno, ENODATA);
  EXPECT_THAT(replay.reports(), ElementsAre("the trace holds no answer to: device 0 memread d0000000 4",
                                            "the trace holds no answer to: device 1 open"));
}

TEST(ReplayedBoard, RefusesADescriptorThatIsNotOpen) {
  Replayed replay(kOpen + reading("1.000000", "c", "01000000"));
  replay.board().close(replay.descriptor());
  EXPECT_EQ(replay.read(), -EBADF);
}

TEST(ReplayedBoard, NeverGivesMoreThanTheBufferHolds) {
  Replayed replay(kOpen + "1.000000 c 0 memread d0000000 4 = ok 8\n  < 01010101 02020202\n");
  char bytes[8] = {};
  gfast_iocreq request = emptyRequest();
  request.req_u.memread = {0xD0000000, 4, bytes, 4, 0, 0};
  EXPECT_EQ(replay.board().request(replay.descriptor(), DFEIOCMEMRD, request), 0);
  EXPECT_EQ(bytes[4], 0);
  EXPECT_EQ(request.req_u.memread.datalen_copied_to_user, 4U);
  request.req_u.memread.buf = nullptr;
  EXPECT_EQ(replay.board().request(replay.descriptor(), DFEIOCMEMRD, request), 0);
  EXPECT_EQ(request.req_u.memread.datalen_copied_to_user, 0U);
}

const std::string kTwoEvents =
    "2.000000 n 0 eventread 1024 = ok 4\n  < 01000000\n"
    "2.100000 n 0 eventread 1024 = ok\n"
    "3.000000 n 0 eventread 1024 = ok 4\n  < 02000000\n";

TEST(ReplayedBoard, HasAnEventAtItsTime) {
  Replayed replay(kOpen + kTwoEvents);
  EXPECT_EQ(replay.event(), 0);
  replay.setTime(2);
  EXPECT_EQ(replay.event(), 1);
  EXPECT_EQ(replay.event(), 0);
  replay.setTime(4);
  EXPECT_EQ(replay.event(), 2);
}

TEST(ReplayedBoard, IsReadableWhileARecordIsDue) {
  Replayed replay(kOpen + "0.000000 c 0 logcfg 16 = ok\n  > 00000000*4\n" +
                  "0.000000 n 0 logread 1024 = ok 4\n  < 05000000\n"
                  "0.050000 n 0 eventread 1024 = ok 4\n  < 01000000\n");
  EXPECT_FALSE(replay.readable());
  EXPECT_TRUE(replay.readable(1000ms));
  replay.setTime(1);
  EXPECT_EQ(replay.event(), 1);
  EXPECT_FALSE(replay.readable(20ms));
  replay.configureLogs();
  EXPECT_TRUE(replay.readable(1000ms));
  EXPECT_EQ(replay.log(), 5);
  EXPECT_FALSE(replay.readable(20ms));
}

TEST(ReplayedBoard, HasTheEventsThatCameBeforeACommandBeforeIt) {
  Replayed replay(kOpen + kTwoEvents + reading("2.500000", "c", "07000000"));
  std::atomic<int> taken{0};
  std::thread notification([&] {
    EXPECT_TRUE(replay.readable(1000ms));
    EXPECT_EQ(replay.event(), 1);
    std::this_thread::sleep_for(20ms);  // as long as handling the event takes
    taken++;
    EXPECT_EQ(replay.event(), 0);
  });
  EXPECT_EQ(replay.read(), 7);
  EXPECT_EQ(taken, 1);
  notification.join();
}

TEST(ReplayedBoard, DoesNotWaitForeverForEventsThatNobodyTakes) {
  Replayed replay(kOpen + kTwoEvents + reading("2.500000", "c", "07000000") +
                  reading("2.600000", "c", "08000000"));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(replay.read(), 7);
  EXPECT_EQ(replay.read(), 8);
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GT(waited, 900ms);
  EXPECT_LT(waited, 30s);
  EXPECT_EQ(replay.event(), 1);  // it is not lost
}

// What the notification thread of a console does: waits for both devices, then reads events of those that are
// readable and logs of both.
class Notification {
 public:
  explicit Notification(ReplayedBoard& board) : board_(board), descriptors_{board.open(0), board.open(1)} {
    for (const int descriptor : descriptors_) {
      char body[GFAST_LOGCFG_BODY_SIZE] = {};
      gfast_iocreq request = emptyRequest();
      request.req_u.logcfg = {body, sizeof body};
      EXPECT_EQ(board_.request(descriptor, DFEIOCLOGCFG, request), 0);
    }
    thread_ = std::thread([this] { run(); });
  }
  ~Notification() {
    ending_ = true;
    thread_.join();
  }
  Notification(const Notification&) = delete;
  Notification& operator=(const Notification&) = delete;

  // The first byte of each record, in the order in which they came.
  std::vector<int> taken() {
    const std::lock_guard lock(mutex_);
    return taken_;
  }

 private:
  void run() {
    while (!ending_) {
      pollfd waiting[] = {{descriptors_[0], POLLIN, 0}, {descriptors_[1], POLLIN, 0}};
      if (::poll(waiting, 2, 20) <= 0) {
        continue;
      }
      for (const pollfd& device : waiting) {
        if (device.revents != 0) {
          drain(device.fd, DFEIOCALMRD);
        }
      }
      for (const pollfd& device : waiting) {
        drain(device.fd, DFEIOCLOGRD);
      }
    }
  }

  void drain(int descriptor, uint32_t code) {
    for (;;) {
      char bytes[16] = {};
      gfast_iocreq request = emptyRequest();
      request.req_u.logalm_read = {bytes, sizeof bytes, 0, 0};
      if (board_.request(descriptor, code, request) < 0 ||
          request.req_u.logalm_read.datalen_copied_to_user == 0) {
        return;
      }
      const std::lock_guard lock(mutex_);
      taken_.push_back(bytes[0]);
    }
  }

  ReplayedBoard& board_;
  const int descriptors_[2];
  std::mutex mutex_;
  std::vector<int> taken_;
  std::atomic<bool> ending_{false};
  std::thread thread_;
};

std::string record(const char* time, int device, const char* kind, const char* word) {
  const std::string head = std::string(time) + " n " + std::to_string(device) + ' ' + kind + " 1024 = ok";
  return head + " 4\n  < " + word + '\n' + head + '\n';
}

TEST(ReplayedBoard, HasTheRecordsOfBothDevicesInTheOrderOfTheBoardWhenTimeIsSkipped) {
  const std::string lines =
      kOpen +
      "0.000000 c 1 open = ok\n"
      "0.000000 c 0 logcfg 16 = ok\n  > 00000000*4\n"
      "0.000000 c 1 logcfg 16 = ok\n  > 00000000*4\n" +
      record("1.000000", 0, "eventread", "01000000") + record("1.000100", 1, "eventread", "02000000") +
      record("1.000200", 0, "logread", "03000000") + record("1.000300", 1, "logread", "04000000") +
      record("1.000400", 1, "eventread", "05000000") + record("1.000500", 0, "eventread", "06000000") +
      record("1.000600", 1, "logread", "07000000") + record("8.000000", 0, "eventread", "08000000");
  ReplayedBoard board(
      parseTrace("gfast-trace 1\n" + lines), [](const std::string&) {}, [] { return uint64_t{0}; });
  Notification notification(board);
  EXPECT_TRUE(board.pass(5s));
  EXPECT_THAT(notification.taken(), ElementsAre(1, 2, 3, 4, 5, 6, 7));
  EXPECT_EQ(board.clock_us(), 5 * kSecond_us);
  EXPECT_FALSE(notified([&] { return board.pass(100s); }));
  EXPECT_EQ(board.clock_us(), 5 * kSecond_us);
}

TEST(ReplayedBoard, IsNotHeldUpByLogsThatNobodyAskedFor) {
  Replayed replay(kOpen + record("1.000000", 0, "logread", "03000000") +
                  record("2.000000", 0, "eventread", "01000000"));
  replay.setTime(3);
  EXPECT_EQ(replay.event(), 1);
  EXPECT_EQ(replay.log(), 3);
}

TEST(ReplayClock, TellsTheTimeOfTheRecordingAndLetsTheWaitsOfCommandsPassAtOnce) {
  ReplayedBoard board(
      parseTrace("gfast-trace 1\n"), [](const std::string&) {}, [] { return uint64_t{0}; });
  ReplayClock clock(board, 1000 * int64_t{kSecond_us} + 900000, clockSource());
  EXPECT_EQ(clock.now(), 1000);
  const auto start = std::chrono::steady_clock::now();
  clock.sleep(3600s);
  EXPECT_TRUE(clock.sleepWhile(100ms, [] { return true; }));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 60s);
  EXPECT_EQ(clock.now(), 4601);
}

TEST(ReplayedBoard, BlanksARequestAsTheTraceIsBlanked) {
  Replayed replay(kOpen + "1.000000 c 0 memwrite f1000014 4 = ok\n  > 58585858\n",
                  "gfast-trace 1 - blanked\n");
  char bytes[] = {'A', 'B', 'C', 'D'};
  gfast_iocreq request = emptyRequest();
  request.req_u.memwrite = {0xF1000014, 4, bytes, 4};
  EXPECT_EQ(replay.board().request(replay.descriptor(), DFEIOCMEMWR, request), 0);
  EXPECT_THAT(replay.reports(), IsEmpty());
}

}  // namespace
