// Readings that were kept, and what changed between them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gfast-report/report_error.h"
#include "gfast-report/stored/changes.h"
#include "gfast-report/stored/stored_reading.h"
#include "qvrcli/serve/field_model.h"
#include "stored_console.h"

using namespace gfast::console;
using namespace gfast::report;

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;

const Reading& aReading() {
  static const Reading reading = StoredConsole("showtime.txt").read(0).reading;
  return reading;
}

StoredReading kept(const Reading& reading) {
  return storedIn(lineDocument(reading, 0).value_or(""), "line.json");
}

TEST(StoredReading, HasWhatWasRead) {
  const LineReading& line = aReading().lines.at(0);
  const StoredReading stored = kept(aReading());
  EXPECT_EQ(stored.name, "line0");
  EXPECT_EQ(stored.time, "2024-01-01T00:33:20Z");
  EXPECT_EQ(stored.state, "showtime");
  EXPECT_EQ(stored.firmware, "1.9.4.106");
  EXPECT_EQ(stored.subscriber.version, "9.4.106 v2");
  EXPECT_EQ(stored.downstream.netDataRate_kbps, line.downstream.netDataRate_kbps);
  EXPECT_EQ(stored.upstream.transmitPower_dbm, line.upstream.transmitPower_dbm);
  EXPECT_EQ(stored.errors.measured_s, 2000U);
  EXPECT_EQ(stored.tones.upstream.attenuation_db, line.tones->upstream.attenuation_db);
  EXPECT_EQ(stored.tones.downstream.bits, line.tones->downstream.bits);
  EXPECT_EQ(stored.tones.downstream.snr_db, line.tones->downstream.snr_db);
  EXPECT_EQ(stored.tones.upstream.noise_dbmHz, line.tones->upstream.noise_dbmHz);
  EXPECT_EQ(stored.tones.upstream.hlog_db, line.tones->upstream.hlog_db);
}

TEST(StoredReading, OfALineThatIsDownHasNoTones) {
  const StoredReading stored = kept(StoredConsole("down.txt").read(0).reading);
  EXPECT_EQ(stored.state, "silent");
  EXPECT_THAT(stored.tones.downstream.snr_db, IsEmpty());
  EXPECT_EQ(stored.downstream.netDataRate_kbps, std::nullopt);
}

TEST(StoredReading, IsRefusedWhenItIsSomethingElse) {
  for (const char* text : {"", "x", "[]", "{}", "3", R"({"gfast-cli-reading:reading":{"line":[]}})"}) {
    EXPECT_THROW(storedIn(text, "x.json"), ReportError) << text;
  }
  EXPECT_THROW(storedIn(std::string(100000, '['), "x.json"), ReportError);
  EXPECT_THROW(readStored("/does/not/exist"), ReportError);
}

TEST(StoredReading, LeavesOutWhatIsNotAsItShouldBe) {
  const StoredReading stored = storedIn(
      R"({"ietf-interfaces:interfaces-state":{"interface":[{"name":["x"],"bbf-fastdsl:line":{"bbf-fast:line":{
      "channel":{"status":{"downstream":{"net-data-rate":-1},"upstream":{"net-data-rate":1e300}}},
      "status":{"downstream":{"bitsps":"??","snr":7,"snr-margin":99999999},"upstream":{"bitsps":"//8="}},
      "inventory":{"ftu-o":{"version-number":"GxtbMko="}},"performance":[]}}}]},
      "gfast-cli-reading:reading":{"line":[{"state":"\u001b[2J","finding":[1,{"text":{}}]}]}})",
      "x.json");
  EXPECT_EQ(stored.name, "");
  EXPECT_EQ(stored.state, ".[2J");
  EXPECT_EQ(stored.downstream.netDataRate_kbps, std::nullopt);
  EXPECT_EQ(stored.upstream.netDataRate_kbps, std::nullopt);
  EXPECT_EQ(stored.downstream.snrMargin_db, std::nullopt);
  EXPECT_THAT(stored.tones.downstream.bits, IsEmpty());
  EXPECT_THAT(stored.tones.upstream.bits, testing::ElementsAre(15, 15, 15, 15));
  EXPECT_EQ(stored.network.version, "..[2J");
}

// Any cut or changed byte gives a reading or an error.
TEST(StoredReading, TakesAnyDamage) {
  const std::string whole = *lineDocument(aReading(), 0);
  uint32_t random = 1;
  for (int round = 0; round < 20; round++) {
    std::string text = whole;
    for (int i = 0; i < 3; i++) {
      random = random * 1664525 + 1013904223;
      text[(random >> 8) % text.size()] = static_cast<char>(random >> 3);
    }
    try {
      EXPECT_LE(storedIn(text, "x").tones.downstream.bits.size(), 2048U);
    } catch (const ReportError&) {
    }
  }
}

TEST(Changes, AreNoneOfTheSameReading) {
  const StoredReading stored = kept(aReading());
  const std::string text = changesOf(stored, stored);
  EXPECT_THAT(text, HasSubstr("downstream SNR: as before\n"));
  EXPECT_THAT(text, AllOf(Not(HasSubstr("->")), Not(HasSubstr("│"))));
}

TEST(Changes, AreToldWithNumbers) {
  const StoredReading before = kept(aReading());
  StoredReading after = before;
  after.downstream.netDataRate_kbps = *before.downstream.netDataRate_kbps - 1500;
  after.upstream.snrMargin_db = std::nullopt;
  after.subscriber.version = "9.4.107";
  after.errors.subscriber += 7;
  after.findings.push_back({"mask", "Something new."});
  for (size_t tone = 200; tone < 300; tone++) {
    after.tones.downstream.snr_db[tone] =
        *before.tones.downstream.snr_db[tone] - (tone == 250 ? 12.0F : 4.0F);
  }
  const std::string text = changesOf(before, after);
  EXPECT_THAT(text, HasSubstr("Mbit/s (-1.5)\n"));
  EXPECT_THAT(text, HasSubstr("upstream margin: 6.3 -> - dB\n"));
  EXPECT_THAT(text, HasSubstr("9.4.106 v2"));
  EXPECT_THAT(text, HasSubstr("9.4.107"));
  EXPECT_THAT(text, HasSubstr("errored seconds: "));
  EXPECT_THAT(text, HasSubstr("new: Something new.\n"));
  EXPECT_THAT(text, HasSubstr("downstream SNR: 4.1 dB less from 10.3 to 15.5 MHz (at most 12)\n"));
  EXPECT_THAT(text, HasSubstr("upstream SNR: as before\n"));
  EXPECT_THAT(text, HasSubstr("SNR  "));
  EXPECT_THAT(changesOf(after, before), HasSubstr("gone: Something new.\n"));
}

TEST(Changes, OfALineThatWentDownAreItsFigures) {
  const StoredReading down = kept(StoredConsole("down.txt").read(0).reading);
  const std::string text = changesOf(kept(aReading()), down);
  EXPECT_THAT(text, HasSubstr("after  line0: silent"));
  EXPECT_THAT(text, HasSubstr("downstream margin: 6.0 -> - dB\n"));
  EXPECT_THAT(text, Not(HasSubstr("SNR")));
}

}  // namespace
