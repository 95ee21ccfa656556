// The eoc of a line carries one exchange at a time, and is released after it.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "chip/far_end_messages.h"
#include "chip/registers.h"
#include "driver/driver.h"
#include "qvrdev/device_table.h"
#include "qvrline/eoc.h"
#include "support/assertions.h"
#include "support/bytes.h"
#include "support/lines.h"
#include "support/tones.h"

using namespace gfast;

namespace {

using namespace std::chrono_literals;

constexpr uint32_t kAddress = 0xE2440000;

// Both lines are up, and their far ends answer every request with zeros.
class AnsweringFarEnds final : public Driver {
 public:
  AnsweringFarEnds() {
    enterBothLines();
    installDriver(*this);
    for (QVR_deviceId_t device = 0; device < QVR_K_MAX_DEVICES; device++) {
      EXPECT_EQ(QVR_getDeviceInfo(device, nullptr), QVR_E_STATUS_OK);
      setLineState(device, 0, LS_SHOWTIME);
    }
  }

  int open(int device) override { return device; }
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD) {
      readMemory(request.req_u.memread);
      return 0;
    }
    gfast_farendmsg& message = request.req_u.farendmsg;
    EXPECT_EQ(under_way_[descriptor]++, 0) << "two exchanges at once";
    exchanges++;
    if (duringExchange) {
      duringExchange(descriptor);
    }
    if (message.farend_msg_req_type == MGMT_FAR_END_REQ_TYPE_READMEM) {
      message.buf[1] = '\x80';
    }
    message.datalen_copied_to_user = message.bufsize;
    under_way_[descriptor]--;
    return refuses ? -1 : 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  std::function<void(int device)> duringExchange;
  std::atomic<int> exchanges{0};
  bool refuses = false;

 private:
  // The lines send on subcarriers 0 to 300.
  static void readMemory(gfast_memread& read) {
    std::memset(read.buf, 0, read.bufsize);
    if (read.hw_mem_addr == VIRT_ADDR_B0_REGS) {
      store_le32(read.buf + B0_REGS_LINK_STATES, LS_SHOWTIME);
    } else if (read.hw_mem_addr == kSentSet) {
      const Bytes set = medleySet({{0, 300}});
      std::copy(set.begin(), set.end(), read.buf);
    }
  }

  std::atomic<int> under_way_[QVR_K_MAX_DEVICES] = {};
};

void exchangeOn(QVR_lineId_t line) {
  QVR_EOC_CaptureLine(line);
  QVR_EOC_ReleaseLine(line);
}

bool isFree(QVR_lineId_t line) {
  auto captured = std::async(std::launch::async, exchangeOn, line);
  return captured.wait_for(10s) == std::future_status::ready;
}

TEST(Eoc, AssertsOnAnUnknownLine) {
  for (const QVR_lineId_t line : {2, -1}) {
    const auto report = asserts(200, "Invalid Line Identifier", line, "../qvrline");
    EXPECT_ASSERTION(QVR_EOC_CaptureLine(line), report);
    EXPECT_ASSERTION(QVR_EOC_ReleaseLine(line), report);
  }
}

TEST(Eoc, CaptureWaitsWhileTheLineIsCaptured) {
  std::atomic<bool> captured{false};
  QVR_EOC_CaptureLine(1);
  std::thread other([&] {
    QVR_EOC_CaptureLine(1);
    captured = true;
    QVR_EOC_ReleaseLine(1);
  });
  std::this_thread::sleep_for(20ms);
  EXPECT_FALSE(captured);
  QVR_EOC_ReleaseLine(1);
  other.join();
  EXPECT_TRUE(captured);
}

TEST(Eoc, CaptureDoesNotWaitForTheOtherLine) {
  QVR_EOC_CaptureLine(0);
  EXPECT_TRUE(isFree(1));
  QVR_EOC_ReleaseLine(0);
}

TEST(Eoc, IsReleasedAtTheEndOfTheScope) {
  {
    const EocExchange exchange(0);
    EXPECT_TRUE(isFree(1));
  }
  EXPECT_TRUE(isFree(0));
}

// Three operations that make one exchange each with the far end of line 0.
void makeEveryExchange() {
  uint8_t bytes[4];
  QVR_readmemFarEnd(0, kAddress, bytes, sizeof bytes);
  G9701_ManagementCounters_t management;
  QVR_readFarEndFTUmanagementCounters(0, &management);
  G9701_PMDTestParameters_t pmd;
  QVR_readFarEndPMDTestParameters(0, &pmd);
}

