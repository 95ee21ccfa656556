// The status of a line: which blocks are read in which state, which fields they fill, and which fields stay
// when a read fails.
#include "chip/device_information.h"
#include "support/assertions.h"
#include "support/chip_identity.h"
#include "support/counter_blocks.h"
#include "support/expected_requests.h"
#include "support/far_end_answers.h"
#include "support/lines.h"

using namespace gfast;

namespace {

// The caller's record before the call; fields that are not set keep these bytes.
QVR_lineStatus_t untouched() {
  QVR_lineStatus_t status;
  std::memset(&status, 0x55, sizeof status);
  return status;
}

constexpr int16_t kUntouched = 0x5555;

GFAST_FRAMER_RAW_COUNTERS_S framer() {
  GFAST_FRAMER_RAW_COUNTERS_S block{};
  block.snrMargin = 63;
  block.rmcSnrMargin = 71;
  block.dtaCurrentMds = 28;
  block.dtaMdsExngCnt = 4000000000;
  return block;
}

GFAST_FDU_RAW_COUNTERS_S fdu(uint32_t timeGapCorrection = 0) {
  GFAST_FDU_RAW_COUNTERS_S block{};
  block.UPBOKLE = 112;
  block.UPBOKLE_R = 113;
  block.ACTATPds = -34;
  block.ACTATPus = 99;
  block.TimeGapCorrection = timeGapCorrection;
  return block;
}

class LineStatus : public testing::Test {
 protected:
  void SetUp() override { enterBothLines(); }

  // Line 0's device is open, and its cached record has the line in this state.
  void lineIn(G9701_linkState_t state, const ChipIdentity& chip = {}) {
    ChipIdentity known = chip;
    known.setLinkState(state);
    driver_.expect(opens(0) + readsIdentity(0, known));
    ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
  }

  ExpectedRequests driver_{Script()};
  QVR_lineStatus_t status_ = untouched();
};

using InitialisationStatus = LineStatus;

TEST_F(LineStatus, ReadsOnlyTheFduBlockOfAnIdleLine) {
  lineIn(LS_IDLE);
  driver_.expect(readsFdu(0, fdu()));
  EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_STATUS_OK);
  EXPECT_EQ(status_.LINK_STATE, G9972_LINK_STATE_L3);
  EXPECT_EQ(status_.SNRMds, -512);
  EXPECT_EQ(status_.SNRMus, -512);
  EXPECT_EQ(status_.ACTATPus, -512);
  EXPECT_EQ(status_.UPBOKLE, 112);
  EXPECT_EQ(status_.UPBOKLE_R, 113);
  EXPECT_EQ(status_.ACTATPds, -34);
  EXPECT_EQ(status_.EWL, 256U);
  EXPECT_EQ(status_.SNRM_RMCds, kUntouched);
  EXPECT_EQ(status_.SNRM_RMCus, kUntouched);
  EXPECT_EQ(status_.DTAMds, 0x55);
  EXPECT_EQ(status_.DTAMdsEVTCNT, 0x55555555U);
}

TEST_F(LineStatus, DoesNotAskTheFarEndOutsideShowtime) {
  for (const G9701_linkState_t state :
       {LS_SELFTEST, LS_UNIT_FAIL, LS_SILENT, LS_INIT_HS, LS_INIT_TRAIN, LS_DEACTIVATING1, LS_DEACTIVATING2,
        LS_PRE_DEACTIVATING1_E, static_cast<G9701_linkState_t>(10)}) {
    SCOPED_TRACE(state);
    ChipIdentity chip;
    chip.setLinkState(state);
    if (state == LS_SELFTEST) {
      driver_.expect(opens(0));
    }
    driver_.expect(readsIdentity(0, chip) + readsFramer(0, framer()) + readsFdu(0, fdu()));
    ASSERT_EQ(QVR_getDeviceInfo(0, nullptr), QVR_E_STATUS_OK);
    status_ = untouched();
    EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_STATUS_OK);
    EXPECT_EQ(status_.LINK_STATE, G9972_LINK_STATE_L0N);
    EXPECT_EQ(status_.SNRMds, -512);
    EXPECT_EQ(status_.ACTATPus, -512);
    EXPECT_EQ(status_.SNRMus, 63);
    EXPECT_EQ(status_.SNRM_RMCus, 71);
    EXPECT_EQ(status_.SNRM_RMCds, kUntouched);
    EXPECT_EQ(status_.DTAMds, 28);
    EXPECT_EQ(status_.DTAMdsEVTCNT, 4000000000U);
  }
}

