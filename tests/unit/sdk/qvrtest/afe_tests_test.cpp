// Loop-back tests of the analogue front end: the path, and the missing-tone power ratio of one capture and of
// several.
#include <cmath>
#include <iterator>

#include "qvrtest/default_signal.h"
#include "qvrtest/test_pattern.h"
#include "unit/sdk/qvrtest/signals.h"

using namespace gfast;

namespace {

using testing::Each;
using testing::ElementsAre;

Words defaultWords() {
  return {defaultTxSignal.begin(), defaultTxSignal.end()};
}

Words generatedWords() {
  Words words(QVR_K_SIGNAL_WORDS);
  QVR_generateRandomTxSignal(43, 1971, QVR_K_SIGNAL_WORDS, words.data());
  return words;
}

// A symbol that holds nothing but these amplitudes of cosines at subcarriers 59 to 61, in chip samples.
Words tonesAround60(double below, double at, double above) {
  Words words;
  for (int i = 0; i < 2048; i++) {
    uint32_t word = 0;
    for (const int point : {2 * i + 1, 2 * i}) {
      const double turn = 2 * M_PI * point / 4096;
      const double value =
          below * std::cos(59 * turn) + at * std::cos(60 * turn) + above * std::cos(61 * turn);
      word = word << 16 | (static_cast<uint32_t>(std::lround(value)) & 0xFFFF);
    }
    words.push_back(word);
  }
  return words;
}

TEST(MissingToneRatio, IsMeanPowerOfTheNeighboursOverPowerOfTheNotch) {
  Points spectrum(QVR_K_SIGNAL_POINTS, 1);
  spectrum[59] = {3, 4};   // 25
  spectrum[60] = {0, 2};   // 4
  spectrum[61] = {-1, 0};  // 1
  QVR_MTPR_t ratios;
  QVR_calcMTPR(spectrum.data(), ratios);
  EXPECT_DOUBLE_EQ(ratios[0], 3.25);
  EXPECT_EQ(ratios[1], 1);
}

TEST(MissingToneRatio, IsTwoForHalfTheNeighboursPower) {
  Points spectrum(QVR_K_SIGNAL_POINTS, {1, 1});
  for (uint32_t tone = 60; tone <= 1960; tone += 20) {
    spectrum[tone] = {0, 1};
  }
  std::vector<double> ratios(QVR_K_MTPR_TONES);
  QVR_calcMTPR(spectrum.data(), ratios.data());
  EXPECT_THAT(ratios, Each(testing::DoubleEq(2)));
}

TEST(MissingToneRatio, HasAnEntryForEveryTwentiethToneFrom60To1960) {
  for (uint32_t i = 0; i < QVR_K_MTPR_TONES; i++) {
    Points spectrum(QVR_K_SIGNAL_POINTS, 1);
    spectrum[20 * i + 60] = 0.5;
    QVR_MTPR_t ratios;
    QVR_calcMTPR(spectrum.data(), ratios);
    for (uint32_t other = 0; other < QVR_K_MTPR_TONES; other++) {
      EXPECT_EQ(ratios[other], other == i ? 4 : 1) << i << " " << other;
    }
  }
}

TEST(MissingToneRatio, HasNoEntryForTone1980) {
  Points spectrum(QVR_K_SIGNAL_POINTS, 1);
  spectrum[1980] = 0;
  QVR_MTPR_t ratios = {};
  ratios[96] = 7;
  QVR_calcMTPR(spectrum.data(), ratios);
  EXPECT_EQ(ratios[95], 1);
  EXPECT_EQ(ratios[96], 7);
}

TEST(MissingToneRatio, IsInfiniteOrNaNForASilentNotch) {
  Points spectrum(QVR_K_SIGNAL_POINTS);
  spectrum[79] = 1;
  QVR_MTPR_t ratios;
  QVR_calcMTPR(spectrum.data(), ratios);
  EXPECT_TRUE(std::isnan(ratios[0]));
  EXPECT_TRUE(std::isinf(ratios[1]));
  EXPECT_GT(ratios[1], 0);
}

class AfeTests : public SignalsTest {
 protected:
  static Script sends(int device, const Words& words) {
    return finds(device, LS_SHOWTIME) + sendsSymbol(device, words);
  }

