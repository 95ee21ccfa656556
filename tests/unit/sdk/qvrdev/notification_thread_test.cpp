// The notification thread, while another thread registers callbacks and reads devices.
#include <gmock/gmock.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "qvrdev/device_table.h"
#include "qvrdev/notification.h"
#include "support/refused_threads.h"
#include "unit/sdk/qvrdev/notification_chips.h"

using namespace gfast;

namespace {

std::atomic<int> reboots;
std::atomic<int> link_changes;
std::atomic<int> log_lines;

void countReboot() {
  reboots++;
}
void countLinkChange(QVR_lineId_t, G9701_linkState_t, G9701_linkState_t) {
  link_changes++;
}
void countLogLine(QVR_deviceId_t, const char*) {
  log_lines++;
}

// A descriptor is readable while something is pending. Each call of now moves the time on by a second. Both
// threads use it.
class BusyClock final : public Clock {
 public:
  explicit BusyClock(Chips& chips) : chips_(chips) {}

  time_t now() override { return time_++; }
  std::chrono::microseconds steady() override { return std::chrono::seconds{time_++}; }
  void sleep(std::chrono::microseconds) override { std::this_thread::yield(); }
  int waitReadable(fd_set& descriptors, int limit, std::chrono::microseconds) override {
    int count = 0;
    for (int descriptor = 0; descriptor < limit; descriptor++) {
      if (FD_ISSET(descriptor, &descriptors) && chips_.pending(descriptor)) {
        count++;
      } else {
        FD_CLR(descriptor, &descriptors);
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds{count == 0 ? 200 : 0});
    return count;
  }
  void threadStarts() override { startedThreads++; }

  std::atomic<int> startedThreads{0};

 private:
  Chips& chips_;
  std::atomic<time_t> time_{1700006400};
};

template <typename Condition>
bool comesTrue(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds{20};
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds{1});
  }
  return true;
}

class Thread : public testing::Test {
 protected:
  Thread() {
    installClock(clock_);
    bench_.start(0, 10);
    bench_.start(1, 11);
  }

  Bench bench_;
  BusyClock& clock_ = forever(new BusyClock(bench_.chips));
};

TEST_F(Thread, CallsBackForEventsAndLogRecords) {
  QVR_registerRebootEventCB(countReboot);
  QVR_registerDeviceLinkStateChangeCB(countLinkChange);
  QVR_registerLogMessageCB(0, countLogLine);
  ASSERT_EQ(startNotificationThread(), QVR_E_STATUS_OK);
  bench_.chips.queueEvent(0, event(EVENT_TYPE_BOOT_SUCCEEDED));
  bench_.chips.queueEvent(1, event(EVENT_TYPE_LINKS_STATUS_CHANGED, 5, 6));
  bench_.chips.queueLog(0, Record(4, 0));
  EXPECT_TRUE(comesTrue([] { return reboots == 1 && link_changes == 1 && log_lines == 1; }));
}

// A clock on which threads take turns must know of each.
TEST_F(Thread, IsMadeKnownToTheClock) {
  EXPECT_EQ(clock_.startedThreads, 0);
  ASSERT_EQ(startNotificationThread(), QVR_E_STATUS_OK);
  EXPECT_EQ(clock_.startedThreads, 1);
}

TEST_F(Thread, RunsWhileCallbacksComeAndGo) {
  ASSERT_EQ(startNotificationThread(), QVR_E_STATUS_OK);
  for (int i = 0; i < 500; i++) {
    const int device = i % 2;
    bench_.chips.queueEvent(device, event(EVENT_TYPE_LINKS_STATUS_CHANGED, 5, 6));
    bench_.chips.queueEvent(device, event(EVENT_TYPE_BOOT_SUCCEEDED));
    bench_.chips.queueLog(device, Record(8, 0));
    QVR_registerRebootEventCB(i % 3 == 0 ? nullptr : countReboot);
    QVR_registerDeviceLinkStateChangeCB(i % 5 == 0 ? nullptr : countLinkChange);
    QVR_registerLogMessageCB(0, i % 7 == 0 ? nullptr : countLogLine);
    QVR_registerLinkFailureNotificationCB(nullptr);
    QVR_registerCommFailureNotificationCB([](QVR_deviceId_t) {});
    QVR_registerNonCdtaCpeJoinNotificationCB([](QVR_lineId_t) {});
    const int handle = QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, [](time_t) {});
    QVR_register15minCounterEventCB(handle, nullptr);
    registerLineRebootHandler([] { deviceRecord(0); });
    QVR_getDeviceInfo(device, nullptr);
    QVR_secsTo15minBoundary(nullptr);
  }
  QVR_registerRebootEventCB(countReboot);
  const int before = reboots;
  bench_.chips.queueEvent(0, event(EVENT_TYPE_BOOT_SUCCEEDED));
  EXPECT_TRUE(comesTrue([before] { return reboots > before; }));
}

