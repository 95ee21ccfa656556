// Expected throughput and raw rates: the formulas to the last bit, and the values of a line that go into
// them.
#include <cstring>

#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

// A framing whose words are in the order of the database.
ETR_DB_S framingOf(const std::vector<uint32_t>& values) {
  Bytes bytes = words(values);
  ETR_DB_S record{};
  std::memcpy(&record, bytes.data(), sizeof record);
  QVR_NTOHGfastCounters(&record, sizeof record);
  return record;
}

// Shared: overhead, samples, frequency, frames, symbols; then transmitter and receiver, each: symbols, K, N,
// Q, bytes of data symbols, bytes of RMC symbols.
const std::vector<uint32_t> kFraming{28,   4416, 211968000, 8,   36,  28, 239,  255, 4,
                                     1871, 702,  7,         223, 239, 3,  1733, 655};

// Computed outside this code, every operation rounded to single precision.
constexpr float kTxEtr = 0x1.e330fep+18F;      // 494787.97
constexpr float kRxEtr = 0x1.93a7p+16F;        // 103335.0
constexpr float kTxEtrLive = 0x1.017396p+19F;  // with 1990 and 850 bytes
constexpr float kTxRaw = 0x1.5edp+19F;         // 718464.0

TEST(ExpectedThroughput, IsTheRateOfOneRmcSymbolWithoutItsOverhead) {
  // O = 0; S, F, M, Nf; then Ns, K, N, Q, BD, BDR of either direction.
  const ETR_DB_S framing = framingOf({0, 1, 1000, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 0, 1});
  float etr = 0;
  EXPECT_EQ(QVR_calcTxETR(framing, &etr), QVR_E_STATUS_OK);
  EXPECT_EQ(etr, 7.0F);
  etr = 0;
  EXPECT_EQ(QVR_calcRxETR(framing, &etr), QVR_E_STATUS_OK);
  EXPECT_EQ(etr, 7.0F);
}

TEST(ExpectedThroughput, IsTheSameToTheLastBitOnEveryMachine) {
  const ETR_DB_S framing = framingOf(kFraming);
  float etr = 0;
  EXPECT_EQ(QVR_calcTxETR(framing, &etr), QVR_E_STATUS_OK);
  EXPECT_EQ(etr, kTxEtr);
  EXPECT_EQ(QVR_calcRxETR(framing, &etr), QVR_E_STATUS_OK);
  EXPECT_EQ(etr, kRxEtr);
  QVR_calcTxETR(framingOf({31, 4096, 105984000, 7, 35, 11, 201, 221, 9, 997, 313, 0, 0, 0, 0, 0, 0}), &etr);
  EXPECT_EQ(etr, 0x1.a2d5ecp+15F);
  QVR_calcRxETR(
      framingOf({3, 4001, 0xFFFFFFFF, 11, 37, 0, 0, 0, 0, 0, 0, 29, 4294967041, 251, 7, 65537, 1048577}),
      &etr);
  EXPECT_EQ(etr, 0x1.44d43p+53F);
}

// Framings for which another order of the operations, or one of them in double precision, changes the result.
TEST(ExpectedThroughput, IsEvaluatedInItsOrderInSinglePrecision) {
  const struct {
    std::vector<uint32_t> shared;
    std::vector<uint32_t> direction;
    float etr;
  } cases[] = {
      {{8, 4416, 105984000, 8, 36}, {29, 112, 128, 6, 1747, 1223}, 0x1.c1964ap+17F},
      {{11, 4416, 211968000, 32, 36}, {26, 226, 240, 9, 1266, 1539}, 0x1.43677ep+18F},
      {{11, 4288, 105984000, 8, 36}, {9, 130, 144, 14, 415, 1355}, 0x1.64019ep+14F},
      {{12, 4288, 211968000, 9, 36}, {28, 156, 160, 15, 831, 1064}, 0x1.e72b4cp+17F},
      {{9, 2208, 105984000, 9, 36}, {28, 114, 128, 7, 2454, 285}, 0x1.2ff056p+19F},
      {{36, 2208, 105984000, 7, 36}, {1, 131, 133, 3, 1309, 524}, 0x1.91e8fep+11F},
      {{171579, 40617, 187936793, 1863, 1993}, {1207, 7613, 46047, 4033, 59043, 53773}, 0x1.a8fd7p+17F},
      {{128025, 58895, 204592813, 19, 1355}, {3, 91965, 9267, 1355, 24389, 93779}, 0x1.c0cff8p+14F},
      {{165611, 31599, 109799195, 2363, 279}, {125, 30691, 72889, 7, 44909, 80401}, 0x1.a83c5ap+15F},
      {{67469, 89913, 177527439, 695, 4717}, {893, 22543, 30405, 3445, 1433, 98911}, 0x1.aae494p+11F},
      {{139119, 73095, 120059081, 3045, 2823}, {323, 29595, 92403, 335, 44411, 57853}, 0x1.49bf1ep+14F},
  };
  for (const auto& [shared, direction, expected] : cases) {
    std::vector<uint32_t> values = shared;
    values.insert(values.end(), direction.begin(), direction.end());
    values.insert(values.end(), direction.begin(), direction.end());
    float etr = 0;
    QVR_calcTxETR(framingOf(values), &etr);
    EXPECT_EQ(etr, expected) << direction[4];
    QVR_calcRxETR(framingOf(values), &etr);
    EXPECT_EQ(etr, expected) << direction[4];
  }
}

