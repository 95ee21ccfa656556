// Crash dumps: given this file, these blocks are read, this assertion is named, this is printed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "chip/device_information.h"
#include "qvrcli/diagnostics/crash_dump.h"
#include "std/byte_order.h"
#include "support/stored_text.h"
#include "support/temporary_folder.h"
#include "unit/qvrcli/captured_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using Lines = std::vector<std::string>;
using Devices = std::array<DEV_INF_S, QVR_K_MAX_DEVICES>;

constexpr uint32_t kWords = DEV_INF_SIZE / 4;
constexpr uint32_t kUntouched = 0xEEEEEEEE;

// A dump's lines of one block: word i is `first` plus i.
std::string block(int wordsPerLine, uint32_t first, uint32_t words = kWords) {
  std::string text;
  char piece[24];
  for (uint32_t i = 0; i < words; i += static_cast<uint32_t>(wordsPerLine)) {
    std::snprintf(piece, sizeof piece, "%08X:", QVR_K_CRASH_DUMP_ADDRESS + 4 * i);
    text += piece;
    for (int j = 0; j < wordsPerLine; j++) {
      std::snprintf(piece, sizeof piece, " %08X", first + i + static_cast<uint32_t>(j));
      text += piece;
    }
    text += "\n";
  }
  return text;
}

class CrashDumpFile : public testing::Test {
 protected:
  CrashDumpFile() {
    for (DEV_INF_S& device : devices_) {
      for (uint32_t i = 0; i < kWords; i++) {
        store_be32(device.bytes + 4 * i, kUntouched);
      }
    }
  }

  BOOL load(int addressesPerLine, const std::string& text) {
    return loadDeviceInfoFromFile(directory_.write("dump.txt", text).c_str(), devices_.data(),
                                  addressesPerLine);
  }

  uint32_t word(size_t device, uint32_t index) const {
    return load_be32(devices_[device].bytes + size_t{4} * index);
  }

  // The block holds `first` plus i in word i, up to so many words, and what it held before behind them.
  void expectBlock(size_t device, uint32_t first, uint32_t words = kWords) const {
    for (uint32_t i = 0; i < kWords; i++) {
      ASSERT_EQ(word(device, i), i < words ? first + i : kUntouched) << "device " << device << " word " << i;
    }
  }

  TemporaryFolder directory_;
  Devices devices_;
};

TEST_F(CrashDumpFile, OfOneWordALineIsRead) {
  EXPECT_TRUE(load(1, block(1, 0x1000) + block(1, 0x2000)));
  expectBlock(0, 0x1000);
  expectBlock(1, 0x2000);
}

TEST_F(CrashDumpFile, OfFourWordsALineIsReadWithoutTheWordsLeftOver) {
  EXPECT_TRUE(load(4, block(4, 0xFFFF0000) + block(4, 0x2000)));
  expectBlock(0, 0xFFFF0000);
  expectBlock(1, 0x2000);
}

TEST_F(CrashDumpFile, BeginsAtTheBlocksAddressOnly) {
  EXPECT_TRUE(load(1, "E30FFFFC: 00000001\nE3100004: 00000002\nE310000: 00000003\n" + block(1, 0x1000)));
  expectBlock(0, 0x1000);
  expectBlock(1, kUntouched, 0);
}

TEST_F(CrashDumpFile, GoesOnWhateverTheAddresses) {
  std::string text = "E3100000: 00001000\n";
  for (uint32_t i = 1; i < kWords; i++) {
    char line[32];
    std::snprintf(line, sizeof line, "00000010: %08X\n", 0x1000 + i);
    text += line;
  }
  EXPECT_TRUE(load(1, text));
  expectBlock(0, 0x1000);
}

TEST_F(CrashDumpFile, SkipsWhatIsBetweenTheBlocks) {
  EXPECT_TRUE(load(1, block(1, 0x1000, 128) + "E3100004: 12345678\n\nread memory 1\n" + block(1, 0x2000)));
  expectBlock(0, 0x1000);
  expectBlock(1, 0x2000);
}

TEST_F(CrashDumpFile, EndsAfterTheSecondBlock) {
  std::string text;
  for (uint32_t i = 1; i <= 10; i++) {
    text += block(4, i << 16);
  }
  EXPECT_TRUE(load(4, text));
  expectBlock(0, 0x10000);
  expectBlock(1, 0x20000);
}

