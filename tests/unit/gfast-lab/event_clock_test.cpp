// A clock that goes from event to event: who goes on when, and what time it is then.
#include "gfast-lab/time/event_clock.h"

#include <gmock/gmock.h>
#include <sys/eventfd.h>

#include <atomic>
#include <map>
#include <string>
#include <thread>
#include <vector>

using namespace gfast::lab;
using namespace std::chrono_literals;

namespace {

using std::chrono::microseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr time_t kStart = 1700006400;

bool always() {
  return true;
}

// The clock and what happened, each entry with its second. Never destroyed: other threads wait on the clock
// until the process ends.
class Diary {
 public:
  EventClock clock{kStart};

  void note(const std::string& what) {
    const std::lock_guard lock(mutex_);
    entries_.push_back(std::to_string(static_cast<int>(clock.elapsed_s())) + ' ' + what);
  }

  std::vector<std::string> entries() {
    const std::lock_guard lock(mutex_);
    return entries_;
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> entries_;
};

class EventClockTest : public testing::Test {
 protected:
  // Starts a thread that does this and then waits for ever.
  void start(std::function<void()> work) {
    std::thread([&clock = clock, work = std::move(work)] {
      work();
      clock.sleep(100000h);
    }).detach();
    clock.threadStarts();
  }

  static Diary& theDiary() {
    static auto& one = *new Diary;
    return one;
  }

  Diary& diary = theDiary();
  EventClock& clock = diary.clock;
};

int eventDescriptor() {
  return ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

int waitFor(EventClock& clock, int descriptor, microseconds duration) {
  fd_set descriptors;
  FD_ZERO(&descriptors);
  FD_SET(descriptor, &descriptors);
  const int readable = clock.waitReadable(descriptors, descriptor + 1, duration);
  EXPECT_EQ(FD_ISSET(descriptor, &descriptors) != 0, readable != 0);
  return readable;
}

TEST_F(EventClockTest, PassesAWaitAtOnce) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(clock.now(), kStart);
  clock.sleep(24h);
  EXPECT_EQ(clock.now(), kStart + 86400);
  EXPECT_EQ(clock.steady(), microseconds(24h));
  EXPECT_TRUE(clock.sleepWhile(1500ms, always));
  EXPECT_EQ(clock.elapsed_s(), 86401.5);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
}

TEST_F(EventClockTest, StandsStillWhileNobodyWaits) {
  std::this_thread::sleep_for(5ms);
  EXPECT_EQ(clock.steady(), 0us);
  clock.sleepOutside(5ms);
  EXPECT_EQ(clock.steady(), 0us);
}

TEST_F(EventClockTest, StopsAtEachEventOnTheWay) {
  std::multimap<double, std::string> events{{1.5, "one"}, {4.0, "two"}, {4.0, "three"}, {9.0, "late"}};
  clock.setEvents({[&] { return std::optional(events.begin()->first); },
                   [&] {
                     while (events.begin()->first <= clock.elapsed_s()) {
                       diary.note(events.begin()->second);
                       events.erase(events.begin());
                     }
                   }});
  clock.sleep(5s);
  EXPECT_THAT(diary.entries(), ElementsAre("1 one", "4 two", "4 three"));
  EXPECT_EQ(clock.steady(), 5s);
}

// An event between two microseconds is due at the second of them.
TEST_F(EventClockTest, ReachesEveryEvent) {
  double next = 0;
  int events = 0;
  clock.setEvents({[&] { return next; },
                   [&] {
                     ASSERT_GE(clock.elapsed_s(), next);
                     next += 1.0 / 3;
                     events++;
                   }});
  clock.sleep(999s + 900ms);
  EXPECT_EQ(events, 3000);
}

TEST_F(EventClockTest, LetsThreadsTakeTurnsByTime) {
  start([this] {
    for (int i = 0; i < 3; i++) {
      clock.sleep(2s);
      diary.note("other");
    }
  });
  for (int i = 0; i < 2; i++) {
    clock.sleep(3s);
    diary.note("command");
  }
  // In the sixth second both are due; the command thread is the last.
  EXPECT_THAT(diary.entries(), ElementsAre("2 other", "3 command", "4 other", "6 other", "6 command"));
}

TEST_F(EventClockTest, WaitsForAThreadThatHasNotComeYet) {
  start([this] {
    std::this_thread::sleep_for(30ms);
    clock.sleep(1s);
    diary.note("other");
  });
  clock.sleep(2s);
  EXPECT_THAT(diary.entries(), ElementsAre("1 other"));
}

TEST_F(EventClockTest, EndsAWaitWhenADescriptorIsReadable) {
  const int descriptor = eventDescriptor();
  clock.setEvents({[this] { return clock.elapsed_s() < 7 ? std::optional(7.0) : std::nullopt; },
                   [descriptor] { ::eventfd_write(descriptor, 1); }});
  EXPECT_EQ(waitFor(clock, descriptor, 5s), 0);
  EXPECT_EQ(clock.steady(), 5s);
  EXPECT_EQ(waitFor(clock, descriptor, 5s), 1);
  EXPECT_EQ(clock.steady(), 7s);
  EXPECT_EQ(waitFor(clock, descriptor, 5s), 1);
  EXPECT_EQ(clock.steady(), 7s);
}

TEST_F(EventClockTest, LetsTheOthersDoWhatIsDueNow) {
  const int descriptor = eventDescriptor();
  start([this, descriptor] {
    waitFor(clock, descriptor, 1h);
    diary.note("other");
  });
  clock.letOthersCatchUp(always);
  EXPECT_THAT(diary.entries(), IsEmpty());
  ::eventfd_write(descriptor, 1);
  clock.letOthersCatchUp(always);
  EXPECT_THAT(diary.entries(), ElementsAre("0 other"));
  EXPECT_EQ(clock.steady(), 0us);
}

TEST_F(EventClockTest, EndsAWaitThatMayNotGoOn) {
  EXPECT_FALSE(clock.sleepWhile(1h, [] { return false; }));
  EXPECT_EQ(clock.steady(), 0us);
  // While another thread computes for long, the time cannot pass.
  std::atomic<bool> computing{true};
  start([&computing] {
    while (computing) {
      std::this_thread::sleep_for(1ms);
    }
  });
  int asked = 0;
  EXPECT_FALSE(clock.sleepWhile(1h, [&asked] { return ++asked == 1; }));
  EXPECT_EQ(clock.steady(), 0us);
  asked = 0;
  clock.letOthersCatchUp([&asked] { return ++asked == 1; });
  EXPECT_EQ(asked, 2);
  computing = false;
  clock.sleep(2s);
  EXPECT_EQ(clock.steady(), 2s);
}

}  // namespace