// A symbol less than none is -1, and not the largest number of symbols.
TEST(ExpectedThroughput, IsNegativeForAFrameWithoutSymbols) {
  float etr = 0;
  QVR_calcTxETR(framingOf({10, 4416, 211968000, 8, 36, 0, 239, 255, 4, 1871, 702, 0, 0, 0, 0, 0, 0}), &etr);
  EXPECT_EQ(etr, -0x1.b1bbp+13F);
}

TEST(ExpectedThroughput, SucceedsWithoutAFiniteValueWhenItDividesByZero) {
  float etr = 0;
  EXPECT_EQ(QVR_calcTxETR(framingOf(std::vector<uint32_t>(17, 0)), &etr), QVR_E_STATUS_OK);
  EXPECT_TRUE(std::isnan(etr));
  // With zero samples a symbol the rate is infinite.
  EXPECT_EQ(QVR_calcRxETR(framingOf({0, 0, 1000, 1, 1, 0, 0, 0, 0, 0, 0, 3, 1, 1, 1, 1, 1}), &etr),
            QVR_E_STATUS_OK);
  EXPECT_EQ(etr, std::numeric_limits<float>::infinity());
  EXPECT_EQ(QVR_calcTxRawPhyRate(framingOf({0, 0, 1000, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}), &etr),
            QVR_E_STATUS_OK);
  EXPECT_EQ(etr, std::numeric_limits<float>::infinity());
  EXPECT_EQ(QVR_calcRxRawPhyRate(framingOf(std::vector<uint32_t>(17, 0)), &etr), QVR_E_STATUS_OK);
  EXPECT_TRUE(std::isnan(etr));
}

TEST(RawRate, IsTheRateOfDataSymbols) {
  std::vector<uint32_t> values(17, 0);
  values[1] = 4096;
  values[2] = 4096000;
  values[9] = 100;  // transmitted
  values[15] = 50;  // received
  float rate = 0;
  EXPECT_EQ(QVR_calcTxRawPhyRate(framingOf(values), &rate), QVR_E_STATUS_OK);
  EXPECT_EQ(rate, 800.0F);
  EXPECT_EQ(QVR_calcRxRawPhyRate(framingOf(values), &rate), QVR_E_STATUS_OK);
  EXPECT_EQ(rate, 400.0F);
}

TEST(RawRate, CountsBitsIn32BitsAndDividesInSinglePrecision) {
  std::vector<uint32_t> values(17, 0);
  values[1] = 4416;
  values[2] = 211968000;
  values[9] = 0x20000001;  // times 8 is 8
  float rate = 0;
  QVR_calcTxRawPhyRate(framingOf(values), &rate);
  EXPECT_EQ(rate, 384.0F);
  values[1] = 3;
  values[2] = values[9] = 0xFFFFFFFF;
  QVR_calcTxRawPhyRate(framingOf(values), &rate);
  EXPECT_EQ(rate, 0x1.5d867cp+52F);
  values[1] = 4099;
  values[2] = 211968001;
  values[15] = 1733;
  QVR_calcRxRawPhyRate(framingOf(values), &rate);
  EXPECT_EQ(rate, 0x1.5e111cp+19F);
}

TEST(RawRate, IsEvaluatedInItsOrderInSinglePrecision) {
  std::vector<uint32_t> values(17, 0);
  values[1] = 4416;
  values[2] = 211968000;
  values[9] = values[15] = 688;
  float rate = 0;
  QVR_calcTxRawPhyRate(framingOf(values), &rate);
  EXPECT_EQ(rate, 0x1.01fffep+18F);
  QVR_calcRxRawPhyRate(framingOf(values), &rate);
  EXPECT_EQ(rate, 0x1.01fffep+18F);
}

