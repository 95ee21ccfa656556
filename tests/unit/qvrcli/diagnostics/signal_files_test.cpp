// Signals and ratios as text files: given this file, these words are loaded; given these values, this is
// written.
#include "qvrcli/diagnostics/signal_files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "support/temporary_folder.h"
#include "support/text_file.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::StartsWith;

constexpr uint32_t kUntouched = 0xEEEEEEEE;

class SignalFile : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return directory_.path() + "/" + name; }

  // The words that were loaded.
  std::vector<uint32_t> loaded(const std::string& text) {
    std::vector<uint32_t> words(QVR_K_SIGNAL_WORDS + 1, kUntouched);
    EXPECT_TRUE(loadSignalFromFile(directory_.write("signal.dat", text).c_str(), words.data(), &badLine_));
    while (!words.empty() && words.back() == kUntouched) {
      words.pop_back();
    }
    return words;
  }

  TemporaryFolder directory_;
  uint32_t badLine_ = kUntouched;
};

using Words = std::vector<uint32_t>;

TEST_F(SignalFile, IsWrittenAsWordsAndReadBack) {
  Words signal(QVR_K_SIGNAL_WORDS);
  for (uint32_t i = 0; i < QVR_K_SIGNAL_WORDS; i++) {
    signal[i] = i * 0x01FF00FDU;
  }
  EXPECT_TRUE(dumpTxSignalToFile(signal.data(), path("tx.dat").c_str()));
  const std::string text = readText(path("tx.dat"));
  EXPECT_EQ(text.size(), QVR_K_SIGNAL_WORDS * 9U);
  EXPECT_THAT(text, StartsWith("00000000\n01FF00FD\n03FE01FA\n"));
  EXPECT_EQ(loaded(text), signal);
  EXPECT_EQ(badLine_, 0U);
}

TEST_F(SignalFile, MayBeShort) {
  EXPECT_EQ(loaded("40000000\n0000C000\n"), (Words{0x40000000, 0xC000}));
  EXPECT_EQ(badLine_, 0U);
  EXPECT_EQ(loaded(""), Words());
  EXPECT_EQ(badLine_, 0U);
}

TEST_F(SignalFile, MayBeLonger) {
  std::string text;
  for (int i = 0; i < 3000; i++) {
    text += "00000007\n";
  }
  EXPECT_EQ(loaded(text + "garbage\n"), Words(QVR_K_SIGNAL_WORDS, 7));
  EXPECT_EQ(badLine_, 0U);
}

TEST_F(SignalFile, MayHaveOtherLineEndsAndEmptyLines) {
  EXPECT_EQ(loaded("\r\n  7fffffff \r\n\r\nA\t\r\n\n1"), (Words{0x7FFFFFFF, 0xA, 1}));
  EXPECT_EQ(badLine_, 0U);
}

TEST_F(SignalFile, EndsAtALineOfAnotherForm) {
  using namespace std::string_literals;
  for (const std::string& bad : {"xyz"s, "12345678 12345678"s, "123456789"s, "0x1"s, "-1"s, "1 #"s,
                                 "12\00034"s, "\0"s, std::string(100000, '1'), std::string(80, 'A')}) {
    EXPECT_EQ(loaded("00000005\n\n" + bad + "\n00000006\n"), (Words{5})) << bad;
    EXPECT_EQ(badLine_, 3U) << bad;
  }
}

TEST_F(SignalFile, IsReadWithoutAskingWhereItEnds) {
  uint32_t words[QVR_K_SIGNAL_WORDS] = {};
  EXPECT_TRUE(loadSignalFromFile(directory_.write("a", "1\nx\n2\n").c_str(), words));
  EXPECT_EQ(words[0], 1U);
  EXPECT_EQ(words[1], 0U);
}

TEST_F(SignalFile, FailsWhenItCannotBeOpened) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  uint32_t words[QVR_K_SIGNAL_WORDS] = {};
  for (const std::string& name :
       {std::string(), path("missing"), directory_.path(), path("pipe"), std::string("/dev/zero")}) {
    EXPECT_FALSE(loadSignalFromFile(name.c_str(), words)) << name;
  }
}

