// Test signals: generated from the pattern, sent, captured.
#include <cmath>

#include "chip/test_memory.h"
#include "qvrtest/default_signal.h"
#include "qvrtest/test_pattern.h"
#include "support/plain_transform.h"
#include "unit/sdk/qvrtest/signals.h"

using namespace gfast;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Mode kMixed{"mixed", FALSE, TRUE};

// The symbol of the pattern, by the plain loop.
Points patternSymbol(uint32_t tones) {
  Points spectrum(size_t{2} * tones);
  for (uint32_t k = 43; k <= 1972 && k < tones; k++) {
    spectrum[k] = k % 20 == 0 ? 0 : kpatternFreq[k];
  }
  Points symbol(spectrum.size());
  PlainTransform(spectrum.size(), kMixed, Direction::kInverse).run(spectrum, symbol);
  return symbol;
}

// The symbol's samples of 16 bits, the largest being 16384.
std::vector<int> patternSamples(uint32_t tones) {
  const Points symbol = patternSymbol(tones);
  float largest = 0;
  for (const QVR_complex_t& point : symbol) {
    largest = std::max(largest, static_cast<float>(std::abs(point)));
  }
  std::vector<int> samples;
  for (const QVR_complex_t& point : symbol) {
    samples.push_back(static_cast<int>(std::round(point.real() / static_cast<double>(largest) * 16384)));
  }
  return samples;
}

Words generated(uint32_t tones, uint32_t startTone = 43, uint32_t endTone = 1971) {
  Words words(tones);
  EXPECT_EQ(QVR_generateRandomTxSignal(startTone, endTone, tones, words.data()), QVR_E_STATUS_OK);
  return words;
}

// Odd samples in the high halves, and once more in the low half of the next word.
TEST(GeneratedSignal, HoldsTheOddSamplesTwice) {
  const Words words = generated(2048);
  const std::vector<int> samples = patternSamples(2048);
  for (size_t i = 0; i < words.size(); i++) {
    EXPECT_EQ(highSample(words[i]), samples[2 * i + 1]) << i;
    EXPECT_EQ(lowSample(words[i]), i == 0 ? 0 : samples[2 * i - 1]) << i;
  }
}

TEST(GeneratedSignal, HasALargestSampleOf16384) {
  int largest = 0;
  for (const uint32_t word : generated(2048)) {
    largest = std::max({largest, std::abs(lowSample(word)), std::abs(highSample(word))});
  }
  EXPECT_EQ(largest, 16384);
}

TEST(GeneratedSignal, HasNegativeSamplesInTwosComplement) {
  const Words words = generated(2048);
  const std::vector<int> samples = patternSamples(2048);
  ASSERT_LT(samples[1], 0);
  EXPECT_EQ(words[0] >> 16, static_cast<uint32_t>(65536 + samples[1]));
  EXPECT_GE(words[0] >> 16, 32768U);
  EXPECT_EQ(words[1] & 0xFFFF, static_cast<uint32_t>(65536 + samples[1]));
}

TEST(GeneratedSignal, IgnoresTheBandArguments) {
  const Words words = generated(2048);
  EXPECT_EQ(generated(2048, 0, 0), words);
  EXPECT_EQ(generated(2048, 0xFFFFFFFF, 5), words);
  EXPECT_EQ(generated(2048), words);
}

TEST(GeneratedSignal, IsShorterForFewerTones) {
  for (const uint32_t tones : {64U, 256U, 1024U}) {
    const Words words = generated(tones);
    const std::vector<int> samples = patternSamples(tones);
    for (size_t i = 0; i < words.size(); i++) {
      ASSERT_EQ(highSample(words[i]), samples[2 * i + 1]) << tones << " " << i;
      ASSERT_EQ(lowSample(words[i]), i == 0 ? 0 : samples[2 * i - 1]) << tones << " " << i;
    }
  }
}

TEST(GeneratedSignal, IsSilentWithoutALoadedTone) {
  for (const uint32_t tones : {1U, 2U, 32U, 43U}) {
    EXPECT_EQ(generated(tones), Words(tones, 0)) << tones;
  }
}

// The vectors are exactly as long as the signal, so a sanitizer sees every access outside.
TEST(GeneratedSignal, StaysInRangeForAnyNumberOfTones) {
  for (uint32_t tones = 44; tones <= 2048; tones += 61) {
    for (const uint32_t word : generated(tones)) {
      ASSERT_LE(std::abs(lowSample(word)), 16384);
      ASSERT_LE(std::abs(highSample(word)), 16384);
    }
  }
}

