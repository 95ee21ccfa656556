// Registering the callbacks of the upper layers.
#include <gmock/gmock.h>

#include "qvrdev/callbacks.h"
#include "unit/sdk/qvrdev/notification_chips.h"

using namespace gfast;

namespace {

void first(time_t /*boundary*/) {
  told().emplace_back("first");
}
void second(time_t /*boundary*/) {
  told().emplace_back("second");
}
void third(time_t /*boundary*/) {
  told().emplace_back("third");
}

std::vector<std::string> toldAtBoundary() {
  told().clear();
  for (const auto& slot : callbacks().periodicCounterEventCB) {
    slot.notify(time_t{0});
  }
  return told();
}

using testing::ElementsAre;
using testing::IsEmpty;

TEST(QuarterHourRegistration, TakesTheFirstFreeSlot) {
  EXPECT_EQ(QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, first), 0);
  EXPECT_EQ(QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, second), 1);
  EXPECT_THAT(toldAtBoundary(), ElementsAre("first", "second"));
}

TEST(QuarterHourRegistration, RefusesAThirdCallback) {
  QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, first);
  QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, second);
  EXPECT_EQ(QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, third), -1);
  EXPECT_THAT(toldAtBoundary(), ElementsAre("first", "second"));
}

TEST(QuarterHourRegistration, NullCallbackFreesItsSlot) {
  QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, first);
  QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, second);
  EXPECT_EQ(QVR_register15minCounterEventCB(1, nullptr), 0);
  EXPECT_THAT(toldAtBoundary(), ElementsAre("first"));
  EXPECT_EQ(QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, third), 1);
  EXPECT_EQ(QVR_register15minCounterEventCB(0, nullptr), 0);
  EXPECT_THAT(toldAtBoundary(), ElementsAre("third"));
}

TEST(QuarterHourRegistration, HandleReplacesTheCallbackOfItsSlot) {
  QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, first);
  EXPECT_EQ(QVR_register15minCounterEventCB(0, second), 0);
  EXPECT_EQ(QVR_register15minCounterEventCB(1, third), 0);
  EXPECT_THAT(toldAtBoundary(), ElementsAre("second", "third"));
}

TEST(QuarterHourRegistration, UnknownHandleChangesNothing) {
  QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, first);
  for (const int handle : {2, 3, -2, 1000000, -1000000}) {
    EXPECT_EQ(QVR_register15minCounterEventCB(handle, second), 0);
  }
  EXPECT_THAT(toldAtBoundary(), ElementsAre("first"));
}

TEST(QuarterHourRegistration, NullCallbackWithoutHandleReturnsAFreeSlotAndTakesNone) {
  EXPECT_EQ(QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, nullptr), 0);
  EXPECT_EQ(QVR_register15minCounterEventCB(QVR_K_NULL_HANDLE, nullptr), 0);
  EXPECT_THAT(toldAtBoundary(), IsEmpty());
}

void rebooted() {
  told().emplace_back("rebooted");
}
void rebootedAgain() {
  told().emplace_back("rebooted again");
}

TEST(Registration, KeepsTheLastCallback) {
  QVR_registerRebootEventCB(rebooted);
  QVR_registerRebootEventCB(rebootedAgain);
  callbacks().rebootCB.notify();
  EXPECT_THAT(told(), ElementsAre("rebooted again"));
}

TEST(Registration, NullCallbackClears) {
  QVR_registerRebootEventCB(rebooted);
  QVR_registerRebootEventCB(nullptr);
  callbacks().rebootCB.notify();
  EXPECT_THAT(told(), IsEmpty());
}

void logged(QVR_deviceId_t /*device*/, const char* /*text*/) {}
void loggedElsewhere(QVR_deviceId_t /*device*/, const char* /*text*/) {}

class LogRegistration : public testing::Test {
 protected:
  LogRegistration() {
    bench_.chips.chip(0).descriptor = 10;
    bench_.chips.chip(1).descriptor = 11;
  }
  std::vector<Record>& configurations(int device) { return bench_.chips.chip(device).logConfigurations; }

  Bench bench_;
};

TEST_F(LogRegistration, ConfiguresBothDevicesWithSixteenZeros) {
  EXPECT_EQ(QVR_registerLogMessageCB(0, logged), QVR_E_STATUS_OK);
  EXPECT_THAT(configurations(0), ElementsAre(Record(16, 0)));
  EXPECT_THAT(configurations(1), ElementsAre(Record(16, 0)));
}

TEST_F(LogRegistration, IgnoresTheDeviceId) {
  EXPECT_EQ(QVR_registerLogMessageCB(99, logged), QVR_E_STATUS_OK);
  EXPECT_THAT(configurations(1), ElementsAre(Record(16, 0)));
  EXPECT_EQ(QVR_registerLogMessageCB(-1, nullptr), QVR_E_STATUS_OK);
  EXPECT_EQ(callbacks().logMessageCB.load(), nullptr);
}

TEST_F(LogRegistration, SkipsADeviceThatCannotBeOpened) {
  bench_.chips.chip(0).descriptor = -1;
  EXPECT_EQ(QVR_registerLogMessageCB(0, logged), QVR_E_STATUS_OK);
  EXPECT_THAT(configurations(0), IsEmpty());
  EXPECT_THAT(configurations(1), ElementsAre(Record(16, 0)));
}

TEST_F(LogRegistration, IgnoresADeviceThatRefuses) {
  bench_.chips.refuseLogConfiguration = true;
  EXPECT_EQ(QVR_registerLogMessageCB(0, logged), QVR_E_STATUS_OK);
  EXPECT_EQ(callbacks().logMessageCB.load(), logged);
  EXPECT_EQ(configurations(1).size(), 1U);
}

TEST_F(LogRegistration, KeepsTheFirstCallback) {
  QVR_registerLogMessageCB(0, logged);
  EXPECT_EQ(QVR_registerLogMessageCB(0, loggedElsewhere), QVR_E_STATUS_OK);
  EXPECT_EQ(callbacks().logMessageCB.load(), logged);
  EXPECT_EQ(configurations(0).size(), 1U);
}

TEST_F(LogRegistration, NullCallbackEndsDeliveryWithoutARequest) {
  QVR_registerLogMessageCB(0, logged);
  EXPECT_EQ(QVR_registerLogMessageCB(0, nullptr), QVR_E_STATUS_OK);
  EXPECT_EQ(callbacks().logMessageCB.load(), nullptr);
  EXPECT_EQ(configurations(0).size(), 1U);
}

TEST_F(LogRegistration, ConfiguresDevicesAgainAfterANullCallback) {
  QVR_registerLogMessageCB(0, logged);
  QVR_registerLogMessageCB(0, nullptr);
  QVR_registerLogMessageCB(0, loggedElsewhere);
  EXPECT_EQ(callbacks().logMessageCB.load(), loggedElsewhere);
  EXPECT_EQ(configurations(0).size(), 2U);
}

TEST_F(LogRegistration, NullCallbackDoesNothingWhenNoneIsRegistered) {
  EXPECT_EQ(QVR_registerLogMessageCB(0, nullptr), QVR_E_STATUS_OK);
  EXPECT_THAT(configurations(0), IsEmpty());
}

}  // namespace
