// Boundaries pass on one thread while another one queries: every interval must hold counters of one moment.
#include <atomic>
#include <cstring>
#include <thread>

#include "driver/driver.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

// Two chips that have counted one more of everything at every read.
class GrowingChips final : public Driver {
 public:
  GrowingChips() { installDriver(*this); }

  int open(int device) override { return 40 + device; }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    if (code != DFEIOCMEMRD) {
      return 0;
    }
    auto& read = request.req_u.memread;
    read.datalen_copied_to_user = read.hw_mem_len;
    Bytes bytes(read.hw_mem_len);
    if (read.hw_mem_addr == 0xF0000000) {
      bytes = pmBlock(++counts_[static_cast<size_t>(descriptor - 40)]);
    }
    std::memcpy(read.buf, bytes.data(), std::min<size_t>(bytes.size(), read.hw_mem_len));
    return 0;
  }

 private:
  std::atomic<uint32_t> counts_[QVR_K_MAX_DEVICES]{};
};

// All counters grow together. So their differences and sums match, unless they mix reads of two moments.
void expectOneMoment(const QVR_intervalLinkCounterDB_t& interval) {
  const uint32_t n = interval.neCounters.linePerformanceCounters.LOS;
  ASSERT_LT(n, 1000000U);
  forEachCounter(interval, [n](const char* name, uint32_t counted, size_t word) {
    // The unavailable seconds also depend on the clock.
    if (word != 8) {
      ASSERT_EQ(counted, (static_cast<uint32_t>(word) + 1) * n) << name;
    }
  });
}

BOOL checkInterval(QVR_lineId_t /*line*/, QVR_intervalLinkCounterDB_t* interval) {
  expectOneMoment(*interval);
  return TRUE;
}

TEST(HistoryThreads, QueriesAndBoundariesSeeConsistentCounters) {
  constexpr int kBoundaries = 400;
  static auto& chips = *new GrowingChips;
  static_cast<void>(chips);
  setZone("UTC0");
  testClock().setNow(at(10, 0));
  enterBothLines();
  QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationHandler);
  for (const QVR_deviceId_t device : {0, 1}) {
    ASSERT_EQ(QVR_getDeviceInfo(device, nullptr), QVR_E_STATUS_OK);
    setLineState(device, 0, LS_SHOWTIME);
    setStartOfCollection(device, 0, 900);
  }
  std::atomic<bool> done{false};
  std::thread boundaries([&done] {
    for (int i = 1; i <= kBoundaries; i++) {
      testClock().setNow(at(10, 0) + i * kQuarter);
      QVR_15minCounterEventHandler(at(10, 0) + i * kQuarter);
      std::this_thread::yield();
    }
    done = true;
  });
  int queries = 0;
  for (; !done && !HasFatalFailure(); queries++) {
    const QVR_lineId_t line = queries % 2;
    QVR_intervalLinkCounterDB_t interval{};
    ASSERT_EQ(QVR_getCurr15minCounters(line, &interval), QVR_E_STATUS_OK);
    expectOneMoment(interval);
    ASSERT_EQ(QVR_getCurr24hrCounters(line, &interval), QVR_E_STATUS_OK);
    expectOneMoment(interval);
    if (QVR_STATUS_OK(QVR_getPrev15minCounters(line, 1, &interval))) {
      expectOneMoment(interval);
    }
    if (QVR_STATUS_OK(QVR_getPrev24hrCounters(line, 1, &interval))) {
      expectOneMoment(interval);
    }
    ASSERT_EQ(QVR_dump15minCounterHistoryDB(line, checkInterval), QVR_E_STATUS_OK);
  }
  boundaries.join();
  EXPECT_GT(queries, 0);
}

}  // namespace