TEST_F(CrashDumpFile, MayEndEarly) {
  EXPECT_TRUE(load(1, block(1, 0x1000) + block(1, 0x2000, 40)));
  expectBlock(0, 0x1000);
  expectBlock(1, 0x2000, 40);
  EXPECT_TRUE(load(1, ""));
}

TEST_F(CrashDumpFile, MayLackTheLastLineEnd) {
  std::string text = block(1, 0x1000);
  text.pop_back();
  EXPECT_TRUE(load(1, text));
  expectBlock(0, 0x1000);
}

TEST_F(CrashDumpFile, MayBeASavedSession) {
  std::string text = "(gfast-cli)> read memory 0 e3100000 260\r\n";
  char line[32];
  for (uint32_t i = 0; i < kWords; i++) {
    std::snprintf(line, sizeof line, "%8x: %08x\r\n", QVR_K_CRASH_DUMP_ADDRESS + 4 * i, 0xAB00 + i);
    text += line;
    if (i == 7) {
      text += "DFE00: 10:00:00 FRM00 - assertion\r\n\r\n";
    }
  }
  EXPECT_TRUE(load(1, text + "\r\n(gfast-cli)> quit\r\n"));
  expectBlock(0, 0xAB00);
}

TEST_F(CrashDumpFile, WithoutTheAddressReadsNothing) {
  EXPECT_TRUE(load(1, "E3200000: 00000001\nE3200004: 00000002\n"));
  expectBlock(0, kUntouched, 0);
}

TEST_F(CrashDumpFile, TakesAWordThatIsNoneAsZero) {
  EXPECT_TRUE(load(4,
                   "E3100000: 00000011 0000ZZ12 00000013 123456789\n"
                   "E3100010: 00000021\n"
                   "E3100020:\n"
                   "E3100030: - -1 0x7 00000044 00000045\n"));
  const std::vector<uint32_t> expected = {0x11, 0, 0x13, 0, 0x21, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x44};
  for (uint32_t i = 0; i < expected.size(); i++) {
    EXPECT_EQ(word(0, i), expected[i]) << i;
  }
  EXPECT_EQ(word(0, 16), kUntouched);
}

TEST_F(CrashDumpFile, PassesOverLinesOfAnotherForm) {
  EXPECT_TRUE(load(1,
                   "E3100000: 00000001\n"
                   "\n:\n: 00000009\nE3100004 00000009\nE31000041: 00000009\nxyz: 00000009\nDFE00: "
                   "00000009\n E3100004: 00000009\nE31-0004: 00000009\n"
                   "E3100004: 00000002\n"));
  EXPECT_EQ(word(0, 0), 1U);
  EXPECT_EQ(word(0, 1), 2U);
  EXPECT_EQ(word(0, 2), kUntouched);
}

TEST_F(CrashDumpFile, CutsLongLines) {
  const std::string far(200000, ' ');
  EXPECT_TRUE(load(1, far + "E3100000: 00000009\n" + "E3100000: 00000001" + far + "\n" + "E3100004:" + far +
                          "00000009\n" + std::string(100000, 'E') + "\nE3100008: 00000003\n"));
  EXPECT_EQ(word(0, 0), 1U);
  EXPECT_EQ(word(0, 1), 0U);
  EXPECT_EQ(word(0, 2), 3U);
  EXPECT_EQ(word(0, 3), kUntouched);
}

TEST_F(CrashDumpFile, ReadsALineOf80Characters) {
  const std::string blanks(80 - 9 - 8, ' ');
  EXPECT_TRUE(load(1, "E3100000:" + blanks + "00000001\r\nE3100004: " + blanks + "00000002\n"));
  EXPECT_EQ(word(0, 0), 1U);
  EXPECT_EQ(word(0, 1), 0U);  // the cut took its last digit, and seven are a word of another value
}

TEST_F(CrashDumpFile, MayHoldAnyBytes) {
  std::string bytes;
  for (int i = 0; i < 100000; i++) {
    bytes += static_cast<char>(i * 7919 >> 3);
  }
  EXPECT_TRUE(load(4, bytes));
  using namespace std::string_literals;
  EXPECT_TRUE(load(1, "E3100000: 0000\0001\nE3100000\0: 00000002\n"s));
  EXPECT_EQ(word(0, 0), 0U);
}

