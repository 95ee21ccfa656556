// Seven days of quarter hours on both lines, compared with sums that the test keeps itself.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <optional>
#include <random>
#include <vector>

#include "qvrdev/device_table.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/quarter_hours.h"
#include "qvrline/interval_counters.h"
#include "soak/simulated_board.h"
#include "support/lines.h"
#include "support/local_time.h"
#include "support/performance_counters.h"
#include "support/test_clock.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr int kDays = 7;
constexpr int kQuartersADay = kDay_s / kQuarter_s;
constexpr int kMinute_s = 60;
constexpr size_t kUas = 8;  // the word of the near end's unavailable seconds

using Words = std::array<uint32_t, kPmWords>;
using Sums = std::array<uint64_t, kPmWords>;

Words difference(const Words& now, const Words& before) {
  Words result;
  for (size_t i = 0; i < kPmWords; i++) {
    result[i] = now[i] - before[i];
  }
  return result;
}

void add(Sums& sums, const Words& words) {
  for (size_t i = 0; i < kPmWords; i++) {
    sums[i] += words[i];
  }
}

// What must be in the history of one line: every quarter hour of the day and every day, as counted here.
class ExpectedHistory {
 public:
  // A quarter hour ended; counters from its start to its end.
  void quarterHour(const Words& counted) {
    add(day_, counted);
    quarters_.push_back(counted);
  }
  // It was the day's last.
  void midnight() {
    days_.push_back(day_);
    add(week_, day_);
    day_ = {};
    quarters_.clear();
  }

  const std::vector<Words>& quarters() const { return quarters_; }
  const std::vector<Sums>& days() const { return days_; }
  const Sums& week() const { return week_; }

 private:
  static void add(Sums& sums, const Sums& more) {
    for (size_t i = 0; i < kPmWords; i++) {
      sums[i] += more[i];
    }
  }
  static void add(Sums& sums, const Words& words) { ::add(sums, words); }

  std::vector<Words> quarters_;  // of the running day, oldest first
  std::vector<Sums> days_;
  Sums day_{};
  Sums week_{};
};

template <typename Counts>
void expectCounts(const QVR_intervalLinkCounterDB_t& interval, const Counts& counts,
                  const std::string& which) {
  forEachCounter(interval, [&](const char* name, uint32_t counted, size_t word) {
    ASSERT_EQ(counted, static_cast<uint32_t>(counts[word])) << which << ", " << name;
  });
}

// Every quarter hour of the running day.
void expectQuarterHours(QVR_lineId_t line, const ExpectedHistory& expected) {
  const auto kept = static_cast<int>(expected.quarters().size());
  ASSERT_EQ(QVR_numberOf15minHistoryIntervals(line), kept + 1);
  for (int k = 1; k <= kept; k++) {
    QVR_intervalLinkCounterDB_t interval{};
    ASSERT_EQ(QVR_getPrev15minCounters(line, static_cast<int8_t>(k), &interval), QVR_E_STATUS_OK);
    expectCounts(interval, expected.quarters()[static_cast<size_t>(kept - k)],
                 "line " + std::to_string(line) + ", " + interval.timestampString);
  }
}

// Every day that is kept.
void expectDays(QVR_lineId_t line, const ExpectedHistory& expected) {
  const auto past = static_cast<int>(expected.days().size());
  // After the seventh midnight the ring is full and the oldest day is overwritten.
  ASSERT_EQ(QVR_numberOf24hrHistoryIntervals(line), std::min(past + 1, 7));
  for (int k = 1; k <= std::min(past, 6); k++) {
    QVR_intervalLinkCounterDB_t interval{};
    ASSERT_EQ(QVR_getPrev24hrCounters(line, static_cast<int8_t>(k), &interval), QVR_E_STATUS_OK);
    ASSERT_EQ(interval.timestamp, kPowerUp + static_cast<time_t>(past - k + 1) * kDay_s);
    expectCounts(interval, expected.days()[static_cast<size_t>(past - k)],
                 "line " + std::to_string(line) + ", day to " + interval.timestampString);
  }
}

// Reads the chips' counters without the library.
class Tap {
 public:
  explicit Tap(VirtualBoard& board) : board_(board), descriptors_{board.open(0), board.open(1)} {}

  // Nothing, when the chip does not answer.
  std::optional<Words> read(int device) {
    Bytes bytes(kPmWords * 4);
    gfast_iocreq request{};
    const auto size = static_cast<uint16_t>(bytes.size());
    request.req_u.memread = {0xF0000000, size, reinterpret_cast<char*>(bytes.data()), size, 0, 0};
    if (board_.request(descriptors_[static_cast<size_t>(device)], DFEIOCMEMRD, request) < 0) {
      return std::nullopt;
    }
    Words words;
    for (size_t i = 0; i < kPmWords; i++) {
      words[i] = load_le32(&bytes[i * 4]);
    }
    return words;
  }