  Points spectrum_ = Points(QVR_K_SIGNAL_POINTS, {7, 7});
  std::vector<double> ratios_ = std::vector<double>(1024, 7);
};

using AfePath = AfeTests;
using AfeMtpr = AfeTests;
using AfeMtprLoop = AfeTests;

TEST_F(AfePath, SendsOnOneLineAndCapturesOnTheOther) {
  driver_.expect(sends(1, generatedWords()) + capturesSymbol(0, defaultWords()));
  EXPECT_EQ(QVR_testAfeTxRxPath(1, 0, generatedWords().data(), spectrum_.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(testClock().sleeps(), ElementsAre(50ms, 50ms));
  EXPECT_GT(std::abs(spectrum_[59]), 1000);
  EXPECT_LT(std::abs(spectrum_[60]), 1);
}

TEST_F(AfePath, TakesOneLineAndTheDefaultSignal) {
  driver_.expect(sends(0, defaultWords()) + capturesSymbol(0, defaultWords()));
  EXPECT_EQ(QVR_testAfeTxRxPath(0, 0, nullptr, spectrum_.data()), QVR_E_STATUS_OK);
}

TEST_F(AfePath, ReturnsTheCodeOfEachFailure) {
  const Script script = sends(0, defaultWords()) + capturesSymbol(1, defaultWords());
  const size_t sent = sends(0, defaultWords()).size();
  for (const size_t position : {size_t{0}, sent - 1, sent, sent + 3, sent + 4, script.size() - 1}) {
    const bool isWrite = position == sent - 1 || position == sent + 3;
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_EQ(QVR_testAfeTxRxPath(0, 1, nullptr, spectrum_.data()),
              isWrite ? QVR_E_MEMWRITE_ERROR : QVR_E_MEMREAD_ERROR)
        << position;
    EXPECT_EQ(spectrum_[0], QVR_complex_t(7, 7));
    driver_.verify();
  }
}

TEST_F(AfeMtpr, ReturnsLinearRatiosAndTheSpectrum) {
  driver_.expect(sends(0, defaultWords()) + capturesSymbol(1, tonesAround60(8000, 4000, 8000)));
  EXPECT_EQ(QVR_testAfePerformanceMTPR(0, 1, nullptr, spectrum_.data(), ratios_.data()), QVR_E_STATUS_OK);
  EXPECT_NEAR(ratios_[0], 4, 0.001);
  EXPECT_EQ(ratios_[96], 7);
  EXPECT_NEAR(std::abs(spectrum_[60]), 4000.0 * 4096 / 2 / 64, 10);
}

TEST_F(AfeMtpr, ShowsOnlyRoundingWhenThePathReturnsTheSignal) {
  driver_.expect(sends(0, defaultWords()) + capturesSymbol(0, defaultWords()));
  EXPECT_EQ(QVR_testAfePerformanceMTPR(0, 0, nullptr, spectrum_.data(), ratios_.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(std::vector<double>(ratios_.begin(), ratios_.begin() + 96), Each(testing::Gt(1e6)));
}

TEST_F(AfeMtpr, KeepsTheRatiosOnFailure) {
  const Script script = sends(0, defaultWords()) + capturesSymbol(1, defaultWords());
  for (const size_t position : {size_t{1}, size_t{10}, script.size() - 1}) {
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_NE(QVR_testAfePerformanceMTPR(0, 1, nullptr, spectrum_.data(), ratios_.data()), QVR_E_STATUS_OK);
    EXPECT_THAT(ratios_, Each(7));
    driver_.verify();
  }
}

TEST_F(AfeMtprLoop, ReturnsDecibelsAndTheSummedPowers) {
  const Words captured = tonesAround60(8000, 5656.854, 8000);
  driver_.expect((sends(0, generatedWords()) + capturesSymbol(1, captured)).times(2));
  EXPECT_EQ(QVR_testAfePerformanceMTPRInLoop(0, 1, 2, spectrum_.data(), ratios_.data()), QVR_E_STATUS_OK);
  EXPECT_NEAR(ratios_[0], 3.01, 0.01);
  EXPECT_EQ(ratios_[96], 7);
  const double amplitude = 8000.0 * 4096 / 2 / 64;
  EXPECT_NEAR(spectrum_[59].real() / (2 * amplitude * amplitude), 1, 0.001);
  EXPECT_EQ(spectrum_[59].imag(), 0);
}

// The upper half of a real symbol's spectrum mirrors the lower.
TEST_F(AfeMtprLoop, SumsAllPointsOfTheSpectrum) {
  driver_.expect(sends(0, generatedWords()) + capturesSymbol(1, tonesAround60(8000, 0, 4000)));
  QVR_testAfePerformanceMTPRInLoop(0, 1, 1, spectrum_.data(), ratios_.data());
  EXPECT_NEAR(spectrum_[4096 - 59].real() / spectrum_[59].real(), 1, 1e-9);
}

TEST_F(AfeMtprLoop, ReturnsDecibelsForOneCapture) {
  const Words captured = tonesAround60(8000, 800, 8000);
  driver_.expect((sends(0, generatedWords()) + capturesSymbol(1, captured)).times(2));
  QVR_testAfePerformanceMTPRInLoop(0, 1, 1, spectrum_.data(), ratios_.data());
  EXPECT_NEAR(ratios_[0], 20, 0.01);
  QVR_testAfePerformanceMTPR(0, 1, generatedWords().data(), spectrum_.data(), ratios_.data());
  EXPECT_NEAR(ratios_[0], 100, 0.1);
}

// Neighbours that differ, and two captures that do: the plain loop says what comes out, to the last digits.
TEST_F(AfeMtprLoop, TakesTheMeanOfTheNeighboursDecibels) {
  const Words captured[] = {tonesAround60(8000, 700, 1000), tonesAround60(3000, 900, 2000)};
  const Script sending = sends(0, generatedWords());
  driver_.expect(sending + capturesSymbol(1, captured[0]) + sending + capturesSymbol(1, captured[1]));
  EXPECT_EQ(QVR_testAfePerformanceMTPRInLoop(0, 1, 2, spectrum_.data(), ratios_.data()), QVR_E_STATUS_OK);
  double decibels[3];
  for (size_t i = 0; i < std::size(decibels); i++) {
    double power = 0;
    for (const Words& words : captured) {
      power += std::norm(plainSpectrum(words)[59 + i]);
    }
    EXPECT_NEAR(spectrum_[59 + i].real() / power, 1, 1e-12) << i;
    decibels[i] = 10 * std::log10(power);
  }
  EXPECT_NEAR(ratios_[0], (decibels[0] + decibels[2]) / 2 - decibels[1], 1e-9);
}

TEST_F(AfeMtprLoop, PrintsTheNumberOfEveryCapture) {
  driver_.expect((sends(0, generatedWords()) + capturesSymbol(1, defaultWords())).times(3));
  testing::internal::CaptureStdout();
  QVR_testAfePerformanceMTPRInLoop(0, 1, 3, spectrum_.data(), ratios_.data());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "0\n1\n2\n");
}

// The second capture fails: what the first one left counts twice.
TEST_F(AfeMtprLoop, GoesOnAfterAFailureAndReturnsTheLastCode) {
  const Script once = sends(0, generatedWords()) + capturesSymbol(1, tonesAround60(8000, 4000, 8000));
  driver_.expect(once + once.failingAt(once.size() - 1, EIO));
  EXPECT_EQ(QVR_testAfePerformanceMTPRInLoop(0, 1, 2, spectrum_.data(), ratios_.data()), QVR_E_MEMREAD_ERROR);
  const double amplitude = 8000.0 * 4096 / 2 / 64;
  EXPECT_NEAR(spectrum_[59].real() / (2 * amplitude * amplitude), 1, 0.001);
  driver_.expect(once.failingAt(0, EIO) + once);
  EXPECT_EQ(QVR_testAfePerformanceMTPRInLoop(0, 1, 2, spectrum_.data(), ratios_.data()), QVR_E_STATUS_OK);
}

TEST_F(AfeMtprLoop, HasNoRatiosWithoutCaptures) {
  for (const int captures : {0, -1}) {
    EXPECT_EQ(QVR_testAfePerformanceMTPRInLoop(0, 1, captures, spectrum_.data(), ratios_.data()),
              QVR_E_STATUS_OK);
    EXPECT_THAT(spectrum_, Each(QVR_complex_t()));
    EXPECT_TRUE(std::isnan(ratios_[0]));
  }
}

}  // namespace