TEST_F(LineStatus, AsksTheFarEndInShowtime) {
  lineIn(LS_SHOWTIME);
  driver_.expect(readsFramer(0, framer()) + asksMeasurements(0) + readsFdu(0, fdu()));
  EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_STATUS_OK);
  EXPECT_EQ(status_.LINK_STATE, G9972_LINK_STATE_L0N);
  EXPECT_EQ(status_.SNRMds, kFarEndMargin);
  EXPECT_EQ(status_.SNRMus, 63);
  EXPECT_EQ(status_.ACTATPds, -34);
  EXPECT_EQ(status_.ACTATPus, kFarEndPower);
  EXPECT_EQ(status_.SNRM_RMCds, kFarEndRmcMargin);
  EXPECT_EQ(status_.SNRM_RMCus, 71);
}

TEST_F(LineStatus, IsTheSameAtTheSubscriberSide) {
  driver_.expect(opens(1) + readsIdentity(1, chipWithLine(LS_SHOWTIME)));
  ASSERT_EQ(QVR_getDeviceInfo(1, nullptr), QVR_E_STATUS_OK);
  driver_.expect(readsFramer(1, framer()) + asksMeasurements(1) + readsFdu(1, fdu()));
  EXPECT_EQ(QVR_getLineStatus(1, &status_), QVR_E_STATUS_OK);
  EXPECT_EQ(status_.SNRMds, kFarEndMargin);
  EXPECT_EQ(status_.SNRMus, 63);
}

TEST_F(LineStatus, KeepsTheLowBitsOfWords) {
  lineIn(LS_INIT_TRAIN);
  GFAST_FRAMER_RAW_COUNTERS_S wide = framer();
  wide.snrMargin = 0x1FFFE;
  wide.rmcSnrMargin = 0xFFFF8000;
  wide.dtaCurrentMds = 0x11C;
  GFAST_FDU_RAW_COUNTERS_S wideFdu = fdu();
  wideFdu.UPBOKLE = 0x10001;
  wideFdu.UPBOKLE_R = 0xFFFFFFFF;
  wideFdu.ACTATPds = 0x7FFF8001;
  driver_.expect(readsFramer(0, wide) + readsFdu(0, wideFdu));
  EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_STATUS_OK);
  EXPECT_EQ(status_.SNRMus, -2);
  EXPECT_EQ(status_.SNRM_RMCus, -32768);
  EXPECT_EQ(status_.DTAMds, 28);
  EXPECT_EQ(status_.UPBOKLE, 1);
  EXPECT_EQ(status_.UPBOKLE_R, 65535);
  EXPECT_EQ(status_.ACTATPds, -32767);
}

TEST_F(LineStatus, ComputesTheWireLengthInUnsignedArithmetic) {
  lineIn(LS_IDLE);
  struct Length {
    uint32_t correction;
    uint32_t length;
  };
  // A correction of 544 gives length 0. One more wraps below zero, and so does a negative correction.
  for (const Length& expected : {Length{0, 256}, Length{100, 209}, Length{544, 0}, Length{545, 4194303},
                                 Length{0xFFFFFFFF, 257}, Length{0x80000000, 2097408}}) {
    driver_.expect(readsFdu(0, fdu(expected.correction)));
    EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_STATUS_OK);
    EXPECT_EQ(status_.EWL, expected.length) << expected.correction;
  }
}

TEST_F(LineStatus, KeepsPresetsOfBlocksThatCannotBeRead) {
  lineIn(LS_SHOWTIME);
  driver_.expect(readsFramer(0, framer()).fails(EIO) + asksMeasurements(0).fails(ETIMEDOUT) +
                 readsFdu(0, fdu()));
  EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_STATUS_OK);  // the result of the last read
  EXPECT_EQ(status_.SNRMds, -512);
  EXPECT_EQ(status_.SNRMus, -512);
  EXPECT_EQ(status_.ACTATPus, -512);
  EXPECT_EQ(status_.SNRM_RMCds, kUntouched);
  EXPECT_EQ(status_.SNRM_RMCus, kUntouched);
  EXPECT_EQ(status_.DTAMds, 0x55);
  EXPECT_EQ(status_.ACTATPds, -34);
}