 private:
  VirtualBoard& board_;
  std::array<int, 2> descriptors_;
};

// What happens in the week. Nothing lasts over a midnight.
constexpr int kCuts = 5;
constexpr int kBursts = 9;
constexpr int kPowerLosses = 3;
constexpr int kHangs = 2;

BoardConfig eventfulWeek() {
  BoardConfig config;
  const auto at = [](int day, int hour, int minute, int second) {
    return static_cast<double>(day * kDay_s + hour * 3600 + minute * 60 + second);
  };
  for (int i = 0; i < kCuts; i++) {
    config.loopEvents.push_back({at(i, 3 + i, 7, 11), true});
    // Some are joined again within the quarter hour, some not before three more have passed.
    config.loopEvents.push_back({at(i, 3 + i, i % 2 == 0 ? 9 : 52, 40), false});
  }
  for (int i = 0; i < kBursts; i++) {
    LoopEvent burst{at(i % kDays, 9 + i, 14, 30), std::nullopt};
    burst.errors = 0.04 + 0.11 * i;
    burst.for_s = 20 + 7 * i;
    config.loopEvents.push_back(burst);
  }
  for (int i = 0; i < kPowerLosses; i++) {
    config.deviceEvents.push_back(
        {i % 2, at(1 + 2 * i, 20, 22, 5), DeviceEvent::Kind::kPowerOff, 10.0 + 600 * i});
  }
  for (int i = 0; i < kHangs; i++) {
    config.deviceEvents.push_back({i % 2, at(2 + i, 6, 44, 0), DeviceEvent::Kind::kHang, 120.0});
  }
  return config;
}

class Week : public testing::Test {
 protected:
  Week() : simulated_(SimulatedBoard::start(eventfulWeek())), tap_(simulated_.board()) {
    rebase();
    week() = this;
    QVR_registerRebootEventCB([] { week()->rebase(); });
    QVR_register24hrEventCB([](QVR_lineId_t, const char*, time_t) { week()->dayEvents_++; });
  }

  // A chip has restarted: the library starts counting from its counters now, and so does the test.
  void rebase() {
    rebases_++;
    for (int device = 0; device < QVR_K_MAX_DEVICES; device++) {
      Words& base = base_[static_cast<size_t>(device)];
      base = tap_.read(device).value_or(base);
    }
  }

  // One minute passes.
  void passMinute(int minute) {
    const int seconds = minute * kMinute_s;
    simulated_.setTime(seconds);
    if (seconds % kQuarter_s == 0) {
      closeQuarterHour(seconds % kDay_s == 0);
    }
    simulated_.round();
  }

  void closeQuarterHour(bool midnight) {
    for (size_t line = 0; line < expected_.size(); line++) {
      const std::optional<Words> now = tap_.read(static_cast<int>(line));
      ASSERT_TRUE(now || !midnight);
      if (!now) {
        skipped_++;
        continue;
      }
      expected_[line].quarterHour(difference(*now, base_[line]));
      base_[line] = *now;
      if (midnight) {
        expected_[line].midnight();
      }
    }
  }

  // Reads the running quarter hour, which limits its unavailable seconds to the time collected so far.
  void look(QVR_lineId_t line) {
    Words& base = base_[static_cast<size_t>(line)];
    const std::optional<Words> now = tap_.read(line);
    QVR_intervalLinkCounterDB_t interval{};
    const QVR_retval_t status = QVR_getCurr15minCounters(line, &interval);
    ASSERT_EQ(QVR_STATUS_OK(status), now.has_value());
    if (now) {
      const Words counted = difference(*now, base);
      expectCounts(interval, counted, "running");
      if (counted[kUas] > interval.collectionTime) {
        base[kUas] = (*now)[kUas] - interval.collectionTime;
      }
      looks_++;
    }
  }

  static Week*& week() {
    static Week* running = nullptr;
    return running;
  }

  SimulatedBoard& simulated_;
  Tap tap_;
  std::array<ExpectedHistory, QVR_K_MAX_LINES> expected_;
  std::array<Words, QVR_K_MAX_LINES> base_{};
  int rebases_ = 0;
  int skipped_ = 0;
  int looks_ = 0;
  int dayEvents_ = 0;
};

