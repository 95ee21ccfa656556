// The table of lines: what it holds and returns, and which line ids end in an assertion.
#include <atomic>
#include <cstring>
#include <thread>

#include "support/assertions.h"
#include "support/lines.h"
#include "support/records.h"

using namespace gfast;

namespace {

GFAST_FRAMER_INIT_COUNTERS_S countingFraming(uint32_t first) {
  const Bytes bytes = countingWords(sizeof(GFAST_FRAMER_INIT_COUNTERS_S), first);
  GFAST_FRAMER_INIT_COUNTERS_S framing;
  std::memcpy(&framing, bytes.data(), sizeof framing);
  QVR_NTOHGfastCounters(&framing, sizeof framing);
  return framing;
}

TEST(LineTable, IsZeroBeforeItIsBuilt) {
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    const QVR_lineDescriptor_t descriptor = QVR_lineDescriptorForLine(line);
    EXPECT_EQ(descriptor.deviceId, 0);
    EXPECT_EQ(descriptor.narrowLineID, 0U);
    EXPECT_EQ(descriptor.broadLineID, 0U);
    EXPECT_EQ(descriptor.isDPsideLink, FALSE);
    EXPECT_TRUE(isZero(descriptor.counters));
  }
  EXPECT_EQ(numberOfLines(), 0U);
}

TEST(LineTable, HoldsDeviceIndexAndSideOfALine) {
  addLine(1, 1, 0, TRUE);
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(1);
  EXPECT_EQ(line.deviceId, 1);
  EXPECT_EQ(line.narrowLineID, 0U);
  EXPECT_EQ(line.broadLineID, 1U);
  EXPECT_EQ(line.isDPsideLink, TRUE);
  EXPECT_EQ(QVR_deviceIdforLine(1), 1);
  EXPECT_EQ(QVR_deviceIdforLine(0), 0);
  EXPECT_EQ(numberOfLines(), 1U);
}

TEST(LineTable, AssertsOnAnUnknownLine) {
  for (const QVR_lineId_t line : {2, -1, 256, INT32_MIN}) {
    const auto report = asserts(200, "Invalid Line Identifier", line, "../qvrline");
    EXPECT_ASSERTION(QVR_lineDescriptorForLine(line), report);
    EXPECT_ASSERTION(QVR_deviceIdforLine(line), report);
  }
}

TEST(LineTable, DescriptorIsACopy) {
  enterBothLines();
  const QVR_lineDescriptor_t before = QVR_lineDescriptorForLine(0);
  storeFraming(0, countingFraming(100));
  EXPECT_EQ(before.phyParams.firstTone, 0U);
  EXPECT_EQ(QVR_lineDescriptorForLine(0).phyParams.firstTone, 102U);
}

TEST(LineTable, StoreFramingChangesTheFramingOnly) {
  enterBothLines();
  storeFraming(0, countingFraming(100));
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(0);
  EXPECT_EQ(line.phyParams.firstTone, 102U);
  EXPECT_EQ(line.phyParams.numProcessedTones, 103U);
  EXPECT_EQ(line.dsCodeWordSize, 104U);
  EXPECT_EQ(line.dsNumCodeWords, 105U);
  EXPECT_EQ(line.dsRsRedundancy, 106U);
  EXPECT_EQ(line.usCodeWordSize, 107U);
  EXPECT_EQ(line.usNumCodeWords, 108U);
  EXPECT_EQ(line.usRsRedundancy, 109U);
  EXPECT_EQ(line.txLogicalFrameNumSym, 110U);
  EXPECT_EQ(line.rxLogicalFrameNumSym, 114U);
  EXPECT_TRUE(isZero(line.counters));
  EXPECT_EQ(line.isDPsideLink, TRUE);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).phyParams.firstTone, 0U);
}

TEST(LineTable, StoreLatestCountersKeepsTheStartOfTheQuarterHour) {
  QVR_intervalCounterDB_t counters{};
  counters.curr15minSnapshot.ne.ES = 1;
  counters.prev15minSnapshot.ne.ES = 2;
  storeCounters(1, counters);
  G9972_PM_COUNTERS_S latest{};
  latest.ne.ES = 3;
  storeLatestCounters(1, latest);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).counters.curr15minSnapshot.ne.ES, 3U);
  EXPECT_EQ(QVR_lineDescriptorForLine(1).counters.prev15minSnapshot.ne.ES, 2U);
  EXPECT_TRUE(isZero(QVR_lineDescriptorForLine(0).counters));
}

TEST(LineNumbers, LogicalNumbersAreTablePositions) {
  EXPECT_EQ(QVR_log2int(0), 0);
  EXPECT_EQ(QVR_log2int(1), 1);
}

TEST(LineNumbers, InternalNumbersMeanLine0UntilTheTableIsBuilt) {
  EXPECT_EQ(QVR_int2log(0), 0);
  EXPECT_EQ(QVR_int2log(1), 0);
  buildLineNumberMap();
  EXPECT_EQ(QVR_int2log(0), 0);
  EXPECT_EQ(QVR_int2log(1), 1);
}

TEST(LineTableThreads, ReadersSeeWholeSetsOfFramingAndCounters) {
  enterBothLines();
  storeFraming(0, countingFraming(0));
  std::atomic<bool> stop{false};
  std::thread notifications([&] {
    for (uint32_t i = 0; !stop; i++) {
      storeFraming(0, countingFraming(i * 100));
      QVR_intervalCounterDB_t counters{};
      counters.curr15minSnapshot.ne.LOS = counters.prev15minSnapshot.fe.EFB = i;
      storeCounters(0, counters);
      buildLineNumberMap();
    }
  });
  for (int i = 0; i < 5000; i++) {
    const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(0);
    EXPECT_EQ(line.rxLogicalFrameNumSym - line.phyParams.firstTone, 12U);
    EXPECT_EQ(line.counters.curr15minSnapshot.ne.LOS, line.counters.prev15minSnapshot.fe.EFB);
    EXPECT_EQ(QVR_int2log(0), 0);
  }
  stop = true;
  notifications.join();
}

}  // namespace
