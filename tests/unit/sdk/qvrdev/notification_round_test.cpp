// What the notification thread does, one step at a time.
#include <gmock/gmock.h>

#include "qvrdev/device_events.h"
#include "qvrdev/device_table.h"
#include "qvrdev/log_records.h"
#include "qvrdev/notification.h"
#include "support/local_time.h"
#include "unit/sdk/qvrdev/notification_chips.h"

using namespace gfast;

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class Round : public testing::Test {
 protected:
  Round() {
    setZone("UTC0");
    bench_.clock.time = at(10, 0, 0);
    bench_.start(0, 10);
    bench_.start(1, 12);
  }

  Chip& chip(int device) { return bench_.chips.chip(device); }
  StandingClock& clock() { return bench_.clock; }

  void onlyReadable(int descriptor) {
    clock().readable = [descriptor](int candidate) { return candidate == descriptor; };
  }

  static void steps(NotificationRound& round, int count) {
    for (int i = 0; i < count; i++) {
      round.step();
    }
  }

  Bench bench_;
};

TEST_F(Round, WaitsHalfASecondForBothDevices) {
  NotificationRound round;
  round.step();
  EXPECT_THAT(clock().waits, ElementsAre(microseconds{500000}));
  EXPECT_THAT(clock().waitedFor, ElementsAre(10, 12));
  EXPECT_THAT(clock().limits, ElementsAre(13));
  EXPECT_THAT(clock().sleeps, IsEmpty());
}

TEST_F(Round, ReadsNothingWhenNoDeviceIsReadable) {
  QVR_registerLogMessageCB(0, [](QVR_deviceId_t, const char*) {});
  NotificationRound round;
  steps(round, 5);
  EXPECT_EQ(chip(0).eventReads + chip(1).eventReads + chip(0).logReads + chip(1).logReads, 0);
}

TEST_F(Round, DrainsEventsOfReadableDevicesOnly) {
  onlyReadable(12);
  NotificationRound round;
  round.step();
  EXPECT_EQ(chip(0).eventReads, 0);
  EXPECT_EQ(chip(1).eventReads, 1);
}

TEST_F(Round, DrainsLogsOfBothDevicesWhenOneIsReadable) {
  QVR_registerLogMessageCB(0, [](QVR_deviceId_t, const char*) {});
  onlyReadable(12);
  NotificationRound round;
  round.step();
  EXPECT_EQ(chip(0).logReads, 1);
  EXPECT_EQ(chip(1).logReads, 1);
}

TEST_F(Round, LeavesLogsInTheDriverWithoutACallback) {
  chip(0).logs = {Record(8, 0)};
  onlyReadable(10);
  NotificationRound round;
  round.step();
  EXPECT_EQ(chip(0).logReads, 0);
  EXPECT_EQ(chip(0).logs.size(), 1U);
}

// Log records that nobody takes keep the descriptor readable, and would keep the thread awake.
TEST_F(Round, NextWaitLeavesOutADeviceThatWasReadableButDeliveredNothing) {
  chip(0).logs = {Record(8, 0)};
  onlyReadable(10);
  NotificationRound round;
  round.step();
  round.step();
  EXPECT_THAT(clock().waitedFor, ElementsAre(12));
  round.step();
  EXPECT_THAT(clock().waitedFor, ElementsAre(10, 12));
}

TEST_F(Round, DrainsDeviceZeroBeforeDeviceOneAndEventsBeforeLogs) {
  QVR_registerLinkFailureNotificationCB([](QVR_lineId_t line, LINK_FAILURE_TYPE_E, time_t) {
    told().push_back("event " + std::to_string(line));
  });
  QVR_registerLogMessageCB(
      0, [](QVR_deviceId_t device, const char*) { told().push_back("log " + std::to_string(device)); });
  for (const int device : {1, 0}) {
    chip(device).events = {event(EVENT_TYPE_LINE_FAILURE, 1, static_cast<uint32_t>(device))};
    chip(device).logs = {Record(4, 0)};
  }
  clock().readable = [](int) { return true; };
  NotificationRound round;
  round.step();
  EXPECT_THAT(told(), ElementsAre("event 0", "event 1", "log 0", "log 1"));
}

TEST_F(Round, WaitsForTheOnlyDevice) {
  Bench alone;
  clearDeviceTable();
  alone.start(0, 7);
  NotificationRound round;
  round.step();
  EXPECT_THAT(alone.clock.waitedFor, ElementsAre(7));
  EXPECT_THAT(alone.clock.limits, ElementsAre(8));
}

