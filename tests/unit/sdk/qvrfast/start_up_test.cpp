// The start of the whole library, in one call.
#include <gtest/gtest.h>
#include <qvr.h>

#include "qvrdev/callbacks.h"
#include "qvrfast/interval_history.h"
#include "support/chip_identity.h"
#include "support/dictionaries.h"
#include "support/expected_requests.h"
#include "support/local_time.h"
#include "support/performance_counters.h"
#include "support/test_clock.h"

using namespace gfast;

namespace {

class StartUp : public testing::Test {
 protected:
  StartUp() { testClock(); }

  // The start reads device 0 on its own first, then both.
  static Script findsDevices() {
    return opens(0) + readsIdentity(0, {}).times(2) + opens(1) + readsIdentity(1, {});
  }
  static Script readsLine(int device) {
    return reads(device, 0xE2400000, Bytes(72)) + reads(device, 0xF0000000, Bytes(156));
  }

  // Devices and lines are started.
  void startLines() {
    driver_.expect(findsDevices() + readsLine(0) + readsLine(1));
    ASSERT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
    driver_.verify();
  }

  void startAll() {
    driver_.expect(findsDevices() + readsLine(0) + readsLine(1) + startsParameters());
    ASSERT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
    driver_.verify();
  }

  ExpectedRequests driver_{Script()};
};

TEST_F(StartUp, StartsDevicesLinesAndParametersOnce) {
  driver_.expect(findsDevices() + readsLine(0) + readsLine(1) + startsParameters());
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_initLineModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_reInitFastModule(), QVR_E_STATUS_OK);
}

template <typename Ring>
void expectStarted(const Ring& ring) {
  EXPECT_EQ(ring.head, 0);
  EXPECT_EQ(ring.tail, 0);
  EXPECT_EQ(ring.currentIntervalNumber, 0);
}

TEST_F(StartUp, BeginsTheHistoryAnew) {
  for (const QVR_lineId_t line : {0, 1}) {
    const LockedHistory history(line);
    history->quarterHours.head = history->days.head = 3;
    history->quarterHours.tail = history->days.tail = 2;
    history->quarterHours.currentIntervalNumber = history->days.currentIntervalNumber = 1;
  }
  startAll();
  for (const QVR_lineId_t line : {0, 1}) {
    const LockedHistory history(line);
    expectStarted(history->quarterHours);
    expectStarted(history->days);
  }
}

TEST_F(StartUp, LetsQuarterHoursGoIntoTheHistory) {
  setZone("UTC0");
  startAll();
  driver_.expect(readsPm(0, 1) + readsPm(1, 1));
  for (const auto& slot : callbacks().periodicCounterEventCB) {
    slot.notify(at(10, 15));
  }
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(0), 2);
  EXPECT_EQ(QVR_numberOf15minHistoryIntervals(1), 2);
}

TEST_F(StartUp, LetsLinkFailuresBeTold) {
  static std::vector<QVR_lineId_t> told;
  QVR_registerlineFailuresCB([](QVR_lineId_t line, const QVR_lineFailures_t*) { told.push_back(line); });
  startAll();
  callbacks().linkFailureCB.notify(1, LF_REASON_LOSS_OF_RMC, time_t{0});
  EXPECT_EQ(told, std::vector<QVR_lineId_t>{1});
}

TEST_F(StartUp, FailsWithoutDevice0AndSucceedsLater) {
  driver_.expect(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_ERROR);
  driver_.expect(findsDevices() + readsLine(0) + readsLine(1) + startsParameters());
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
}

TEST_F(StartUp, SucceedsWithoutDevice1AndWithoutTheFramingOfALine) {
  driver_.expect(opens(0) + readsIdentity(0, {}).times(2) + opens(1).fails(ENOENT) +
                 readsLine(0).failingAt(0, EIO) + startsParameters());
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
}

TEST_F(StartUp, FailsWithoutADictionaryAndAsksForItOnce) {
  startLines();
  driver_.expect(startsParameters().failingAt(0, EIO));
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_MEMREAD_ERROR);
}

TEST_F(StartUp, ReadsDictionaryEntriesAgainAtTheNextStart) {
  startLines();
  driver_.expect(startsParameters().failingAt(1, EIO));
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_MEMREAD_ERROR);
  driver_.expect(readsEntries({{0, 4, 0}, {1, 4, 4}}) + reads(0, kArea, Bytes(8)));
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
}

TEST_F(StartUp, ReadsParametersAgainAtTheNextStart) {
  startLines();
  driver_.expect(startsParameters().failingAt(2, EIO));
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_MEMREAD_ERROR);
  driver_.expect(reads(0, kArea, Bytes(8)));
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
}

TEST(VersionIdent, IsAFixedText) {
  EXPECT_STREQ(QVR_versionIdent(), "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $");
}

}  // namespace
