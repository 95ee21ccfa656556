// The processed subcarriers of a line.
#include "chip/tones.h"
#include "qvrline/tone_memory.h"
#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

using PhyParams = ToneTest;

TEST_F(PhyParams, AreReadAgainAndStoredInTheLine) {
  QVR_linePhyParams_t params{};
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    driver_.expect(reads(line, 0xE2400000, framing(43, 1929)));
    EXPECT_EQ(QVR_getLinePhyParams(line, &params), QVR_E_STATUS_OK);
    EXPECT_EQ(params.firstTone, 43U);
    EXPECT_EQ(params.numProcessedTones, 1929U);
    EXPECT_EQ(QVR_lineDescriptorForLine(line).phyParams.numProcessedTones, 1929U);
  }
}

TEST_F(PhyParams, KeepTheCountersOfTheLine) {
  QVR_intervalCounterDB_t counters{};
  counters.prev15minSnapshot.ne.ES = 5;
  storeCounters(0, counters);
  QVR_linePhyParams_t params{};
  driver_.expect(reads(0, 0xE2400000, framing(43, 1929)));
  EXPECT_EQ(QVR_getLinePhyParams(0, &params), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_lineDescriptorForLine(0).counters.prev15minSnapshot.ne.ES, 5U);
}

TEST_F(PhyParams, AreWhatTheChipSays) {
  QVR_linePhyParams_t params{};
  driver_.expect(reads(0, 0xE2400000, framing(2040, 4000000000)));
  EXPECT_EQ(QVR_getLinePhyParams(0, &params), QVR_E_STATUS_OK);
  EXPECT_EQ(params.firstTone, 2040U);
  EXPECT_EQ(params.numProcessedTones, 4000000000U);
}

TEST_F(PhyParams, AreLimitedToTheGridWhereTonesAreRead) {
  struct Case {
    QVR_linePhyParams_t said;
    uint32_t counted;
  };
  const Case cases[] = {
      {{0, 2048}, 2048},        {{0, 2049}, 2048}, {{43, 2005}, 2005},   {{43, 2006}, 2005},
      {{2047, 1}, 1},           {{2047, 9}, 1},    {{2048, 1}, 0},       {{0xFFFFFFFF, 0xFFFFFFFF}, 0},
      {{43, 0xFFFFFFFF}, 2005}, {{43, 0}, 0},      {{0x80000000, 8}, 0},
  };
  for (const Case& each : cases) {
    LineInShowtime line{};
    driver_.expect(findsLineUp(0) +
                   reads(0, 0xE2400000, framing(each.said.firstTone, each.said.numProcessedTones)));
    EXPECT_EQ(findLineInShowtime(0, &line), QVR_E_STATUS_OK);
    EXPECT_EQ(line.tones.firstTone, each.said.firstTone);
    EXPECT_EQ(line.tones.numProcessedTones, each.counted) << each.said.firstTone;
  }
}

TEST_F(PhyParams, LeadToTheToneMemoryOfTheLinesIndexOnItsDevice) {
  addLine(0, 1, 3, TRUE);
  const LineInShowtime line{0, QVR_lineDescriptorForLine(0), {}};
  uint8_t bytes[4];
  driver_.expect(reads(1, 0xE5300000, Bytes(4)));
  EXPECT_EQ(readTones(line, LineEnd::kNear, VIRT_ADDR_TX_BLT, bytes, sizeof bytes), QVR_E_STATUS_OK);
}

TEST_F(PhyParams, FailAndFillNothingWhenTheReadFails) {
  QVR_linePhyParams_t params{1, 2};
  driver_.expect(reads(0, 0xE2400000, framing(43, 1929)).fails(EIO));
  EXPECT_EQ(QVR_getLinePhyParams(0, &params), QVR_E_MEMREAD_ERROR);
  EXPECT_EQ(params.firstTone, 1U);
  EXPECT_EQ(params.numProcessedTones, 2U);
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_EQ(QVR_getLinePhyParams(1, &params), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_ASSERTION(QVR_getLinePhyParams(2, &params),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

}  // namespace
