// A line's counters as they stand: which words of the chip's blocks they are, at either end.
#include <cstring>

#include "support/assertions.h"
#include "support/devices.h"
#include "support/far_end_memory.h"
#include "support/lines.h"

using namespace gfast;

namespace {

using testing::ElementsAre;

constexpr uint32_t kDerived = 0xE2880000;
constexpr uint32_t kFramerRaw = 0xE2440000;
constexpr uint32_t kDerivedFirst = 1000;
constexpr uint32_t kFramerFirst = 5000;
constexpr uint32_t kNearFramerFirst = 7000;
constexpr uint32_t kManagementFirst = 9000;

Script readsDerived(int device) {
  return reads(device, kDerived, countingWords(216, kDerivedFirst));
}
Script readsFramer(int device, uint32_t first = kFramerFirst) {
  return reads(device, kFramerRaw, countingWords(340, first));
}
Script asksManagement(int device) {
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_MGMT_COUNTERS, {}, 44,
                       countingWords(44, kManagementFirst));
}
Script asksPmd(int device) {
  return sendsToFarEnd(device, 0, MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ, {}, 14, Bytes(14, 1));
}
Script readsFarDerived(uint16_t sequence) {
  const Bytes block = countingWords(216, kDerivedFirst);
  return readsFarEnd(0, sequence, kDerived, block);
}
Script findsLineUp(int device) {
  return readsIdentity(device, chipWithLine(LS_SHOWTIME));
}

std::vector<uint32_t> countersOf(const QVR_linePerformance_t& line) {
  return {line.LOS,
          line.LOM,
          line.LOR,
          line.LPR,
          line.ES,
          line.SES,
          line.LOSS,
          line.LORS,
          line.UAS,
          line.FULL_INITS,
          line.FAILEDFULL_INITS,
          line.FAST_INITS,
          line.FAILEDFAST_INITS,
          line.SRA,
          line.FRA,
          line.RPA,
          line.TIGA,
          line.BSW};
}

std::vector<uint32_t> countersOf(const QVR_ChannelPerformance_t& channel) {
  return {channel.CV, channel.RTXUC, channel.RTXTX, channel.EFB};
}

template <typename Counters>
Counters filled() {
  Counters counters;
  std::memset(&counters, 0x5A, sizeof counters);
  return counters;
}

// The caller's record has not changed.
template <typename Counters>
void expectUntouched(const Counters& counters) {
  const Counters before = filled<Counters>();
  EXPECT_EQ(std::memcmp(&counters, &before, sizeof before), 0);
}

class CurrentCounters : public testing::Test {
 protected:
  CurrentCounters() {
    enterBothLines();
    startDevice(driver_, 0, LS_SHOWTIME);
    startDevice(driver_, 1, LS_SHOWTIME);
  }

  ExpectedRequests driver_{Script()};
};

TEST_F(CurrentCounters, OfTheNearEndLineAreDerivedAndFramerWords) {
  driver_.expect(readsDerived(1) + readsFramer(1));
  auto line = filled<QVR_linePerformance_t>();
  ASSERT_EQ(QVR_getCurrNELinePerformance(1, &line), QVR_E_STATUS_OK);
  EXPECT_THAT(countersOf(line), ElementsAre(1033, 1035, 1034, 1036,          // failures, in the chip's order
                                            1006, 1007, 1008, 1009, 1010,    // seconds
                                            1011, 1012, 1013, 1014,          // initialisations
                                            5041, 5043, 5077, 5048, 5055));  // adaptations received
  EXPECT_EQ(line.timeInterval.intervalNumber, 0U);
  const auto before = filled<QVR_TimeInterval_t>();
  EXPECT_EQ(line.timeInterval.TIME, before.TIME);
  EXPECT_EQ(line.timeInterval.INVALID, before.INVALID);
  EXPECT_EQ(std::memcmp(line.timeInterval.STAMP, before.STAMP, sizeof before.STAMP), 0);
}

TEST_F(CurrentCounters, OfTheNearEndChannelAreFramerAndDerivedWords) {
  driver_.expect(readsFramer(0) + readsDerived(0));
  auto channel = filled<QVR_ChannelPerformance_t>();
  ASSERT_EQ(QVR_getCurrNEChannelPerformance(0, &channel), QVR_E_STATUS_OK);
  EXPECT_THAT(countersOf(channel), ElementsAre(1015, 5032, 5008, 1026));
  const auto before = filled<QVR_TimeInterval_t>();
  EXPECT_EQ(std::memcmp(&channel.timeInterval, &before, sizeof before), 0);
}

TEST_F(CurrentCounters, OfTheNearEndFailWhenABlockCannotBeRead) {
  auto line = filled<QVR_linePerformance_t>();
  auto channel = filled<QVR_ChannelPerformance_t>();
  const Script lineReads = readsDerived(0) + readsFramer(0);
  const Script channelReads = readsFramer(0) + readsDerived(0);
  for (size_t i = 0; i < 2; i++) {
    driver_.expect(lineReads.failingAt(i, EIO));
    EXPECT_EQ(QVR_getCurrNELinePerformance(0, &line), QVR_E_MEMREAD_ERROR);
    driver_.expect(channelReads.failingAt(i, EIO));
    EXPECT_EQ(QVR_getCurrNEChannelPerformance(0, &channel), QVR_E_MEMREAD_ERROR);
    driver_.verify();
  }
  expectUntouched(line);
  expectUntouched(channel);
}

