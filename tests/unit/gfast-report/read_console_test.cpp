#include "gfast-report/console/read_console.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "gfast-report/report_error.h"
#include "stored_console.h"

using namespace gfast::console;
using namespace gfast::report;

namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using testing::StartsWith;

std::string textIn(const char* field, size_t size) {
  return {field, std::find(field, field + size, '\0')};
}

TEST(ReadConsole, FillsTheRecordOfALineInShowtime) {
  StoredConsole console("showtime.txt");
  const TakenReading taken = console.read(0);
  EXPECT_THAT(taken.remarks, IsEmpty());
  ASSERT_EQ(taken.reading.lines.size(), 1U);
  const LineReading& line = taken.reading.lines[0];
  EXPECT_TRUE(line.up());
  EXPECT_TRUE(line.networkSide);
  EXPECT_EQ(line.firmware, "1.9.4.106");
  EXPECT_THAT(line.deviceTemperature_c, Optional(47U));
  EXPECT_THAT(line.downstream.snrMargin_db, Optional(6.0));
  EXPECT_THAT(line.upstream.electricalLength_db, Optional(2.8));
  EXPECT_THAT(line.downstream.codewordLength_bytes, Optional(240));
  ASSERT_TRUE(line.downstream.netDataRate_kbps);
  EXPECT_GT(*line.downstream.netDataRate_kbps, 600000U);
  ASSERT_TRUE(line.inventory);
  EXPECT_EQ(textIn(line.inventory->FTU_R.VERSION, sizeof line.inventory->FTU_R.VERSION), "9.4.106 v2");
  ASSERT_TRUE(line.initialisation);
  EXPECT_EQ(line.initialisation->lastSignalUpstream, 5);
}

TEST(ReadConsole, TakesIntervalsNewestFirst) {
  StoredConsole console("showtime.txt");
  const LineReading line = console.read(0).reading.lines.at(0);
  ASSERT_TRUE(line.quarterHours.running);
  EXPECT_EQ(line.quarterHours.running->measuredTime_s, 200U);
  EXPECT_EQ(line.quarterHours.running->end, StoredConsole::kNow);
  ASSERT_EQ(line.quarterHours.past.size(), 2U);
  EXPECT_TRUE(line.quarterHours.past[0].near.complete);
  EXPECT_EQ(line.quarterHours.past[1].end, StoredConsole::kNow - 1100);
  EXPECT_EQ(line.quarterHours.past[1].near.counters.fullInitialisations, 1U);
  ASSERT_TRUE(line.days.running);
  EXPECT_EQ(line.days.running->measuredTime_s, 2000U);
  EXPECT_FALSE(line.days.running->near.complete);
}

TEST(ReadConsole, TakesTablesOfBothDirections) {
  StoredConsole console("showtime.txt");
  const LineReading line = console.read(0).reading.lines.at(0);
  ASSERT_NE(line.tones, nullptr);
  for (const ToneDirection* tones : {&line.tones->downstream, &line.tones->upstream}) {
    EXPECT_EQ(tones->bits.size(), 2048U);
    EXPECT_EQ(tones->snr_db.at(0), std::nullopt);
    EXPECT_THAT(tones->snr_db.at(100), Optional(testing::Gt(30.0F)));
    EXPECT_THAT(tones->noise_dbmHz.at(100), Optional(testing::Lt(-100.0F)));
    EXPECT_EQ(tones->hlog_db.at(2047), std::nullopt);
  }
  EXPECT_THAT(line.tones->downstream.attenuation_db, Optional(8.1));
}

TEST(ReadConsole, KnowsASubscribersLineByItsChip) {
  StoredConsole console("subscriber.txt");
  const LineReading line = console.read(1).reading.lines.at(0);
  EXPECT_FALSE(line.networkSide);
  EXPECT_EQ(line.firmware, "2.9.4.106");
  EXPECT_EQ(line.initialisation.has_value(), false);
  EXPECT_TRUE(line.up());
}

TEST(ReadConsole, AsksNothingOfALineThatIsDownButItsCounters) {
  StoredConsole console("down.txt");
  const TakenReading taken = console.read(0);
  const LineReading& line = taken.reading.lines.at(0);
  EXPECT_TRUE(line.answers);
  EXPECT_FALSE(line.up());
  EXPECT_EQ(line.tones, nullptr);
  EXPECT_EQ(line.downstream.netDataRate_kbps, std::nullopt);
  ASSERT_TRUE(line.quarterHours.running);
  EXPECT_EQ(line.quarterHours.running->near.counters.lossOfSignal, 1U);
  EXPECT_THAT(console.asked(), Not(Contains(HasSubstr("ps 0"))));
}

TEST(ReadConsole, TypesOnlyCommandsThatRead) {
  StoredConsole console("showtime.txt");
  console.read(0);
  EXPECT_THAT(console.asked(), Each(testing::AnyOf(StartsWith("show "), "dump 15min-history 0")));
}