TEST_F(Round, IgnoresAHigherDescriptorOpenedLater) {
  Bench later;
  clearDeviceTable();
  later.start(0, 7);
  NotificationRound round;
  later.start(1, 9);
  later.clock.readable = [](int) { return true; };
  round.step();
  EXPECT_EQ(later.chips.chip(0).eventReads, 1);
  EXPECT_EQ(later.chips.chip(1).eventReads, 0);
  EXPECT_THAT(later.clock.limits, ElementsAre(8));
}

TEST_F(Round, WaitsForALowerDescriptorOpenedLater) {
  Bench later;
  clearDeviceTable();
  later.start(0, 7);
  NotificationRound round;
  later.start(1, 5);
  later.clock.readable = [](int) { return true; };
  round.step();
  EXPECT_EQ(later.chips.chip(1).eventReads, 1);
}

TEST_F(Round, LeavesOutADescriptorBeyondSelect) {
  Bench beyond;
  clearDeviceTable();
  beyond.start(0, FD_SETSIZE + 5);
  NotificationRound round;
  round.step();
  EXPECT_THAT(beyond.clock.waitedFor, IsEmpty());
}

// ---- The quarter-hour boundary ----

class RoundAtBoundary : public Round {
 protected:
  RoundAtBoundary() {
    QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE,
                                    [](time_t time) { told().push_back("first " + std::to_string(time)); });
    QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE,
                                    [](time_t time) { told().push_back("second " + std::to_string(time)); });
  }

  static std::vector<std::string> bothTold(time_t time) {
    return {"first " + std::to_string(time), "second " + std::to_string(time)};
  }

  void stepAt(NotificationRound& round, time_t time) {
    clock().time = time;
    round.step();
  }
};

TEST_F(RoundAtBoundary, CallsBothSlotsOnceInOrderAndPausesASecond) {
  clock().time = at(10, 14, 59);
  NotificationRound round;
  stepAt(round, at(10, 14, 59));
  EXPECT_THAT(told(), IsEmpty());
  stepAt(round, at(10, 15, 0));
  EXPECT_EQ(told(), bothTold(at(10, 15, 0)));
  EXPECT_THAT(clock().sleeps, ElementsAre(microseconds{1000000}));
  stepAt(round, at(10, 15, 0));
  stepAt(round, at(10, 15, 1));
  stepAt(round, at(10, 15, 1));
  EXPECT_EQ(told(), bothTold(at(10, 15, 0)));
  EXPECT_THAT(clock().sleeps, ElementsAre(microseconds{1000000}));
}

TEST_F(RoundAtBoundary, CallsInTheFirstRoundAfterTheBoundary) {
  clock().time = at(10, 14, 58);
  NotificationRound round;
  stepAt(round, at(10, 15, 3));
  EXPECT_EQ(told(), bothTold(at(10, 15, 3)));
}

