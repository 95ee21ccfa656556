// Performance counters at the console: given what the chip has counted, when this is typed, this is printed.
#include "qvrcli/counters/performance_commands.h"

#include "qvrcli/events/events.h"
#include "qvrdev/callbacks.h"
#include "qvrdev/device_table.h"
#include "qvrfast/interval_history.h"
#include "qvrfast/line_failures.h"
#include "qvrfast/quarter_hours.h"
#include "qvrline/interval_counters.h"
#include "support/chip_identity.h"
#include "support/far_end_answers.h"
#include "support/far_end_memory.h"
#include "support/lines.h"
#include "support/local_time.h"
#include "support/performance_counters.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t kDerivedAddress = 0xE2880000;
constexpr uint32_t kFramerRawAddress = 0xE2440000;

// A line of the display: every value begins in column 23.
std::string shown(const std::string& label, const std::string& value) {
  return label + std::string(22 - label.size(), ' ') + value;
}

Lines shownRows(const std::string& prefix, const std::vector<std::pair<const char*, uint32_t>>& rows) {
  Lines lines;
  for (const auto& [name, value] : rows) {
    lines.push_back(shown(prefix + name, std::to_string(value)));
  }
  return lines;
}

Lines operator+(Lines lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

// The counters of an interval in which n of everything were counted, numbered as in pmBlock(n).
Lines nearEnd(uint32_t n) {
  return shownRows("NE-", {{"LOS", n},
                           {"LOM", 2 * n},
                           {"LOR", 3 * n},
                           {"LPR", 4 * n},
                           {"ES", 5 * n},
                           {"SES", 6 * n},
                           {"LOSS", 7 * n},
                           {"LORS", 8 * n},
                           {"UAS", 9 * n},
                           {"SRA", 14 * n},
                           {"FRA", 15 * n},
                           {"RPA", 16 * n},
                           {"BSW", 17 * n},
                           {"TIGA", 18 * n},
                           {"FULL_INITS", 10 * n},
                           {"FAILEDFULL_INITS", 11 * n},
                           {"FAST_INITS", 12 * n},
                           {"FAILEDFAST_INITS", 13 * n},
                           {"CV", 19 * n},
                           {"RTXUC", 20 * n},
                           {"RTXTX", 21 * n},
                           {"EFB", 22 * n}});
}

Lines farEnd(uint32_t n) {
  return shownRows("FE-", {{"LOS", 23 * n},
                           {"LOM", 24 * n},
                           {"LOR", 25 * n},
                           {"LPR", 26 * n},
                           {"ES", 27 * n},
                           {"SES", 28 * n},
                           {"LOSS", 29 * n},
                           {"LORS", 30 * n},
                           {"UAS", 31 * n},
                           {"SRA", 33 * n},
                           {"FRA", 34 * n},
                           {"RPA", 35 * n},
                           {"BSW", 36 * n},
                           {"CV", 32 * n},
                           {"RTXUC", 37 * n},
                           {"RTXTX", 38 * n},
                           {"EFB", 39 * n}});
}

Lines interval(uint32_t collected, const std::string& stamp, const char* first, const char* second,
               uint32_t n) {
  return Lines{shown("collection time:", std::to_string(collected)), shown("timestamp:", stamp), "",
               shown("INVALID:", first)} +
         nearEnd(n) + Lines{"", shown("INVALID:", second)} + farEnd(n);
}

Lines dumped(int line, int number, const char* near, const char* far, uint32_t collected,
             const std::string& stamp, uint32_t n) {
  return Lines{shown("Line", std::to_string(line)),
               shown("intervalNumber", std::to_string(number)),
               shown("neCounters", near),
               shown("feCounters", far),
               shown("collectionTime", std::to_string(collected)),
               shown("timestamp", stamp)} +
         nearEnd(n) + Lines{" "} + farEnd(n) + Lines{" "};
}

// Both lines are in showtime. The quarter hour began at 10:00, with all counters 0.
class PerformanceCommands : public TypedConsole {
 protected:
  PerformanceCommands() {
    setZone("UTC0");
    testClock().setNow(at(10, 0));
    enterBothLines();
    restartHistory();
    QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationHandler);
    for (const int device : {0, 1}) {
      expect(opens(device) + readsIdentity(device, chipWithLine(LS_SHOWTIME)));
      QVR_getDeviceInfo(device, nullptr);
      setStartOfCollection(device, 0, 900);
    }
    verify();
  }

  // A quarter hour ends at this time; so many of everything were counted on both lines.
  void endQuarterHour(time_t boundary, uint32_t n, int reads = 1) {
    testClock().setNow(boundary);
    expect(readsPm(0, n).times(reads) + readsPm(1, n).times(reads));
    QVR_15minCounterEventHandler(boundary);
    verify();
  }
};