TEST(GeneratedSignal, AssertsThatThereAreTones) {
  QVR_txSignal_t words;
  EXPECT_ASSERTION(QVR_generateRandomTxSignal(43, 1971, 0, words),
                   asserts(201, "size must be a power of 2", 0, "../fft.c"));
}

TEST(GeneratedSignal, RefusesTooManyTones) {
  QVR_txSignal_t words = {7};
  for (const uint32_t tones : {2049U, 4096U, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(QVR_generateRandomTxSignal(43, 1971, tones, words), QVR_E_INVALID_OPERATION) << tones;
    EXPECT_EQ(words[0], 7U);
  }
}

TEST(DefaultSignal, IsTheSymbolOfThePatternWithTwoSamplesAWord) {
  const std::vector<int> samples = patternSamples(2048);
  for (size_t i = 0; i < defaultTxSignal.size(); i++) {
    EXPECT_EQ(lowSample(defaultTxSignal[i]), samples[2 * i]) << i;
    EXPECT_EQ(highSample(defaultTxSignal[i]), samples[2 * i + 1]) << i;
  }
}

TEST(DefaultSignal, HasACrestFactorOf11Point5Decibels) {
  double power = 0;
  int peak = 0;
  for (const uint32_t word : defaultTxSignal) {
    for (const int sample : {lowSample(word), highSample(word)}) {
      power += static_cast<double>(sample) * sample / QVR_K_SIGNAL_POINTS;
      peak = std::max(peak, std::abs(sample));
    }
  }
  EXPECT_EQ(peak, 16384);
  EXPECT_NEAR(20 * std::log10(peak / std::sqrt(power)), 11.5, 0.05);
}

TEST(TestAddresses, DependOnTheLineIndex) {
  EXPECT_EQ(QVR_G_GHS_TX_BUFF0_ADDR(0), kTransmitBuffer);
  EXPECT_EQ(QVR_G_TEST_SNAPSHOT_COUNT_ADDR(0), kSnapshotCounter);
  EXPECT_EQ(QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(0), kCapturedSymbol);
  EXPECT_EQ(QVR_G_GHS_TX_BUFF0_ADDR(1), 0x9083C114U);
  EXPECT_EQ(QVR_G_TEST_SNAPSHOT_COUNT_ADDR(2), 0x91004940U);
  EXPECT_EQ(QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(3), 0x91817DD4U);
}

TEST(TestMode, MakesNoRequest) {
  const ExpectedRequests driver{Script()};
  EXPECT_EQ(QVR_initTestModule(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_enterTestMode(), QVR_E_STATUS_OK);
  EXPECT_EQ(QVR_exitTestMode(), QVR_E_STATUS_OK);
}

// Words that all differ.
Words countingWords() {
  Words words(QVR_K_SIGNAL_WORDS);
  for (uint32_t i = 0; i < words.size(); i++) {
    words[i] = 0x01020304 + i * 0x00010001;
  }
  return words;
}

using Transmission = SignalsTest;

TEST_F(Transmission, WritesTheWordsIntoTheTransmitBuffer) {
  const Words words = countingWords();
  driver_.expect(finds(1, LS_SHOWTIME) + sendsSymbol(1, words));
  EXPECT_EQ(QVR_startSignalTransmission(1, words.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(testClock().sleeps(), IsEmpty());
}

TEST_F(Transmission, WritesWordsLittleEndianIn64Pieces) {
  const Script script = sendsSymbol(0, Words(QVR_K_SIGNAL_WORDS, 0x11223344));
  ASSERT_EQ(script.size(), 64U);
  EXPECT_EQ(Bytes(script.calls()[0].in.begin(), script.calls()[0].in.begin() + 4),
            (Bytes{0x44, 0x33, 0x22, 0x11}));
}

TEST_F(Transmission, SendsTheDefaultSignalWithoutOne) {
  driver_.expect(finds(0, LS_SILENT) + sendsSymbol(0, {defaultTxSignal.begin(), defaultTxSignal.end()}));
  EXPECT_EQ(QVR_startSignalTransmission(0, nullptr), QVR_E_STATUS_OK);
}

Script activatesLine(int device) {
  return writes(device, 0xE9300000, {1, 0, 0, 0});
}

TEST_F(Transmission, ActivatesAnIdleLineFirst) {
  const Words words = countingWords();
  driver_.expect(finds(0, LS_IDLE) + activatesLine(0) + sendsSymbol(0, words));
  EXPECT_EQ(QVR_startSignalTransmission(0, words.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(testClock().sleeps(), ElementsAre(1s));
}

// The requests that are still to come at each wait.
class WaitsOfSignals : public SignalsTest {
 protected:
  void SetUp() override {
    SignalsTest::SetUp();
    testClock().onSleep([this] { leftAtWaits_.push_back(driver_.left()); });
  }

  std::vector<size_t> leftAtWaits_;
};

TEST_F(WaitsOfSignals, StandBetweenTheActivationAndTheSymbol) {
  const Script symbol = sendsSymbol(0, countingWords());
  driver_.expect(finds(0, LS_IDLE) + activatesLine(0) + symbol);
  EXPECT_EQ(QVR_startSignalTransmission(0, countingWords().data()), QVR_E_STATUS_OK);
  EXPECT_THAT(leftAtWaits_, ElementsAre(symbol.size()));
}

TEST_F(WaitsOfSignals, StandBetweenTheActivationAndTheCaptureAndBeforeEachPoll) {
  const Script symbol = readsSymbol(0, countingWords());
  driver_.expect(finds(0, LS_IDLE) + activatesLine(0) + requestsSnapshot(0, 3) + symbol);
  Points points(QVR_K_SIGNAL_POINTS);
  EXPECT_EQ(QVR_receiveSignalSnapshot(0, points.data(), points.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(leftAtWaits_,
              ElementsAre(symbol.size() + 4, symbol.size() + 3, symbol.size() + 2, symbol.size() + 1));
}

TEST_F(WaitsOfSignals, StandBetweenTheSignalAndTheCapture) {
  const Script capture = capturesSymbol(1, countingWords());
  const Script symbol = readsSymbol(1, countingWords());
  driver_.expect(finds(0, LS_SHOWTIME) + sendsSymbol(0, countingWords()) + capture);
  Points points(QVR_K_SIGNAL_POINTS);
  EXPECT_EQ(QVR_testAfeTxRxPath(0, 1, countingWords().data(), points.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(leftAtWaits_, ElementsAre(capture.size(), symbol.size() + 1));
}

TEST_F(Transmission, ActivatesALineInNoOtherState) {
  for (int state = 0; state < 10; state++) {
    if (state != LS_IDLE) {
      driver_.expect(finds(0, static_cast<G9701_linkState_t>(state)) + sendsSymbol(0, countingWords()));
      EXPECT_EQ(QVR_startSignalTransmission(0, countingWords().data()), QVR_E_STATUS_OK) << state;
      driver_.verify();
    }
  }
  EXPECT_THAT(testClock().sleeps(), IsEmpty());
}

TEST_F(Transmission, GoesOnAfterAFailedActivation) {
  const Words words = countingWords();
  driver_.expect(finds(0, LS_IDLE) + activatesLine(0).fails(EIO) + sendsSymbol(0, words));
  EXPECT_EQ(QVR_startSignalTransmission(0, words.data()), QVR_E_STATUS_OK);
  EXPECT_THAT(testClock().sleeps(), ElementsAre(1s));
}

TEST_F(Transmission, ReturnsTheCodeOfEachFailure) {
  const Words words = countingWords();
  const Script script = finds(0, LS_SHOWTIME) + sendsSymbol(0, words);
  for (size_t position = 0; position < script.size(); position++) {
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_EQ(QVR_startSignalTransmission(0, words.data()),
              position < 3 ? QVR_E_MEMREAD_ERROR : QVR_E_MEMWRITE_ERROR);
    driver_.verify();
  }
}

// All trace messages, which are of debug level, and how many requests were still to come at each.
std::vector<std::string>& traced() {
  static auto* lines = new std::vector<std::string>;
  return *lines;
}

std::vector<size_t>& leftAtTraces() {
  static auto* counts = new std::vector<size_t>;
  return *counts;
}

void traceEverything(ExpectedRequests& driver) {
  static ExpectedRequests* requests = nullptr;
  requests = &driver;
  QVR_setTraceLogLevel(QVRLOG_DEBUG);
  QVR_registerTraceLogHandlerCB([](QVR_logSeverity_t severity, const char* message) {
    EXPECT_EQ(severity, QVRLOG_DEBUG);
    traced().emplace_back(message);
    leftAtTraces().push_back(requests->left());
  });
}

auto tracedBy(const std::string& operation, const std::string& text) {
  return testing::MatchesRegex("\\[LOG_DEBUG\\] " + operation + ":[0-9]+ " + text + "\n");
}

TEST_F(Transmission, TracesTheBufferAddress) {
  traceEverything(driver_);
  driver_.expect(finds(0, LS_SHOWTIME) + sendsSymbol(0, countingWords()));
  QVR_startSignalTransmission(0, countingWords().data());
  EXPECT_THAT(traced(),
              ElementsAre(tracedBy("QVR_startSignalTransmission", "QVR_G_GHS_TX_BUFF0_ADDR = 9003C114")));
  EXPECT_THAT(leftAtTraces(), ElementsAre(sendsSymbol(0, countingWords()).size())) << "before the transfer";
}

TEST_F(Transmission, AssertsOnAnUnknownLine) {
  EXPECT_ASSERTION(QVR_startSignalTransmission(2, nullptr),
                   asserts(200, "Invalid Line Identifier", 2, "../qvrline"));
}

class Capture : public SignalsTest {
 protected:
  QVR_retval_t capture(QVR_lineId_t line) {
    return QVR_receiveSignalSnapshot(line, time_.data(), frequency_.data());
  }

  Points time_ = Points(QVR_K_SIGNAL_POINTS, {7, 7});
  Points frequency_ = Points(QVR_K_SIGNAL_POINTS, {7, 7});
};

// The low half of a word is the earlier sample; both are signed. The second half of the samples is not
// returned.
TEST_F(Capture, ReturnsTheFirstHalfOfTheSamples) {
  Words words(QVR_K_SIGNAL_WORDS, 0);
  words[0] = 0x00020001;
  words[1] = 0xFFFEFFFF;
  words[2] = 0x80007FFF;
  words[1023] = 0x00050004;
  words[1024] = 0x00090008;
  driver_.expect(capturesSymbol(0, words));
  ASSERT_EQ(capture(0), QVR_E_STATUS_OK);
  EXPECT_EQ(Points(time_.begin(), time_.begin() + 7), (Points{1, 2, -1, -2, 32767, -32768, 0}));
  EXPECT_EQ(Points(time_.begin() + 2046, time_.begin() + 2050), (Points{4, 5, {7, 7}, {7, 7}}));
}

TEST_F(Capture, ReturnsTheUnitaryTransformOfAllSamples) {
  const Words words = countingWords();
  driver_.expect(capturesSymbol(1, words));
  ASSERT_EQ(capture(1), QVR_E_STATUS_OK);
  EXPECT_EQ(frequency_, plainSpectrum(words));
}

TEST_F(Capture, OfTheDefaultSignalHasThePatternAndEmptyNotches) {
  driver_.expect(capturesSymbol(0, {defaultTxSignal.begin(), defaultTxSignal.end()}));
  ASSERT_EQ(capture(0), QVR_E_STATUS_OK);
  const double loudness = std::abs(frequency_[43]);
  for (uint32_t tone = 0; tone < 2048; tone++) {
    if (isLoadedTone(tone)) {
      const QVR_complex_t decision = frequency_[tone] / kpatternFreq[tone];
      EXPECT_NEAR(decision.real() * std::sqrt(2), loudness, loudness / 1000) << tone;
      EXPECT_NEAR(decision.imag() * std::sqrt(2), 0, loudness / 1000) << tone;
    } else {
      EXPECT_LT(std::abs(frequency_[tone]), loudness / 1000) << tone;
    }
  }
}

TEST_F(Capture, WaitsBeforeEveryPoll) {
  driver_.expect(finds(0, LS_SHOWTIME) + requestsSnapshot(0, 3) + readsSymbol(0, countingWords()));
  EXPECT_EQ(capture(0), QVR_E_STATUS_OK);
  EXPECT_THAT(testClock().sleeps(), ElementsAre(50ms, 50ms, 50ms));
}

TEST_F(Capture, NoticesACounterThatReachesZeroAtTheLastPoll) {
  driver_.expect(finds(0, LS_SHOWTIME) + requestsSnapshot(0, 10) + readsSymbol(0, countingWords()));
  EXPECT_EQ(capture(0), QVR_E_STATUS_OK);
  EXPECT_EQ(testClock().sleeps().size(), 10U);
}

TEST_F(Capture, PollsUntilEveryByteOfTheCounterIsZero) {
  driver_.expect(finds(0, LS_SHOWTIME) + writes(0, kSnapshotCounter, {0, 0, 0, 1}) +
                 reads(0, kSnapshotCounter, {1, 0, 0, 0}) + reads(0, kSnapshotCounter, {0, 1, 0, 0}) +
                 reads(0, kSnapshotCounter, {0, 0, 1, 0}) + reads(0, kSnapshotCounter, {0, 0, 0, 1}) +
                 reads(0, kSnapshotCounter, {0, 0, 0, 0}) + readsSymbol(0, countingWords()));
  EXPECT_EQ(capture(0), QVR_E_STATUS_OK);
}

TEST_F(Capture, ActivatesALineInNoOtherState) {
  for (int state = 0; state < 10; state++) {
    if (state != LS_IDLE) {
      driver_.expect(finds(0, static_cast<G9701_linkState_t>(state)) + requestsSnapshot(0) +
                     readsSymbol(0, countingWords()));
      EXPECT_EQ(capture(0), QVR_E_STATUS_OK) << state;
      driver_.verify();
    }
  }
}

TEST_F(Capture, ReadsTheSymbolAlthoughTheCounterNeverReachesZero) {
  driver_.expect(finds(0, LS_SHOWTIME) + writes(0, kSnapshotCounter, {0, 0, 0, 1}) +
                 reads(0, kSnapshotCounter, {0, 0, 0, 1}).times(10) + readsSymbol(0, countingWords()));
  EXPECT_EQ(capture(0), QVR_E_STATUS_OK);
  EXPECT_EQ(testClock().sleeps().size(), 10U);
  EXPECT_EQ(time_[0], QVR_complex_t(0x0304));
}

TEST_F(Capture, ActivatesAnIdleLineFirst) {
  driver_.expect(finds(1, LS_IDLE) + activatesLine(1) + requestsSnapshot(1) +
                 readsSymbol(1, countingWords()));
  EXPECT_EQ(capture(1), QVR_E_STATUS_OK);
  EXPECT_THAT(testClock().sleeps(), ElementsAre(1s, 50ms));
}

TEST_F(Capture, FailsAndWritesNothingWhenAnyRequestFails) {
  const Script script = finds(0, LS_SHOWTIME) + requestsSnapshot(0, 2) + readsSymbol(0, countingWords());
  for (size_t position = 0; position < script.size(); position++) {
    driver_.expect(script.failingAt(position, EIO));
    EXPECT_EQ(capture(0), position == 3 ? QVR_E_MEMWRITE_ERROR : QVR_E_MEMREAD_ERROR) << position;
    EXPECT_EQ(time_[0], QVR_complex_t(7, 7));
    EXPECT_EQ(frequency_[0], QVR_complex_t(7, 7));
    driver_.verify();
  }
}

TEST_F(Capture, TracesItsAddresses) {
  traceEverything(driver_);
  driver_.expect(capturesSymbol(0, countingWords()));
  capture(0);
  EXPECT_THAT(traced(),
              ElementsAre(tracedBy("QVR_receiveSignalSnapshot", "QVR_G_TEST_SNAPSHOT_COUNT_ADDR = 90004940"),
                          tracedBy("QVR_receiveSignalSnapshot", "QVR_G_GHS_RX_FFT_SYMBOL0_ADDR = 90017DD4")));
  const size_t symbol = readsSymbol(0, countingWords()).size();
  EXPECT_THAT(leftAtTraces(), ElementsAre(symbol + 2, symbol)) << "before each transfer";
}

TEST_F(Capture, AssertsOnAnUnknownLine) {
  EXPECT_ASSERTION(capture(-1), asserts(200, "Invalid Line Identifier", -1, "../qvrline"));
}

TEST(SignalsWithoutDevice, ReturnDeviceNotExists) {
  enterBothLines();
  const ExpectedRequests driver(opens(1).fails(ENOENT).times(2));
  Points buffer(QVR_K_SIGNAL_POINTS);
  EXPECT_EQ(QVR_startSignalTransmission(1, nullptr), QVR_E_DEVICE_NOT_EXISTS);
  EXPECT_EQ(QVR_receiveSignalSnapshot(1, buffer.data(), buffer.data()), QVR_E_DEVICE_NOT_EXISTS);
}

}  // namespace