TEST(ReadConsole, LeavesOutWhatItDoesNotUnderstand) {
  StoredConsole console("showtime.txt");
  console["show SNRps 0 ds"] = "Error getting SNR table (SNRps) from ds\r\n";
  console["show ALNps 0 us"] = "0.00000 212 -139.0\r\n";
  console["show inventory 0"] = "QVR_getInventory failed (7)\r\n";
  console["show line status 0"] = "SNRMds                60 dB\r\nSNRMus                -512\r\n";
  const TakenReading taken = console.read(0);
  const LineReading& line = taken.reading.lines.at(0);
  EXPECT_THAT(line.tones->downstream.snr_db, IsEmpty());
  EXPECT_THAT(line.tones->upstream.noise_dbmHz.at(0), Optional(-139.0F));
  EXPECT_EQ(line.tones->upstream.noise_dbmHz.size(), 2048U);
  EXPECT_FALSE(line.inventory);
  EXPECT_EQ(line.downstream.snrMargin_db, std::nullopt);
  EXPECT_EQ(line.upstream.snrMargin_db, std::nullopt);
  EXPECT_THAT(taken.remarks, ElementsAre("inventory: QVR_getInventory failed (7)",
                                         "show SNRps 0 ds: Error getting SNR table (SNRps) from ds",
                                         "show ALNps 0 us: ends at tone 0"));
}

TEST(ReadConsole, TellsALineThatGoesDownMeanwhile) {
  StoredConsole console("showtime.txt");
  int asked = 0;
  const Ask ask = [&](const std::string& command) {
    if (command == "show line state 0") {
      return std::string(asked++ == 0 ? "Line[00] show time      \r\n" : "Line[00] silent         \r\n");
    }
    return command == "show number lines" ? console[command] : std::string("\r\n");
  };
  const TakenReading taken = readConsole(ask, 0, 0, [](const std::string&) {});
  EXPECT_THAT(taken.remarks, Contains(HasSubstr("the line went down while it was read")));
}

TEST(ReadConsole, TakesAChipThatDoesNotAnswerForDown) {
  StoredConsole console("showtime.txt");
  console["show line state 0"] = "Could not refresh the data\r\n";
  const TakenReading taken = console.read(0);
  EXPECT_FALSE(taken.reading.lines.at(0).answers);
  EXPECT_THAT(taken.remarks, ElementsAre("state: Could not refresh the data"));
}

TEST(ReadConsole, ShiftsTheTimesOfABoardInAnotherZone) {
  StoredConsole console("showtime.txt");
  std::string& history = console["dump 15min-history 0"];
  for (size_t at = 0; (at = history.find("T00:", at)) != std::string::npos;) {
    history.replace(at, 4, "T02:");
  }
  const LineReading line = console.read(0).reading.lines.at(0);
  EXPECT_EQ(line.quarterHours.running->end, StoredConsole::kNow);
  EXPECT_EQ(line.quarterHours.past.at(0).end, StoredConsole::kNow - 200);
}

TEST(ReadConsole, TakesADeviceThatCountsOnceMore) {
  StoredConsole console("showtime.txt");
  console["show number lines"] = "lines per device = 1, total = 5 \r\n";
  EXPECT_TRUE(console.read(0).reading.lines.at(0).up());
  EXPECT_THROW(console.read(2), ReportError);
}

TEST(ReadConsole, RefusesAnotherKindOfServer) {
  const auto read = [](const char* answer, QVR_lineId_t line) {
    readConsole([answer](const std::string&) { return std::string(answer); }, line, 0,
                [](const std::string&) {});
  };
  EXPECT_THROW(read("login:", 0), ReportError);
  EXPECT_THROW(read("lines per device = 1, total = 99999 \r\n", 0), ReportError);
  EXPECT_THROW(read("lines per device = 1, total = \r\n", 0), ReportError);
  EXPECT_THROW(read("lines per device = 1, total = 1 \r\n", 1), ReportError);
}

// Whatever is printed, reading ends, and what is read stays within bounds.
TEST(ReadConsole, TakesAnyDamage) {
  StoredConsole whole("showtime.txt");
  uint32_t random = 1;
  const auto next = [&random](size_t limit) {
    random = random * 1664525 + 1013904223;
    return static_cast<size_t>(random >> 8) % limit;
  };
  for (int round = 0; round < 30; round++) {
    const Ask ask = [&](const std::string& command) {
      std::string reply = command == "show number lines" ? "total = 1 \r\n" : whole[command];
      for (size_t i = 0; command != "show number lines" && !reply.empty() && i < 3; i++) {
        reply[next(reply.size())] = static_cast<char>(next(256));
      }
      return command == "show number lines" ? reply : reply.substr(0, next(2 * reply.size() + 1));
    };
    const TakenReading taken = readConsole(ask, 0, StoredConsole::kNow, [](const std::string&) {});
    const LineReading& line = taken.reading.lines.at(0);
    if (line.tones) {
      EXPECT_LE(line.tones->downstream.bits.size(), 2048U);
      EXPECT_LE(line.tones->upstream.hlog_db.size(), 2048U);
    }
    EXPECT_LE(line.quarterHours.past.size(), 96U);
  }
}

}  // namespace