using ShowPmCounters = PerformanceCommands;

TEST_F(ShowPmCounters, ShowsTheBlockWithoutTiga) {
  expect(readsPm(1, 1));
  const Lines lines = typed("show pm-counters 1");
  EXPECT_EQ(lines, shownRows("NE-", {{"LOS", 1},
                                     {"LOM", 2},
                                     {"LOR", 3},
                                     {"LPR", 4},
                                     {"ES", 5},
                                     {"SES", 6},
                                     {"LOSS", 7},
                                     {"LORS", 8},
                                     {"UAS", 9},
                                     {"FULL_INITS", 10},
                                     {"FAILEDFULL_INITS", 11},
                                     {"FAST_INITS", 12},
                                     {"FAILEDFAST_INITS", 13},
                                     {"SRA", 14},
                                     {"FRA", 15},
                                     {"RPA", 16},
                                     {"BSW", 17},
                                     {"CV", 19},
                                     {"RTXUC", 20},
                                     {"RTXTX", 21},
                                     {"EFB", 22}}) +
                       Lines{" "} +
                       shownRows("FE-", {{"LOS", 23},
                                         {"LOM", 24},
                                         {"LOR", 25},
                                         {"LPR", 26},
                                         {"ES", 27},
                                         {"SES", 28},
                                         {"LOSS", 29},
                                         {"LORS", 30},
                                         {"UAS", 31},
                                         {"CV", 32},
                                         {"SRA", 33},
                                         {"FRA", 34},
                                         {"RPA", 35},
                                         {"BSW", 36},
                                         {"RTXUC", 37},
                                         {"RTXTX", 38},
                                         {"EFB", 39}}));
  EXPECT_EQ(lines[0], "NE-LOS                1");
  EXPECT_EQ(lines[12], "NE-FAILEDFAST_INITS   13");
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowPmCounters, ReportsTheResultOfAFailedRead) {
  expect(readsPm(0, 1).fails(EIO));
  EXPECT_THAT(typed("show pm-counters 0"), ElementsAre("QVR_readPerformanceMonitoringCounters failed (12)"));
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show pm-counters 1"), ElementsAre("QVR_readPerformanceMonitoringCounters failed (17)"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowPmCounters, RefusesAnUnknownLineAndPrintsItsUsage) {
  for (const std::string line : {"2", "-1", "99999999999"}) {
    EXPECT_THAT(typed("show pm-counters " + line), ElementsAre("invalid line number")) << line;
  }
  const auto usage = ElementsAre("show pm-counters <line-id>");
  EXPECT_THAT(typed("show pm-counters"), usage);
  EXPECT_THAT(typed("show pm-counters ?"), usage);
}

Script readsLineBlocks(int device) {
  return reads(device, kDerivedAddress, countingWords(216, 1000)) +
         reads(device, kFramerRawAddress, countingWords(340, 5000));
}

