// The counter blocks, read as the host reads them.
#include "unit/virtual-board/measured/counters.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace gfast;
using namespace gfast::board;

namespace {

const struct {
  const char* name;
  uint32_t address;
  uint16_t length;
} kBlocks[] = {{"framer init", kFramerInit, 72},
               {"FDU init", kFduInit, 52},
               {"framer raw", kFramerRaw, 340},
               {"FDU raw", kFduRaw, 40},
               {"derived", kDerived, 216},
               {"ETR database", kEtrDb, 68},
               {"PM", kPm, 156}};

// Words of the framer's block that only a restart sets back.
constexpr size_t kFramerCounters[] = {2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                      16, 17, 18, 19, 20, 28, 29, 30, 31, 32, 33, 35, 36, 37,
                                      38, 41, 42, 43, 44, 50, 51, 52, 53, 55, 56, 77, 78};

uint32_t wordOf(const void* block, size_t index) {
  uint32_t word = 0;
  std::memcpy(&word, static_cast<const uint8_t*>(block) + 4 * index, sizeof word);
  return word;
}

// Counters never fall from one read to the next. At this rate nothing wraps within a test of some minutes.
void expectNoneFell(Bench& bench, int device, GFAST_FRAMER_RAW_COUNTERS_S& framerBefore,
                    G9972_PM_COUNTERS_S& pmBefore) {
  const auto framerNow = framer(bench, device);
  for (const size_t i : kFramerCounters) {
    ASSERT_GE(wordOf(&framerNow, i), wordOf(&framerBefore, i)) << "word " << i << " at " << bench.now;
  }
  const auto pmNow = pm(bench, device);
  for (size_t i = 0; i < sizeof pmNow / 4; i++) {
    ASSERT_GE(wordOf(&pmNow, i), wordOf(&pmBefore, i)) << "PM word " << i << " at " << bench.now;
  }
  framerBefore = framerNow;
  pmBefore = pmNow;
}

void expectNothingLost(Bench& bench, int sender) {
  const auto sent = framer(bench, sender);
  const auto received = framer(bench, 1 - sender);
  ASSERT_EQ(received.numOfGoodRxDTUs, received.numOfRxDTUs - received.numOfBadRxDTUs);
  // Two frames are on their way.
  const uint64_t bytesPerFrame = uint64_t{sender == 0 ? 27U : 6U} * sent.TxBD + sent.TxBDR;
  ASSERT_LE(sent.numOfTxDTUs - received.numOfRxDTUs, 2 * bytesPerFrame / 960 + 1);
  ASSERT_GE(sent.numOfTxDTUs, received.numOfRxDTUs);
  ASSERT_EQ(sent.numOfTxFrames, received.numOfRxFrames + 2);
  ASSERT_LE(sent.numOfRetTxDTUs, received.numOfBadRxDTUs);
  ASSERT_EQ(received.numOfBadRxDTUs - received.rtxuc, sent.numOfRetTxDTUs);
}

}  // namespace

TEST(Counters, BlocksHoldTheirRevisionAndLength) {
  Bench bench(kShowtime);
  for (const auto& block : kBlocks) {
    if (block.address == kEtrDb || block.address == kPm) {
      continue;
    }
    EXPECT_EQ(bench.word(0, block.address), 1U) << block.name;
    EXPECT_EQ(bench.word(0, block.address + 4), block.length) << block.name;
  }
}

TEST(Counters, AreZeroBeforeTheFirstTraining) {
  Bench bench("[[device]]\nline = \"idle\"");
  bench.wait(30);
  const auto raw = framer(bench, 0);
  for (size_t i = 2; i < sizeof raw / 4; i++) {
    EXPECT_EQ(wordOf(&raw, i), 0U) << "word " << i;
  }
  EXPECT_EQ(derived(bench, 0).fullInits, 0U);
  EXPECT_EQ(derived(bench, 0).unavailableSeconds, 30U);
  EXPECT_EQ(bench.read(0, kEtrDb, 4), "00 00 00 00");
}

