// Configuration mode at the real program: its record is edited, shown, saved, read again and kept.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "console/programs.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string shown(const std::string& label, const std::string& value) {
  return label + std::string(42 - label.size(), ' ') + value + "\r\n";
}

class Configuration : public testing::Test {
 protected:
  Configuration() { session_.type("configure"); }

  std::string type(const std::string& line) { return session_.type(line); }

  LabServer lab_;
  OpenSession session_{lab_.port()};
};

TEST_F(Configuration, StartsWithTheConfigurationOfLine0) {
  const std::string text = type("show");
  EXPECT_TRUE(text.starts_with(shown("MF", "36") + shown("Mds", "28") + shown("CE", "10 "))) << text;
  EXPECT_THAT(text, HasSubstr(shown("FEXT_CANCEL_ENABLEds", "T")));
  EXPECT_THAT(text, HasSubstr(shown("DELAYMAXds", "0")));
}

TEST_F(Configuration, EditsPrintNothing) {
  EXPECT_EQ(type("TARSNRM us 77"), "");
  EXPECT_EQ(type("CARMASK ds 0 100 200"), "");
  EXPECT_EQ(type("UPBOKLF T"), "");
  const std::string text = type("show");
  EXPECT_THAT(text, HasSubstr(shown("TARSNRMus", "77")));
  EXPECT_THAT(text, HasSubstr(shown("CARMASKds[ 0].startScIdx", "100") +
                              shown("CARMASKds[ 0].stopScIdx", "200") + shown("MAXATPds", "0")));
  EXPECT_THAT(text, HasSubstr(shown("UPBOKLF", "T")));
}

TEST_F(Configuration, RefusesBadWordsWithOneLine) {
  EXPECT_EQ(type("TARSNRM Us 60"), "invalid parameter - must enter ds or us\r\n");
  EXPECT_EQ(type("TARSNRM us 311"), "invalid parameter - must enter value between 0..310\r\n");
  EXPECT_EQ(type("TARSNRM ds"), "TARSNRM (ds | us) <0..310> * (0.1) dB\r\n");
  EXPECT_EQ(type("CE 4"), "invalid parameter - must enter value 10, 12, 14, 16, 20, 24, 30 and 33\r\n");
  EXPECT_EQ(type("RFIBAND 16 1 2"), "invalid parameter - must enter a value between 0..1\r\n");
}

TEST_F(Configuration, SaveKeepsTheEditsAndGetReadsTheLine) {
  const std::string before = type("show");
  type("TARSNRM us 77");
  const std::string edited = type("show");
  EXPECT_NE(edited, before);
  EXPECT_EQ(type("save"), "");
  EXPECT_EQ(type("show"), edited);
  EXPECT_EQ(type("get"), before);
  EXPECT_EQ(type("show"), before);
}

TEST_F(Configuration, RestoreResetsOnlyWhatALineHas) {
  type("TARSNRM us 77");
  type("DELAYMAX us 9");
  EXPECT_EQ(type("restore"), "");
  const std::string restored = type("show");
  EXPECT_THAT(restored, Not(HasSubstr(shown("TARSNRMus", "77"))));
  EXPECT_THAT(restored, HasSubstr(shown("DELAYMAXus", "9")));
}

TEST_F(Configuration, KeepsItsEditsAfterTheSession) {
  type("TARSNRM us 77");
  session_.send("exit\rquit\r");
  session_.readToEnd();
  OpenSession next(lab_.port());
  next.type("configure");
  EXPECT_THAT(next.type("show"), HasSubstr(shown("TARSNRMus", "77")));
}

TEST(Parameters, AreAllListedWithTheirValues) {
  LabServer lab;
  OpenSession session(lab.port());
  const std::string dictionary = session.type("show dictionary");
  const std::string values = session.type("show params");
  EXPECT_EQ(std::count(dictionary.begin(), dictionary.end(), '\n'), 130);
  EXPECT_EQ(std::count(values.begin(), values.end(), '\n'), 130);
  EXPECT_THAT(values, HasSubstr(" 87 cyclicPrefixSize "));
  EXPECT_THAT(values, HasSubstr("129 ???  "));
  EXPECT_EQ(session.type("show params 1"), values);
}

}  // namespace
