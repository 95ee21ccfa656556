// The lines: which device carries them, and the writes that control them.
#include "seams.h"
#include "support/test_clock.h"

namespace {

constexpr uint32_t kFramerInitCounters = 0xE2400000;

ChipIdentity chipWithLine(G9701_linkState_t state) {
  ChipIdentity chip;
  chip.setLinkState(state);
  return chip;
}

// The library has started with two chips whose lines have no framing to tell yet.
class Lines : public testing::Test {
 protected:
  Lines() {
    testClock();
    const Script tellsNoFraming = reads(0, kFramerInitCounters, Bytes(72)).fails(EIO) +
                                  reads(1, kFramerInitCounters, Bytes(72)).fails(EIO);
    driver_.expect(opens(0) + readsIdentity(0, {}).times(2) + opens(1) + readsIdentity(1, {}) +
                   tellsNoFraming);
    EXPECT_EQ(QVR_initFastModule(FALSE), QVR_E_STATUS_OK);
    driver_.verify();
  }

  ExpectedRequests driver_{Script()};
};

using LineTable = Lines;
using ResetLine = Lines;
using ResetLines = Lines;
using ActivateLine = Lines;

TEST_F(LineTable, EachDeviceCarriesOneLine) {
  EXPECT_EQ(QVR_deviceIdforLine(0), 0);
  EXPECT_EQ(QVR_deviceIdforLine(1), 1);
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    EXPECT_EQ(QVR_int2log(QVR_log2int(line)), line);
  }
}

TEST(LineIds, OutOfRangeAreAssertions) {
  EXPECT_ASSERTION(QVR_deviceIdforLine(2), asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  EXPECT_ASSERTION(QVR_deviceIdforLine(-1), asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
}

TEST_F(ResetLine, InShowtimeWritesTheReinitWord) {
  driver_.expect(readsIdentity(1, chipWithLine(LS_SHOWTIME)) + writesWord(1, 0xE9200000, 0));
  EXPECT_EQ(QVR_resetLine(1), QVR_E_STATUS_OK);
}

TEST_F(ResetLine, OutsideShowtimeWritesNothing) {
  driver_.expect(readsIdentity(0, chipWithLine(LS_INIT_TRAIN)));
  EXPECT_EQ(QVR_resetLine(0), QVR_E_STATUS_OK);
}

TEST_F(ResetLine, AnswersItsFailures) {
  const Script script = readsIdentity(0, chipWithLine(LS_SHOWTIME)) + writesWord(0, 0xE9200000, 0);
  for (size_t position = 0; position < script.size(); position++) {
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_EQ(QVR_resetLine(0), position < 3 ? QVR_E_MEMREAD_ERROR : QVR_E_MEMWRITE_ERROR);
    driver_.verify();
  }
}

TEST_F(ResetLine, WithoutItsDeviceAnswersSo) {
  driver_.expect(closes(0) + closes(1) + rediscovers() + opens(0).fails(ENOENT) + opens(1).fails(ENOENT));
  QVR_rediscoverDevices();
  driver_.expect(opens(0).fails(ENOENT));
  EXPECT_EQ(QVR_resetLine(0), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_resetLines(), QVR_E_STATUS_OK);  // no device, no line
}

TEST_F(ResetLines, GoesOnBehindAFailureAndAnswersTheLast) {
  const ChipIdentity up = chipWithLine(LS_SHOWTIME);
  driver_.expect(readsIdentity(0, up).failingAt(1, EIO) + readsIdentity(1, up) +
                 writesWord(1, 0xE9200000, 0));
  EXPECT_EQ(QVR_resetLines(), QVR_E_MEMREAD_ERROR);
  driver_.expect(readsIdentity(0, up).failingAt(1, EIO) + readsIdentity(1, up) +
                 writesWord(1, 0xE9200000, 0).fails(EIO));
  EXPECT_EQ(QVR_resetLines(), QVR_E_MEMWRITE_ERROR);
}

TEST_F(ActivateLine, ProvisionsWithOneWrite) {
  driver_.expect(writes(0, 0xE9300000, {1, 0, 0, 0}));
  EXPECT_EQ(QVR_activateLine(0, TRUE), QVR_E_STATUS_OK);
}

TEST_F(ActivateLine, DeactivatingAlsoDropsTheRunningLink) {
  driver_.expect(writesWord(1, 0xE9300000, 0) + writesWord(1, 0xE9200000, 0));
  EXPECT_EQ(QVR_activateLine(1, FALSE), QVR_E_STATUS_OK);
}

TEST_F(ActivateLine, AnswersTheLastWrite) {
  driver_.expect(writesWord(0, 0xE9300000, 0).fails(EIO) + writesWord(0, 0xE9200000, 0) +
                 writesWord(0, 0xE9300000, 0) + writesWord(0, 0xE9200000, 0).fails(EIO) +
                 writesWord(0, 0xE9300000, 1).fails(EIO));
  EXPECT_EQ(QVR_activateLine(0, FALSE), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_activateLine(0, FALSE), QVR_E_MEMWRITE_ERROR);
  EXPECT_EQ(QVR_activateLine(0, TRUE), QVR_E_MEMWRITE_ERROR);
}

}  // namespace
