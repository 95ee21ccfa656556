// A reading in the published model.
#include "qvrcli/serve/field_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

using namespace gfast::console;

namespace {

using testing::HasSubstr;
using testing::Not;

Reading oneLine(const LineReading& line) {
  Reading reading;
  reading.lines.push_back(line);
  return reading;
}

LineReading answering(G9701_linkState_t state) {
  LineReading line;
  line.answers = true;
  line.networkSide = true;
  line.state = state;
  return line;
}

TEST(FieldModel, HasNoLineThatTheReadingDoesNotHave) {
  EXPECT_FALSE(lineDocument(oneLine(answering(LS_IDLE)), 1));
  EXPECT_TRUE(lineDocument(oneLine(answering(LS_IDLE)), 0));
}

TEST(FieldModel, SaysOfAChipThatDoesNotAnswerOnlyThat) {
  const std::string text = linesDocument(oneLine({}));
  EXPECT_THAT(text, HasSubstr("\"oper-status\":\"not-present\""));
  EXPECT_THAT(text, Not(HasSubstr("bbf-fast:line")));
}

TEST(FieldModel, TellsAFailureUntilTheNextShowtime) {
  LineReading line = answering(LS_SILENT);
  line.memory.lastFailure = {1700000000, LF_REASON_LOSS_OF_MARGIN};
  constexpr const char* kDeclared =
      "\"ftu-o\":{\"failures\":{\"loss-of-signal\":false,\"loss-of-rmc\":false,"
      "\"loss-of-margin\":true,";
  EXPECT_THAT(linesDocument(oneLine(line)), HasSubstr(kDeclared));
  line.state = LS_SHOWTIME;
  const std::string up = linesDocument(oneLine(line));
  EXPECT_THAT(up, Not(HasSubstr(kDeclared)));
  EXPECT_THAT(up, HasSubstr("{\"time\":\"2023-11-14T22:13:20Z\",\"reason\":\"loss of margin\"}"));
}

TEST(FieldModel, KeepsValuesWithinTheModelsLimits) {
  LineReading line = answering(LS_SHOWTIME);
  line.downstream.snrMargin_db = 99.9;
  line.downstream.transmitPower_dbm = -400.0;
  line.downstream.codewordLength_bytes = 7;
  line.downstream.codewordRedundancy_bytes = 14;
  line.quarterHours.running.emplace();
  line.quarterHours.running->near.counters.erroredSeconds = 5000;
  const std::string text = linesDocument(oneLine(line));
  EXPECT_THAT(text, HasSubstr("\"snr-margin\":511"));
  EXPECT_THAT(text, HasSubstr("\"actual-aggregate-transmit-power\":-311"));
  EXPECT_THAT(text, Not(HasSubstr("dtu-fec")));
  EXPECT_THAT(text, HasSubstr("\"errored-seconds\":900"));
}

TEST(FieldModel, PutsTheChipsEndWhereItsSideIs) {
  LineReading line = answering(LS_SHOWTIME);
  line.quarterHours.running.emplace();
  line.quarterHours.running->near.counters.erroredSeconds = 11;
  line.quarterHours.running->far.counters.erroredSeconds = 22;
  constexpr const char* kNearFirst = "\"errored-seconds\":11";
  const std::string network = linesDocument(oneLine(line));
  line.networkSide = false;
  const std::string subscriber = linesDocument(oneLine(line));
  EXPECT_LT(network.find(kNearFirst), network.find("\"errored-seconds\":22"));
  EXPECT_GT(subscriber.find(kNearFirst), subscriber.find("\"errored-seconds\":22"));
}

TEST(FieldModel, TellsFindingsOfOneLineOnly) {
  LineReading line = answering(LS_SILENT);
  line.quarterHours.running.emplace();
  line.quarterHours.running->near.counters.lossOfPower = 1;
  const Reading reading = oneLine(line);
  EXPECT_THAT(
      *lineDocument(reading, 0),
      HasSubstr(
          "\"finding\":[{\"number\":1,\"what\":\"power-loss\",\"sure\":\"sure\",\"text\":\"The subscriber"));
  EXPECT_THAT(linesDocument(reading), Not(HasSubstr("finding")));
}

TEST(FieldModel, TakesAnyBytesAsNames) {
  LineReading line = answering(LS_SHOWTIME);
  line.inventory.emplace();
  std::memset(line.inventory->FTU_R.SERIALNR, 0xFF, sizeof line.inventory->FTU_R.SERIALNR);
  EXPECT_THAT(linesDocument(oneLine(line)),
              HasSubstr("\"system-serial-number\":\"//////////////////////////////////////////8=\""));
}

}  // namespace
