// A board without a test's clock runs in real time.
#include <gtest/gtest.h>

#include <chrono>

#include "chip/boot_register.h"
#include "chip/registers.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

using std::chrono::duration;
using std::chrono::steady_clock;

bool becomesReadable(int descriptor, int timeout_ms) {
  pollfd waiting{descriptor, POLLIN, 0};
  return ::poll(&waiting, 1, timeout_ms) == 1;
}

}  // namespace

TEST(BoardClock, ADescriptorBecomesReadableInRealTime) {
  const BoardConfig config =
      parseBoard("[[device]]\nline = \"showtime\"\n[[event]]\ndevice = 0\nat_s = 1\ntype = 3", "b");
  const auto start = steady_clock::now();
  VirtualBoard board(config);
  const int descriptor = board.open(0);
  EXPECT_FALSE(becomesReadable(descriptor, 0));
  EXPECT_TRUE(becomesReadable(descriptor, 10000));
  EXPECT_GE(duration<double>(steady_clock::now() - start).count(), 1.0);
}

TEST(BoardClock, AResetEndsInRealTime) {
  VirtualBoard board(parseBoard("[[device]]\nline = \"idle\"", "b"));
  const int descriptor = board.open(0);
  char word[4];
  store_le32(word, RESET_REGISTER_VALUE);
  gfast_iocreq request{};
  request.req_u.memwrite = {RESET_REG_ADDRESS, 4, word, 4};
  ASSERT_EQ(board.request(descriptor, DFEIOCMEMWR, request), 0);
  EXPECT_TRUE(becomesReadable(descriptor, 5000));
  request = {};
  request.req_u.memread = {SBR_REG_ADDRESS, 4, word, 4, 0, 0};
  EXPECT_EQ(board.request(descriptor, DFEIOCMEMRD, request), 0);
}

TEST(BoardClock, RunsAsFastAsItsTime) {
  constexpr double speed = 1000;
  const BoardConfig config =
      parseBoard("[[device]]\nline = \"showtime\"\n[[event]]\ndevice = 0\nat_s = 1000\ntype = 3", "b");
  const auto start = steady_clock::now();
  const auto time = [start] { return duration<double>(steady_clock::now() - start).count() * speed; };
  VirtualBoard board(config, VirtualBoard::RunningTime{time, speed});
  EXPECT_EQ(board.nextDue(), 1000.0);
  const int descriptor = board.open(0);
  EXPECT_TRUE(becomesReadable(descriptor, 10000));
  EXPECT_GE(time(), 1000.0);
}

TEST(BoardClock, ABoardCanBeSwitchedOffBeforeAPlannedEvent) {
  const VirtualBoard board(parseBoard("[[event]]\ndevice = 0\nat_s = 1000000\ntype = 3", "b"));
}
