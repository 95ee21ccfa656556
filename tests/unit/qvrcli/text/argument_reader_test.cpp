#include "qvrcli/text/argument_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "unit/qvrcli/printed_lines.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Arguments : public testing::Test {
 protected:
  ArgumentReader reader(std::initializer_list<const char*> words) {
    words_ = words;
    return {printed_.cli(), words_.data(), static_cast<int>(words_.size())};
  }

  PrintedLines printed_;

 private:
  std::vector<const char*> words_;
};

TEST_F(Arguments, GiveTheirDefaultsWhenTheyAreNotThere) {
  ArgumentReader words = reader({});
  EXPECT_EQ(words.line(0), 0);
  EXPECT_EQ(words.line(0, "no line", 1), 1);
  EXPECT_EQ(words.device(0, "no device"), 0);
  EXPECT_EQ(words.number(0, 1, 9, "no number", 5), 5);
  EXPECT_EQ(words.end(0, "no end"), End::kNear);
  EXPECT_EQ(words.direction(0, "no direction"), Direction::kUpstream);
  EXPECT_STREQ(words.text(0, "file.txt"), "file.txt");
  EXPECT_FALSE(words.is(0, "all"));
  EXPECT_FALSE(words.refused());
  EXPECT_THAT(printed_.take(), IsEmpty());
}

TEST_F(Arguments, AreReadByTheirPositions) {
  ArgumentReader words = reader({"1", "FE", "ds", "0xe0000238", "7", "all", "file.txt"});
  EXPECT_STREQ(words.text(6, ""), "file.txt");
  EXPECT_TRUE(words.is(5, "all"));
  EXPECT_EQ(words.number(4, 1, 9, "no number", 5), 7);
  EXPECT_EQ(words.hexadecimal(3, "no address"), 0xE0000238U);
  EXPECT_EQ(words.direction(2, "no direction"), Direction::kDownstream);
  EXPECT_EQ(words.end(1, "no end"), End::kFar);
  EXPECT_EQ(words.device(0, "no device"), 1);
  EXPECT_EQ(words.line(0), 1);
  EXPECT_FALSE(words.refused());
  EXPECT_THAT(printed_.take(), IsEmpty());
}

TEST_F(Arguments, AreRefusedInTheCommandsOwnWords) {
  EXPECT_EQ(reader({"2"}).device(0, "invalid device number {}"), 0);
  EXPECT_EQ(reader({"2"}).line(0, "invalid line number", 1), 1);
  EXPECT_EQ(reader({"0"}).number(0, 1, 9, "<{}> is not between 1 and 9", 5), 5);
  EXPECT_EQ(reader({"zz"}).hexadecimal(0, "invalid memaddr ({})"), 0U);
  EXPECT_EQ(reader({"xe"}).end(0, "parameter must be ne or fe"), End::kNear);
  EXPECT_EQ(reader({"down"}).direction(0, "must enter ds or us"), Direction::kUpstream);
  EXPECT_THAT(printed_.take(),
              ElementsAre("invalid device number 2", "invalid line number", "<0> is not between 1 and 9",
                          "invalid memaddr (zz)", "parameter must be ne or fe", "must enter ds or us"));
}

TEST_F(Arguments, SayWhichLinesThereAre) {
  ArgumentReader words = reader({"2"});
  words.line(0);
  EXPECT_TRUE(words.refused());
  EXPECT_THAT(printed_.take(), ElementsAre("invalid parameter - line number must be between 0..1"));
}

TEST_F(Arguments, AreNotReadAfterOneThatIsRefused) {
  ArgumentReader words = reader({"2", "2", "fe", "ds", "file.txt"});
  words.line(0);
  EXPECT_EQ(words.device(1, "no device"), 0);
  EXPECT_EQ(words.end(2, "no end"), End::kNear);
  EXPECT_EQ(words.direction(3, "no direction"), Direction::kUpstream);
  EXPECT_EQ(words.text(4, nullptr), nullptr);
  EXPECT_EQ(printed_.take().size(), 1U);
}

TEST_F(Arguments, MayGoOnWithTheNearEndAfterAnotherWord) {
  ArgumentReader words = reader({"1", "xx"});
  EXPECT_EQ(words.end(1, "parameter must be curr or prev", OtherWord::kNearEnd), End::kNear);
  EXPECT_FALSE(words.refused());
  EXPECT_EQ(words.line(0), 1);
  EXPECT_THAT(printed_.take(), ElementsAre("parameter must be curr or prev"));
}

TEST_F(Arguments, WithoutDigitsStandForTheDefault) {
  EXPECT_EQ(reader({"abc"}).line(0, "no line", 1), 1);
  EXPECT_EQ(reader({"abc"}).number(0, 1, 9, "no number", 5), 5);
  EXPECT_THAT(printed_.take(), IsEmpty());
  reader({"abc"}).number(0, 1, 9, "no number", 0);
  EXPECT_THAT(printed_.take(), ElementsAre("no number"));
}

TEST_F(Arguments, AreTakenInLowerOrUpperCaseOnly) {
  EXPECT_EQ(reader({"US"}).direction(0, "no direction"), Direction::kUpstream);
  EXPECT_EQ(reader({"DS"}).direction(0, "no direction"), Direction::kDownstream);
  EXPECT_EQ(reader({"NE"}).end(0, "no end"), End::kNear);
  EXPECT_TRUE(reader({"ALL"}).is(0, "all"));
  EXPECT_FALSE(reader({"All"}).is(0, "all"));
  EXPECT_THAT(printed_.take(), IsEmpty());
  reader({"Fe"}).end(0, "no end");
  EXPECT_THAT(printed_.take(), ElementsAre("no end"));
}

TEST_F(Arguments, AreShownAsTheyWereTyped) {
  reader({"100%s {} %n"}).device(0, "invalid device number {}");
  EXPECT_THAT(printed_.take(), ElementsAre("invalid device number 100%s {} %n"));
}

}  // namespace
