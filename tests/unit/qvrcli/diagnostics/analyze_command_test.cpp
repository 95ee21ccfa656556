// Analysing a crash dump: given this file, when this is typed, this is printed or written.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/console_session.h"
#include "support/stored_text.h"
#include "support/temporary_folder.h"
#include "unit/qvrcli/captured_console.h"
#include "unit/qvrcli/diagnostics/planted_assertion.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

using Printed = std::vector<std::string>;

class AnalyzeCrashDump : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(chdir(directory_.path().c_str()), 0); }

  Printed typed(const std::string& line) {
    const Printed lines = console_.run(line);
    EXPECT_EQ(console_.result(), CLI_OK);
    return lines;
  }

  // A dump of two devices: words that count up from 0x10000 and 0x20000, and two assertions among them.
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

const Printed kLead = {
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

std::string joined(const Printed& lines) {
  std::string text;
  for (const std::string& line : lines) {
    text += line + "\n";
  }
  return text;
}

// The text without what follows the first line end in every such piece.
std::string without(std::string text, const std::string& piece) {
  const size_t kept = piece.find('\n') + 1;
  for (size_t at = 0; (at = text.find(piece, at)) != std::string::npos;) {
    text.erase(at + kept, piece.size() - kept);
  }
  return text;
}

TEST_F(AnalyzeCrashDump, PrintsBothDevicesAndTheLeadingAssertion) {
  writeDump();
  const Printed lines = typed("analyze crashdump 1 dump.txt");
  ASSERT_GT(lines.size(), kLead.size());
  EXPECT_EQ(Printed(lines.end() - static_cast<long>(kLead.size()), lines.end()), kLead);
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
  // In a session a line of one blank follows each device, and an empty line each heading.
  const std::string expected = without(without(printed, "\n \n"), ">\n\n");
  EXPECT_EQ(written, expected);
}

TEST_F(AnalyzeCrashDump, NamesNoAssertionWhenThereIsNone) {
  directory_.write("dump.txt", "");
  const Printed lines = typed("analyze crashdump 4 dump.txt");
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

TEST_F(AnalyzeCrashDump, RefusesABadNumberOfAddressesPerLine) {
  for (const char* number : {"0", "5", "-1", "x", "99999999999"}) {
    EXPECT_THAT(typed(std::string("analyze crashdump ") + number + " missing.txt"),
                ElementsAre("number-of-addresses-per-line must be between 1 and 4"))
        << number;
  }
}

TEST_F(AnalyzeCrashDump, CannotLoadTwoOrThreeAddressesPerLine) {
  writeDump();
  for (const char* number : {"2", "3"}) {
    EXPECT_THAT(typed(std::string("analyze crashdump ") + number + " dump.txt"),
                ElementsAre("Failed loading device information from file dump.txt"));
  }
}

TEST_F(AnalyzeCrashDump, ReportsAFileThatCannotBeLoaded) {
  EXPECT_THAT(typed("analyze crashdump 1 missing.txt analysis.txt"),
              ElementsAre("Failed loading device information from file missing.txt"));
  EXPECT_NE(access("analysis.txt", F_OK), 0);
  EXPECT_THAT(typed("analyze crashdump 4"), ElementsAre("Failed loading device information from file "));
}

TEST_F(AnalyzeCrashDump, ReportsAFileThatCannotBeWritten) {
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
