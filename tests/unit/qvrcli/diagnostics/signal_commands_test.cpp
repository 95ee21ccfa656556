// Test signals at the console: given these files and what the chip answers, when this is typed, these
// requests are made and these files are written.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>

#include "qvrcli/diagnostics/signal_files.h"
#include "qvrtest/default_signal.h"
#include "support/lines.h"
#include "support/plain_transform.h"
#include "support/temporary_folder.h"
#include "support/test_symbols.h"
#include "support/text_file.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

Words generatedSignal() {
  Words words(QVR_K_SIGNAL_WORDS);
  EXPECT_EQ(QVR_generateRandomTxSignal(43, 1971, 2048, words.data()), QVR_E_STATUS_OK);
  return words;
}

// A symbol in which no two neighbouring samples are equal.
Words capturedSymbol(uint32_t seed) {
  Words symbol(QVR_K_SIGNAL_WORDS);
  for (uint32_t i = 0; i < symbol.size(); i++) {
    symbol[i] = (i + seed) * 2654435761U;
  }
  return symbol;
}

// The line's device is looked at, and 64 requests fill its transmit buffer; words that are missing are 0.
Script sends(int device, Words symbol) {
  symbol.resize(QVR_K_SIGNAL_WORDS);
  return findsLineUp(device) + sendsSymbol(device, symbol);
}

Script captures(int device, const Words& symbol) {
  return capturesSymbol(device, symbol);
}

// Two open devices, and an empty working folder.
class SignalCommands : public TypedConsole {
 protected:
  void SetUp() override {
    ASSERT_EQ(chdir(directory_.path().c_str()), 0);
    enterBothLines();
    expect(opens(0) + opens(1));
    QVR_deviceHandle(0);
    QVR_deviceHandle(1);
  }

  void TearDown() override { verify(); }

  // The contents of the file of a captured spectrum and of that of its ratios.
  struct Files {
    std::string spectrum;
    std::string ratios;
  };
  Files filesOf(const Words& symbol) {
    expect(captures(0, symbol));
    const auto time = std::make_unique<QVR_complex_t[]>(QVR_K_SIGNAL_POINTS);
    const auto frequency = std::make_unique<QVR_complex_t[]>(QVR_K_SIGNAL_POINTS);
    EXPECT_EQ(QVR_receiveSignalSnapshot(0, time.get(), frequency.get()), QVR_E_STATUS_OK);
    double mtpr[1024] = {};
    QVR_calcMTPR(frequency.get(), mtpr);
    EXPECT_TRUE(dumpSignalToFile(frequency.get(), "expected.out"));
    EXPECT_TRUE(dumpMtprToFile(mtpr, "ratios.out"));
    return {readText("expected.out"), readText("ratios.out")};
  }

  static bool exists(const char* name) { return access(name, F_OK) == 0; }

  const std::string& write(const std::string& name, const std::string& text) {
    directory_.write(name, text);
    return directory_.path();
  }

 private:
  TemporaryFolder directory_;
};

// A signal of one, two, three, ... and its file.
Words countingSignal() {
  Words words(QVR_K_SIGNAL_WORDS);
  for (uint32_t i = 0; i < QVR_K_SIGNAL_WORDS; i++) {
    words[i] = 0x01000000U + i;
  }
  return words;
}

std::string textOf(const Words& words) {
  std::string text;
  char line[16];
  for (const uint32_t word : words) {
    std::snprintf(line, sizeof line, "%08X\n", word);
    text += line;
  }
  return text;
}

// ---- generate signal ----