TEST_F(SignalFile, HoldsBothPartsOfEachPointOfASpectrum) {
  const auto points = std::make_unique<QVR_complex_t[]>(QVR_K_SIGNAL_POINTS);
  points[0] = {1.5, -2.25};
  points[1] = {1e-9, 123456789.125};
  points[2047] = {-0.0, 7};
  points[2048] = {9, 9};
  ASSERT_TRUE(dumpSignalToFile(points.get(), path("fd.out").c_str()));
  const std::string text = readText(path("fd.out"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2048);
  EXPECT_THAT(text, StartsWith("1.500000 -2.250000\n0.000000 123456789.125000\n0.000000 0.000000\n"));
  EXPECT_TRUE(text.ends_with("\n-0.000000 7.000000\n"));
}

TEST_F(SignalFile, ShowsNoSignOfAPointThatIsNoNumber) {
  const auto points = std::make_unique<QVR_complex_t[]>(QVR_K_SIGNAL_POINTS);
  const double minusNan = std::copysign(std::numeric_limits<double>::quiet_NaN(), -1.0);
  points[0] = {minusNan, minusNan};
  ASSERT_TRUE(dumpSignalToFile(points.get(), path("fd.out").c_str()));
  EXPECT_THAT(readText(path("fd.out")), StartsWith("nan nan\n"));
}

TEST_F(SignalFile, Holds96RatiosOfAnyValue) {
  double mtpr[1024] = {2.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(),
                       -3.0103};
  mtpr[95] = 1e300;
  mtpr[96] = 96;
  ASSERT_TRUE(dumpMtprToFile(mtpr, path("mtpr.out").c_str()));
  const std::string text = readText(path("mtpr.out"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 96);
  EXPECT_THAT(text, StartsWith("2.000000\ninf\nnan\n-3.010300\n0.000000\n"));
  EXPECT_EQ(text.size() - text.rfind('\n', text.size() - 2) - 2, 301U + 7U);  // 1e300 in full
}

// A C library may round .5 away from zero, a processor may give what is no number a sign: a file shows
// neither.
TEST_F(SignalFile, IsTheSameOnEveryMachine) {
  const double mtpr[1024] = {0.0078125, 0.0234375, -0.0078125, -std::numeric_limits<double>::quiet_NaN(),
                             -std::numeric_limits<double>::infinity()};
  ASSERT_TRUE(dumpMtprToFile(mtpr, path("mtpr.out").c_str()));
  EXPECT_THAT(readText(path("mtpr.out")), StartsWith("0.007812\n0.023438\n-0.007812\nnan\n-inf\n"));

  const auto points = std::make_unique<QVR_complex_t[]>(QVR_K_SIGNAL_POINTS);
  points[0] = {0.0078125, -0.0234375};
  ASSERT_TRUE(dumpSignalToFile(points.get(), path("fd.out").c_str()));
  EXPECT_THAT(readText(path("fd.out")), StartsWith("0.007812 -0.023438\n"));
}

TEST_F(SignalFile, ReplacesAnOlderFile) {
  directory_.write("mtpr.out", std::string(100000, 'x'));
  const double mtpr[1024] = {};
  ASSERT_TRUE(dumpMtprToFile(mtpr, path("mtpr.out").c_str()));
  EXPECT_EQ(readText(path("mtpr.out")).size(), 96U * 9U);
}

TEST_F(SignalFile, FailsWhenItCannotBeWritten) {
  const auto points = std::make_unique<QVR_complex_t[]>(QVR_K_SIGNAL_POINTS);
  const uint32_t words[QVR_K_SIGNAL_WORDS] = {};
  const double mtpr[1024] = {};
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  for (const std::string& name : {path("no/folder"), directory_.path(), std::string("/dev/full"),
                                  path("pipe"), std::string("/dev/zero")}) {
    EXPECT_FALSE(dumpTxSignalToFile(words, name.c_str())) << name;
    EXPECT_FALSE(dumpSignalToFile(points.get(), name.c_str())) << name;
    EXPECT_FALSE(dumpMtprToFile(mtpr, name.c_str())) << name;
  }
}

TEST_F(SignalFile, IsWrittenToNoPipeThatIsRead) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  const int reader = open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
  const double mtpr[1024] = {};
  EXPECT_FALSE(dumpMtprToFile(mtpr, path("pipe").c_str()));
  EXPECT_TRUE(dumpMtprToFile(mtpr, "/dev/null"));
  close(reader);
}

}  // namespace