TEST_F(CurrentCounters, OfTheFarEndLineAreItsBlocksAndItsManagementCounters) {
  driver_.expect(findsLineUp(0) + readsFarDerived(1) + asksManagement(0) + findsLineUp(0) +
                 readsFarEnd(0, 2, kFramerRaw, countingWords(340, kFramerFirst)) + asksManagement(0) +
                 readsFramer(0, kNearFramerFirst) + asksPmd(0));
  auto line = filled<QVR_linePerformance_t>();
  ASSERT_EQ(QVR_getCurrFELinePerformance(0, &line), QVR_E_STATUS_OK);
  EXPECT_THAT(countersOf(line),
              ElementsAre(1033, 1035, 1034, 1036,        // failures
                          9004, 9005, 9006, 9007, 9008,  // seconds, from its management counters
                          1011, 1012, 1013, 1014,        // initialisations
                          7042, 7044, 7078,              // adaptations that this end has sent
                          5048, 7056));
  EXPECT_EQ(line.timeInterval.intervalNumber, 0U);
}

TEST_F(CurrentCounters, OfTheFarEndLineFailWithTheCodeOfTheFailedBlock) {
  auto line = filled<QVR_linePerformance_t>();
  driver_.expect(readsIdentity(0, chipWithLine(LS_SILENT)));
  EXPECT_EQ(QVR_getCurrFELinePerformance(0, &line), QVR_E_ERROR);
  driver_.expect(findsLineUp(0) + readsFarDerived(1) + asksManagement(0).fails(ETIMEDOUT));
  EXPECT_EQ(QVR_getCurrFELinePerformance(0, &line), QVR_E_FAILED_SENDING_FAR_END_MSG);
  driver_.expect(findsLineUp(0) + readsFarDerived(2) + asksManagement(0) +
                 readsIdentity(0, chipWithLine(LS_SILENT)));
  EXPECT_EQ(QVR_getCurrFELinePerformance(0, &line), QVR_E_ERROR);
  expectUntouched(line);
}

TEST_F(CurrentCounters, OfTheFarEndChannelAreItsManagementCounters) {
  driver_.expect(asksManagement(1));
  auto channel = filled<QVR_ChannelPerformance_t>();
  ASSERT_EQ(QVR_getCurrFEChannelPerformance(1, &channel), QVR_E_STATUS_OK);
  EXPECT_THAT(countersOf(channel), ElementsAre(9001, 9002, 9003, 9010));
  const auto before = filled<QVR_TimeInterval_t>();
  EXPECT_EQ(std::memcmp(&channel.timeInterval, &before, sizeof before), 0);
}

TEST_F(CurrentCounters, OfTheFarEndChannelFailWhenTheExchangeFails) {
  auto channel = filled<QVR_ChannelPerformance_t>();
  driver_.expect(asksManagement(0).fails(EIO));
  EXPECT_EQ(QVR_getCurrFEChannelPerformance(0, &channel), QVR_E_FAILED_SENDING_FAR_END_MSG);
  expectUntouched(channel);
}

TEST_F(CurrentCounters, FailForALineWithoutADevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  QVR_linePerformance_t line{};
  QVR_ChannelPerformance_t channel{};
  EXPECT_EQ(QVR_getCurrNELinePerformance(1, &line), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getCurrFELinePerformance(1, &line), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getCurrNEChannelPerformance(1, &channel), QVR_E_NO_DEVICE_FOR_LINE);
  EXPECT_EQ(QVR_getCurrFEChannelPerformance(1, &channel), QVR_E_NO_DEVICE_FOR_LINE);
}

using PerformanceDeathTest = testing::Test;

// Calls one of the operations on counters and their history.
void callWithLine(int operation, QVR_lineId_t line) {
  QVR_linePerformance_t lineCounters{};
  QVR_ChannelPerformance_t channelCounters{};
  QVR_intervalLinkCounterDB_t interval{};
  const QVR_intervalCounterHistoryCB stop = [](QVR_lineId_t, QVR_intervalLinkCounterDB_t*) -> BOOL {
    return FALSE;
  };
  switch (operation) {
    case 0:
      QVR_getCurrNELinePerformance(line, &lineCounters);
      break;
    case 1:
      QVR_getCurrFELinePerformance(line, &lineCounters);
      break;
    case 2:
      QVR_getCurrNEChannelPerformance(line, &channelCounters);
      break;
    case 3:
      QVR_getCurrFEChannelPerformance(line, &channelCounters);
      break;
    case 4:
      QVR_numberOf15minHistoryIntervals(line);
      break;
    case 5:
      QVR_numberOf24hrHistoryIntervals(line);
      break;
    case 6:
      QVR_getCurr15minCounters(line, &interval);
      break;
    case 7:
      QVR_getPrev15minCounters(line, 0, &interval);
      break;
    case 8:
      QVR_getCurr24hrCounters(line, &interval);
      break;
    case 9:
      QVR_getPrev24hrCounters(line, 0, &interval);
      break;
    case 10:
      QVR_dump15minCounterHistoryDB(line, stop);
      break;
    default:
      QVR_dump24hrCounterHistoryDB(line, stop);
  }
}

TEST(PerformanceDeathTest, AssertsThatTheLineIsValid) {
  ExpectedRequests driver{Script()};
  for (int operation = 0; operation < 12; operation++) {
    for (const QVR_lineId_t line : {-1, 2}) {
      SCOPED_TRACE(operation);
      EXPECT_ASSERTION(callWithLine(operation, line),
                       asserts(200, "Invalid Line Identifier", line, "../qvrline"));
    }
  }
}

}  // namespace
