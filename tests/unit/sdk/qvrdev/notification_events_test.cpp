// Given these event records from a chip, these callbacks are called.
#include <gmock/gmock.h>

#include "qvrdev/callbacks.h"
#include "qvrdev/device_events.h"
#include "qvrdev/device_table.h"
#include "unit/sdk/qvrdev/notification_chips.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <typename... Values>
void tell(const char* what, Values... values) {
  std::string entry = what;
  ((entry += ' ' + std::to_string(values)), ...);
  told().push_back(std::move(entry));
}

class Events : public testing::Test {
 protected:
  static constexpr int kDescriptor0 = 10;
  static constexpr int kDescriptor1 = 11;

  Events() {
    bench_.start(0, kDescriptor0);
    bench_.start(1, kDescriptor1);
    QVR_registerDeviceLinkStateChangeCB(
        [](QVR_lineId_t line, G9701_linkState_t before, G9701_linkState_t after) {
          tell("link", line, static_cast<int>(before), static_cast<int>(after));
        });
    QVR_registerLinkFailureNotificationCB([](QVR_lineId_t line, LINK_FAILURE_TYPE_E reason, time_t time) {
      tell("failure", line, static_cast<uint32_t>(reason), time);
    });
    QVR_registerRebootEventCB([] { tell("reboot"); });
    registerLineRebootHandler([] { tell("lines"); });
    QVR_registerNonCdtaCpeJoinNotificationCB([](QVR_lineId_t line) { tell("non-cdta", line); });
  }

  Chip& chip(int device) { return bench_.chips.chip(device); }

  void handle(int device, std::initializer_list<Record> records) {
    chip(device).events.assign(records);
    EXPECT_EQ(QVR_handleAlarm(chip(device).descriptor, device), QVR_E_STATUS_OK);
  }

  static void withoutCallbacks() {
    QVR_registerDeviceLinkStateChangeCB(nullptr);
    QVR_registerLinkFailureNotificationCB(nullptr);
    QVR_registerRebootEventCB(nullptr);
    registerLineRebootHandler(nullptr);
    QVR_registerNonCdtaCpeJoinNotificationCB(nullptr);
  }

  Bench bench_;
};

TEST_F(Events, LinkStateChangeReportsLineAndStates) {
  handle(0, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 5, 6)});
  EXPECT_THAT(told(), ElementsAre("link 0 5 6"));
  EXPECT_EQ(deviceRecord(0).lineState[0], LS_SHOWTIME);
}

TEST_F(Events, LinkStateChangeOfDevice1ReportsTheInternalLine) {
  handle(1, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 2, 4)});
  EXPECT_THAT(told(), ElementsAre("link 1 2 4"));
  EXPECT_EQ(deviceRecord(1).lineState[0], LS_INIT_HS);
}

TEST_F(Events, LinkStateChangeIsInTheTableBeforeTheCallback) {
  QVR_registerDeviceLinkStateChangeCB([](QVR_lineId_t line, G9701_linkState_t, G9701_linkState_t) {
    tell("in table", static_cast<int>(deviceRecord(line).lineState[0]));
  });
  handle(1, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 5, 6)});
  EXPECT_THAT(told(), ElementsAre("in table 6"));
}

TEST_F(Events, EqualLinkStatesAreIgnored) {
  setLineState(0, 0, LS_SILENT);
  handle(0, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 6, 6)});
  EXPECT_THAT(told(), IsEmpty());
  EXPECT_EQ(deviceRecord(0).lineState[0], LS_SILENT);
}

TEST_F(Events, LinkStatesOfLinesTheDeviceDoesNotHaveAreIgnored) {
  handle(0, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 0x55555552, 0x66666662)});
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(Events, LinkStateChangeTakesOnlyTheNibbleOfTheLine) {
  handle(0, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 0xFFFFFFF5, 0x00000006)});
  EXPECT_THAT(told(), ElementsAre("link 0 5 6"));
}

TEST_F(Events, LinkStateChangeIsStoredWithoutCallbacks) {
  withoutCallbacks();
  handle(0, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 5, 6)});
  EXPECT_EQ(deviceRecord(0).lineState[0], LS_SHOWTIME);
}

TEST_F(Events, EventsOfADeviceThatWasNeverReadAreIgnored) {
  Bench fresh;
  clearDeviceTable();
  fresh.chips.chip(0).descriptor = kDescriptor0;
  fresh.chips.chip(0).events = {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 5, 6),
                                event(EVENT_TYPE_DTA_UNSUPPORTIVE_LINK)};
  QVR_handleAlarm(kDescriptor0, 0);
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(Events, LineFailureReportsTheLineNumberOfTheChip) {
  bench_.clock.time = 1234567;
  handle(1, {event(EVENT_TYPE_LINE_FAILURE, LF_REASON_LOSS_OF_SIGNAL, 0),
             event(EVENT_TYPE_LINE_FAILURE, 15, 7)});
  EXPECT_THAT(told(), ElementsAre("failure 0 6 1234567", "failure 7 15 1234567"));
}

