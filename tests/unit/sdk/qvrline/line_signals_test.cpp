// What is received and sent on each subcarrier at both ends: addresses, units, special values.
#include "unit/sdk/qvrline/tone_test.h"

using namespace gfast;

namespace {

constexpr double kAceOn = -55.47;
constexpr double kAceOff = -35.72;

constexpr double kNothing = -9999;

std::vector<double> table() {
  return std::vector<double>(QVR_MAX_NUMBER_OF_TONES, kNothing);
}

bool untouched(const std::vector<double>& values) {
  return std::all_of(values.begin(), values.end(), [](double value) { return value == kNothing; });
}

size_t filled(const std::vector<double>& values) {
  return values.size() - static_cast<size_t>(std::count(values.begin(), values.end(), kNothing));
}

struct Reception {
  const char* name;
  QVR_retval_t (*read)(QVR_lineId_t line, double* feq, double* calibrated, QVR_AFE_PARAMS_t* afe);
  bool far;
};
constexpr Reception kReceptions[] = {
    {"near", QVR_readRxSignal, false},
    {"far", QVR_readFarEndRxSignal, true},
};

class RxSignal : public ToneTest {
 protected:
  // Every coefficient is 1, so that the levels are the receive path's alone.
  static Bytes ones(size_t tones) {
    Bytes mantissas;
    for (size_t i = 0; i < tones; i++) {
      append16(mantissas, 4096);
      append16(mantissas, 0);
    }
    return mantissas;
  }

  static Bytes evenExponents(size_t tones) { return Bytes(tones + tones % 2); }

  Script readsOnes(bool far, int device, uint32_t firstTone, size_t tones, uint32_t gain, uint32_t mode) {
    return findsTones(device, firstTone, static_cast<uint32_t>(tones)) +
           readsEqualiser(far, device, ones(tones), evenExponents(tones), gain, mode);
  }

  std::vector<double> feq_ = table();
  std::vector<double> calibrated_ = table();
  QVR_AFE_PARAMS_t afe_{-1, 99};
};

TEST_F(RxSignal, IsTheInverseCoefficientPowerMinusTheGain) {
  for (const Reception& reception : kReceptions) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      SCOPED_TRACE(reception.name);
      // 1; 3 - 4i; 2^10; 2^-10; 1 by negative parts
      const Bytes mantissas =
          littleEndian16({4096, 0, 3 * 4096, -4 * 4096 + 65536, 4096, 0, 4096, 0, 0, 0xF000});
      const Bytes exponents{0, 0, 10, 0xF6, 0, 0x55};
      driver_.expect(findsTones(line, 100, 5) +
                     readsEqualiser(reception.far, line, mantissas, exponents, 0xC0 + 23, 0xFFFFFFFE));
      EXPECT_EQ(reception.read(line, feq_.data(), nullptr, nullptr), QVR_E_STATUS_OK);
      EXPECT_DOUBLE_EQ(feq_[0], -23 + kAceOff);
      EXPECT_DOUBLE_EQ(feq_[1], -10 * std::log10(25.0) - 23 + kAceOff);
      EXPECT_DOUBLE_EQ(feq_[2], -200 * std::log10(2.0) - 23 + kAceOff);
      EXPECT_NEAR(feq_[3], 200 * std::log10(2.0) - 23 + kAceOff, 1e-9);
      EXPECT_DOUBLE_EQ(feq_[4], -23 + kAceOff);
      driver_.verify();
    }
  }
  EXPECT_EQ(filled(feq_), 5U);
}