// A driver whose descriptor is an eventfd, under the system's own clock and select.
class EventDescriptors final : public Driver {
 public:
  int open(int device) override { return device == 0 ? descriptor_ : -1; }
  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD) {
      std::memset(request.req_u.memread.buf, 0, request.req_u.memread.bufsize);
      return 0;
    }
    uint64_t pending = 0;
    if (code != DFEIOCALMRD || ::read(descriptor_, &pending, sizeof pending) < 0) {
      return -1;
    }
    const Record record = event(EVENT_TYPE_BOOT_SUCCEEDED);
    std::memcpy(request.req_u.logalm_read.buf, record.data(), record.size());
    request.req_u.logalm_read.datalen_copied_to_user = static_cast<uint32_t>(record.size());
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  void announce() {
    const uint64_t one = 1;
    ASSERT_EQ(::write(descriptor_, &one, sizeof one), ssize_t{sizeof one});
  }

 private:
  const int descriptor_ = ::eventfd(0, EFD_NONBLOCK);
};

TEST(ThreadOnSystemClock, CallsBackWhenADeviceBecomesReadable) {
  auto& chip = forever(new EventDescriptors);
  forever(&driver());
  installDriver(chip);
  QVR_getDeviceInfo(0, nullptr);
  QVR_registerRebootEventCB(countReboot);
  ASSERT_EQ(startNotificationThread(), QVR_E_STATUS_OK);
  for (int i = 1; i <= 3; i++) {
    chip.announce();
    EXPECT_TRUE(comesTrue([i] { return reboots == i; }));
  }
}

// A driver whose log records nobody takes: its descriptor is readable all the time, and it tells of every
// record, as a driver does that wakes whoever waits.
class UnreadLogs final : public Driver {
 public:
  UnreadLogs() { tell(); }

  int open(int device) override { return device == 0 ? descriptor_ : -1; }
  int request(int /*descriptor*/, uint32_t code, gfast_iocreq& request) override {
    if (code == DFEIOCMEMRD) {
      std::memset(request.req_u.memread.buf, 0, request.req_u.memread.bufsize);
      return 0;
    }
    if (code != DFEIOCALMRD) {
      return -1;
    }
    reads++;
    if (events_ == 0) {
      return -1;
    }
    events_--;
    const Record record = event(EVENT_TYPE_BOOT_SUCCEEDED);
    std::memcpy(request.req_u.logalm_read.buf, record.data(), record.size());
    request.req_u.logalm_read.datalen_copied_to_user = static_cast<uint32_t>(record.size());
    return 0;
  }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}

  void addEvent() {
    events_++;
    tell();
  }

  void tell() const {
    const uint64_t one = 1;
    EXPECT_EQ(::write(descriptor_, &one, sizeof one), ssize_t{sizeof one});
  }

  std::atomic<int> reads{0};

 private:
  const int descriptor_ = ::eventfd(0, EFD_NONBLOCK);
  std::atomic<int> events_{0};
};

class ThreadWithUnreadLogs : public testing::Test {
 protected:
  ThreadWithUnreadLogs() {
    forever(&driver());
    installDriver(chip_);
    QVR_getDeviceInfo(0, nullptr);
    QVR_registerRebootEventCB(countReboot);
    EXPECT_EQ(startNotificationThread(), QVR_E_STATUS_OK);
  }

  UnreadLogs& chip_ = forever(new UnreadLogs);
};

// At moments all over the round of half a second.
TEST_F(ThreadWithUnreadLogs, CallsBackForAnEventAtOnce) {
  for (int i = 1; i <= 8; i++) {
    std::this_thread::sleep_for(std::chrono::milliseconds(130));
    const auto start = std::chrono::steady_clock::now();
    chip_.addEvent();
    EXPECT_TRUE(comesTrue([i] { return reboots == i; }));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300)) << i;
  }
}

TEST_F(ThreadWithUnreadLogs, RestsBetweenEvents) {
  std::this_thread::sleep_for(std::chrono::milliseconds(2100));
  EXPECT_LE(chip_.reads, 6) << "one a round, and the first news";
}

TEST_F(ThreadWithUnreadLogs, HearsSoManyNewsInARoundAndNoMore) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
  int told = 0;
  for (; std::chrono::steady_clock::now() < end; told++) {
    chip_.tell();
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
  EXPECT_LE(chip_.reads, 4 * (NotificationRound::kMostNewsInARound + 1));
  if (told > 1000) {
    EXPECT_GE(chip_.reads, NotificationRound::kMostNewsInARound);
  }
}

TEST(ThreadStart, FailsWhenTheSystemRefusesTheThread) {
  const RefusedThreads refused;
  EXPECT_EQ(startNotificationThread(), QVR_E_FAILED_CREATING_THREAD);
}

}  // namespace
