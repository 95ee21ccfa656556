// Test signals between two virtual chips: what is generated, sent, captured and measured, and the files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "console/lab_on_board.h"
#include "qvrtest/test_pattern.h"

using namespace gfast;

namespace {

class Signals : public LabOnBoard {
 protected:
  // A lab whose lines are up, with more of the board and of each device.
  void start(const std::string& board = "", const std::string& device = "") {
    LabOnBoard::start(board + "[[device]]\nline = \"showtime\"\n" + device +
                      "[[device]]\nline = \"showtime\"\n" + device);
  }

  // The numbers of a file, however many a line.
  std::vector<double> numbers(const std::string& name) const {
    std::istringstream text(folder().read(name));
    std::vector<double> values;
    for (std::string word; text >> word;) {
      values.push_back(std::stod(word));
    }
    return values;
  }
};

TEST_F(Signals, GeneratedSignalIsFoundInTheTransmitBuffer) {
  start();
  EXPECT_EQ(typed("generate signal"), "");
  const std::string signal = folder().read("txsignal.dat");
  ASSERT_EQ(signal.size(), 2048U * 9);
  EXPECT_EQ(typed("transmit signal 1 txsignal.dat"), "");
  const std::string shown = typed("read memory 1 9003c114 8192");
  std::istringstream words(signal);
  std::istringstream rows(shown);
  std::string word;
  std::string row;
  for (int i = 0; i < 2048; i++) {
    ASSERT_TRUE(words >> word && rows >> row >> row) << i;
    ASSERT_EQ(std::stoul(row, nullptr, 16), std::stoul(word, nullptr, 16)) << i;
  }
}

TEST_F(Signals, ShortFileIsFilledWithZeros) {
  start();
  folder().write("short.dat", "7FFF8001\n");
  EXPECT_EQ(typed("transmit signal 0 short.dat"), "");
  EXPECT_EQ(typed("read memory 0 9003c114 8"), "9003c114: 7fff8001\r\n9003c118: 00000000\r\n");
}

TEST_F(Signals, BadFileIsReportedWithItsLine) {
  start();
  folder().write("bad.dat", "7FFF8001\n" + std::string(300000, 'x') + "\n00000001\n");
  EXPECT_EQ(typed("transmit signal 0 bad.dat"),
            "Signal file bad.dat ends before line 2, which is no hexadecimal word\r\n");
  EXPECT_EQ(typed("transmit signal 0 missing.dat"), "Failed loading signal from file missing.dat\r\n");
  EXPECT_EQ(typed("test afe-mtpr 0 1 missing.dat"), "Failed to load signal from file missing.dat\r\n");
}

// The ratios of a spectrum's empty subcarriers, of which either the points or their powers are given.
enum class Unit { kLinear, kDecibel };
std::vector<double> ratiosOf(const std::vector<double>& spectrum, Unit unit) {
  const auto power = [&](size_t k) { return std::norm(QVR_complex_t(spectrum[2 * k], spectrum[2 * k + 1])); };
  const auto power_db = [&](size_t k) { return 10 * std::log10(spectrum[2 * k]); };
  std::vector<double> ratios;
  for (size_t k = 60; k <= 1960; k += 20) {
    ratios.push_back(unit == Unit::kLinear ? (power(k - 1) + power(k + 1)) / 2 / power(k)
                                           : (power_db(k - 1) + power_db(k + 1)) / 2 - power_db(k));
  }
  return ratios;
}

TEST_F(Signals, MtprWritesTheLinearRatiosOfItsSpectrum) {
  start();
  EXPECT_EQ(typed("test afe-mtpr 0 1"), "");
  const std::vector<double> spectrum = numbers("fdsignal.out");
  const std::vector<double> ratios = numbers("mtpr.out");
  ASSERT_EQ(spectrum.size(), 2 * 2048U);
  ASSERT_EQ(ratios.size(), 96U);
  const std::vector<double> expected = ratiosOf(spectrum, Unit::kLinear);
  for (size_t i = 0; i < 96; i++) {
    EXPECT_GT(ratios[i], 1);
    EXPECT_NEAR(ratios[i] / expected[i], 1, 0.001) << i;
  }
}

TEST_F(Signals, MtprLoopWritesDecibels) {
  start();
  EXPECT_EQ(typed("test afe-mtpr-loop 0 1 3"), "");
  const std::vector<double> spectrum = numbers("fdsignal.out");
  const std::vector<double> ratios = numbers("mtpr.out");
  ASSERT_EQ(spectrum.size(), 2 * 2048U);
  ASSERT_EQ(ratios.size(), 96U);
  const std::vector<double> expected = ratiosOf(spectrum, Unit::kDecibel);
  for (size_t i = 0; i < 96; i++) {
    EXPECT_NEAR(ratios[i], expected[i], 0.01) << i;
  }
}

// A chip that hears itself through its hybrid, which is flat, with a front end that distorts nothing.
TEST_F(Signals, AfeLoopReturnsTheSignalUndistorted) {
  start("", "distortion_db = -200\n");
  EXPECT_EQ(typed("test afe-loop 0 0"), "");
  const std::vector<double> spectrum = numbers("fdsignal.out");
  ASSERT_EQ(spectrum.size(), 2 * 2048U);
  double loaded = 0;
  double empty = 0;
  for (uint32_t tone = 0; tone < 2048; tone++) {
    const QVR_complex_t got(spectrum[2 * tone], spectrum[2 * tone + 1]);
    if (!isLoadedTone(tone)) {
      empty += std::norm(got);
      continue;
    }
    loaded += std::norm(got);
    EXPECT_EQ(std::signbit(got.real()), std::signbit(kpatternFreq[tone].real())) << tone;
    EXPECT_EQ(std::signbit(got.imag()), std::signbit(kpatternFreq[tone].imag())) << tone;
  }
  EXPECT_LT(empty, loaded * 1e-5);
}

// The mean of a test's ratios, dB.
double mean_db(const std::vector<double>& ratios) {
  double sum = 0;
  for (const double ratio : ratios) {
    sum += 10 * std::log10(ratio);
  }
  return sum / static_cast<double>(ratios.size());
}

TEST_F(Signals, MtprFallsWithDistortion) {
  double better = 1000;
  for (const char* distortion : {"-70", "-50", "-30"}) {
    start("", std::string("distortion_db = ") + distortion + "\n");
    EXPECT_EQ(typed("test afe-mtpr 0 1"), "");
    const double mean = mean_db(numbers("mtpr.out"));
    EXPECT_LT(mean, better - 5) << distortion;
    better = mean;
  }
}

TEST_F(Signals, MtprFallsWithLength) {
  double better = 1000;
  for (const char* length : {"50", "200", "400"}) {
    start(std::string("[loop]\nlength_m = ") + length + "\n", "distortion_db = -90\n");
    EXPECT_EQ(typed("test afe-mtpr 0 1"), "");
    const double mean = mean_db(numbers("mtpr.out"));
    EXPECT_LT(mean, better - 3) << length;
    better = mean;
  }
}

TEST_F(Signals, FailedRequestsAreReportedAndTheSessionGoesOn) {
  start(
      "[[fault]]\ndevice = 0\nrequest = \"memwrite\"\naddress = 0x9003C200\ncount = 0\n"
      "[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = 0x90017DD4\ncount = 0\n"
      "[[fault]]\ndevice = 1\nrequest = \"memwrite\"\naddress = 0x90004940\ncount = 0\n");
  EXPECT_EQ(typed("transmit signal 0"), "start transmit signal error (13)\r\n");
  EXPECT_EQ(typed("receive signal 0"), "receive signal error (12)\r\n");
  EXPECT_EQ(typed("receive signal 1"), "receive signal error (13)\r\n");
  EXPECT_EQ(typed("test afe-loop 0 1"), "Failed in AFE TX-RX Path Test (13)\r\n");
  EXPECT_EQ(typed("test afe-mtpr 1 0"), "Failed in AFE MTPR Performance Test (12)\r\n");
  EXPECT_EQ(typed("test afe-mtpr-loop 1 1 3"), "Failed in AFE MTPR Performance Test (13)\r\n");
  EXPECT_EQ(typed("show version"), kVersion);
}

}  // namespace
