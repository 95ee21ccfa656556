// Test signals: a symbol that one chip sends, and what is captured at either end of the loop.
#include <gfast_api.h>
#include <gtest/gtest.h>

#include <cmath>
#include <complex>

#include "chip/registers.h"
#include "chip/test_memory.h"
#include "unit/virtual-board/bench.h"
#include "virtual-board/line/cable.h"
#include "virtual-board/measured/spectrum.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kTransmit = QVR_G_GHS_TX_BUFF0_ADDR(0);
constexpr uint32_t kSnapshot = QVR_G_TEST_SNAPSHOT_COUNT_ADDR(0);
constexpr uint32_t kCaptured = QVR_G_GHS_RX_FFT_SYMBOL0_ADDR(0);
constexpr size_t kPoints = QVR_K_TEST_SYMBOL_SIZE / 2;
constexpr double kSpacing_hz = 51750;

using Samples = std::vector<int16_t>;

// The loaded subcarriers: 43 to 1972, but not the multiples of 20.
bool loaded(size_t tone) {
  return tone >= 43 && tone <= 1972 && tone % 20 != 0;
}

// A random QPSK pattern, the same for the same seed.
constexpr uint32_t kSeed = 12345;
Spectrum pattern(uint32_t seed = kSeed) {
  Spectrum points(kPoints);
  uint32_t state = seed;
  const auto sign = [&state] {
    state = state * 1664525U + 1013904223U;
    return (state >> 31) == 0 ? 1.0 : -1.0;
  };
  for (size_t k = 1; k < kPoints / 2; k++) {
    const double re = sign();
    const double im = sign();
    const std::complex<double> point(re, im);
    points[k] = loaded(k) ? point : 0;
    points[kPoints - k] = std::conj(points[k]);
  }
  return points;
}

double rms(const std::vector<double>& samples) {
  double energy = 0;
  for (const double x : samples) {
    energy += x * x;
  }
  return std::sqrt(energy / static_cast<double>(samples.size()));
}

// The pattern at a root mean square of `level`; 4096 is the converters' nominal level.
Samples testSignal(double level = 4096, uint32_t seed = kSeed) {
  const std::vector<double> signal = samplesOf(pattern(seed));
  const double scale = level / rms(signal);
  Samples samples;
  for (const double x : signal) {
    samples.push_back(static_cast<int16_t>(std::lround(scale * x)));
  }
  return samples;
}

void transmit(Bench& bench, int device, const Samples& samples) {
  std::vector<uint8_t> bytes(2 * samples.size());
  for (size_t i = 0; i < samples.size(); i++) {
    store_le16(&bytes[2 * i], static_cast<uint16_t>(samples[i]));
  }
  for (size_t at = 0; at < bytes.size(); at += IOCTL_MAX_WRITE_BYTES) {
    ASSERT_EQ(
        bench.write(device, kTransmit + static_cast<uint32_t>(at), hex(&bytes[at], IOCTL_MAX_WRITE_BYTES)),
        "ok");
  }
}

Samples symbolAt(Bench& bench, int device, uint32_t address) {
  Samples samples;
  for (uint32_t at = 0; at < QVR_K_TEST_SYMBOL_SIZE; at += 512) {
    const auto bytes = fromHex(bench.read(device, address + at, 512));
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
      samples.push_back(static_cast<int16_t>(load_le16(&bytes[i])));
    }
  }
  return samples;
}

Samples capture(Bench& bench, int device) {
  EXPECT_EQ(bench.writeWord(device, kSnapshot, 1), "ok");
  bench.wait(0.031);
  EXPECT_EQ(bench.word(device, kSnapshot), 0U);
  return symbolAt(bench, device, kCaptured);
}

Spectrum received(const Samples& samples) {
  return spectrumOf(std::vector<double>(samples.begin(), samples.end()));
}

Spectrum fromTo(Bench& bench, int sender, int receiver, uint32_t seed = kSeed) {
  transmit(bench, sender, testSignal(4096, seed));
  return received(capture(bench, receiver));
}

bool silent(const Samples& samples) {
  return std::all_of(samples.begin(), samples.end(), [](int16_t x) { return x == 0; });
}

// How much of the pattern is in a capture: their correlation, 1 at the most.
double likeness(const Samples& captured) {
  const Spectrum sent = pattern();
  const Spectrum got = received(captured);
  double common = 0;
  double energySent = 0;
  double energyGot = 0;
  for (size_t k = 1; k < kPoints / 2; k++) {
    common += std::abs(std::conj(sent[k]) * got[k]);
    energySent += std::norm(sent[k]);
    energyGot += std::norm(got[k]);
  }
  return common / std::sqrt(energySent * energyGot);
}