const Lines kNearLine = shownRows("NE-", {{"LOS", 1033},
                                          {"LOM", 1035},
                                          {"LOR", 1034},
                                          {"LPR", 1036},
                                          {"ES", 1006},
                                          {"SES", 1007},
                                          {"LOSS", 1008},
                                          {"LORS", 1009},
                                          {"UAS", 1010},
                                          {"SRA", 5041},
                                          {"FRA", 5043},
                                          {"RPA", 5077},
                                          {"BSW", 5055},
                                          {"TIGA", 5048},
                                          {"FULL_INITS", 1011},
                                          {"FAILEDFULL_INITS", 1012},
                                          {"FAST_INITS", 1013},
                                          {"FAILEDFAST_INITS", 1014}});

Script asksFarEndInterval(int device) {
  return asksManagement(device, countingWords(44, 9000));
}

using ShowLinePerformanceCounters = PerformanceCommands;

TEST_F(ShowLinePerformanceCounters, ShowsTheNearEnd) {
  expect(readsLineBlocks(0));
  EXPECT_EQ(typed("show line performance-counters"), kNearLine);
  for (const std::string line : {"1", "1 ne", "1 NE"}) {
    expect(readsLineBlocks(1));
    EXPECT_EQ(typed("show line performance-counters " + line), kNearLine) << line;
    verify();
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowLinePerformanceCounters, ShowsThirteenCountersOfTheFarEnd) {
  uint16_t sequence = 0;
  for (const std::string end : {"fe", "FE"}) {
    const Script up = readsIdentity(1, chipWithLine(LS_SHOWTIME));
    const Bytes derived = countingWords(216, 1000);
    const Bytes framer = countingWords(340, 5000);
    const Script derivedAnswer = readsFarEnd(1, ++sequence, kDerivedAddress, derived);
    const Script framerAnswer = readsFarEnd(1, ++sequence, kFramerRawAddress, framer);
    expect(up + derivedAnswer + asksFarEndInterval(1) + up + framerAnswer + asksFarEndInterval(1) +
           reads(1, kFramerRawAddress, countingWords(340, 7000)) +
           sendsToFarEnd(1, 0, MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ, {}, 14, Bytes(14, 1)));
    EXPECT_EQ(typed("show line performance-counters 1 " + end), shownRows("FE-", {{"LOS", 1033},
                                                                                  {"LOM", 1035},
                                                                                  {"LOR", 1034},
                                                                                  {"LPR", 1036},
                                                                                  {"ES", 9004},
                                                                                  {"SES", 9005},
                                                                                  {"LOSS", 9006},
                                                                                  {"LORS", 9007},
                                                                                  {"UAS", 9008},
                                                                                  {"SRA", 7042},
                                                                                  {"FRA", 7044},
                                                                                  {"RPA", 7078},
                                                                                  {"BSW", 7056}}));
    verify();
  }
}

TEST_F(ShowLinePerformanceCounters, GoesOnWithTheNearEndAfterAnotherWord) {
  for (const std::string end : {"xx", "Ne", "fee", "curr"}) {
    expect(readsLineBlocks(0));
    EXPECT_EQ(typed("show line performance-counters 0 " + end),
              Lines{"parameter must be curr or prev"} + kNearLine)
        << end;
    verify();
  }
}

TEST_F(ShowLinePerformanceCounters, ReportsAFailedRead) {
  for (size_t i = 0; i < 2; i++) {
    expect(readsLineBlocks(0).failingAt(i, EIO));
    EXPECT_THAT(typed("show line performance-counters"), ElementsAre("QVR_readGfastCounters failed"));
    verify();
  }
  expect(readsIdentity(0, chipWithLine(LS_SILENT)));
  EXPECT_THAT(typed("show line performance-counters 0 fe"), ElementsAre("QVR_readGfastCounters failed"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowLinePerformanceCounters, RefusesAnUnknownLineAndPrintsItsUsage) {
  EXPECT_THAT(typed("show line performance-counters 2"), ElementsAre("invalid line number"));
  EXPECT_THAT(typed("show line performance-counters -1 fe"), ElementsAre("invalid line number"));
  const auto usage = ElementsAre("show line performance-counters [<line-id>] [(ne | fe)] : { 0, ne }");
  EXPECT_THAT(typed("show line performance-counters ?"), usage);
}

using ShowChannelPerformanceCounters = PerformanceCommands;

TEST_F(ShowChannelPerformanceCounters, ShowsEitherEnd) {
  const Script near = reads(1, kFramerRawAddress, countingWords(340, 5000)) +
                      reads(1, kDerivedAddress, countingWords(216, 1000));
  for (const std::string end : {"", " ne", " NE"}) {
    expect(near);
    EXPECT_EQ(typed("show channel performance-counters 1" + end),
              shownRows("NE-", {{"CV", 1015}, {"RTXUC", 5032}, {"RTXTX", 5008}, {"EFB", 1026}}));
    verify();
  }
  expect(near);
  EXPECT_EQ(typed("show channel performance-counters 1 xx").front(), "parameter must be curr or prev");
  for (const std::string end : {"fe", "FE"}) {
    expect(asksFarEndInterval(1));
    EXPECT_EQ(typed("show channel performance-counters 1 " + end),
              shownRows("FE-", {{"CV", 9001}, {"RTXUC", 9002}, {"RTXTX", 9003}, {"EFB", 9010}}));
    verify();
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowChannelPerformanceCounters, ReportsAFailedRead) {
  expect(reads(0, kFramerRawAddress, Bytes(340)).fails(EIO));
  EXPECT_THAT(typed("show channel performance-counters 0"), ElementsAre("QVR_readGfastCounters failed"));
  expect(asksFarEndInterval(0).fails(ETIMEDOUT));
  EXPECT_THAT(typed("show channel performance-counters 0 fe"), ElementsAre("QVR_readGfastCounters failed"));
}

TEST_F(ShowChannelPerformanceCounters, RefusesAnUnknownLineAndPrintsItsUsage) {
  EXPECT_THAT(typed("show channel performance-counters 2"), ElementsAre("invalid line number"));
  const auto usage = ElementsAre("show channel performance-counters <line-id> [(ne | fe)] : { 0, ne }");
  EXPECT_THAT(typed("show channel performance-counters"), usage);
  EXPECT_THAT(typed("show channel performance-counters ?"), usage);
  EXPECT_THAT(typed("show channel performance-counters 0 ne 1"), usage);
}

using Show15minCounters = PerformanceCommands;

TEST_F(Show15minCounters, ShowsTheRunningQuarterHour) {
  testClock().setNow(at(10, 5));
  const Lines running = interval(300, "2023-11-15T10:05:00+UTC", "T", "T", 3);
  for (const std::string words : {"", " 0", " 0 0"}) {
    expect(readsPm(0, 3));
    EXPECT_EQ(typed("show 15min-counters" + words), running) << words;
    verify();
  }
  EXPECT_EQ(running[0], "collection time:      300");
  EXPECT_EQ(running[1], "timestamp:            2023-11-15T10:05:00+UTC");
  EXPECT_EQ(running[3], "INVALID:              T");
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Show15minCounters, ShowsAQuarterHourThatIsOver) {
  endQuarterHour(at(10, 15), 10);
  endQuarterHour(at(10, 30), 30);
  EXPECT_EQ(typed("show 15min-counters 1 1"), interval(900, "2023-11-15T10:30:00+UTC", "F", "F", 20));
  EXPECT_EQ(typed("show 15min-counters 1 2"), interval(900, "2023-11-15T10:15:00+UTC", "F", "F", 10));
}

TEST_F(Show15minCounters, ShowsTheFarEndsFlagTwice) {
  setLineState(0, 0, LS_INIT_TRAIN);
  endQuarterHour(at(10, 15), 10);
  EXPECT_EQ(typed("show 15min-counters 0 1"), interval(900, "2023-11-15T10:15:00+UTC", "T", "T", 10));
}

TEST_F(Show15minCounters, RefusesAnUnknownIntervalAsNumberZero) {
  const auto none = ElementsAre("Invalid interval number 0", "");
  EXPECT_THAT(typed("show 15min-counters 0 1"), none);
  endQuarterHour(at(10, 15), 10);
  for (const std::string number : {"2", "-1", "96", "97", "128", "256", "257", "99999999999"}) {
    EXPECT_THAT(typed("show 15min-counters 0 " + number), none) << number;
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Show15minCounters, ReportsAFailedReadOfTheRunningOne) {
  expect(readsPm(0, 1).fails(EIO));
  EXPECT_THAT(typed("show 15min-counters 0 0"),
              ElementsAre("Failed to get previous counters for interval 0"));
}

TEST_F(Show15minCounters, RefusesAnUnknownLineAndPrintsItsUsage) {
  EXPECT_THAT(typed("show 15min-counters 2"), ElementsAre("invalid line number"));
  EXPECT_THAT(typed("show 15min-counters -1 0"), ElementsAre("invalid line number"));
  const auto usage = ElementsAre("show 15min-counters [<line-id>] [interval]");
  EXPECT_THAT(typed("show 15min-counters ?"), usage);
  EXPECT_THAT(typed("show 15min-counters 0 ?"), usage);
  EXPECT_THAT(typed("show 15min-counters 0 0 5"), usage);
}

using Show24hrCounters = PerformanceCommands;

TEST_F(Show24hrCounters, ShowsTheRunningDay) {
  endQuarterHour(at(10, 15), 10);
  testClock().setNow(at(10, 16));
  for (const std::string words : {"", " 0", " 0 0"}) {
    expect(readsPm(0, 12));
    EXPECT_EQ(typed("show 24hr-counters" + words), interval(960, "2023-11-15T10:16:00+UTC", "F", "F", 12));
    verify();
  }
}

TEST_F(Show24hrCounters, ShowsTheFlagOfEachEndForADayThatIsOver) {
  setStartOfCollection(1, 0, 900 + 86400);
  endQuarterHour(at(24, 0), 10, 2);
  EXPECT_EQ(typed("show 24hr-counters 0 1"), interval(0, "2023-11-16T00:00:00+UTC", "F", "F", 10));
  EXPECT_EQ(typed("show 24hr-counters 1 1"), interval(86400, "2023-11-16T00:00:00+UTC", "T", "F", 10));
}

TEST_F(Show24hrCounters, RefusesAnUnknownDayAsNumberZero) {
  for (const std::string number : {"1", "-1", "7", "256"}) {
    EXPECT_THAT(typed("show 24hr-counters 0 " + number), ElementsAre("Invalid interval number 0", ""));
  }
}

TEST_F(Show24hrCounters, ReportsAFailedReadOfTheRunningOne) {
  expect(readsPm(1, 1).fails(EIO));
  EXPECT_THAT(typed("show 24hr-counters 1"), ElementsAre("Failed to get previous counters for interval 0"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Show24hrCounters, RefusesAnUnknownLineAndPrintsItsUsage) {
  EXPECT_THAT(typed("show 24hr-counters 2"), ElementsAre("invalid line number"));
  const auto usage = ElementsAre("show 24hr-counters [<line-id>] [interval]");
  EXPECT_THAT(typed("show 24hr-counters ?"), usage);
  EXPECT_THAT(typed("show 24hr-counters 0 0 5"), usage);
}

using ShowNumberOfIntervals = PerformanceCommands;

TEST_F(ShowNumberOfIntervals, CountsTheRunningOneAsWell) {
  EXPECT_THAT(typed("show number 15min-intervals"), ElementsAre("1"));
  EXPECT_THAT(typed("show number 24hr-intervals"), ElementsAre("1"));
  endQuarterHour(at(23, 45), 1);
  EXPECT_THAT(typed("show number 15min-intervals 0"), ElementsAre("2"));
  EXPECT_THAT(typed("show number 15min-intervals 1"), ElementsAre("2"));
  endQuarterHour(at(24, 0), 2, 2);
  EXPECT_THAT(typed("show number 15min-intervals 1"), ElementsAre("1"));
  EXPECT_THAT(typed("show number 24hr-intervals 1"), ElementsAre("2"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowNumberOfIntervals, RefusesAnUnknownLineAndPrintsItsUsage) {
  for (const std::string kind : {"15min", "24hr"}) {
    EXPECT_THAT(typed("show number " + kind + "-intervals 2"), ElementsAre("invalid line number"));
    const auto usage = ElementsAre("show number " + kind + "-intervals [<line-id>]");
    EXPECT_THAT(typed("show number " + kind + "-intervals ?"), usage);
    EXPECT_THAT(typed("show number " + kind + "-intervals 0 1"), usage);
  }
}

using Dump15minHistory = PerformanceCommands;

TEST_F(Dump15minHistory, PrintsTheRunningOneFirstAndTheOldestLast) {
  setStartOfCollection(0, 0, 600);
  endQuarterHour(at(10, 15), 10);
  setLineState(0, 0, LS_INIT_TRAIN);
  endQuarterHour(at(10, 30), 30);
  testClock().setNow(at(10, 31));
  expect(readsPm(0, 36));
  EXPECT_EQ(typed("dump 15min-history 0"),
            dumped(0, 43, "INVALID", "INVALID", 60, "2023-11-15T10:31:00+UTC", 6) +
                dumped(0, 43, "VALID", "INVALID", 900, "2023-11-15T10:30:00+UTC", 20) +
                dumped(0, 42, "INVALID", "INVALID", 600, "2023-11-15T10:15:00+UTC", 10));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Dump15minHistory, TakesLineOneByDefault) {
  testClock().setNow(at(10, 1));
  expect(readsPm(1, 2));
  EXPECT_EQ(typed("dump 15min-history"),
            dumped(1, 41, "INVALID", "INVALID", 60, "2023-11-15T10:01:00+UTC", 2));
}

TEST_F(Dump15minHistory, PrintsNothingForALineThatCannotBeRead) {
  expect(readsPm(1, 2).fails(EIO));
  EXPECT_THAT(typed("dump 15min-history 1"), IsEmpty());
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Dump15minHistory, RefusesAnUnknownLineAndPrintsItsUsage) {
  EXPECT_THAT(typed("dump 15min-history 2"), ElementsAre("invalid line number"));
  const auto usage = ElementsAre("dump 15min-history [<line-id>] : { 0 }");
  EXPECT_THAT(typed("dump 15min-history ?"), usage);
  EXPECT_THAT(typed("dump 15min-history 0 1"), usage);
}

TEST_F(PerformanceCommands, PrintAnEventForEachLineAtMidnight) {
  registerEventHandlers();
  testing::internal::CaptureStdout();
  endQuarterHour(at(24, 0), 1, 2);
  std::fflush(stdout);
  const std::string event = "24 hour event at 2023-11-16T00:00:00+UTC\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), event + event);
}

TEST_F(PerformanceCommands, PrintAFailureAsAnEventAndMakeNoRecordOfIt) {
  static int records = 0;
  QVR_registerLinkFailureNotificationCB(QVR_LinkFailureEventHandler);
  QVR_registerlineFailuresCB([](QVR_lineId_t, const QVR_lineFailures_t*) { records++; });
  callbacks().linkFailureCB.notify(0, LF_REASON_LOSS_OF_RMC, at(10, 0));
  EXPECT_EQ(records, 1);
  registerEventHandlers();
  testing::internal::CaptureStdout();
  callbacks().linkFailureCB.notify(0, LF_REASON_LOSS_OF_RMC, at(10, 0));
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Line failure event on line=0 reason=3 at time 2023-11-15T10:00:00+UTC ...\n");
  EXPECT_EQ(records, 1);
}

TEST_F(PerformanceCommands, ShowCountersBeyond31BitsAsNegativeNumbers) {
  Bytes block = pmBlock(0);
  store_le32(&block[21 * 4], 0xFFFFFFFF);
  expect(reads(0, 0xF0000000, block));
  EXPECT_EQ(typed("show pm-counters 0")[20], shown("NE-EFB", "-1"));
}

}  // namespace