TEST_F(CrashDumpFile, MayBeDamagedInAnyWay) {
  std::mt19937 random(2026);
  const std::string whole = block(1, 0x1000) + block(4, 0x2000) + block(1, 0x3000);
  for (int round = 0; round < 500; round++) {
    std::string text = whole;
    for (auto damages = random() % 50; damages > 0; damages--) {
      const size_t at = random() % text.size();
      switch (random() % 4) {
        case 0:
          text[at] = static_cast<char>(random());
          break;
        case 1:
          text.erase(at, random() % 100);
          break;
        case 2:
          text.insert(at, whole.substr(random() % whole.size(), random() % 200));
          break;
        default:
          text.insert(at, random() % 200, text[at]);
      }
    }
    EXPECT_TRUE(load(round % 2 == 0 ? 1 : 4, text));
    CLI_leadingAssert_t lead;
    findLeadingAssert(devices_.data(), &lead);
    EXPECT_LE(lead.count, 6U);
  }
}

TEST_F(CrashDumpFile, FailsForAnyOtherNumberOfWordsALine) {
  for (const int number : {-1, 0, 2, 3, 5}) {
    EXPECT_FALSE(load(number, block(1, 0x1000))) << number;
    EXPECT_FALSE(load(number, "")) << number;
  }
  expectBlock(0, kUntouched, 0);
}

TEST_F(CrashDumpFile, FailsWhenItCannotBeRead) {
  const std::string pipe = directory_.path() + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path :
       {std::string(), directory_.path() + "/missing", directory_.path(), pipe, std::string("/dev/zero")}) {
    EXPECT_FALSE(loadDeviceInfoFromFile(path.c_str(), devices_.data(), 1)) << path;
  }
}

// ---- Leading assertion ----

// One processor's assertion in a block: id, symbol counter, and where the time base stood.
void plant(DEV_INF_S& device, CLI_CPU_TYPE_E cpu, uint32_t id, uint32_t symbolCounter) {
  constexpr size_t info[] = {40, 84, 200};
  constexpr size_t extension[] = {168, 184, 244};
  store_be32(device.bytes + info[cpu] + 4, id);
  store_be32(device.bytes + extension[cpu], symbolCounter);
  store_be32(device.bytes + extension[cpu] + 4, id + 1);
  store_be32(device.bytes + extension[cpu] + 8, id + 2);
  store_be32(device.bytes + extension[cpu] + 12, id + 3);
}

class LeadingAssert : public testing::Test {
 protected:
  void plantAt(size_t device, CLI_CPU_TYPE_E cpu, uint32_t id, uint32_t symbolCounter) {
    plant(devices_[device], cpu, id, symbolCounter);
  }

  CLI_leadingAssert_t found() {
    CLI_leadingAssert_t assertion;
    findLeadingAssert(devices_.data(), &assertion);
    return assertion;
  }

  void expectLead(const CLI_leadingAssert_t& lead, uint32_t id, uint32_t symbolCounter, int device, int line,
                  CLI_CPU_TYPE_E cpu, uint32_t count) {
    EXPECT_EQ(lead.assertId, id);
    EXPECT_EQ(lead.symbolCounter, symbolCounter);
    EXPECT_EQ(lead.tbmSymbol, id + 1);
    EXPECT_EQ(lead.tbmPhase, id + 2);
    EXPECT_EQ(lead.tbmSample, id + 3);
    EXPECT_EQ(lead.deviceId, device);
    EXPECT_EQ(lead.lineId, line);
    EXPECT_EQ(lead.cpuType, cpu);
    EXPECT_EQ(lead.count, count);
  }

  Devices devices_{};
};

TEST_F(LeadingAssert, IsFoundAtEveryProcessor) {
  for (size_t device = 0; device < 2; device++) {
    for (const CLI_CPU_TYPE_E cpu : {CPU_FRAMER, CPU_FDU, CPU_CP}) {
      devices_ = {};
      plantAt(device, cpu, 0x1234, 77);
      expectLead(found(), 0x1234, 77, static_cast<int>(device), cpu == CPU_CP ? 1 : 0, cpu, 1);
    }
  }
}

TEST_F(LeadingAssert, IsTheSmallestSymbolCounter) {
  plantAt(0, CPU_FRAMER, 100, 50);
  plantAt(0, CPU_CP, 200, 40);
  plantAt(1, CPU_FRAMER, 300, 0x80000000);
  plantAt(1, CPU_FDU, 400, 39);
  expectLead(found(), 400, 39, 1, 0, CPU_FDU, 1);
}

