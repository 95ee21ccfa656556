// Finding the chips and reading what they say about themselves.
#include <chrono>

#include "chip/device_information.h"
#include "chip/registers.h"
#include "qvrdev/device_table.h"
#include "support/assertions.h"
#include "support/chip_identity.h"
#include "support/dictionaries.h"
#include "support/expected_requests.h"
#include "support/refused_threads.h"
#include "support/test_clock.h"

using namespace gfast;

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

// A quarter past, plus a minute: 840 seconds to the next quarter-hour boundary in every time zone.
constexpr time_t kMinutePastQuarter = 1700000100 + 60;
constexpr uint32_t kSecondsLeft = 840;

Script isFound(int device, const ChipIdentity& chip = {}) {
  return opens(device) + readsIdentity(device, chip);
}

Script isAbsent(int device) {
  return opens(device).fails(ENOENT);
}

// What a start asks: device 0 is read on its own first, then both in order.
Script startsWith(const ChipIdentity& first, const Script& second) {
  return isFound(0, first) + readsIdentity(0, first) + second;
}

class Discovery : public testing::Test {
 protected:
  Discovery() { testClock().setNow(kMinutePastQuarter); }

  std::vector<microseconds> sleeps() { return testClock().sleeps(); }

  ExpectedRequests driver_{Script()};
};

TEST_F(Discovery, FindsBothDevices) {
  driver_.expect(startsWith({}, isFound(1)));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_numberOfDevices(), 2U);
  EXPECT_EQ(QVR_numberOfLinesInDevice(), 1U);
  EXPECT_EQ(QVR_isDeviceActive(0), TRUE);
  EXPECT_EQ(QVR_isDeviceActive(1), TRUE);
}

TEST_F(Discovery, AsksNothingWhenStartedAgain) {
  driver_.expect(startsWith({}, isFound(1)));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_initDeviceModule(TRUE), QVR_E_STATUS_OK);
}

TEST_F(Discovery, StartsWithoutDevice1AndTriesToOpenItAtEveryRequest) {
  driver_.expect(startsWith({}, isAbsent(1)));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_numberOfDevices(), 1U);
  EXPECT_EQ(QVR_isDeviceActive(1), FALSE);
  EXPECT_EQ(openDescriptor(1), -1);
  driver_.expect(isAbsent(1) + isAbsent(1) + isFound(1));
  EXPECT_EQ(QVR_deviceHandle(1), -1);
  EXPECT_EQ(QVR_getDeviceInfo(1, nullptr), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_getDeviceInfo(1, nullptr), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_numberOfDevices(), 2U);
}

TEST_F(Discovery, LeavesDevice1InactiveWhenItDoesNotAnswer) {
  driver_.expect(startsWith({}, opens(1) + readsIdentity(1, {}).failingAt(2, EIO)));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_numberOfDevices(), 1U);
  EXPECT_EQ(QVR_isDeviceActive(1), FALSE);
}

TEST_F(Discovery, FailsWithoutDevice0) {
  driver_.expect(isAbsent(0));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_ERROR);
  EXPECT_EQ(QVR_numberOfDevices(), 0U);
  EXPECT_TRUE(sleeps().empty());
}

TEST_F(Discovery, ClosesASilentDevice0BeforeTheNextStart) {
  driver_.expect(opens(0) + readsIdentity(0, {}).failingAt(0, EIO));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_ERROR);
  driver_.expect(closes(0) + startsWith({}, isAbsent(1)));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
}

TEST_F(Discovery, WaitsForDevice0WithOneTryASecond) {
  driver_.expect(isAbsent(0).times(3) + opens(0) + readsIdentity(0, {}).failingAt(1, EIO) +
                 readsIdentity(0, {}).times(2) + isAbsent(1));
  EXPECT_EQ(QVR_initDeviceModule(TRUE), QVR_E_STATUS_OK);
  EXPECT_EQ(sleeps(), std::vector<microseconds>(4, seconds(1)));
}

TEST_F(Discovery, FailsWhenItsThreadCannotBeCreated) {
  {
    const RefusedThreads refused;
    driver_.expect(startsWith({}, isAbsent(1)));
    EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_FAILED_CREATING_THREAD);
  }
  driver_.expect(closes(0) + startsWith({}, isAbsent(1)));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
}

TEST_F(Discovery, StartsCountingNowForALineThatIsNotIdle) {
  ChipIdentity up;
  up.setLinkState(LS_SHOWTIME);
  driver_.expect(startsWith(up, isFound(1)));
  EXPECT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(deviceRecord(0).counterCollectionInterval[0].startOfCollectionPeriodInInterval, kSecondsLeft);
  EXPECT_EQ(deviceRecord(0).counterCollectionInterval[0].endOfCollectionPeriodInInterval, 0U);
  EXPECT_EQ(deviceRecord(1).counterCollectionInterval[0].startOfCollectionPeriodInInterval, 0U);
}

TEST_F(Discovery, RediscoveryReadsBothDevicesAgain) {
  driver_.expect(startsWith({}, isFound(1)));
  ASSERT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  ChipIdentity training;
  training.setLinkState(LS_INIT_TRAIN);
  driver_.expect(closes(0) + closes(1) + rediscovers() + isFound(0) + isFound(1, training));
  EXPECT_EQ(QVR_rediscoverDevices(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_numberOfDevices(), 2U);
  EXPECT_EQ(QVR_numberOfLinesInDevice(), 1U);
  EXPECT_EQ(deviceRecord(0).counterCollectionInterval[0].startOfCollectionPeriodInInterval, 0U);
  EXPECT_EQ(deviceRecord(1).counterCollectionInterval[0].startOfCollectionPeriodInInterval, kSecondsLeft);
}

TEST_F(Discovery, RediscoverySucceedsWithoutDevices) {
  driver_.expect(startsWith({}, isAbsent(1)));
  ASSERT_EQ(QVR_initDeviceModule(FALSE), QVR_E_STATUS_OK);
  driver_.expect(closes(0) + rediscovers() + isAbsent(0) + isAbsent(1));
  EXPECT_EQ(QVR_rediscoverDevices(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_numberOfDevices(), 0U);
  EXPECT_EQ(QVR_numberOfLinesInDevice(), 0U);
  EXPECT_EQ(QVR_isDeviceActive(0), FALSE);
  EXPECT_EQ(QVR_deviceInfoForDevice(0)->fwState, FW_UNDEFINED);
}

TEST_F(Discovery, LostDeviceIsInactiveAndKeepsTheRestOfItsRecord) {
  ChipIdentity chip;
  chip.setWord(DEV_INF_VERSION, 5);
  driver_.expect(isFound(0, chip));
  ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  driver_.expect(closes(0) + rediscovers() + isAbsent(0) + isAbsent(1));
  QVR_rediscoverDevices();
  const QVR_deviceInfo_t record = deviceRecord(0);
  EXPECT_EQ(record.deviceState, SS_INACTIVE_STATE);
  EXPECT_EQ(record.fwState, FW_UNDEFINED);
  EXPECT_EQ(record.devInfVersion, 5U);
}

}  // namespace
