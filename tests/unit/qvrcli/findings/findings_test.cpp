// Findings of readings that no board gives, or that a board gives late.
#include "qvrcli/findings/findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace gfast::console;

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StrEq;

constexpr size_t kFirstTone = 43;

// A direction of a plain cable, in the steps of a chip.
ToneDirection plainCable() {
  ToneDirection tones;
  tones.bits.resize(QVR_MAX_NUMBER_OF_TONES);
  for (auto* table : {&tones.snr_db, &tones.noise_dbmHz, &tones.hlog_db}) {
    table->resize(QVR_MAX_NUMBER_OF_TONES);
  }
  for (size_t tone = kFirstTone; tone < 1960; tone++) {
    const float loss = std::round(2 * std::sqrt(static_cast<float>(tone) * 0.05175F));
    tones.hlog_db[tone] = -loss;
    tones.snr_db[tone] = 60 - loss;
    tones.noise_dbmHz[tone] = -140.0F;
    tones.bits[tone] = 10;
  }
  return tones;
}

LineReading lineOf(const ToneDirection& downstream) {
  LineReading line;
  line.answers = true;
  line.networkSide = true;
  line.state = LS_SHOWTIME;
  line.downstream.netDataRate_kbps = 500000;
  line.upstream.netDataRate_kbps = 100000;
  auto tones = std::make_shared<ToneReading>();
  tones->downstream = downstream;
  tones->upstream = plainCable();
  line.tones = tones;
  return line;
}

auto finding(const char* what, const char* text) {
  return AllOf(Field(&Finding::what, StrEq(what)), Field(&Finding::text, HasSubstr(text)));
}

TEST(Findings, AreNoneOfAPlainCable) {
  EXPECT_THAT(findingsIn(lineOf(plainCable())), IsEmpty());
}

TEST(Findings, AreNoneOfAnEmptyReading) {
  EXPECT_THAT(findingsIn({}), IsEmpty());
  LineReading line = lineOf({});
  line.tones = std::make_shared<ToneReading>();
  EXPECT_THAT(findingsIn(line), IsEmpty());
}

TEST(Findings, TakeTablesOfUnlikeLength) {
  ToneDirection tones = plainCable();
  tones.bits.resize(500);
  tones.hlog_db.resize(300);
  tones.noise_dbmHz.resize(100);
  findingsIn(lineOf(tones));
  tones.bits.resize(QVR_MAX_NUMBER_OF_TONES);
  tones.snr_db.resize(400);
  findingsIn(lineOf(tones));
}

TEST(Findings, DoNotLookAtTheTonesOfALineThatIsDown) {
  ToneDirection tones = plainCable();
  std::ranges::fill(tones.bits, uint8_t{1});
  LineReading line = lineOf(tones);
  line.state = LS_SILENT;
  EXPECT_THAT(findingsIn(line), IsEmpty());
}

TEST(Findings, TellSnrThatIsNotUsed) {
  ToneDirection tones = plainCable();
  std::ranges::fill(tones.bits, uint8_t{4});
  EXPECT_THAT(findingsIn(lineOf(tones)), ElementsAre(finding("unused-snr", "(downstream)")));
}

TEST(Findings, SayWhatAMaskCosts) {
  ToneDirection tones = plainCable();
  for (size_t tone = 600; tone < 700; tone++) {
    tones.snr_db[tone] = tones.hlog_db[tone] = tones.noise_dbmHz[tone] = std::nullopt;
    tones.bits[tone] = 0;
  }
  // 100 tones of 1917; the other 1817 carry 500 Mbit/s.
  EXPECT_THAT(findingsIn(lineOf(tones)),
              ElementsAre(finding("mask",
                                  "100 tones silent (downstream), most of them from "
                                  "31.1 to 36.2 MHz. With the bits of the tones "
                                  "beside them they would carry about 28 Mbit/s")));
}

TEST(Findings, DoNotTakeOneLoudToneForAStationWithoutADipInSnr) {
  ToneDirection tones = plainCable();
  tones.noise_dbmHz[400] = -100.0F;
  EXPECT_THAT(findingsIn(lineOf(tones)), IsEmpty());
  tones.snr_db[400] = *tones.snr_db[400] - 20;
  EXPECT_THAT(findingsIn(lineOf(tones)),
              ElementsAre(finding("radio-station", "20.7 MHz (no band of radio)")));
}

TEST(Findings, TakeManyHarmonicsForNoStations) {
  ToneDirection tones = plainCable();
  for (size_t tone = 100; tone < 1900; tone += 100) {
    tones.noise_dbmHz[tone] = -100.0F;
    tones.snr_db[tone] = *tones.snr_db[tone] - 20;
  }
  EXPECT_THAT(findingsIn(lineOf(tones)), IsEmpty());
}

TEST(Findings, TakeAHoleWithoutItsMultiplesForNoTap) {
  ToneDirection tones = plainCable();
  for (size_t tone = 190; tone <= 210; tone++) {
    tones.hlog_db[tone] =
        *tones.hlog_db[tone] - static_cast<float>(10 - std::abs(200 - static_cast<int>(tone)));
  }
  LineReading line = lineOf(tones);
  EXPECT_THAT(findingsIn(line), IsEmpty());
}

LineReading lineWithQuarterHour() {
  LineReading line = lineOf(plainCable());
  line.quarterHours.running.emplace();
  line.quarterHours.running->measuredTime_s = 600;
  return line;
}

TEST(Findings, NameTheEndThatLostPowerOnEitherSideOfTheLine) {
  LineReading line = lineWithQuarterHour();
  line.quarterHours.running->near.counters.lossOfPower = 1;
  EXPECT_THAT(findingsIn(line),
              ElementsAre(finding("power-loss", "The subscriber's end announced 1 time within 10 min")));
  line.networkSide = false;
  EXPECT_THAT(findingsIn(line), ElementsAre(finding("power-loss", "The network end")));
}

TEST(Findings, TakeErrorsForImpulsesOnlyWhereNothingWasMeasured) {
  LineReading line = lineWithQuarterHour();
  line.quarterHours.running->far.counters.erroredSeconds = 10;
  EXPECT_THAT(
      findingsIn(line),
      ElementsAre(finding("impulses", "(downstream): 0 units sent again and 10 errored seconds in 600 s")));
  line.quarterHours.running->far.counters.fastRateAdaptations = 1;
  EXPECT_THAT(findingsIn(line), IsEmpty());
}

TEST(Findings, TakeTheErrorsOfAHealthyLineForNothing) {
  LineReading line = lineWithQuarterHour();
  line.quarterHours.running->near.counters.retransmittedDtus = 2999;
  line.quarterHours.running->far.counters.erroredSeconds = 9;
  EXPECT_THAT(findingsIn(line), IsEmpty());
}

}  // namespace
