// The computing time of a capture of a test signal, beside the time it has to wait: from the request to the
// missing-tone power ratios, with chips that answer at once and a clock that only adds up the waits.
//
// With an argument it makes one capture for counting instructions, beside a plain transform of the same size:
// see instructions_bench.cpp.
#include <qvr.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "chip/registers.h"
#include "chip/test_memory.h"
#include "clock/clock.h"
#include "driver/driver.h"
#include "qvrline/line_table.h"
#include "qvrtest/default_signal.h"
#include "std/byte_order.h"
#include "support/plain_transform.h"

using namespace gfast;

namespace {

using namespace std::chrono_literals;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kCaptures = 1000;
constexpr int kPoints = 4096;
constexpr auto kSettlingTime =
    50ms;  // between the signal's start and its capture, in the tests of the front end

// A chip in showtime that captures the default signal.
class PromptChip final : public Driver {
 public:
  int open(int device) override { return device; }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD) {
      answer(request.req_u.memread.hw_mem_addr, request.req_u.memread.buf, request.req_u.memread.bufsize);
    }
    return 0;
  }

 private:
  static void answer(uint32_t address, char* bytes, uint32_t size) {
    const uint32_t symbol = QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(0);
    std::memset(bytes, 0, size);
    if (address == VIRT_ADDR_B0_REGS) {
      store_le32(bytes + B0_REGS_LINK_STATES, LS_SHOWTIME);
    } else if (address >= symbol && address < symbol + QVR_K_TEST_SYMBOL_SIZE) {
      const uint32_t first = (address - symbol) / 4;
      for (uint32_t i = 0; i < size / 4; i++) {
        store_le32(bytes + 4 * i, defaultTxSignal[first + i]);
      }
    }
  }
};

class AddingClock final : public Clock {
 public:
  time_t now() override { return 0; }
  std::chrono::microseconds steady() override { return waited; }
  void sleep(std::chrono::microseconds duration) override { waited += duration; }
  int waitReadable(fd_set& /*descriptors*/, int /*limit*/, std::chrono::microseconds /*duration*/) override {
    return 0;
  }

  std::chrono::microseconds waited{0};
};

QVR_signal_t timeDomain;
QVR_signal_t spectrum;
QVR_MTPR_t ratios;

double processorTime_ms() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

void capture() {
  if (QVR_STATUS_ERROR(QVR_receiveSignalSnapshot(0, timeDomain, spectrum))) {
    std::exit(1);
  }
  QVR_calcMTPR(spectrum, ratios);
}

void countInstructions() {
  const Points input = randomPoints(kPoints);
  Points output(input.size());
  PlainTransform plain(kPoints, {"unitary", TRUE, TRUE}, Direction::kForward);
  capture();
  std::printf("name\tone capture\n");
  std::fflush(stdout);
  getppid();
  capture();
  getppid();
  getppid();
  plain.run(input, output);
  getppid();
}

}  // namespace

int main(int argc, char* /*argv*/[]) {
  static PromptChip chip;
  static AddingClock clock;
  installDriver(chip);
  installClock(clock);
  addLine(0, 0, 0, TRUE);
  if (argc > 1) {
    countInstructions();
    return 0;
  }
  std::vector<double> times_ms;
  for (int i = 0; i < kCaptures; i++) {
    const double start = processorTime_ms();
    capture();
    times_ms.push_back(processorTime_ms() - start);
  }
  std::sort(times_ms.begin(), times_ms.end());
  const double work_ms = times_ms[times_ms.size() / 2];
  const double wait_ms = Milliseconds(clock.waited).count() / kCaptures + Milliseconds(kSettlingTime).count();
  std::printf("one capture: computation median %.3f ms, waits at least %.0f ms, share %.2f %%\n", work_ms,
              wait_ms, 100 * work_ms / wait_ms);
}