TEST_F(Week, HistoryEqualsWhatTheChipsCounted) {
  for (int minute = 1; minute <= kDays * kDay_s / kMinute_s; minute++) {
    passMinute(minute);
    if (minute % 97 == 0) {
      look(minute % 2);
    }
    if (minute * kMinute_s % kQuarter_s == 0) {
      for (const QVR_lineId_t line : {0, 1}) {
        expectQuarterHours(line, expected_[static_cast<size_t>(line)]);
        expectDays(line, expected_[static_cast<size_t>(line)]);
      }
    }
    if (HasFatalFailure()) {
      FAIL() << "in minute " << minute;
    }
  }
  EXPECT_EQ(dayEvents_, kDays * QVR_K_MAX_LINES);
  EXPECT_GT(looks_, 90);
  // One for each chip that hung at a boundary, and those that chips without power missed.
  EXPECT_GE(skipped_, kHangs);
  EXPECT_EQ(rebases_, 1 + kPowerLosses) << "the start, and every chip that came back";

  // Everything that was planned for the week has happened.
  for (const ExpectedHistory& line : expected_) {
    EXPECT_EQ(line.week()[0], uint64_t{kCuts}) << "LOS: every cut";
    EXPECT_EQ(line.week()[22], uint64_t{kCuts}) << "of the far end as well";
    for (const size_t word : {2U, 4U, 5U, 6U, 7U, 8U, 9U, 13U, 14U, 15U, 16U, 18U, 19U, 20U, 21U}) {
      EXPECT_GT(line.week()[word], 0U) << "near-end word " << word;
    }
    for (const size_t word : {24U, 26U, 27U, 28U, 29U, 30U, 31U, 32U, 33U, 34U, 35U, 36U, 37U, 38U}) {
      EXPECT_GT(line.week()[word], 0U) << "far-end word " << word;
    }
  }
}

// Two chips on which every word counts, some so fast that they wrap around within the hour.
class RestlessChips final : public Driver {
 public:
  explicit RestlessChips(uint32_t seed) : random_(seed) {
    for (auto& chip : words_) {
      for (uint32_t& word : chip) {
        word = draw();
      }
    }
    installDriver(*this);
  }

  const Words& words(int device) const { return words_[static_cast<size_t>(device)]; }

  // A quarter hour's worth of counting; the unavailable seconds are no more than it has.
  void count() {
    for (auto& chip : words_) {
      for (size_t i = 0; i < kPmWords; i++) {
        chip[i] += i == kUas ? draw() % 901 : i % 3 == 0 ? draw() : draw() % 100000;
      }
    }
  }

  int open(int device) override { return 40 + device; }
  void close(int /*descriptor*/) override {}
  void rediscover() override {}
  int request(int descriptor, uint32_t code, gfast_iocreq& request) override {
    auto& read = request.req_u.memread;
    if (code != DFEIOCMEMRD || read.hw_mem_addr != 0xF0000000) {
      return code == DFEIOCMEMRD ? -1 : 0;
    }
    for (size_t i = 0; i < kPmWords; i++) {
      store_le32(reinterpret_cast<uint8_t*>(read.buf) + i * 4, words(descriptor - 40)[i]);
    }
    read.datalen_rcvd_from_hw = read.datalen_copied_to_user = read.hw_mem_len;
    return 0;
  }

 private:
  uint32_t draw() { return static_cast<uint32_t>(random_()); }

  std::mt19937 random_;
  std::array<Words, QVR_K_MAX_DEVICES> words_{};
};

TEST(RestlessWeek, EachOfThe39CountersHasItsOwnWord) {
  RestlessChips chips(20231115);
  setZone("UTC0");
  enterBothLines();
  QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationHandler);
  std::array<ExpectedHistory, QVR_K_MAX_LINES> expected;
  for (int device = 0; device < QVR_K_MAX_DEVICES; device++) {
    G9972_PM_COUNTERS_S start{};
    ASSERT_EQ(QVR_readPerformanceMonitoringCounters(device, &start), QVR_E_STATUS_OK);
    storeCounters(device, {start, start});
    setStartOfCollection(device, 0, kQuarter_s);
  }
  // The chips say nothing of their link states, so the library does not take their lines for idle.
  for (const QVR_deviceId_t device : {0, 1}) {
    ASSERT_NE(deviceRecord(device).lineState[0], LS_IDLE);
  }
  for (int quarter = 1; quarter <= kDays * kQuartersADay; quarter++) {
    const std::array<Words, 2> before{chips.words(0), chips.words(1)};
    chips.count();
    const time_t boundary = kPowerUp + static_cast<time_t>(quarter) * kQuarter_s;
    testClock().setNow(boundary);
    for (size_t line = 0; line < expected.size(); line++) {
      expected[line].quarterHour(difference(chips.words(static_cast<int>(line)), before[line]));
      if (quarter % kQuartersADay == 0) {
        expected[line].midnight();
      }
    }
    QVR_15minCounterEventHandler(boundary);
    for (const QVR_lineId_t line : {0, 1}) {
      expectQuarterHours(line, expected[static_cast<size_t>(line)]);
      expectDays(line, expected[static_cast<size_t>(line)]);
    }
    ASSERT_FALSE(HasFatalFailure()) << "quarter hour " << quarter;
  }
}

}  // namespace