TEST(Counters, TheBootLoaderHasNone) {
  Bench bench("[[device]]\nboot = \"b1\"");
  for (const auto& block : kBlocks) {
    const auto bytes = fromHex(bench.read(0, block.address, block.length));
    EXPECT_EQ(bytes, std::vector<uint8_t>(block.length)) << block.name;
  }
}

TEST(Counters, GrowWithTheTimeInShowtime) {
  Bench bench(kShowtime);
  bench.wait(3);
  EXPECT_EQ(framer(bench, 0).numOfTxFrames, 4000U);
  EXPECT_EQ(framer(bench, 1).numOfRxFrames, 3998U);
  bench.wait(297);
  EXPECT_EQ(framer(bench, 0).numOfTxFrames, 400000U);
  EXPECT_EQ(framer(bench, 0).EoCTxBytes, 150000U);
  EXPECT_EQ(framer(bench, 1).numOfGoodRMCs, 399998U);
}

TEST(Counters, WhatOneEndSendsTheOtherReceives) {
  Bench bench(kShowtime);
  for (int i = 0; i < 2000; i++) {
    bench.wait(0.0371);
    for (const int sender : {0, 1}) {
      expectNothingLost(bench, sender);
      ASSERT_FALSE(HasFatalFailure());
    }
  }
  EXPECT_GT(framer(bench, 1).numOfBadRxDTUs, 0U);
}

TEST(Counters, AddUpWithinABlock) {
  Bench bench(kShowtime);
  bench.wait(123.4);
  const auto raw = framer(bench, 0);
  EXPECT_EQ(raw.numOfTxDTUs, raw.numOfDataTxDTUs + raw.numOfDummyTxDTUs + raw.numOfRetTxDTUs);
  EXPECT_EQ(raw.numOfGoodRxDTUs, raw.numOfOutRxDTUs + raw.numOfGoodRxDummyDTUs);
  EXPECT_EQ(raw.TxBytes, raw.TxDataBytes + raw.TxIdleDataBytes + raw.EoCTxBytes);
  EXPECT_EQ(raw.RxBytes, raw.RxDataBytes + raw.RxIdleDataBytes + raw.EoCRxBytes);
  EXPECT_EQ(raw.numOfTxRScw, 4 * raw.numOfTxDTUs);
  EXPECT_EQ(raw.numOfRxFrames, raw.numOfGoodRMCs + raw.numOfBadRMCs);
  EXPECT_GT(raw.numOfDataTxDTUs, 0U);
  EXPECT_GT(raw.numOfDummyTxDTUs, 0U);
}

TEST(Counters, ExchangesAreCountedAlikeAtBothEnds) {
  Bench bench(kShowtime);
  bench.wait(7200);
  for (const int device : {0, 1}) {
    const auto near = framer(bench, device);
    const auto far = framer(bench, 1 - device);
    EXPECT_EQ(near.bitswapTxExngCnt, far.bitswapRxExngCnt);
    EXPECT_EQ(near.sraTxExngCnt, far.sraRxExngCnt);
    EXPECT_EQ(near.fraTxExngCnt, far.fraRxExngCnt);
    EXPECT_EQ(near.rpaTxExngCnt, far.rpaRxExngCnt);
    EXPECT_GT(near.bitswapTxExngCnt, 200U);
    EXPECT_EQ(near.sraTxExngCnt, 24U);
    EXPECT_EQ(near.rpaTxExngCnt, 8U);
  }
}