TEST_F(LineStatus, FailsWithoutTheFduBlockButComputesTheWireLength) {
  lineIn(LS_SHOWTIME);
  driver_.expect(readsFramer(0, framer()) + asksMeasurements(0) + reads(0, 0xE2040000, Bytes(40)).fails(EIO));
  EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(status_.SNRMds, kFarEndMargin);
  EXPECT_EQ(status_.SNRMus, 63);
  EXPECT_EQ(status_.UPBOKLE, 0x5555);
  EXPECT_EQ(status_.UPBOKLE_R, 0x5555);
  EXPECT_EQ(status_.ACTATPds, kUntouched);
  EXPECT_EQ(status_.EWL, 256U);
}

TEST_F(LineStatus, TakesTheLastInitialisationFromTheCachedRecord) {
  ChipIdentity chip;
  chip.setWord(DEV_INF_INIT_FAILURE_CAUSE, E_INITSFCAUSE_COMM_PROBLEM);
  chip.setWord(DEV_INF_LAST_SIGNAL, 0x00070005);
  lineIn(LS_IDLE, chip);
  driver_.expect(readsFdu(0, fdu()));
  EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_STATUS_OK);
  EXPECT_EQ(status_.INITSFCAUSE, E_INITSFCAUSE_COMM_PROBLEM);
  EXPECT_EQ(status_.INITLASTSIGNALds, 5);
  EXPECT_EQ(status_.INITLASTSIGNALus, 7);
}

TEST_F(LineStatus, FailsWhenTheDeviceCannotBeOpened) {
  driver_.expect((opens(0).fails(ENOENT)).times(2));
  EXPECT_EQ(QVR_getLineStatus(0, &status_), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(status_.LINK_STATE, G9972_LINK_STATE_L0N);
  EXPECT_EQ(status_.SNRMus, -512);
}

TEST_F(LineStatus, RefusesALineWithoutADevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_EQ(QVR_getLineStatus(1, &status_), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(std::memcmp(&status_, "UUUUUUUUUUUUUUUU", 16), 0);
}

TEST_F(LineStatus, AssertsThatTheLineIsValid) {
  EXPECT_ASSERTION(QVR_getLineStatus(2, &status_), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

TEST_F(InitialisationStatus, ReadsTheDeviceRecordAgain) {
  lineIn(LS_IDLE);
  ChipIdentity chip;
  chip.setWord(DEV_INF_INIT_FAILURE_CAUSE, 4000000000);
  chip.setWord(DEV_INF_LAST_SIGNAL, 0x00FF00FE);
  driver_.expect(readsIdentity(0, chip));
  G9972_initSuccessFailureCause_t cause = 1;
  G9972_initLastSignal_t ds = 1;
  G9972_initLastSignal_t us = 1;
  EXPECT_EQ(QVR_getLineStatusInitialization(0, &cause, &ds, &us), QVR_E_STATUS_OK);
  EXPECT_EQ(cause, 4000000000U);
  EXPECT_EQ(ds, 0xFE);
  EXPECT_EQ(us, 0xFF);
}

TEST_F(InitialisationStatus, KeepsTheOutputsWhenAReadFails) {
  const Script identity = readsIdentity(0, {});
  driver_.expect(opens(0));
  for (size_t position = 0; position < identity.size(); position++) {
    driver_.expect(identity.failingAt(position, EIO));
    G9972_initSuccessFailureCause_t cause = 0xAA;
    G9972_initLastSignal_t ds = 0xAB;
    G9972_initLastSignal_t us = 0xAC;
    EXPECT_EQ(QVR_getLineStatusInitialization(0, &cause, &ds, &us), QVR_E_MEMREAD_ERROR);
    EXPECT_EQ(cause, 0xAAU);
    EXPECT_EQ(ds, 0xAB);
    EXPECT_EQ(us, 0xAC);
    driver_.verify();
  }
}

TEST_F(InitialisationStatus, IsRefusedAtTheSubscriberSideAndWithoutADevice) {
  G9972_initSuccessFailureCause_t cause = 0;
  G9972_initLastSignal_t ds = 0;
  G9972_initLastSignal_t us = 0;
  EXPECT_EQ(QVR_getLineStatusInitialization(1, &cause, &ds, &us), QVR_E_NOT_CURRENTLY_SUPPORTED);
  addLine(1, QVR_K_DEVICE_NULL, 0, TRUE);
  EXPECT_EQ(QVR_getLineStatusInitialization(1, &cause, &ds, &us), QVR_E_NO_DEVICE_FOR_LINE);
}

}  // namespace