TEST_F(RoundAtBoundary, DoesNotCallWhenStartedOnTheBoundary) {
  clock().time = at(10, 15, 0);
  NotificationRound round;
  stepAt(round, at(10, 15, 0));
  stepAt(round, at(10, 15, 1));
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(RoundAtBoundary, CallsEveryQuarterHourOfADay) {
  clock().time = at(0, 0, 0);
  NotificationRound round;
  for (time_t time = at(0, 0, 0); time <= at(24, 0, 0); time++) {
    stepAt(round, time);
  }
  EXPECT_EQ(told().size(), 2U * 96U);
  EXPECT_EQ(told().back(), "second " + std::to_string(at(24, 0, 0)));
}

TEST_F(RoundAtBoundary, CallsAcrossMidnight) {
  clock().time = at(23, 59, 59);
  NotificationRound round;
  stepAt(round, at(24, 0, 0));
  EXPECT_EQ(told(), bothTold(at(24, 0, 0)));
}

// New York, 2023-03-12: 01:59:59 is followed by 03:00:00. 2023-11-05: by 01:00:00.
TEST_F(RoundAtBoundary, CallsOnceWhenClocksChange) {
  setZone("EST5EDT,M3.2.0,M11.1.0");
  for (const time_t change : {time_t{1678604400}, time_t{1699164000}}) {
    told().clear();
    clock().time = change - 2;
    NotificationRound round;
    for (time_t time = change - 2; time < change + 900; time++) {
      stepAt(round, time);
    }
    EXPECT_EQ(told(), bothTold(change));
  }
}

TEST_F(RoundAtBoundary, CallsAtTheBoundaryOfAZoneOffsetByAQuarterHour) {
  setZone("<+0545>-5:45");
  clock().time = at(10, 14, 59);
  NotificationRound round;
  stepAt(round, at(10, 15, 0));
  EXPECT_EQ(told(), bothTold(at(10, 15, 0)));
}

TEST_F(RoundAtBoundary, PausesWithoutCallbacks) {
  QVR_register15minCounterEventCB(0, nullptr);
  QVR_register15minCounterEventCB(1, nullptr);
  clock().time = at(10, 14, 59);
  NotificationRound round;
  stepAt(round, at(10, 15, 0));
  EXPECT_THAT(clock().sleeps, ElementsAre(microseconds{1000000}));
}

TEST_F(RoundAtBoundary, CallsBeforeDrainingEvents) {
  QVR_registerRebootEventCB([] { told().emplace_back("reboot"); });
  chip(0).events = {event(EVENT_TYPE_BOOT_SUCCEEDED)};
  onlyReadable(10);
  clock().time = at(10, 14, 59);
  NotificationRound round;
  stepAt(round, at(10, 15, 0));
  EXPECT_EQ(told().size(), 3U);
  EXPECT_EQ(told().back(), "reboot");
}

// ---- The liveness watch ----

class RoundWatch : public Round {
 protected:
  static constexpr int kRounds = 10;  // between two checks

  RoundWatch() {
    QVR_registerCommFailureNotificationCB(
        [](QVR_deviceId_t device) { told().push_back(std::to_string(device)); });
  }

  NotificationRound round_;
};

TEST_F(RoundWatch, ReadsTheBootRegisterOfBothDevicesEveryTenRounds) {
  steps(round_, kRounds - 1);
  EXPECT_EQ(chip(0).livenessReads, 0);
  steps(round_, 1);
  EXPECT_EQ(chip(0).livenessReads, 1);
  EXPECT_EQ(chip(1).livenessReads, 1);
  steps(round_, kRounds);
  EXPECT_EQ(chip(0).livenessReads, 2);
}

TEST_F(RoundWatch, ReportsFromTheFourthFailureInARowOn) {
  steps(round_, kRounds);
  chip(1).answers = false;
  steps(round_, 3 * kRounds);
  EXPECT_THAT(told(), IsEmpty());
  steps(round_, kRounds - 1);
  EXPECT_THAT(told(), IsEmpty());
  steps(round_, 1);
  EXPECT_THAT(told(), ElementsAre("1"));
  steps(round_, kRounds);
  EXPECT_THAT(told(), ElementsAre("1", "1"));
  steps(round_, kRounds);
  EXPECT_THAT(told(), ElementsAre("1", "1", "1"));
}

TEST_F(RoundWatch, StartsCountingAgainAfterOneSuccess) {
  chip(0).answers = false;
  steps(round_, 5 * kRounds);
  EXPECT_EQ(told().size(), 2U);
  chip(0).answers = true;
  steps(round_, kRounds);
  chip(0).answers = false;
  steps(round_, 3 * kRounds);
  EXPECT_EQ(told().size(), 2U);
  steps(round_, kRounds);
  EXPECT_EQ(told().size(), 3U);
}

TEST_F(RoundWatch, CountsEachDeviceSeparately) {
  chip(0).answers = false;
  steps(round_, 2 * kRounds);
  chip(1).answers = false;
  steps(round_, 2 * kRounds);
  EXPECT_THAT(told(), ElementsAre("0"));
  steps(round_, 2 * kRounds);
  EXPECT_THAT(told(), ElementsAre("0", "0", "0", "1"));
}

TEST_F(RoundWatch, CountsWithoutACallback) {
  QVR_registerCommFailureNotificationCB(nullptr);
  chip(0).answers = false;
  steps(round_, 6 * kRounds);
  QVR_registerCommFailureNotificationCB(
      [](QVR_deviceId_t device) { told().push_back(std::to_string(device)); });
  steps(round_, kRounds);
  EXPECT_THAT(told(), ElementsAre("0"));
}

TEST_F(RoundWatch, SkipsInactiveDevices) {
  closeDevices();
  steps(round_, 5 * kRounds);
  EXPECT_EQ(chip(0).livenessReads + chip(1).livenessReads, 0);
  EXPECT_THAT(told(), IsEmpty());
}

// ---- Devices that stay readable ----

class RoundWithFullQueues : public Round {
 protected:
  // The devices are readable while something is pending.
  RoundWithFullQueues() {
    clock().readable = [this](int descriptor) { return bench_.chips.pending(descriptor); };
    QVR_registerLinkFailureNotificationCB([](QVR_lineId_t, LINK_FAILURE_TYPE_E, time_t) {
      told().push_back(std::to_string(clockSource().steady().count() / 1000) + " ms");
    });
    QVR_registerCommFailureNotificationCB([](QVR_deviceId_t device) {
      told().push_back("lost " + std::to_string(device) + " after " +
                       std::to_string(clockSource().steady().count() / 1000) + " ms");
    });
  }

  void runFor(seconds duration) {
    NotificationRound round;
    const microseconds end = clock().waited + duration;
    for (int i = 0; clock().waited < end; i++) {
      ASSERT_LT(i, 10000) << "the thread spins";
      const microseconds before = clock().waited;
      round.step();
      wakeUps_ += clock().waited > before ? 1 : 0;
    }
  }

  void after(microseconds time, std::function<void()> action) { clock().agenda.emplace(time, action); }

  void expectRestFor(seconds duration) {
    runFor(duration);
    EXPECT_LE(wakeUps_, 2 * duration.count());
    for (const int device : {0, 1}) {
      EXPECT_EQ(chip(device).livenessReads, duration / seconds{5});
      EXPECT_LE(chip(device).eventReads, 2 * duration.count() + 2);
    }
    EXPECT_THAT(told(), IsEmpty());
  }

  int wakeUps_ = 0;
};

TEST_F(RoundWithFullQueues, WakesTwiceASecondWithUnreadLogsOnOneChip) {
  chip(0).logs = {Record(8, 0)};
  expectRestFor(seconds{60});
}

TEST_F(RoundWithFullQueues, WakesTwiceASecondWithUnreadLogsOnBothChips) {
  chip(0).logs = {Record(8, 0)};
  chip(1).logs = {Record(8, 0)};
  expectRestFor(seconds{60});
}

// One wake-up more: the moment at which the second chip's record comes.
TEST_F(RoundWithFullQueues, WakesTwiceASecondWithUnreadLogsOutOfPhase) {
  chip(0).logs = {Record(8, 0)};
  after(milliseconds{250}, [this] { chip(1).logs = {Record(8, 0)}; });
  wakeUps_ = -1;
  expectRestFor(seconds{60});
}

TEST_F(RoundWithFullQueues, WakesTwiceASecondWhenEventsCannotBeRead) {
  for (const int device : {0, 1}) {
    chip(device).events = {event(EVENT_TYPE_LINE_FAILURE)};
    chip(device).eventsAreRefused = true;
  }
  expectRestFor(seconds{60});
}

TEST_F(RoundWithFullQueues, ChecksEveryFiveSecondsHoweverManyEventsCome) {
  int events = 0;
  for (milliseconds time{100}; time < seconds{60}; time += milliseconds{100}) {
    after(time, [this] { chip(0).events = {event(EVENT_TYPE_MODEM_IS_READY)}; });
    events++;
  }
  runFor(seconds{60});
  EXPECT_EQ(chip(0).livenessReads, 12);
  EXPECT_GE(chip(0).eventReads, 2 * events);
}

TEST_F(RoundWithFullQueues, ChipThatDoesNotAnswerForFifteenSecondsIsNotReported) {
  chip(0).logs = {Record(8, 0)};
  chip(1).logs = {Record(8, 0)};
  after(seconds{7}, [this] { chip(0).answers = false; });
  after(seconds{22}, [this] { chip(0).answers = true; });
  runFor(seconds{60});
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(RoundWithFullQueues, LostChipIsReportedAfterAboutTwentySeconds) {
  chip(0).logs = {Record(8, 0)};
  chip(1).logs = {Record(8, 0)};
  after(seconds{7}, [this] { chip(1).answers = false; });
  runFor(seconds{32});
  EXPECT_THAT(told(), ElementsAre("lost 1 after 25000 ms", "lost 1 after 30000 ms"));
}

// The descriptor is readable all the time, and this test's tells of no news.
TEST_F(RoundWithFullQueues, EventBehindUnreadLogsIsToldWithinHalfASecond) {
  chip(0).logs = {Record(8, 0)};
  after(milliseconds{3100}, [this] { chip(0).events = {event(EVENT_TYPE_LINE_FAILURE)}; });
  runFor(seconds{5});
  EXPECT_THAT(told(), ElementsAre("3500 ms"));
}

TEST_F(RoundWithFullQueues, EventBehindUnreadLogsIsToldAtOnceWhenTheOtherChipHasOne) {
  chip(0).logs = {Record(8, 0)};
  after(milliseconds{3100}, [this] {
    chip(0).events = {event(EVENT_TYPE_LINE_FAILURE)};
    chip(1).events = {event(EVENT_TYPE_LINE_FAILURE)};
  });
  runFor(seconds{5});
  EXPECT_THAT(told(), ElementsAre("3100 ms", "3100 ms"));
}

// ---- Floods ----

class RoundFlood : public Round {
 protected:
  static constexpr int kFlood = 10000;

  // The devices are readable while something is pending.
  RoundFlood() {
    clock().readable = [this](int descriptor) { return bench_.chips.pending(descriptor); };
  }
};

TEST_F(RoundFlood, EventsOfOneDeviceDoNotDelayTheOther) {
  QVR_registerLinkFailureNotificationCB(
      [](QVR_lineId_t line, LINK_FAILURE_TYPE_E, time_t) { told().push_back(std::to_string(line)); });
  chip(0).events.assign(kFlood, event(EVENT_TYPE_LINE_FAILURE, 1, 0));
  chip(1).events = {event(EVENT_TYPE_LINE_FAILURE, 1, 1)};
  NotificationRound round;
  round.step();
  EXPECT_EQ(told().size(), kMostEventsInOneGo + 1U);
  EXPECT_EQ(told().back(), "1");
}

TEST_F(RoundFlood, EventsAreDrainedInOrderWithoutWaiting) {
  QVR_registerLinkFailureNotificationCB(
      [](QVR_lineId_t line, LINK_FAILURE_TYPE_E, time_t) { told().push_back(std::to_string(line)); });
  std::vector<std::string> expected;
  for (uint32_t i = 0; i < kFlood; i++) {
    chip(0).events.push_back(event(EVENT_TYPE_LINE_FAILURE, 1, i));
    expected.push_back(std::to_string(i));
  }
  NotificationRound round;
  steps(round, 1 + kFlood / kMostEventsInOneGo);
  EXPECT_EQ(told(), expected);
  EXPECT_EQ(clock().waits.front(), microseconds{500000});
  clock().waits.erase(clock().waits.begin());
  EXPECT_THAT(clock().waits, Each(microseconds{0}));
}

// What was left is taken even when the descriptor is not reported readable again.
TEST_F(RoundFlood, DrainingGoesOnWhenTheDescriptorIsNotReadableAgain) {
  chip(0).events.assign(kMostEventsInOneGo + 1, event(EVENT_TYPE_MODEM_IS_READY));
  NotificationRound round;
  round.step();
  EXPECT_EQ(chip(0).events.size(), 1U);
  clock().readable = [](int) { return false; };
  round.step();
  EXPECT_THAT(chip(0).events, IsEmpty());
  round.step();
  EXPECT_EQ(clock().waits.back(), microseconds{500000});
}

TEST_F(RoundFlood, DoesNotBringTheLivenessCheckForward) {
  chip(0).events.assign(kFlood, event(EVENT_TYPE_MODEM_IS_READY));
  NotificationRound round;
  steps(round, 1 + kFlood / kMostEventsInOneGo);
  EXPECT_EQ(chip(0).livenessReads, 0);
  steps(round, 10);
  EXPECT_EQ(chip(0).livenessReads, 1);
}

TEST_F(RoundFlood, DoesNotDelayTheQuarterHour) {
  QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, [](time_t) { told().emplace_back("quarter"); });
  chip(0).events.assign(kFlood, event(EVENT_TYPE_MODEM_IS_READY));
  clock().time = at(10, 14, 59);
  NotificationRound round;
  round.step();
  clock().time = at(10, 15, 0);
  round.step();
  EXPECT_THAT(told(), ElementsAre("quarter"));
}

TEST_F(RoundFlood, LogsOfOneDeviceDoNotDelayTheOther) {
  QVR_registerLogMessageCB(
      0, [](QVR_deviceId_t device, const char*) { told().push_back(std::to_string(device)); });
  chip(0).logs.assign(kFlood, Record(4, 0));
  chip(1).logs = {Record(4, 0)};
  NotificationRound round;
  round.step();
  EXPECT_EQ(told().size(), kMostLogBuffersInOneGo + 1U);
  EXPECT_EQ(told().back(), "1");
  steps(round, kFlood / kMostLogBuffersInOneGo + 1);
  EXPECT_EQ(told().size(), kFlood + 1U);
}

}  // namespace
