// What the counters' history costs: seven simulated days of quarter hours on both lines of a virtual board.
//
// The test runs a round of the notification thread every simulated minute, and prints the process's memory
// after each day. The yardstick of a boundary is a bare read of both chips' counters at the same moment. It
// is measured first and a second time, because at the first read the board works out what was counted.
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>

#include "chip/counters.h"
#include "soak/simulated_board.h"

using namespace gfast;
using namespace gfast::board;

namespace {

using std::chrono::steady_clock;

constexpr int kDays = 7;
constexpr int kMinute_s = 60;

double since(steady_clock::time_point start) {
  return std::chrono::duration<double>(steady_clock::now() - start).count();
}

long residentKilobytes() {
  long pages = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// Rounds of one kind: how many, their reads of counters, the time they took.
struct Rounds {
  const char* name;
  int count = 0;
  uint64_t reads = 0;
  double seconds = 0;

  void print() const {
    std::printf("%-16s %6d times  %4.2f reads of counters each  %6.1f us each\n", name, count,
                static_cast<double>(reads) / count, seconds / count * 1e6);
  }
};

// Reads both chips' counters without the library.
class BareReads {
 public:
  explicit BareReads(VirtualBoard& board) : board_(board), descriptors_{board.open(0), board.open(1)} {}

  void measure(Rounds& rounds) {
    const auto start = steady_clock::now();
    for (const int descriptor : descriptors_) {
      gfast_iocreq request{};
      request.req_u.memread = {
          VIRT_ADDR_15MIN_24HRS_COUNTERS(0), sizeof block_, block_.data(), sizeof block_, 0, 0};
      board_.request(descriptor, DFEIOCMEMRD, request);
      rounds.reads++;
    }
    rounds.seconds += since(start);
    rounds.count++;
  }

 private:
  VirtualBoard& board_;
  std::array<int, 2> descriptors_;
  std::array<char, sizeof(G9972_PM_COUNTERS_S)> block_{};
};

}  // namespace

int main() {
  SimulatedBoard& simulated = SimulatedBoard::start(BoardConfig());
  BareReads bare(simulated.board());
  Rounds minutes{"ordinary minute"};
  Rounds boundaries{"quarter hour"};
  Rounds midnights{"midnight"};
  Rounds boardsOwn{"first bare reads"};
  Rounds yardstick{"bare reads"};
  const auto start = steady_clock::now();
  for (int minute = 1; minute <= kDays * kDay_s / kMinute_s; minute++) {
    const int seconds = minute * kMinute_s;
    simulated.setTime(seconds);
    if (seconds % kQuarter_s == 0) {
      bare.measure(boardsOwn);
      bare.measure(yardstick);
    }
    Rounds& rounds = seconds % kDay_s == 0 ? midnights : seconds % kQuarter_s == 0 ? boundaries : minutes;
    const uint32_t before = simulated.counterReads();
    const auto begin = steady_clock::now();
    simulated.round();
    rounds.seconds += since(begin);
    rounds.reads += simulated.counterReads() - before;
    rounds.count++;
    if (seconds % kDay_s == 0) {
      std::printf("day %d: %ld KiB resident\n", seconds / kDay_s, residentKilobytes());
    }
  }
  std::printf("seven days in %.2f s\n", since(start));
  for (const Rounds& rounds : {minutes, boardsOwn, yardstick, boundaries, midnights}) {
    rounds.print();
  }
}
