// Whether a line is up, and the writes that take it down or let it train.
#include "chip/registers.h"
#include "qvrdev/device_table.h"
#include "support/assertions.h"
#include "support/devices.h"
#include "support/lines.h"
#include "support/trace_log.h"

using namespace gfast;

namespace {

using testing::ElementsAre;

constexpr uint32_t kReinit = 0xE9200000;
constexpr uint32_t kProvision = 0xE9300000;

Script readsState(QVR_deviceId_t device, G9701_linkState_t state) {
  return readsIdentity(device, chipWithLine(state));
}

// Both lines are in the table and both devices open.
class LineControl : public testing::Test {
 protected:
  void SetUp() override {
    enterBothLines();
    openDevice(driver_, 0);
    openDevice(driver_, 1);
  }

  ExpectedRequests driver_{Script()};
};

using ResetLine = LineControl;
using ResetLines = LineControl;
using ActivateLine = LineControl;
using IsLineUp = LineControl;

TEST_F(IsLineUp, IsTrueOnlyInShowtime) {
  for (uint32_t state = LS_SELFTEST; state <= LS_PRE_DEACTIVATING1_E + 1U; state++) {
    driver_.expect(readsState(1, static_cast<G9701_linkState_t>(state)));
    EXPECT_EQ(QVR_isLineUp(1), state == LS_SHOWTIME ? TRUE : FALSE) << state;
  }
}

TEST_F(IsLineUp, AsksTheChipEveryTime) {
  driver_.expect(readsState(0, LS_SHOWTIME) + readsState(0, LS_IDLE));
  EXPECT_EQ(QVR_isLineUp(0), TRUE);
  EXPECT_EQ(QVR_isLineUp(0), FALSE);
}

TEST_F(IsLineUp, WarnsAndIsFalseWhenTheDeviceDoesNotAnswer) {
  const Script script = readsState(1, LS_SHOWTIME);
  for (size_t position = 0; position < script.size(); position++) {
    const TraceLog trace;
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_EQ(QVR_isLineUp(1), FALSE);
    EXPECT_THAT(trace.lines(),
                ElementsAre(warns("QVR_isLineUp", "Failed getting device info for device \\(1\\)\n")));
    driver_.verify();
  }
}

TEST_F(IsLineUp, AssertsOnAnUnknownLine) {
  EXPECT_ASSERTION(QVR_isLineUp(2), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  EXPECT_ASSERTION(QVR_isLineUp(-1), asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
}

TEST_F(ResetLine, WritesTheReinitWordInShowtime) {
  driver_.expect(readsState(1, LS_SHOWTIME) + writes(1, kReinit, {0, 0, 0, 0}));
  EXPECT_EQ(QVR_resetLine(1), QVR_E_STATUS_OK);
}

TEST_F(ResetLine, AddressDependsOnTheLineIndex) {
  EXPECT_EQ(VIRT_ADDR_REINIT(0), 0xE9200000U);
  EXPECT_EQ(VIRT_ADDR_REINIT(3), 0xE9230000U);
  EXPECT_EQ(VIRT_ADDR_LINKS_PROVISION(0), 0xE9300000U);
  EXPECT_EQ(VIRT_ADDR_LINKS_PROVISION(3), 0xE9330000U);
}

TEST_F(ResetLine, WritesNothingOutsideShowtime) {
  for (const auto state : {LS_SELFTEST, LS_IDLE, LS_INIT_TRAIN, LS_DEACTIVATING1, LS_PRE_DEACTIVATING1_E}) {
    driver_.expect(readsState(0, state));
    EXPECT_EQ(QVR_resetLine(0), QVR_E_STATUS_OK);
    driver_.verify();
  }
}

TEST_F(ResetLine, ReturnsTheCodeOfEachFailure) {
  const Script script = readsState(0, LS_SHOWTIME) + writesWord(0, kReinit, 0);
  for (size_t position = 0; position < script.size(); position++) {
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_EQ(QVR_resetLine(0), position < 3 ? QVR_E_MEMREAD_ERROR : QVR_E_MEMWRITE_ERROR);
    driver_.verify();
  }
}

TEST(LineControlWithoutDevice, ReturnsDeviceNotExists) {
  enterBothLines();
  ExpectedRequests driver(opens(1).fails(ENOENT).times(4));
  EXPECT_EQ(QVR_resetLine(1), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_activateLine(1, TRUE), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_activateLine(1, FALSE), QVR_E_DEVICE_NOT_EXISTS);
}

TEST_F(ResetLines, MakesNoRequestWithoutDevices) {
  EXPECT_EQ(QVR_resetLines(), QVR_E_STATUS_OK);
}

// The devices have answered, so they count.
void findBothDevices(ExpectedRequests& driver) {
  driver.expect(readsState(0, LS_SHOWTIME) + readsState(1, LS_SHOWTIME));
  ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  ASSERT_EQ(QVR_getDeviceInfo(1, nullptr), QVR_E_STATUS_OK);
}

TEST_F(ResetLines, ResetsLinesInShowtime) {
  findBothDevices(driver_);
  driver_.expect(readsState(0, LS_SHOWTIME) + writesWord(0, kReinit, 0) + readsState(1, LS_INIT_TRAIN));
  EXPECT_EQ(QVR_resetLines(), QVR_E_STATUS_OK);
}

TEST_F(ResetLines, ResetsOnlyLinesOfDevicesThatWereFound) {
  driver_.expect(readsState(0, LS_IDLE));
  ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  driver_.expect(readsState(0, LS_SHOWTIME) + writesWord(0, kReinit, 0));
  EXPECT_EQ(QVR_resetLines(), QVR_E_STATUS_OK);
}

TEST_F(ResetLines, GoesOnAfterAFailureAndReturnsTheLastCode) {
  findBothDevices(driver_);
  driver_.expect(readsState(0, LS_SHOWTIME).failingAt(1, EIO) + readsState(1, LS_SHOWTIME) +
                 writesWord(1, kReinit, 0));
  EXPECT_EQ(QVR_resetLines(), QVR_E_MEMREAD_ERROR);
  driver_.expect(readsState(0, LS_SHOWTIME).failingAt(1, EIO) + readsState(1, LS_SHOWTIME) +
                 writesWord(1, kReinit, 0).fails(EIO));
  EXPECT_EQ(QVR_resetLines(), QVR_E_MEMWRITE_ERROR);
}

TEST_F(ResetLines, ResetsEachLineOnceWhenDevicesAreCountedTwice) {
  findBothDevices(driver_);
  driver_.expect(closes(0) + closes(1));
  clearDeviceTable();
  openDevice(driver_, 0);
  openDevice(driver_, 1);
  findBothDevices(driver_);
  ASSERT_EQ(QVR_numberOfDevices(), 4U);
  driver_.expect(readsState(0, LS_IDLE) + readsState(1, LS_IDLE));
  EXPECT_EQ(QVR_resetLines(), QVR_E_STATUS_OK);
}

TEST_F(ResetLine, AssertsOnAnUnknownLine) {
  EXPECT_ASSERTION(QVR_resetLine(2), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  EXPECT_ASSERTION(QVR_activateLine(-1, TRUE), asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
}

TEST_F(ActivateLine, ProvisionsWithOneWrite) {
  driver_.expect(writes(0, kProvision, {1, 0, 0, 0}));
  EXPECT_EQ(QVR_activateLine(0, TRUE), QVR_E_STATUS_OK);
}

TEST_F(ActivateLine, DeactivatingAlsoDropsTheRunningLink) {
  driver_.expect(writes(1, kProvision, {0, 0, 0, 0}) + writes(1, kReinit, {0, 0, 0, 0}));
  EXPECT_EQ(QVR_activateLine(1, FALSE), QVR_E_STATUS_OK);
}

TEST_F(ActivateLine, WritesAtTheLinesIndexOnItsDevice) {
  addLine(0, 1, 3, TRUE);
  driver_.expect(writesWord(1, 0xE9330000, 1) + writesWord(1, 0xE9330000, 0) + writesWord(1, 0xE9230000, 0));
  EXPECT_EQ(QVR_activateLine(0, TRUE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_activateLine(0, FALSE), QVR_E_STATUS_OK);
}

TEST_F(ActivateLine, DeactivatesForAnyValueButTrue) {
  driver_.expect(writes(1, kProvision, {0, 0, 0, 0}) + writes(1, kReinit, {0, 0, 0, 0}));
  EXPECT_EQ(QVR_activateLine(1, 2), QVR_E_STATUS_OK);
}

TEST_F(ActivateLine, ReturnsTheCodeOfTheLastWrite) {
  driver_.expect(writesWord(0, kProvision, 0).fails(EIO) + writesWord(0, kReinit, 0) +
                 writesWord(0, kProvision, 0) + writesWord(0, kReinit, 0).fails(EIO) +
                 writesWord(0, kProvision, 1).fails(EIO));
  EXPECT_EQ(QVR_activateLine(0, FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_activateLine(0, FALSE), QVR_E_MEMWRITE_ERROR);
  EXPECT_EQ(QVR_activateLine(0, TRUE), QVR_E_MEMWRITE_ERROR);
}

}  // namespace