class LineThroughput : public ToneTest {
 protected:
  // The framer's byte counts as they are now, different from those of the database.
  static Bytes liveBytes() {
    Bytes block(340);
    store_le32(&block[21 * 4], 1990);  // TxBD
    store_le32(&block[23 * 4], 850);   // TxBDR
    store_le32(&block[24 * 4], 1733);  // RxBD
    store_le32(&block[26 * 4], 655);   // RxBDR
    return block;
  }

  // In the database the receiver's counts are not those of the framer.
  static Bytes databaseBytes() {
    std::vector<uint32_t> framing = kFraming;
    framing[15] = 1;
    framing[16] = 2;
    return words(framing);
  }

  static Script readsThroughput(int device) {
    return findsLineUp(device) + reads(device, 0xE5002000, databaseBytes()) +
           reads(device, 0xE2440000, liveBytes());
  }

  float etrDs_ = -1;
  float etrUs_ = -1;
  float rawDs_ = -1;
  float rawUs_ = -1;
};

TEST_F(LineThroughput, OnTheSubscriberSideDownstreamIsReceived) {
  driver_.expect(readsThroughput(1));
  EXPECT_EQ(QVR_calcETRsForLine(kSubscriberSide, &etrDs_, &etrUs_, &rawDs_, &rawUs_), QVR_E_STATUS_OK);
  EXPECT_EQ(etrDs_, kRxEtr);
  EXPECT_EQ(etrUs_, kTxEtrLive);
  EXPECT_EQ(rawDs_, kTxRaw);     // the transmitter's, of the database
  EXPECT_EQ(rawUs_, 764160.0F);  // 1990 bytes in 48000 symbols a second
}

TEST_F(LineThroughput, OnTheNetworkSideUpstreamIsReceived) {
  driver_.expect(readsThroughput(0));
  EXPECT_EQ(QVR_calcETRsForLine(kNetworkSide, &etrDs_, &etrUs_, &rawDs_, &rawUs_), QVR_E_STATUS_OK);
  EXPECT_EQ(etrUs_, kRxEtr);
  EXPECT_EQ(etrDs_, kTxEtrLive);
  EXPECT_EQ(rawUs_, 665472.0F);  // 1733 bytes
  EXPECT_EQ(rawDs_, 764160.0F);
}

TEST_F(LineThroughput, ComputesRawRatesOnlyWhenAsked) {
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    driver_.expect(readsThroughput(line).times(3));
    EXPECT_EQ(QVR_calcETRsForLine(line, &etrDs_, &etrUs_, nullptr, nullptr), QVR_E_STATUS_OK);
    EXPECT_EQ(line == kNetworkSide ? etrDs_ : etrUs_, kTxEtrLive);
    EXPECT_EQ(QVR_calcETRsForLine(line, &etrDs_, &etrUs_, &rawDs_, nullptr), QVR_E_STATUS_OK);
    EXPECT_EQ(rawDs_, line == kNetworkSide ? 764160.0F : kTxRaw);
    EXPECT_EQ(QVR_calcETRsForLine(line, &etrDs_, &etrUs_, nullptr, &rawUs_), QVR_E_STATUS_OK);
    EXPECT_EQ(rawUs_, line == kNetworkSide ? 665472.0F : 764160.0F);
  }
}

TEST_F(LineThroughput, FailsAndFillsNothingForALineThatIsNotUp) {
  for (const G9701_linkState_t state : {LS_IDLE, LS_INIT_TRAIN, LS_DEACTIVATING1}) {
    driver_.expect(readsIdentity(0, chipWithLine(state)));
    EXPECT_EQ(QVR_calcETRsForLine(0, &etrDs_, &etrUs_, &rawDs_, &rawUs_), QVR_E_ERROR);
  }
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_EQ(QVR_calcETRsForLine(1, &etrDs_, &etrUs_, &rawDs_, &rawUs_), QVR_E_ERROR);
  EXPECT_EQ(etrDs_ + etrUs_ + rawDs_ + rawUs_, -4.0F);
}

TEST_F(LineThroughput, FailsAndFillsNothingWhenAnyRequestFails) {
  for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
    expectEachFailureAnswered([&] { return readsThroughput(line); },
                              [&](bool& untouched) {
                                const QVR_retval_t status =
                                    QVR_calcETRsForLine(line, &etrDs_, &etrUs_, &rawDs_, &rawUs_);
                                untouched = etrDs_ == -1 && etrUs_ == -1 && rawDs_ == -1 && rawUs_ == -1;
                                return status;
                              });
  }
}

TEST_F(LineThroughput, AssertsOnAnUnknownLine) {
  EXPECT_ASSERTION(QVR_calcETRsForLine(2, &etrDs_, &etrUs_, nullptr, nullptr),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

}  // namespace
