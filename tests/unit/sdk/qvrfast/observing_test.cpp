// A thread that only looks reads the same, and leaves nothing behind for another.
#include <thread>

#include "qvrlog/qvrlog.h"
#include "support/records.h"
#include "unit/sdk/qvrfast/history.h"

using namespace gfast;

namespace {

class Observing : public HistoryTest {
 protected:
  Observing() { QVR_observeOnly(TRUE); }
  ~Observing() override { QVR_observeOnly(FALSE); }
};

TEST_F(Observing, ReadsTheRunningQuarterHourWithoutKeepingIt) {
  testClock().setNow(at(10, 4));
  expectCounted(running(0, 5), 5);
  EXPECT_TRUE(isZero(QVR_lineDescriptorForLine(0).counters.curr15minSnapshot));
  const LockedHistory history(0);
  EXPECT_TRUE(isZero(history->quarterHours.running()));
}

TEST_F(Observing, ReadsTheRunningDayWithoutKeepingIt) {
  endQuarterHour(at(10, 15), 10);
  testClock().setNow(at(10, 20));
  expect(readsPm(0, 12));
  QVR_intervalLinkCounterDB_t day{};
  ASSERT_EQ(QVR_getCurr24hrCounters(0, &day), QVR_E_STATUS_OK);
  expectCounted(day, 12);
  EXPECT_EQ(day.collectionTime, 900U + 300U);
  const LockedHistory history(0);
  EXPECT_TRUE(isZero(history->days.running()));
}

// The first query after such a jump tells all of it, the next ones what fits into the time.
TEST_F(Observing, LeavesUnavailableSecondsForTheFirstQuery) {
  testClock().setNow(at(10, 0) + 2);
  const QVR_intervalLinkCounterDB_t looked = running(0, 5);
  QVR_observeOnly(FALSE);
  const QVR_intervalLinkCounterDB_t asked = running(0, 5);
  EXPECT_GT(looked.neCounters.linePerformanceCounters.UAS, 2U);
  EXPECT_EQ(asked.neCounters.linePerformanceCounters.UAS, looked.neCounters.linePerformanceCounters.UAS);
}

TEST_F(Observing, KeepsTheRecordOfADeviceAsItWasLastRead) {
  expect(readsIdentity(0, chipWithLine(LS_IDLE)));
  QVR_deviceInfo_t info{};
  ASSERT_EQ(QVR_getDeviceInfo(0, &info), QVR_E_STATUS_OK);
  EXPECT_EQ(info.lineState[0], LS_IDLE);
  EXPECT_EQ(deviceRecord(0).lineState[0], LS_SHOWTIME);
  EXPECT_EQ(QVR_numberOfDevices(), 2U);
}

TEST_F(Observing, WritesNothingIntoTheTraceLog) {
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  testing::internal::CaptureStdout();
  testClock().setNow(at(10, 4));
  running(0, 5);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  QVR_observeOnly(FALSE);
  testing::internal::CaptureStdout();
  running(0, 6);
  EXPECT_NE(testing::internal::GetCapturedStdout(), "");
}

TEST_F(Observing, IsAThreadsOwnMatter) {
  expect(readsPm(0, 5));
  std::thread([] {
    QVR_intervalLinkCounterDB_t interval{};
    EXPECT_EQ(QVR_getCurr15minCounters(0, &interval), QVR_E_STATUS_OK);
  }).join();
  const LockedHistory history(0);
  expectCounted(history->quarterHours.running(), 5);
}

TEST(ObservingWithoutDevices, OpensNone) {
  ExpectedRequests driver{Script()};
  QVR_observeOnly(TRUE);
  EXPECT_EQ(QVR_deviceHandle(0), -1);
  EXPECT_EQ(QVR_getDeviceInfo(1, nullptr), QVR_E_DEVICE_NOT_EXISTS);
}

}  // namespace