TEST_F(Events, LineFailureReportsUnknownReasons) {
  bench_.clock.time = 1;
  handle(0, {event(EVENT_TYPE_LINE_FAILURE, 0xFFFFFFFF, 0xFFFFFFFF)});
  EXPECT_THAT(told(), ElementsAre("failure -1 4294967295 1"));
}

TEST_F(Events, BootIsReportedToTheLinesFirst) {
  handle(0, {event(EVENT_TYPE_BOOT_SUCCEEDED)});
  EXPECT_THAT(told(), ElementsAre("lines", "reboot"));
}

TEST_F(Events, BootIsReportedToTheLinesWithoutARebootCallback) {
  QVR_registerRebootEventCB(nullptr);
  handle(0, {event(EVENT_TYPE_BOOT_SUCCEEDED)});
  EXPECT_THAT(told(), ElementsAre("lines"));
}

TEST_F(Events, NonCdtaCpeReportsTheInternalLine) {
  handle(1, {event(EVENT_TYPE_DTA_UNSUPPORTIVE_LINK, 0)});
  EXPECT_THAT(told(), ElementsAre("non-cdta 1"));
}

TEST_F(Events, NonCdtaCpeOnALineTheDeviceDoesNotHaveIsIgnored) {
  for (const uint32_t line : {1U, 2U, 255U, 0x80000000U, 0xFFFFFFFFU}) {
    handle(1, {event(EVENT_TYPE_DTA_UNSUPPORTIVE_LINK, line)});
  }
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(Events, OtherTypesAreIgnored) {
  for (const uint32_t type : {1U, 3U, 6U, 7U, 255U, 0x80000000U, 0xFFFFFFFFU}) {
    handle(0, {event(type, 5, 6)});
  }
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(Events, EventsAreDrainedWithoutCallbacks) {
  withoutCallbacks();
  handle(0, {event(EVENT_TYPE_LINE_FAILURE, 1, 0), event(EVENT_TYPE_BOOT_SUCCEEDED),
             event(EVENT_TYPE_DTA_UNSUPPORTIVE_LINK)});
  EXPECT_THAT(chip(0).events, IsEmpty());
}

TEST_F(Events, EventsAreDrainedInOrderUntilNoneIsPending) {
  handle(0, {event(EVENT_TYPE_LINKS_STATUS_CHANGED, 2, 4), event(EVENT_TYPE_MODEM_IS_READY),
             event(EVENT_TYPE_LINKS_STATUS_CHANGED, 4, 5), event(EVENT_TYPE_BOOT_SUCCEEDED)});
  EXPECT_THAT(told(), ElementsAre("link 0 2 4", "link 0 4 5", "lines", "reboot"));
  EXPECT_EQ(chip(0).eventReads, 5);
}

TEST_F(Events, DrainingOneDeviceLeavesTheOther) {
  chip(1).events = {event(EVENT_TYPE_BOOT_SUCCEEDED)};
  handle(0, {});
  EXPECT_THAT(told(), IsEmpty());
  EXPECT_EQ(chip(1).events.size(), 1U);
}

TEST_F(Events, DrainingEndsWhenARequestFails) {
  chip(0).events = {event(EVENT_TYPE_BOOT_SUCCEEDED)};
  int taken = -1;
  EXPECT_EQ(QVR_handleAlarm(99, 0, &taken), QVR_E_STATUS_OK);
  EXPECT_EQ(taken, 0);
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(Events, MissingParametersAreZero) {
  handle(0, {words({0, 0, EVENT_TYPE_DTA_UNSUPPORTIVE_LINK}), words({0})});
  EXPECT_THAT(told(), ElementsAre("non-cdta 0", "non-cdta 0"));
}

TEST_F(Events, CopiedLengthBeyondTheBufferIsCutToIt) {
  chip(0).claimed = 0xFFFFFFFF;
  handle(0, {event(EVENT_TYPE_BOOT_SUCCEEDED)});
  EXPECT_THAT(told(), ElementsAre("lines", "reboot"));
}

TEST_F(Events, RecordLongerThanTheBufferIsReadWithinIt) {
  Record record = event(EVENT_TYPE_LINKS_STATUS_CHANGED, 5, 6);
  record.resize(5000, 0xFF);
  handle(0, {record});
  EXPECT_THAT(told(), ElementsAre("link 0 5 6"));
}

TEST_F(Events, FloodIsLeftForTheNextCall) {
  chip(0).events.assign(kMostEventsInOneGo + 1, event(EVENT_TYPE_BOOT_SUCCEEDED));
  int taken = 0;
  QVR_handleAlarm(kDescriptor0, 0, &taken);
  EXPECT_EQ(taken, kMostEventsInOneGo);
  EXPECT_EQ(chip(0).events.size(), 1U);
  QVR_handleAlarm(kDescriptor0, 0, &taken);
  EXPECT_EQ(taken, 1);
  EXPECT_EQ(told().size(), 2U * (kMostEventsInOneGo + 1));
}

}  // namespace