// Mean missing-tone power ratio: power of an empty subcarrier's neighbours over its own.
double mtpr_db(const Spectrum& spectrum) {
  double sum = 0;
  int tones = 0;
  for (size_t k = 60; k <= 1960; k += 20, tones++) {
    sum += 10 *
           std::log10((std::norm(spectrum[k - 1]) + std::norm(spectrum[k + 1])) / 2 / std::norm(spectrum[k]));
  }
  return sum / tones;
}

std::string boardFile(double length_m, double distortion_db, double noise_dbm_hz = -140) {
  const std::string device = "[[device]]\ndistortion_db = " + std::to_string(distortion_db) + '\n';
  return "[loop]\nlength_m = " + std::to_string(length_m) +
         "\nnoise_dbm_hz = " + std::to_string(noise_dbm_hz) + '\n' + device + device;
}

int wrongDecisions(const Spectrum& spectrum, const LoopConfig& loop) {
  const Cable cable(loop);
  const Spectrum sent = pattern();
  int wrong = 0;
  for (size_t k = 43; k <= 1972; k++) {
    if (!loaded(k)) {
      continue;
    }
    const auto equalised = spectrum[k] / cable.insertionGain(static_cast<double>(k) * kSpacing_hz);
    wrong += std::signbit(equalised.real()) != std::signbit(sent[k].real()) ||
             std::signbit(equalised.imag()) != std::signbit(sent[k].imag());
  }
  return wrong;
}

}  // namespace

TEST(TestMemory, KeepsTheSymbolToSend) {
  Bench bench;
  const Samples signal = testSignal();
  transmit(bench, 0, signal);
  EXPECT_EQ(symbolAt(bench, 0, kTransmit), signal);
  EXPECT_TRUE(silent(symbolAt(bench, 1, kTransmit)));
}

TEST(TestMemory, CapturesASymbolIn30Milliseconds) {
  Bench bench;
  EXPECT_EQ(bench.word(0, kSnapshot), 0U);
  for (const uint32_t asked : {1U, 0x01000000U}) {  // any value but 0 asks for a symbol
    bench.writeWord(0, kSnapshot, asked);
    EXPECT_EQ(bench.word(0, kSnapshot), asked);
    bench.wait(0.029);
    EXPECT_EQ(bench.word(0, kSnapshot), asked);
    bench.wait(0.002);
    EXPECT_EQ(bench.word(0, kSnapshot), 0U);
    EXPECT_EQ(bench.word(1, kSnapshot), 0U);
  }
  bench.writeWord(0, kSnapshot, 1);
  bench.writeWord(0, kSnapshot, 0);  // cancels the request
  const Samples before = symbolAt(bench, 0, kCaptured);
  bench.wait(1);
  EXPECT_EQ(symbolAt(bench, 0, kCaptured), before);
}

TEST(TestMemory, ASymbolIsReceivedWithoutErrorsOverAShortLoop) {
  for (const double length_m : {0.0, 20.0, 100.0}) {
    const BoardConfig config = parseBoard(boardFile(length_m, -200), "b");
    Bench bench(config);
    EXPECT_EQ(wrongDecisions(fromTo(bench, 0, 1), config.loop), 0) << length_m;
    EXPECT_EQ(wrongDecisions(fromTo(bench, 1, 0), config.loop), 0) << length_m;
  }
}

TEST(TestMemory, ASymbolIsReceivedWithoutErrorsAtTheNearEnd) {
  Bench bench(boardFile(300, -200));
  LoopConfig none;
  none.length_m = 0;
  EXPECT_EQ(wrongDecisions(fromTo(bench, 0, 0), none), 0);
  EXPECT_EQ(wrongDecisions(fromTo(bench, 1, 1), none), 0);
}

TEST(TestMemory, TheReceivedSpectrumHasTheLoopsShape) {
  const BoardConfig config = parseBoard(
      "[loop]\nlength_m = 80\ntaps = [ { at_m = 30, length_m = 7 } ]\n[[device]]\ndistortion_db = -200\n"
      "[[device]]\ndistortion_db = -200",
      "b");
  Bench bench(config);
  const Spectrum near = fromTo(bench, 0, 0);
  const Spectrum far = fromTo(bench, 0, 1);
  const Cable cable(config.loop);
  const auto gain = [&](size_t k) { return cable.insertionGain(static_cast<double>(k) * kSpacing_hz); };
  // The near end is flat, so the ratio of two subcarriers is the cable's.
  for (const size_t k : {101U, 503U, 777U, 1001U, 1499U, 1811U}) {
    const auto measured = (far[k] / near[k]) / (far[301] / near[301]);
    const auto expected = gain(k) / gain(301);
    EXPECT_NEAR(std::abs(measured / expected - 1.0), 0, 0.05) << k;
  }
}

