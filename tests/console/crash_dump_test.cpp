// A crash of the board file is dumped with the console, the session is saved, and the console analyzes it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "console/lab_on_board.h"
#include "support/stored_text.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;

std::string crash(int device, const std::string& processor, uint32_t id, uint32_t symbolCounter,
                  const std::string& more = "") {
  return "[[crash]]\ndevice = " + std::to_string(device) + "\nprocessor = \"" + processor +
         "\"\nassert_id = " + std::to_string(id) + "\nsymbol_counter = " + std::to_string(symbolCounter) +
         "\n" + more;
}

// A board whose processors crash at power-up.
class CrashedBoard : public LabOnBoard {
 protected:
  void start(const std::string& crashes) { LabOnBoard::start(boardWithLines("showtime") + crashes); }

  // Dumps both devices as an operator does, and saves what the terminal showed.
  void saveDump() {
    std::string shown;
    for (const char* line : {"read memory 0 e3100000 260", "read memory 1 e3100000 260"}) {
      shown += std::string("(gfast-cli)> ") + line + "\r\n" + typed(line) + "\r\n";
    }
    folder().write("session.txt", shown + "(gfast-cli)> ");
  }

  // The leading assertion, from its heading on.
  std::string leadOf(const std::string& analysis) {
    const size_t at = analysis.find("<Leading Assert>");
    return at == std::string::npos ? analysis : analysis.substr(at);
  }

  std::string lead(const std::string& crashes) {
    start(crashes);
    saveDump();
    return leadOf(typed("analyze crashdump 1 session.txt"));
  }
};

TEST_F(CrashedBoard, AnalysisNamesTheAssertion) {
  EXPECT_EQ(lead(crash(0, "fdu", 4711, 720000, "tbm_symbol = 4\ntbm_phase = 2\ntbm_sample = 1007\n")),
            "<Leading Assert>\r\n"
            "\r\n"
            "Assert Id                                 00001267 (4711)\r\n"
            "Symbol Counter                            000afc80\r\n"
            "TBM Symbol                                00000004\r\n"
            "TBM Phase                                 00000002\r\n"
            "TBM Sample                                000003ef\r\n"
            "Device Id                                 0\r\n"
            "Line Id                                   0\r\n"
            "CPU                                       FDU\r\n"
            "Count                                     1\r\n"
            "\r\n");
}

TEST_F(CrashedBoard, AnalysisNamesTheEarliestAssertion) {
  const std::string leading =
      lead(crash(0, "framer", 1, 5000) + crash(0, "fdu", 2, 4999) + crash(1, "framer", 0xFFFFFFFF, 4998) +
           crash(1, "fdu", 4, 0x80000000) + crash(1, "cp", 5, 4999));
  EXPECT_THAT(leading, HasSubstr("Assert Id                                 ffffffff (-1)\r\n"));
  EXPECT_THAT(leading, HasSubstr("Device Id                                 1\r\n"
                                 "Line Id                                   0\r\n"
                                 "CPU                                       FRAMER\r\n"
                                 "Count                                     1\r\n"));
}

TEST_F(CrashedBoard, AnalysisNamesTheFirstOfATieAndCountsAll) {
  const std::string leading = lead(crash(1, "framer", 30, 100) + crash(0, "cp", 20, 100) +
                                   crash(0, "framer", 10, 101) + crash(1, "cp", 40, 100));
  EXPECT_THAT(leading, HasSubstr("Assert Id                                 00000014 (20)\r\n"
                                 "Symbol Counter                            00000064\r\n"));
  EXPECT_THAT(leading, HasSubstr("Device Id                                 0\r\n"
                                 "Line Id                                   1\r\n"
                                 "CPU                                       CP\r\n"
                                 "Count                                     3\r\n"));
}

TEST_F(CrashedBoard, AnalysisNamesNoAssertionWithoutACrash) {
  const std::string leading = lead("");
  EXPECT_THAT(leading, HasSubstr("Assert Id                                 00000000 (0)\r\n"));
  EXPECT_THAT(leading, HasSubstr("Count                                     0\r\n"));
}

// Every field of both devices, in the session and in a file.
TEST_F(CrashedBoard, AnalysisMatchesTheTranscript) {
  start(crash(0, "framer", 4711, 720000, "params = [0x1F, 36, -1]\ntbm_symbol = 4\n") +
        crash(0, "framer", 4712, 720001) + crash(1, "cp", 9, 720003, "params = [1, 2, 3, 4, 5, 6, 7, 8]\n"));
  saveDump();
  expectStored(TRANSCRIPTS "/crash_dump_session.txt", folder().read("session.txt"));
  expectStored(TRANSCRIPTS "/crash_dump_analysis.txt", typed("analyze crashdump 1 session.txt"));
  EXPECT_EQ(typed("analyze crashdump 1 session.txt analysis.txt"), "");
  expectStored(TRANSCRIPTS "/crash_dump_analysis_file.txt", folder().read("analysis.txt"));
}

// The device information and the dump agree.
TEST_F(CrashedBoard, DumpHoldsTheDeviceInformation) {
  start("");
  saveDump();
  const std::string analysis = typed("analyze crashdump 1 session.txt");
  const std::string info = typed("show device-info 0");
  EXPECT_THAT(info, HasSubstr("Firmware Version                    1.9.4.106\r\n"));
  EXPECT_THAT(analysis, HasSubstr("firmwareVersion                           0109046a\r\n"));
  EXPECT_THAT(info, HasSubstr("Device temperature [Cel.]                0047\r\n"));
  EXPECT_THAT(analysis, HasSubstr("temperature                               0000002f\r\n"));
}

TEST_F(CrashedBoard, ResetClearsItsRecords) {
  start(crash(0, "framer", 4711, 720000));
  typed("reboot APP 0");
  typed("sleep 3");
  saveDump();
  EXPECT_THAT(leadOf(typed("analyze crashdump 1 session.txt")),
              HasSubstr("Assert Id                                 00000000 (0)\r\n"));
}

TEST_F(CrashedBoard, DumpSavedWhileLoggingIsAnalyzed) {
  start(crash(0, "framer", 4711, 720000));
  typed("start logging");
  typed("sleep 1");
  saveDump();
  EXPECT_THAT(typed("analyze crashdump 1 session.txt"),
              HasSubstr("Assert Id                                 00001267 (4711)\r\n"));
}

}  // namespace