TEST_F(SignalCommands, GenerateWritesTheTestSignal) {
  EXPECT_THAT(typed("generate signal"), IsEmpty());
  EXPECT_EQ(readText("txsignal.dat"), textOf(generatedSignal()));
  EXPECT_THAT(typed("generate signal other.dat"), IsEmpty());
  EXPECT_EQ(readText("other.dat"), readText("txsignal.dat"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(SignalCommands, GenerateReportsAFileThatCannotBeWritten) {
  EXPECT_THAT(typed("generate signal no/folder.dat"),
              ElementsAre("Failed writing file no/folder.dat (No such file or directory)"));
  EXPECT_THAT(typed("generate signal /dev/full"),
              ElementsAre("Failed writing file /dev/full (No space left on device)"));
}

TEST_F(SignalCommands, GenerateTakesOneWordAtMost) {
  EXPECT_THAT(typed("generate signal 1 2"),
              ElementsAre("generate signal [<signal-filename>] : { txsignal.dat }"));
  EXPECT_FALSE(exists("txsignal.dat"));
}

// ---- transmit signal ----

TEST_F(SignalCommands, TransmitSendsTheSignalOfAFile) {
  write("signal.dat", textOf(countingSignal()));
  expect(sends(1, countingSignal()));
  EXPECT_THAT(typed("transmit signal 1 signal.dat"), IsEmpty());
}

TEST_F(SignalCommands, TransmitSendsAGeneratedSignal) {
  typed("generate signal");
  expect(sends(0, generatedSignal()));
  EXPECT_THAT(typed("transmit signal 0 txsignal.dat"), IsEmpty());
}

TEST_F(SignalCommands, TransmitSendsZerosForMissingWords) {
  write("long.dat", textOf(countingSignal()));
  write("short.dat", "00000005\n00000006\n");
  expect(sends(0, countingSignal()) + sends(0, {5, 6}));
  typed("transmit signal 0 long.dat");
  EXPECT_THAT(typed("transmit signal 0 short.dat"), IsEmpty());
}

TEST_F(SignalCommands, TransmitReportsTheLineThatIsNoWord) {
  write("bad.dat", "00000005\nnonsense\n00000006\n");
  expect(sends(0, {5}));
  EXPECT_THAT(typed("transmit signal 0 bad.dat"),
              ElementsAre("Signal file bad.dat ends before line 2, which is no hexadecimal word"));
}

TEST_F(SignalCommands, TransmitSendsTheLibrarysOwnSignal) {
  const Words own(defaultTxSignal.begin(), defaultTxSignal.end());
  expect(sends(0, own) + sends(1, own));
  EXPECT_THAT(typed("transmit signal"), IsEmpty());
  EXPECT_THAT(typed("transmit signal 1"), IsEmpty());
}

TEST_F(SignalCommands, TransmitRefusesAnUnknownLine) {
  EXPECT_THAT(typed("transmit signal 2"), ElementsAre("invalid line number"));
  EXPECT_THAT(typed("transmit signal -1 missing.dat"), ElementsAre("invalid line number"));
}

TEST_F(SignalCommands, TransmitReportsAFileThatCannotBeLoaded) {
  for (const char* name : {"missing.dat", ".", "/dev/zero"}) {
    EXPECT_THAT(typed(std::string("transmit signal 0 ") + name),
                ElementsAre(std::string("Failed loading signal from file ") + name));
  }
}

TEST_F(SignalCommands, TransmitReportsEachFailingRequest) {
  write("signal.dat", textOf(countingSignal()));
  const Script whole = sends(0, countingSignal());
  for (const auto& [position, text] : {std::pair<size_t, const char*>{0, "start transmit signal error (12)"},
                                       {3, "start transmit signal error (13)"},
                                       {66, "start transmit signal error (13)"}}) {
    expect(whole.failingAt(position, EIO));
    EXPECT_THAT(typed("transmit signal 0 signal.dat"), ElementsAre(text)) << position;
    verify();
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(SignalCommands, TransmitTakesTwoWordsAtMost) {
  EXPECT_THAT(typed("transmit signal 0 a b"),
              ElementsAre("transmit signal [<line-id>] [<signal-filename>] : { 0, <default-signal> }"));
}

// ---- receive signal ----

TEST_F(SignalCommands, ReceiveWritesTheCapturedSpectrum) {
  const Files files = filesOf(capturedSymbol(1));
  expect(captures(0, capturedSymbol(1)) + captures(1, capturedSymbol(1)));
  EXPECT_THAT(typed("receive signal"), IsEmpty());
  EXPECT_EQ(readText("fdsignal.out"), files.spectrum);
  EXPECT_THAT(typed("receive signal 1 other.out"), IsEmpty());
  EXPECT_EQ(readText("other.out"), files.spectrum);
}

TEST_F(SignalCommands, ReceiveRefusesAnUnknownLine) {
  EXPECT_THAT(typed("receive signal 2"), ElementsAre("invalid line number"));
  EXPECT_THAT(typed("receive signal \"\""), ElementsAre("invalid line number"));
  EXPECT_FALSE(exists("fdsignal.out"));
}

TEST_F(SignalCommands, ReceiveReportsEachFailingRequest) {
  const Script whole = captures(0, capturedSymbol(1));
  for (const auto& [position, text] : {std::pair<size_t, const char*>{2, "receive signal error (12)"},
                                       {3, "receive signal error (13)"},
                                       {4, "receive signal error (12)"},
                                       {5, "receive signal error (12)"},
                                       {14, "receive signal error (12)"}}) {
    expect(whole.failingAt(position, EIO));
    EXPECT_THAT(typed("receive signal 0"), ElementsAre(text)) << position;
    verify();
  }
  EXPECT_FALSE(exists("fdsignal.out"));
}

TEST_F(SignalCommands, ReceiveReportsAFileThatCannotBeWritten) {
  expect(captures(0, capturedSymbol(1)));
  EXPECT_THAT(typed("receive signal 0 ."), ElementsAre("Failed writing file . (Is a directory)"));
}

// ---- test afe-loop ----

TEST_F(SignalCommands, AfeLoopSendsOnOneLineAndCapturesOnTheOther) {
  const Files files = filesOf(capturedSymbol(2));
  write("signal.dat", textOf(countingSignal()));
  expect(sends(0, countingSignal()) + captures(1, capturedSymbol(2)));
  EXPECT_THAT(typed("test afe-loop 0 1 signal.dat"), IsEmpty());
  EXPECT_EQ(readText("fdsignal.out"), files.spectrum);
  expect(sends(1, countingSignal()) + captures(1, capturedSymbol(2)));
  EXPECT_THAT(typed("test afe-loop 1 1 signal.dat other.out"), IsEmpty());
  EXPECT_EQ(readText("other.out"), files.spectrum);
}

TEST_F(SignalCommands, AfeLoopReportsFailures) {
  write("signal.dat", textOf(countingSignal()));
  expect(sends(0, countingSignal()).failingAt(3, EIO));
  EXPECT_THAT(typed("test afe-loop 0 1 signal.dat"), ElementsAre("Failed in AFE TX-RX Path Test (13)"));
  expect(sends(0, countingSignal()) + captures(1, capturedSymbol(2)).failingAt(6, EIO));
  EXPECT_THAT(typed("test afe-loop 0 1 signal.dat"), ElementsAre("Failed in AFE TX-RX Path Test (12)"));
  EXPECT_FALSE(exists("fdsignal.out"));
}

// ---- test afe-mtpr ----

TEST_F(SignalCommands, AfeMtprWritesSpectrumAndLinearRatios) {
  const Files files = filesOf(capturedSymbol(3));
  write("signal.dat", textOf(countingSignal()));
  expect((sends(0, countingSignal()) + captures(1, capturedSymbol(3))).times(2));
  EXPECT_THAT(typed("test afe-mtpr 0 1 signal.dat"), IsEmpty());
  EXPECT_EQ(readText("fdsignal.out"), files.spectrum);
  EXPECT_EQ(readText("mtpr.out"), files.ratios);
  EXPECT_THAT(typed("test afe-mtpr 0 1 signal.dat fd.out ratios.txt"), IsEmpty());
  EXPECT_EQ(readText("fd.out"), files.spectrum);
  EXPECT_EQ(readText("ratios.txt"), files.ratios);
}

TEST_F(SignalCommands, AfeMtprReportsFailuresAndWritesNothing) {
  write("signal.dat", textOf(countingSignal()));
  expect(sends(1, countingSignal()).failingAt(1, EIO));
  EXPECT_THAT(typed("test afe-mtpr 1 0 signal.dat"), ElementsAre("Failed in AFE MTPR Performance Test (12)"));
  EXPECT_FALSE(exists("fdsignal.out"));
  EXPECT_FALSE(exists("mtpr.out"));
}

TEST_F(SignalCommands, AfeMtprReportsEachFileThatCannotBeWritten) {
  write("signal.dat", textOf(countingSignal()));
  expect(sends(0, countingSignal()) + captures(0, capturedSymbol(3)));
  EXPECT_THAT(typed("test afe-mtpr 0 0 signal.dat a/b c/d"),
              ElementsAre("Failed writing file a/b (No such file or directory)",
                          "Failed writing file c/d (No such file or directory)"));
}

// ---- test afe-mtpr-loop ----

// The numbers of a file of one number a line.
std::vector<double> numbersOf(const std::string& name) {
  std::istringstream text(readText(name));
  std::vector<double> numbers;
  for (double number = 0; text >> number;) {
    numbers.push_back(number);
  }
  return numbers;
}

TEST_F(SignalCommands, AfeMtprLoopOfOneIterationWritesDecibels) {
  const Files files = filesOf(capturedSymbol(4));
  expect(sends(0, generatedSignal()) + captures(1, capturedSymbol(4)));
  CaptureStdout();
  EXPECT_THAT(typed("test afe-mtpr-loop 0 1"), IsEmpty());
  EXPECT_EQ(GetCapturedStdout(), "0\n");
  const std::vector<double> decibels = numbersOf("mtpr.out");
  ASSERT_EQ(decibels.size(), 96U);
  EXPECT_NE(readText("mtpr.out"), files.ratios);
  // It is the spectrum of the power: real, and not negative.
  std::istringstream spectrum(readText("fdsignal.out"));
  double real = 0;
  double imaginary = 0;
  int lines = 0;
  for (; spectrum >> real >> imaginary; lines++) {
    EXPECT_GE(real, 0);
    EXPECT_EQ(imaginary, 0);
  }
  EXPECT_EQ(lines, 2048);
}

TEST_F(SignalCommands, AfeMtprLoopRepeatsTheTest) {
  expect((sends(1, generatedSignal()) + captures(1, capturedSymbol(5))).times(3));
  CaptureStdout();
  EXPECT_THAT(typed("test afe-mtpr-loop 1 1 3 ratios.txt"), IsEmpty());
  EXPECT_EQ(GetCapturedStdout(), "0\n1\n2\n");
  EXPECT_EQ(numbersOf("ratios.txt").size(), 96U);
  EXPECT_TRUE(exists("fdsignal.out"));
  EXPECT_FALSE(exists("mtpr.out"));
}

TEST_F(SignalCommands, AfeMtprLoopReportsTheLastIterationsFailure) {
  const Script good = sends(0, generatedSignal()) + captures(0, capturedSymbol(5));
  const Script bad = sends(0, generatedSignal()).failingAt(3, EIO);
  expect(good + bad);
  CaptureStdout();
  EXPECT_THAT(typed("test afe-mtpr-loop 0 0 2"), ElementsAre("Failed in AFE MTPR Performance Test (13)"));
  EXPECT_FALSE(exists("mtpr.out"));
  expect(bad + good);
  EXPECT_THAT(typed("test afe-mtpr-loop 0 0 2"), IsEmpty());
  EXPECT_TRUE(exists("mtpr.out"));
  GetCapturedStdout();
}

TEST_F(SignalCommands, AfeMtprLoopRepeatsTheTestUpTo100Times) {
  expect(findsLineUp(0).failingAt(0, EIO).times(100));
  CaptureStdout();
  EXPECT_THAT(typed("test afe-mtpr-loop 0 0 100"), ElementsAre("Failed in AFE MTPR Performance Test (12)"));
  EXPECT_THAT(GetCapturedStdout(), testing::EndsWith("\n98\n99\n"));
}

TEST_F(SignalCommands, AfeMtprLoopWritesTheSpectrumAlsoWhenTheRatiosCannotBeWritten) {
  expect(sends(0, generatedSignal()) + captures(1, capturedSymbol(5)));
  CaptureStdout();
  EXPECT_THAT(typed("test afe-mtpr-loop 0 1 1 no/ratios.txt"),
              ElementsAre("Failed writing file no/ratios.txt (No such file or directory)"));
  GetCapturedStdout();
  EXPECT_TRUE(exists("fdsignal.out"));
}

TEST_F(SignalCommands, AfeMtprLoopTakes1To100Iterations) {
  for (const char* number : {"0", "101", "-1", "99999999999", "\"\""}) {
    const std::string word = number[0] == '"' ? "" : number;
    EXPECT_THAT(typed(std::string("test afe-mtpr-loop 0 1 ") + number),
                ElementsAre("invalid number of iterations " + word));
  }
}

// ---- what the files say, computed without the product's transform and formats ----

// The points of a captured symbol's spectrum.
Points spectrumOf(const Words& symbol) {
  Points samples;
  for (const uint32_t word : symbol) {
    samples.emplace_back(static_cast<int16_t>(word & 0xFFFF));
    samples.emplace_back(static_cast<int16_t>(word >> 16));
  }
  Points spectrum(samples.size());
  PlainTransform(samples.size(), {"unitary", TRUE, TRUE}, Direction::kForward).run(samples, spectrum);
  return spectrum;
}

double powerOf(const QVR_complex_t& point) {
  return point.real() * point.real() + point.imag() * point.imag();
}

// That a file has these numbers, `columns` in a line, each with six digits behind the point, rounded.
void expectNumbers(const std::string& name, const std::vector<double>& expected, size_t columns) {
  std::istringstream text(readText(name));
  size_t i = 0;
  for (std::string line; std::getline(text, line);) {
    std::istringstream words(line);
    size_t column = 0;
    for (std::string word; words >> word; column++, i++) {
      ASSERT_LT(i, expected.size()) << name;
      EXPECT_EQ(word.size() - word.find('.'), 7U) << word;
      EXPECT_NEAR(std::strtod(word.c_str(), nullptr), expected[i], 5e-7 + std::abs(expected[i]) * 1e-12)
          << name << " number " << i;
    }
    EXPECT_EQ(column, columns) << line;
  }
  EXPECT_EQ(i, expected.size()) << name;
}

TEST_F(SignalCommands, AfeMtprWritesTheDigitsOfSpectrumAndRatios) {
  write("signal.dat", textOf(countingSignal()));
  expect(sends(0, countingSignal()) + captures(1, capturedSymbol(3)));
  typed("test afe-mtpr 0 1 signal.dat");
  const Points spectrum = spectrumOf(capturedSymbol(3));
  std::vector<double> parts;
  for (size_t tone = 0; tone < 2048; tone++) {
    parts.insert(parts.end(), {spectrum[tone].real(), spectrum[tone].imag()});
  }
  std::vector<double> ratios;
  for (size_t tone = 60; tone <= 1960; tone += 20) {
    ratios.push_back((powerOf(spectrum[tone - 1]) + powerOf(spectrum[tone + 1])) / 2 /
                     powerOf(spectrum[tone]));
  }
  expectNumbers("fdsignal.out", parts, 2);
  expectNumbers("mtpr.out", ratios, 1);
}

TEST_F(SignalCommands, AfeMtprLoopWritesTheDigitsOfSummedPowersAndDecibels) {
  expect(sends(0, generatedSignal()) + captures(1, capturedSymbol(4)) + sends(0, generatedSignal()) +
         captures(1, capturedSymbol(5)));
  CaptureStdout();
  typed("test afe-mtpr-loop 0 1 2");
  GetCapturedStdout();
  const Points first = spectrumOf(capturedSymbol(4));
  const Points second = spectrumOf(capturedSymbol(5));
  std::vector<double> powers;
  std::vector<double> decibels;
  for (size_t tone = 0; tone < 2048; tone++) {
    powers.insert(powers.end(), {powerOf(first[tone]) + powerOf(second[tone]), 0});
  }
  const auto decibelsOf = [&powers](size_t tone) { return 10 * std::log10(powers[2 * tone]); };
  for (size_t tone = 60; tone <= 1960; tone += 20) {
    decibels.push_back((decibelsOf(tone - 1) + decibelsOf(tone + 1)) / 2 - decibelsOf(tone));
  }
  expectNumbers("fdsignal.out", powers, 2);
  expectNumbers("mtpr.out", decibels, 1);
}

// ---- all tests of the front end ----

TEST_F(SignalCommands, EveryAfeTestRefusesAnUnknownLine) {
  for (const std::string test : {"test afe-loop", "test afe-mtpr", "test afe-mtpr-loop"}) {
    EXPECT_THAT(typed(test + " 2 5"), ElementsAre("invalid line number 2"));
    EXPECT_THAT(typed(test + " 0 -1"), ElementsAre("invalid line number -1"));
    EXPECT_THAT(typed(test + " 1 17 missing.dat"), ElementsAre("invalid line number 17"));
  }
}

TEST_F(SignalCommands, EveryAfeTestReportsAFileThatCannotBeLoaded) {
  for (const std::string test : {"test afe-loop", "test afe-mtpr"}) {
    EXPECT_THAT(typed(test + " 0 1 missing.dat"), ElementsAre("Failed to load signal from file missing.dat"));
    EXPECT_THAT(typed(test + " 0 1 ."), ElementsAre("Failed to load signal from file ."));
  }
}

TEST_F(SignalCommands, EveryAfeTestNeedsTwoLines) {
  const std::string loop =
      "test afe-loop <tx-line-id> <rx-line-id> [<txsignal-filename>] [<fdsignal-filename>] : { "
      "<default-signal>, fdsignal.out } ";
  const std::string mtpr =
      "test afe-mtpr <tx-line-id> <rx-line-id> [<txsignal-filename>] [<fdsignal-filename>] "
      "[<mtpr-result-filename>] : { NULL, fdsignal.out mtpr.out } ";
  const std::string mtprLoop =
      "test afe-mtpr-loop <tx-line-id> <rx-line-id> <loop-iterations> [<mtpr-result-filename>] : { 1, "
      "mtpr.out } ";
  EXPECT_THAT(typed("test afe-loop 0"), ElementsAre(loop));
  EXPECT_THAT(typed("test afe-loop 0 1 a b c"), ElementsAre(loop));
  EXPECT_THAT(typed("test afe-mtpr 0"), ElementsAre(mtpr));
  EXPECT_THAT(typed("test afe-mtpr 0 1 a b c d"), ElementsAre(mtpr));
  EXPECT_THAT(typed("test afe-mtpr-loop 0"), ElementsAre(mtprLoop));
  EXPECT_THAT(typed("test afe-mtpr-loop 0 1 1 a b"), ElementsAre(mtprLoop));
}

TEST_F(SignalCommands, FailOnAnAbsentDevice) {
  expect(closes(0) + closes(1) + rediscovers() + opens(0).fails(ENOENT) + opens(1).fails(ENOENT));
  typed("rediscover");
  expect(opens(0).fails(ENOENT).times(3));
  EXPECT_THAT(typed("transmit signal"), ElementsAre("start transmit signal error (18)"));
  EXPECT_THAT(typed("receive signal"), ElementsAre("receive signal error (18)"));
  EXPECT_THAT(typed("test afe-loop 0 1"), ElementsAre("Failed in AFE TX-RX Path Test (18)"));
}

}  // namespace