TEST_F(LeadingAssert, OfATieIsTheFirstAndAllAreCounted) {
  plantAt(0, CPU_FDU, 100, 50);
  plantAt(0, CPU_CP, 200, 40);
  plantAt(1, CPU_FRAMER, 300, 40);
  plantAt(1, CPU_CP, 400, 40);
  expectLead(found(), 200, 40, 0, 1, CPU_CP, 3);
}

TEST_F(LeadingAssert, CountsOnlyTheTiesOfTheOneThatLeads) {
  plantAt(0, CPU_FRAMER, 100, 50);
  plantAt(0, CPU_FDU, 200, 50);
  plantAt(1, CPU_CP, 300, 49);
  expectLead(found(), 300, 49, 1, 1, CPU_CP, 1);
}

TEST_F(LeadingAssert, OfSymbolZeroIsNone) {
  plantAt(0, CPU_FRAMER, 100, 0);
  plantAt(1, CPU_CP, 200, 0);
  const CLI_leadingAssert_t none = found();
  EXPECT_EQ(none.assertId, 0U);
  EXPECT_EQ(none.symbolCounter, 0U);
  EXPECT_EQ(none.count, 0U);
  EXPECT_EQ(none.cpuType, CPU_FRAMER);
}

// The counter's last value is where the search starts: it is counted, and does not lead.
TEST_F(LeadingAssert, OfTheLastSymbolIsCountedOnly) {
  plantAt(1, CPU_FDU, 100, 0xFFFFFFFF);
  EXPECT_EQ(found().assertId, 0U);
  EXPECT_EQ(found().count, 1U);
}

// ---- The command ----

class AnalyzeCrashDump : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(chdir(directory_.path().c_str()), 0); }

  Lines typed(const std::string& line) {
    const Lines lines = console_.run(line);
    EXPECT_EQ(console_.result(), CLI_OK);
    return lines;
  }

  // A dump of two devices with the words that count up from 0x10000 and 0x20000, but these assertions.
  void writeDump() {
    Devices devices;
    for (uint32_t i = 0; i < kWords; i++) {
      store_be32(devices[0].bytes + size_t{4} * i, 0x10000 + i);
      store_be32(devices[1].bytes + size_t{4} * i, 0x20000 + i);
    }
    plant(devices[0], CPU_CP, 0x80000001, 0x2711);
    plant(devices[1], CPU_FRAMER, 0x77, 0x2711);
    std::string text;
    char line[32];
    for (const DEV_INF_S& device : devices) {
      for (uint32_t i = 0; i < kWords; i++) {
        std::snprintf(line, sizeof line, "%08X: %08X\n", QVR_K_CRASH_DUMP_ADDRESS + 4 * i,
                      load_be32(device.bytes + size_t{4} * i));
        text += line;
      }
    }
    directory_.write("dump.txt", text);
  }

  TemporaryFolder directory_;
  CapturedConsole console_;
};

const Lines kLead = {
    "",
    "<Leading Assert>",
    "",
    "Assert Id                                 80000001 (-2147483647)",
    "Symbol Counter                            00002711",
    "TBM Symbol                                80000002",
    "TBM Phase                                 80000003",
    "TBM Sample                                80000004",
    "Device Id                                 0",
    "Line Id                                   1",
    "CPU                                       CP",
    "Count                                     2",
    "",
};

std::string joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\n";
  }
  return text;
}

// The text, where every such piece has lost what is behind its first line end.
std::string without(std::string text, const std::string& piece) {
  const size_t kept = piece.find('\n') + 1;
  for (size_t at = 0; (at = text.find(piece, at)) != std::string::npos;) {
    text.erase(at + kept, piece.size() - kept);
  }
  return text;
}

TEST_F(AnalyzeCrashDump, PrintsBothDevicesAndTheLeadingAssertion) {
  writeDump();
  const Lines lines = typed("analyze crashdump 1 dump.txt");
  ASSERT_GT(lines.size(), kLead.size());
  EXPECT_EQ(Lines(lines.end() - static_cast<long>(kLead.size()), lines.end()), kLead);
  EXPECT_EQ(lines[0], "deviceId                                  0");
  EXPECT_EQ(lines[2], "firmwareVersion                           00010001");
  EXPECT_THAT(joined(lines), HasSubstr(" \ndeviceId                                  1\n"
                                       "devinfVersion                             00020000\n"));
  expectStored(std::string(TRANSCRIPTS) + "/analyze_crashdump.txt", joined(lines));
}