TEST(TestMemory, EmptySubcarriersHoldTheBackgroundNoise) {
  const BoardConfig config = parseBoard(boardFile(100, -200), "b");
  Bench bench(config);
  const Cable cable(config.loop);
  // A loaded subcarrier has its share of +4 dBm. The noise on one is that of 51.75 kHz, and the receiver's
  // own noise is 10 dB below it.
  int count = 0;
  for (size_t k = 0; k < kPoints / 2; k++) {
    count += loaded(k);
  }
  const double sent_dbm = 4 - 10 * std::log10(count);
  const double noise_dbm = -140 + 10 * std::log10(1.1) + 10 * std::log10(kSpacing_hz);
  double expected = 0;
  for (size_t k = 60; k <= 1960; k += 20) {
    expected +=
        sent_dbm + 20 * std::log10(std::abs(cable.insertionGain(static_cast<double>(k) * kSpacing_hz)));
  }
  expected = expected / 96 - noise_dbm;
  // The mean of the noise in dB is 2.5 dB below its mean power in dB.
  EXPECT_NEAR(mtpr_db(fromTo(bench, 0, 1)), expected + 2.5, 1.5);
}

// Over several patterns, because the peaks of a single one may distort it more than usual.
double meanMtpr_db(Bench& bench, int sender, int receiver) {
  constexpr int patterns = 8;
  double sum = 0;
  for (uint32_t seed = 1; seed <= patterns; seed++) {
    sum += mtpr_db(fromTo(bench, sender, receiver, seed));
  }
  return sum / patterns;
}

TEST(TestMemory, TheMeasuredDistortionIsTheConfiguredOne) {
  // Only one of the two front ends distorts, and the noise of -140 dBm/Hz is far below that.
  Bench bench(
      "[[device]]\ndistortion_db = -40\n[[device]]\ndistortion_db = -200\n"
      "[loop]\nlength_m = 1");
  // The mean of the ratio in dB is 2.5 dB above its mean power in dB.
  EXPECT_NEAR(meanMtpr_db(bench, 0, 1), 40 + 2.5, 1.5);
  EXPECT_NEAR(meanMtpr_db(bench, 1, 0), 40 + 2.5, 1.5);
}

TEST(TestMemory, MissingToneRatiosFallWithDistortion) {
  double better = 1000;
  for (const double distortion_db : {-90.0, -60.0, -50.0, -40.0, -30.0, -20.0}) {
    Bench bench(boardFile(50, distortion_db));
    const double ratio = mtpr_db(fromTo(bench, 0, 1));
    EXPECT_TRUE(std::isfinite(ratio)) << distortion_db;
    EXPECT_GT(ratio, 5) << distortion_db;
    EXPECT_LT(ratio, better - (distortion_db < -55 ? 1 : 5)) << distortion_db;
    better = ratio;
  }
}

TEST(TestMemory, MissingToneRatiosFallWithLengthAndNoise) {
  double better = 1000;
  for (const double length_m : {1.0, 50.0, 100.0, 200.0, 400.0}) {
    Bench bench(boardFile(length_m, -70));
    const double ratio = mtpr_db(fromTo(bench, 0, 1));
    EXPECT_LT(ratio, better - 1) << length_m;
    EXPECT_GT(ratio, 0) << length_m;
    better = ratio;
  }
  better = 1000;
  for (const double noise_dbm_hz : {-140.0, -130.0, -120.0, -110.0}) {
    Bench bench(boardFile(50, -70, noise_dbm_hz));
    const double ratio = mtpr_db(fromTo(bench, 0, 1));
    EXPECT_LT(ratio, better - 5) << noise_dbm_hz;
    better = ratio;
  }
}

TEST(TestMemory, TheUsualFrontEndIsAGoodOne) {
  Bench bench("[loop]\nlength_m = 10");
  const double ratio = mtpr_db(fromTo(bench, 0, 1));
  EXPECT_GT(ratio, 55);
  EXPECT_LT(ratio, 72);
}

TEST(TestMemory, TheReceiverAmplifiesToTheNominalLevel) {
  for (const double length_m : {1.0, 100.0, 300.0}) {
    Bench bench(boardFile(length_m, -70));
    transmit(bench, 0, testSignal());
    const Samples samples = capture(bench, 1);
    const double level = rms(std::vector<double>(samples.begin(), samples.end()));
    EXPECT_GT(level, 4096 / 1.26) << length_m;
    EXPECT_LT(level, 4096 * 1.13) << length_m;
  }
}

TEST(TestMemory, CapturesNoiseWithoutASignal) {
  Bench bench;
  const Samples samples = capture(bench, 0);
  const double level = rms(std::vector<double>(samples.begin(), samples.end()));
  EXPECT_GT(level, 1000);
  EXPECT_LT(level, 5000);
  EXPECT_NEAR(mtpr_db(received(samples)), 0 + 0.8, 1.5);
}