TEST(Counters, BlocksAgreeWithEachOtherAndWithTheOtherEnd) {
  Bench bench(withShowtime("[[loop_event]]\nat_s = 100\nerrors = 0.2\nfor_s = 7"));
  bench.wait(3600);
  for (const int device : {0, 1}) {
    const auto raw = framer(bench, device);
    const auto cp = derived(bench, device);
    const auto near = pm(bench, device).ne;
    const auto far = pm(bench, 1 - device).fe;
    const auto told = farCounters(bench, 1 - device);
    EXPECT_GE(near.ES, 7U);
    EXPECT_EQ(near.SES, 7U);
    EXPECT_EQ(near.ES, cp.erroredSeconds);
    EXPECT_EQ(near.SES, cp.severlyErroredSeconds);
    EXPECT_EQ(near.CV, cp.crcAnomaly);
    EXPECT_EQ(near.EFB, cp.errorFreeBits);
    EXPECT_EQ(near.FULL_INITS, cp.fullInits);
    EXPECT_EQ(near.RTXUC, raw.rtxuc);
    EXPECT_EQ(near.RTXTX, raw.numOfRetTxDTUs);
    EXPECT_EQ(near.BSW, raw.bitswapRxExngCnt);
    EXPECT_EQ(near.ES, far.ES);
    EXPECT_EQ(near.RTXUC, far.RTXUC);
    EXPECT_EQ(near.RTXTX, far.RTXTX);
    EXPECT_EQ(near.EFB, far.EFB);
    EXPECT_EQ(near.ES, told.erroredSeconds);
    EXPECT_EQ(near.SES, told.serverlyErroredSeconds);
    EXPECT_EQ(near.RTXUC, told.rtxUc);
    EXPECT_EQ(near.RTXTX, told.rtxTx);
    EXPECT_EQ(near.EFB, told.errorFreeBitsCounter);
    EXPECT_EQ(cp.EFTR_min, told.eftrMin);
    EXPECT_LT(cp.EFTR_min, cp.EFTR);
    EXPECT_EQ(cp.RxETR, derived(bench, 1 - device).TxETR);
    EXPECT_EQ(raw.RxBD, framer(bench, 1 - device).TxBD);
  }
}

TEST(Counters, TheExpectedThroughputFollowsFromItsDatabase) {
  Bench bench(kShowtime);
  for (const int device : {0, 1}) {
    const auto db = bench.block<ETR_DB_S>(device, kEtrDb);
    const auto cp = derived(bench, device);
    EXPECT_NEAR(
        cp.TxETR,
        expectedThroughput(db.numTxSymbols, db.Tx_kFec, db.Tx_nFec, db.Tx_Q, db.Tx_B_D, db.Tx_B_DR, db), 1);
    EXPECT_NEAR(
        cp.RxETR,
        expectedThroughput(db.numRxSymbols, db.Rx_kFec, db.Rx_nFec, db.Rx_Q, db.Rx_B_D, db.Rx_B_DR, db), 1);
    EXPECT_EQ(db.Tx_B_D, framer(bench, device).TxBD);
    EXPECT_EQ(db.Rx_B_DR, framer(bench, device).RxBDR);
    EXPECT_LE(cp.TxETR, cp.TxNDR);
    EXPECT_LT(cp.TxNDR, cp.TxRateInKbps);
    EXPECT_LT(cp.RxNDR, framer(bench, device).attainableNdr);
  }
}

TEST(Counters, BytesGrowAtTheRate) {
  Bench bench(kShowtime);
  bench.wait(10);
  const auto before = framer(bench, 0);
  bench.wait(10);
  const auto after = framer(bench, 0);
  const double kbps = (after.TxBytes - before.TxBytes) * 8.0 / 10 / 1000;
  EXPECT_NEAR(kbps, derived(bench, 0).TxETR, derived(bench, 0).TxETR * 0.03);
}

TEST(Counters, NeverFall) {
  Bench bench(R"(
    [loop]
    length_m = 300
    [[loop_event]]
    at_s = 8
    errors = 0.3
    for_s = 1.5
    [[loop_event]]
    at_s = 12
    cut = true
    [[loop_event]]
    at_s = 12.6
    cut = false
    [[loop_event]]
    at_s = 15
    cut = true
    [[loop_event]]
    at_s = 25
    cut = false
    [[loop_event]]
    at_s = 35
    errors = 1
    for_s = 4
  )");
  GFAST_FRAMER_RAW_COUNTERS_S framerBefore[2] = {};
  G9972_PM_COUNTERS_S pmBefore[2] = {};
  for (int i = 0; i < 20000; i++) {
    bench.wait(i % 3 == 0 ? 0.000011 : 0.0031);
    const int device = i % 2;
    expectNoneFell(bench, device, framerBefore[device], pmBefore[device]);
    ASSERT_FALSE(HasFatalFailure());
  }
  EXPECT_GT(pmBefore[0].ne.LOS, 0U);
  EXPECT_GT(pmBefore[1].ne.SES, 0U);
}