TEST_F(AnalyzeCrashDump, WritesTheSameToAFile) {
  writeDump();
  const std::string printed = joined(typed("analyze crashdump 1 dump.txt"));
  directory_.write("analysis.txt", std::string(100000, 'x'));
  EXPECT_THAT(typed("analyze crashdump 1 dump.txt analysis.txt"), ElementsAre());
  const std::string written = readText("analysis.txt");
  expectStored(std::string(TRANSCRIPTS) + "/analyze_crashdump_file.txt", written);
  // A session has a line that holds one blank behind each device, and an empty one behind each heading.
  const std::string expected = without(without(printed, "\n \n"), ">\n\n");
  EXPECT_EQ(written, expected);
}

TEST_F(AnalyzeCrashDump, OfNoAssertionNamesNone) {
  directory_.write("dump.txt", "");
  const Lines lines = typed("analyze crashdump 4 dump.txt");
  EXPECT_THAT(joined(lines), HasSubstr("Assert Id                                 00000000 (0)\n"
                                       "Symbol Counter                            00000000\n"));
  EXPECT_THAT(joined(lines), HasSubstr("CPU                                       FRAMER\n"
                                       "Count                                     0\n"));
}

TEST_F(AnalyzeCrashDump, NamesTheFdu) {
  Devices devices{};
  plant(devices[0], CPU_FDU, 3, 9);
  char extension[64];
  std::string text = "E3100000: 00000000\n";
  for (uint32_t i = 1; i < kWords; i++) {
    std::snprintf(extension, sizeof extension, "%08X: %08X\n", QVR_K_CRASH_DUMP_ADDRESS + 4 * i,
                  load_be32(devices[0].bytes + size_t{4} * i));
    text += extension;
  }
  directory_.write("dump.txt", text);
  EXPECT_THAT(joined(typed("analyze crashdump 1 dump.txt")),
              HasSubstr("Line Id                                   0\n"
                        "CPU                                       FDU\n"
                        "Count                                     1\n"));
}

TEST_F(AnalyzeCrashDump, SaysHowManyAddressesALineHas) {
  for (const char* number : {"0", "5", "-1", "x", "99999999999"}) {
    EXPECT_THAT(typed(std::string("analyze crashdump ") + number + " missing.txt"),
                ElementsAre("number-of-addresses-per-line must be between 1 and 4"))
        << number;
  }
}

TEST_F(AnalyzeCrashDump, OfTwoOrThreeAddressesALineFailsToLoad) {
  writeDump();
  for (const char* number : {"2", "3"}) {
    EXPECT_THAT(typed(std::string("analyze crashdump ") + number + " dump.txt"),
                ElementsAre("Failed loading device information from file dump.txt"));
  }
}

TEST_F(AnalyzeCrashDump, SaysWhatCannotBeLoaded) {
  EXPECT_THAT(typed("analyze crashdump 1 missing.txt analysis.txt"),
              ElementsAre("Failed loading device information from file missing.txt"));
  EXPECT_NE(access("analysis.txt", F_OK), 0);
  EXPECT_THAT(typed("analyze crashdump 4"), ElementsAre("Failed loading device information from file "));
}

TEST_F(AnalyzeCrashDump, SaysWhatCannotBeWritten) {
  writeDump();
  EXPECT_THAT(typed("analyze crashdump 1 dump.txt no/such/folder.txt"),
              ElementsAre("Failed writing file no/such/folder.txt (No such file or directory)"));
  EXPECT_THAT(typed("analyze crashdump 1 dump.txt /dev/full"),
              ElementsAre("Failed writing file /dev/full (No space left on device)"));
}

TEST_F(AnalyzeCrashDump, TakesOneToThreeWords) {
  const std::string usage =
      "analyze crashdump <number-of-addresses-per-line> <crashdump-filename> [<output-file>]";
  EXPECT_THAT(typed("analyze crashdump"), ElementsAre(usage));
  EXPECT_THAT(typed("analyze crashdump 1 2 3 4"), ElementsAre(usage));
  EXPECT_THAT(typed("analyze crashdump 1 dump.txt ?"), ElementsAre(usage));
}

}  // namespace