TEST(TestMemory, AQuieterSignalIsLessDistorted) {
  Bench loud(boardFile(1, -40));
  Bench quiet(boardFile(1, -40));
  transmit(loud, 0, testSignal(4096));
  transmit(quiet, 0, testSignal(1024));
  // The receiver amplifies both to the same level and distorts both alike. The sender distorts the quiet one
  // less.
  EXPECT_GT(mtpr_db(received(capture(quiet, 1))), mtpr_db(received(capture(loud, 1))) + 2);
}

TEST(TestMemory, TheSignalWrittenLastIsOnThePair) {
  Bench bench(boardFile(10, -200));
  transmit(bench, 0, testSignal());
  transmit(bench, 1, Samples(kPoints));
  EXPECT_LT(likeness(capture(bench, 1)), 0.9);
  EXPECT_LT(likeness(capture(bench, 0)), 0.9);
  transmit(bench, 0, testSignal());
  EXPECT_GT(likeness(capture(bench, 1)), 0.9);
  EXPECT_GT(likeness(capture(bench, 0)), 0.9);
}

TEST(TestMemory, NothingArrivesOverACutLoop) {
  Bench bench(boardFile(10, -200));
  transmit(bench, 0, testSignal());
  bench.board.cutLoop(true);
  EXPECT_LT(likeness(capture(bench, 1)), 0.9);
  EXPECT_GT(likeness(capture(bench, 0)), 0.9);
  bench.board.cutLoop(false);
  EXPECT_GT(likeness(capture(bench, 1)), 0.9);
}

TEST(TestMemory, AResetClearsTheSymbolsAndTheRequest) {
  Bench bench(boardFile(10, -200));
  transmit(bench, 0, testSignal());
  capture(bench, 0);
  bench.writeWord(0, kSnapshot, 1);
  bench.rebootToApp(0);
  bench.wait(1.5);
  EXPECT_TRUE(silent(symbolAt(bench, 0, kTransmit)));
  EXPECT_TRUE(silent(symbolAt(bench, 0, kCaptured)));
  EXPECT_EQ(bench.word(0, kSnapshot), 0U);
  EXPECT_LT(likeness(capture(bench, 1)), 0.9);
}

TEST(TestMemory, AnIdleLineNeitherSendsNorReceives) {
  Bench bench(boardFile(10, -200));
  transmit(bench, 0, testSignal());
  bench.writeWord(0, VIRT_ADDR_LINKS_PROVISION(0), 0);
  bench.writeWord(0, kSnapshot, 1);
  bench.wait(1);
  EXPECT_EQ(bench.word(0, kSnapshot), 1U);
  EXPECT_TRUE(silent(symbolAt(bench, 0, kCaptured)));
  EXPECT_LT(likeness(capture(bench, 1)), 0.9);
  bench.writeWord(0, VIRT_ADDR_LINKS_PROVISION(0), 1);
  EXPECT_GT(likeness(capture(bench, 1)), 0.9);
  EXPECT_GT(likeness(capture(bench, 0)), 0.9);
}

TEST(TestMemory, TheBootLoaderHasNone) {
  Bench bench("[[device]]\nboot = \"b1\"");
  transmit(bench, 0, testSignal());
  EXPECT_TRUE(silent(symbolAt(bench, 0, kTransmit)));
  bench.writeWord(0, kSnapshot, 1);
  EXPECT_EQ(bench.word(0, kSnapshot), 0U);
}

TEST(TestMemory, TheNoiseDependsOnTheSeed) {
  const auto captured = [](int seed, int device) {
    Bench bench(("[board]\nseed = " + std::to_string(seed)));
    return capture(bench, device);
  };
  EXPECT_EQ(captured(1, 0), captured(1, 0));
  EXPECT_NE(captured(1, 0), captured(2, 0));
  EXPECT_NE(captured(1, 0), captured(1, 1));
  Bench bench;
  EXPECT_NE(capture(bench, 0), capture(bench, 0));
}

TEST(TestMemory, AnySymbolCanBeSent) {
  Samples square(kPoints);
  for (size_t i = 0; i < kPoints; i++) {
    square[i] = i % 2 == 0 ? INT16_MIN : INT16_MAX;
  }
  Samples impulse(kPoints);
  impulse[7] = INT16_MAX;
  for (const Samples& signal : {square, impulse, Samples(kPoints, INT16_MIN)}) {
    for (const double distortion_db : {-20.0, -200.0}) {
      Bench bench(boardFile(0, distortion_db));
      transmit(bench, 0, signal);
      for (const int device : {0, 1}) {
        const Samples samples = capture(bench, device);
        EXPECT_FALSE(silent(samples));
        EXPECT_EQ(std::count(samples.begin(), samples.end(), INT16_MIN), 0);
      }
    }
  }
}