TEST(Counters, DoNotDependOnEarlierReads) {
  Bench watched(kShowtime);
  Bench left(kShowtime);
  for (int i = 0; i < 1000; i++) {
    watched.wait(0.37);
    framer(watched, 0);
  }
  left.wait(watched.now);
  for (const auto& block : kBlocks) {
    EXPECT_EQ(watched.read(0, block.address, block.length), left.read(0, block.address, block.length))
        << block.name;
  }
}

TEST(Counters, AreDrawnFromTheSeed) {
  const auto errors = [](const char* seed) {
    Bench bench((std::string(seed) + kShowtime));
    bench.wait(500);
    return bench.read(0, kFramerRaw, 340);
  };
  EXPECT_EQ(errors("[board]\nseed = 7\n"), errors("[board]\nseed = 7\n"));
  EXPECT_NE(errors("[board]\nseed = 7\n"), errors("[board]\nseed = 8\n"));
}

TEST(Counters, WrapAt32Bits) {
  Bench bench(kShowtime);
  bench.wait(12000);
  const auto raw = framer(bench, 0);
  ASSERT_GT(raw.numOfTxDTUs, 0x40000000U);
  EXPECT_LT(raw.numOfTxRScw, raw.numOfTxDTUs);
  EXPECT_EQ(raw.numOfTxRScw, static_cast<uint32_t>(uint64_t{raw.numOfTxDTUs} * 4));
}

TEST(Counters, OfARestartedChipBeginAtZeroAndTheOtherGoesOn) {
  Bench bench(kShowtime);
  bench.wait(100);
  const auto before = framer(bench, 1);
  bench.rebootToApp(0);
  EXPECT_EQ(bench.read(0, kFramerRaw, 340), "EIO");
  bench.wait(1.3);
  EXPECT_EQ(framer(bench, 0).numOfTxDTUs, 0U);
  EXPECT_EQ(pm(bench, 0).ne.UAS, 0U);
  EXPECT_EQ(pm(bench, 0).fe.ES, 0U);
  bench.wait(kTrainingTime_s);
  ASSERT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(pm(bench, 0).ne.FULL_INITS, 1U);
  EXPECT_EQ(pm(bench, 1).ne.FULL_INITS, 2U);
  EXPECT_EQ(pm(bench, 1).ne.LOS, 1U);
  EXPECT_GT(framer(bench, 1).numOfRxDTUs, before.numOfRxDTUs);
  EXPECT_LT(framer(bench, 0).numOfTxFrames, 10000U);
}

TEST(Counters, WritingThemHasNoEffect) {
  Bench bench(kShowtime);
  bench.wait(9);
  const std::string before = bench.read(0, kPm, 156);
  EXPECT_EQ(bench.writeWord(0, kPm, 0xFFFFFFFF), "ok");
  EXPECT_EQ(bench.read(0, kPm, 156), before);
}

TEST(Counters, BytesOfABoardFileHideThem) {
  Bench bench("[[memory]]\ndevice = 0\naddress = 0xF0000004\nbytes = \"01 02 03 04\"");
  EXPECT_EQ(bench.word(0, kPm + 4), 0x04030201U);
}

TEST(Counters, MarginsAndLengthsFollowFromTheLoop) {
  Bench bench(kShowtime);
  EXPECT_EQ(framer(bench, 1).snrMargin, 60U);
  // The network side keeps 0.3 dB in reserve.
  EXPECT_EQ(framer(bench, 0).snrMargin, 63U);
  EXPECT_EQ(fdu(bench, 0).rxMargin, 63U);
  EXPECT_EQ(fdu(bench, 0).ACTATPds, 40);
  EXPECT_EQ(fdu(bench, 1).ACTATPds, 30);
  // The network side's receiver loses 1 dB.
  EXPECT_EQ(fdu(bench, 0).UPBOKLE, fdu(bench, 0).UPBOKLE_R + 10);
  EXPECT_EQ(fdu(bench, 0).UPBOKLE, fdu(bench, 1).UPBOKLE_R);
  // The length of the wire, as a host computes it.
  EXPECT_NEAR((262752 - 483 * fdu(bench, 0).TimeGapCorrection) >> 10, 100, 1);
}