TEST_F(RxSignal, IsCalibratedForTheReceivePathOfEachMode) {
  // What a subcarrier of 104.7 MHz loses in the receive path, and one of 0 Hz.
  driver_.expect(readsOnes(false, 0, 0, 2048, 7, 1) + readsOnes(false, 0, 0, 2048, 7, 0));
  EXPECT_EQ(QVR_readRxSignal(0, feq_.data(), calibrated_.data(), &afe_), QVR_E_STATUS_OK);
  EXPECT_DOUBLE_EQ(feq_[1024], -7 + kAceOn);
  EXPECT_NEAR(calibrated_[0], 1.1 - 7 + kAceOn, 1e-12);
  EXPECT_NEAR(calibrated_[1024], 1.7997585110715557 - 7 + kAceOn, 1e-12);
  EXPECT_NEAR(calibrated_[2047], 4.295655244235048 - 7 + kAceOn, 1e-12);
  EXPECT_EQ(QVR_readRxSignal(0, feq_.data(), calibrated_.data(), &afe_), QVR_E_STATUS_OK);
  EXPECT_DOUBLE_EQ(feq_[1024], -7 + kAceOff);
  EXPECT_NEAR(calibrated_[0], 0.25 - 7 + kAceOff, 1e-12);
  EXPECT_NEAR(calibrated_[1024], 0.7498377489498043 - 7 + kAceOff, 1e-12);
  EXPECT_NEAR(calibrated_[2047], 2.3971567178839215 - 7 + kAceOff, 1e-12);
}

TEST_F(RxSignal, CalibrationDependsOnTheSubcarrierNotTheEntry) {
  driver_.expect(readsOnes(false, 0, 1024, 4, 0, 0));
  EXPECT_EQ(QVR_readRxSignal(0, nullptr, calibrated_.data(), nullptr), QVR_E_STATUS_OK);
  EXPECT_NEAR(calibrated_[0], 0.7498377489498043 + kAceOff, 1e-12);
  EXPECT_EQ(filled(calibrated_), 4U);
}

TEST_F(RxSignal, FillsOnlyTheOutputsThatAreGiven) {
  for (const Reception& reception : kReceptions) {
    for (unsigned wanted = 0; wanted < 8; wanted++) {
      SCOPED_TRACE(wanted);
      feq_ = calibrated_ = table();
      afe_ = {-1, 99};
      driver_.expect(readsOnes(reception.far, 0, 100, 2, 23, 1));
      EXPECT_EQ(reception.read(0, (wanted & 1) != 0 ? feq_.data() : nullptr,
                               (wanted & 2) != 0 ? calibrated_.data() : nullptr,
                               (wanted & 4) != 0 ? &afe_ : nullptr),
                QVR_E_STATUS_OK);
      EXPECT_EQ(filled(feq_), (wanted & 1) != 0 ? 2U : 0U);
      EXPECT_EQ(filled(calibrated_), (wanted & 2) != 0 ? 2U : 0U);
      EXPECT_EQ(afe_.aceOnOff, (wanted & 4) != 0 ? 1U : 99U);
      EXPECT_EQ(afe_.rxGain, (wanted & 4) != 0 ? 23 : -1);
    }
  }
}

TEST_F(RxSignal, IsFiniteForCoefficientsOfZero) {
  driver_.expect(findsTones(0, 100, 2) + readsEqualiser(false, 0, Bytes(8), {0x80, 0x7F}, 0, 0));
  EXPECT_EQ(QVR_readRxSignal(0, feq_.data(), nullptr, nullptr), QVR_E_STATUS_OK);
  EXPECT_DOUBLE_EQ(feq_[0], 200 + kAceOff);
  EXPECT_DOUBLE_EQ(feq_[1], 200 + kAceOff);
}

TEST_F(RxSignal, IsFiniteForExtremeCoefficients) {
  const Bytes extremes = littleEndian16({0x8000, 0x8000, 0x8000, 0x8000});
  driver_.expect(findsTones(0, 100, 2) + readsEqualiser(false, 0, extremes, {0x80, 0x7F}, 63, 1));
  EXPECT_EQ(QVR_readRxSignal(0, feq_.data(), calibrated_.data(), nullptr), QVR_E_STATUS_OK);
  EXPECT_TRUE(std::isfinite(feq_[0]) && std::isfinite(calibrated_[0]));
  EXPECT_TRUE(std::isfinite(feq_[1]) && std::isfinite(calibrated_[1]));
}