// Threads that try to capture line 0, each begun during an exchange on it.
class Captures {
 public:
  // Begins one more. False when it captures the line while the exchange still goes on.
  bool mustWait() {
    const auto captured = std::make_shared<std::atomic<bool>>(false);
    threads_.emplace_back([captured] {
      exchangeOn(0);
      *captured = true;
    });
    captured_.push_back(captured);
    std::this_thread::sleep_for(20ms);
    return !*captured;
  }

  // Waits until all have captured the line, one after the other, and returns how many there were.
  int join() {
    for (std::thread& thread : threads_) {
      thread.join();
    }
    threads_.clear();
    return static_cast<int>(std::ranges::count_if(captured_, [](const auto& each) { return each->load(); }));
  }

 private:
  std::vector<std::thread> threads_;
  std::vector<std::shared_ptr<std::atomic<bool>>> captured_;
};

TEST(Eoc, IsHeldDuringEveryExchange) {
  AnsweringFarEnds farEnds;
  Captures captures;
  farEnds.duringExchange = [&](int) {
    EXPECT_TRUE(captures.mustWait());
    EXPECT_TRUE(isFree(1));
  };
  for (int exchanges = 3; exchanges <= 9; exchanges += 3) {
    makeEveryExchange();
    EXPECT_EQ(captures.join(), exchanges);
  }
}

TEST(Eoc, IsHeldDuringEveryBlockOfFarEndSnr) {
  AnsweringFarEnds farEnds;
  Captures captures;
  farEnds.duringExchange = [&](int) { EXPECT_TRUE(captures.mustWait()); };
  QVR_SNRTBL_t snr;
  EXPECT_EQ(QVR_readFarEndSNRTable(0, snr), QVR_E_STATUS_OK);
  EXPECT_EQ(captures.join(), 2);
}

TEST(Eoc, IsReleasedAfterEveryExchangeGoodOrBad) {
  AnsweringFarEnds farEnds;
  makeEveryExchange();
  EXPECT_TRUE(isFree(0));
  farEnds.refuses = true;
  makeEveryExchange();
  EXPECT_TRUE(isFree(0));
  for (const auto state : {LS_IDLE, LS_SHOWTIME}) {
    setLineState(0, 0, state);
    makeEveryExchange();
    EXPECT_TRUE(isFree(0));
  }
  EXPECT_EQ(farEnds.exchanges, 9);
}

TEST(Eoc, IsReleasedBetweenPiecesOfFarEndMemory) {
  const AnsweringFarEnds farEnds;
  constexpr int kPieces = 128;
  std::atomic<bool> stop{false};
  std::atomic<bool> cameBetween{false};
  std::thread other([&] {
    while (!stop) {
      QVR_EOC_CaptureLine(0);
      if (farEnds.exchanges % kPieces != 0) {
        cameBetween = true;
      }
      QVR_EOC_ReleaseLine(0);
    }
  });
  Bytes bytes(kPieces * MGMT_MAX_DATA);
  for (int reading = 0; reading < 1000 && !cameBetween; reading++) {
    EXPECT_EQ(QVR_readmemFarEnd(0, 0, bytes.data(), kPieces * MGMT_MAX_DATA), QVR_E_STATUS_OK);
  }
  stop = true;
  other.join();
  EXPECT_TRUE(cameBetween);
}

TEST(Eoc, SlowExchangeDoesNotDelayTheOtherLine) {
  AnsweringFarEnds farEnds;
  std::promise<void> otherLineDone;
  auto done = otherLineDone.get_future();
  farEnds.duringExchange = [&](int device) {
    if (device == 0) {
      EXPECT_EQ(done.wait_for(10s), std::future_status::ready);
    }
  };
  std::thread slow([] {
    G9701_ManagementCounters_t management;
    EXPECT_EQ(QVR_readFarEndFTUmanagementCounters(0, &management), QVR_E_STATUS_OK);
  });
  G9701_PMDTestParameters_t pmd;
  EXPECT_EQ(QVR_readFarEndPMDTestParameters(1, &pmd), QVR_E_STATUS_OK);
  otherLineDone.set_value();
  slow.join();
}

TEST(EocThreads, ExchangesOfManyThreadsNeverOverlap) {
  AnsweringFarEnds farEnds;
  farEnds.duringExchange = [](int) { std::this_thread::yield(); };
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; i++) {
    threads.emplace_back([i] {
      Bytes bytes(2048);
      for (int reading = 0; reading < 50; reading++) {
        EXPECT_EQ(QVR_readmemFarEnd(i % 2, 0, bytes.data(), 2048), QVR_E_STATUS_OK);
        G9701_ManagementCounters_t management;
        EXPECT_EQ(QVR_readFarEndFTUmanagementCounters(i % 2, &management), QVR_E_STATUS_OK);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(farEnds.exchanges, 4 * 50 * 5);
}

}  // namespace