TEST_F(RxSignal, ReadsEvenLengthsForAnOddNumberOfSubcarriers) {
  const Script script = readsOnes(false, 0, 43, 1929, 0, 0);
  // 7716 bytes of mantissas, 1930 of exponents
  EXPECT_EQ(script.size(), 3U + 1 + 9 + 3 + 1 + 1);
  driver_.expect(script);
  EXPECT_EQ(QVR_readRxSignal(0, feq_.data(), nullptr, nullptr), QVR_E_STATUS_OK);
  EXPECT_EQ(filled(feq_), 1929U);
  const Script far = readsOnes(true, 0, 43, 1929, 0, 0);
  EXPECT_EQ(far.size(), 3U + 1 + 16 + 4 + 1 + 1);
  driver_.expect(far);
  EXPECT_EQ(QVR_readFarEndRxSignal(0, feq_.data(), nullptr, nullptr), QVR_E_STATUS_OK);
}

TEST_F(RxSignal, ReadsNothingPastTheGrid) {
  for (const Reception& reception : kReceptions) {
    driver_.expect(findsTones(0, 2047, 0xFFFFFFFF) +
                   readsEqualiser(reception.far, 0, ones(1), evenExponents(1), 0, 0));
    EXPECT_EQ(reception.read(0, feq_.data(), calibrated_.data(), nullptr), QVR_E_STATUS_OK);
    EXPECT_EQ(filled(calibrated_), 1U);
    for (const uint32_t firstTone : {2048U, 0xFFFFFFFFU}) {
      driver_.expect(readsOnes(reception.far, 0, firstTone, 0, 0, 0));
      EXPECT_EQ(reception.read(0, feq_.data(), calibrated_.data(), nullptr), QVR_E_STATUS_OK);
    }
    EXPECT_EQ(filled(feq_), 1U);
  }
}

TEST_F(RxSignal, FailsAndFillsNothingWhenAnyRequestFails) {
  for (const Reception& reception : kReceptions) {
    SCOPED_TRACE(reception.name);
    expectEachFailureAnswered([&] { return readsOnes(reception.far, 1, 43, 600, 23, 1); },
                              [&](bool& left) {
                                const QVR_retval_t status =
                                    reception.read(1, feq_.data(), calibrated_.data(), &afe_);
                                left = untouched(feq_) && untouched(calibrated_) && afe_.aceOnOff == 99;
                                return status;
                              });
  }
}

TEST_F(RxSignal, FailsForALineThatIsDownOrHasNoDevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  for (const Reception& reception : kReceptions) {
    driver_.expect(readsIdentity(0, chipWithLine(LS_INIT_HS)));
    EXPECT_EQ(reception.read(0, feq_.data(), nullptr, nullptr), QVR_E_ERROR);
    EXPECT_EQ(reception.read(1, feq_.data(), nullptr, nullptr), QVR_E_ERROR);
    EXPECT_ASSERTION(reception.read(2, feq_.data(), nullptr, nullptr),
                     asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  }
  EXPECT_TRUE(untouched(feq_));
}

struct Transmission {
  const char* name;
  QVR_retval_t (*read)(QVR_lineId_t line, double* values);
  bool far;
  uint32_t address;
};
constexpr Transmission kTransmissions[] = {
    {"level, near", QVR_readTxSignal, false, 0xE4200000},
    {"level, far", QVR_readFarEndTxSignal, true, 0xE4200000},
    {"amplitude, near", QVR_readTxFEQ, false, 0xE4240000},
    {"amplitude, far", QVR_readFarEndTxFEQ, true, 0xE4240000},
};

class TxSignal : public ToneTest {
 protected:
  Script readsValues(const Transmission& transmission, int device, uint32_t firstTone, const Bytes& values) {
    return findsTones(device, firstTone, static_cast<uint32_t>(values.size() / 2)) +
           readsAt(transmission.far, device, transmission.address, values);
  }

  std::vector<double> values_ = table();
};

TEST_F(TxSignal, IsInHundredthsOfADecibelAndNaNWhereNothingIsSent) {
  for (const Transmission& transmission : {kTransmissions[0], kTransmissions[1]}) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      SCOPED_TRACE(transmission.name);
      driver_.expect(readsValues(transmission, line, 43, littleEndian16({-6920, 0x8000, 0x8001, 100})));
      EXPECT_EQ(transmission.read(line, values_.data()), QVR_E_STATUS_OK);
      EXPECT_DOUBLE_EQ(values_[0], -69.20);
      EXPECT_TRUE(std::isnan(values_[1]));
      EXPECT_DOUBLE_EQ(values_[2], -327.67);
      EXPECT_DOUBLE_EQ(values_[3], 1.0);
      driver_.verify();
    }
  }
  EXPECT_EQ(filled(values_), 4U);
}

TEST_F(TxSignal, AmplitudesHave14FractionalBitsAndNoSign) {
  for (const Transmission& transmission : {kTransmissions[2], kTransmissions[3]}) {
    for (QVR_lineId_t line = 0; line < QVR_K_MAX_LINES; line++) {
      SCOPED_TRACE(transmission.name);
      driver_.expect(readsValues(transmission, line, 43, littleEndian16({16384, 0, 0x2000, 0xFFFF})));
      EXPECT_EQ(transmission.read(line, values_.data()), QVR_E_STATUS_OK);
      EXPECT_EQ(values_[0], 1.0);
      EXPECT_EQ(values_[1], 0.0);
      EXPECT_EQ(values_[2], 0.5);
      EXPECT_EQ(values_[3], 65535.0 / 16384);
      driver_.verify();
    }
  }
  EXPECT_EQ(filled(values_), 4U);
}

TEST_F(TxSignal, WholeGridTakesTheFewestRequests) {
  for (const Transmission& transmission : kTransmissions) {
    SCOPED_TRACE(transmission.name);
    const Script script = readsValues(transmission, 0, 0, Bytes(4096, 1));
    EXPECT_EQ(script.size(), 3U + 1 + (transmission.far ? 8 : 5));
    driver_.expect(script);
    EXPECT_EQ(transmission.read(0, values_.data()), QVR_E_STATUS_OK);
    EXPECT_EQ(filled(values_), 2048U);
  }
}

TEST_F(TxSignal, ReadsNothingPastTheGrid) {
  for (const Transmission& transmission : kTransmissions) {
    SCOPED_TRACE(transmission.name);
    values_ = table();
    driver_.expect(findsTones(0, 2046, 4000) +
                   readsAt(transmission.far, 0, transmission.address, Bytes(4, 1)) + findsTones(0, 2048, 1));
    EXPECT_EQ(transmission.read(0, values_.data()), QVR_E_STATUS_OK);
    EXPECT_EQ(transmission.read(0, values_.data()), QVR_E_STATUS_OK);
    EXPECT_EQ(filled(values_), 2U);
  }
}

TEST_F(TxSignal, FailsAndFillsNothingWhenAnyRequestFails) {
  for (const Transmission& transmission : kTransmissions) {
    SCOPED_TRACE(transmission.name);
    expectEachFailureAnswered([&] { return readsValues(transmission, 1, 43, Bytes(2000)); },
                              [&](bool& left) {
                                const QVR_retval_t status = transmission.read(1, values_.data());
                                left = untouched(values_);
                                return status;
                              });
  }
}

TEST_F(TxSignal, FailsForALineThatIsDownOrHasNoDevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  for (const Transmission& transmission : kTransmissions) {
    driver_.expect(readsIdentity(0, chipWithLine(LS_DEACTIVATING2)));
    EXPECT_EQ(transmission.read(0, values_.data()), QVR_E_ERROR);
    EXPECT_EQ(transmission.read(1, values_.data()), QVR_E_ERROR);
    EXPECT_ASSERTION(transmission.read(2, values_.data()),
                     asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
  }
  EXPECT_TRUE(untouched(values_));
}

}  // namespace
