#include "qvrcli/text/labelled_lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "unit/qvrcli/printed_lines.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;

TEST(Padding, FillsALabelUpToTheWidth) {
  EXPECT_STREQ(padding("abc", 5), "  ");
  EXPECT_STREQ(padding("", 5), "     ");
}

TEST(Padding, IsEmptyBehindALabelAsWideAsTheColumnOrWider) {
  EXPECT_STREQ(padding("abcde", 5), "");
  EXPECT_STREQ(padding("abcdefgh", 5), "");
}

TEST(Padding, IsAtMost79Blanks) {
  EXPECT_EQ(std::string(padding("a", 255)), std::string(79, ' '));
}

class SessionLines : public testing::Test {
 protected:
  PrintedLines printed_;
  LabelledLines lines_{printed_.cli(), 8};
};

TEST_F(SessionLines, HaveTheirValuesInOneColumn) {
  lines_.print("SNRM", 310);
  lines_.print("ATTNDR", uint32_t{4294967295});
  lines_.print("STATE", "L0N");
  EXPECT_THAT(printed_.take(), ElementsAre("SNRM      310", "ATTNDR    4294967295", "STATE     L0N"));
}

TEST_F(SessionLines, HaveTwoBlanksBehindALabelThatIsTooLong) {
  lines_.print("abcdefgh", 1);
  lines_.print("abcdefghijkl", 1);
  EXPECT_THAT(printed_.take(), ElementsAre("abcdefgh  1", "abcdefghijkl  1"));
}

TEST_F(SessionLines, ShowASmallNumberAsANumberAndNotAsACharacter) {
  lines_.print("signal", uint8_t{65});
  lines_.print("margin", int8_t{-5});
  EXPECT_THAT(printed_.take(), ElementsAre("signal    65", "margin    -5"));
}

TEST_F(SessionLines, ShowAFlagAsTOrF) {
  lines_.printFlag("TPS", true);
  lines_.printFlag("DRA", false);
  EXPECT_THAT(printed_.take(), ElementsAre("TPS       T", "DRA       F"));
}

TEST_F(SessionLines, ShowAValueInTheFormItIsGiven) {
  lines_.printAs("IARBANDS", "{:x}", 0xABCU);
  lines_.printAs("CE", "{} ", 10);
  lines_.printAs("id", "{:08x} ({})", 0xFFFFFFFFU, -1);
  lines_.printAs("gain", "{:.5f}", 0.5);
  EXPECT_THAT(printed_.take(),
              ElementsAre("IARBANDS  abc", "CE        10 ", "id        ffffffff (-1)", "gain      0.50000"));
}

TEST_F(SessionLines, ShowATextAsItIs) {
  lines_.print("name", "100%s %n {}");
  lines_.heading("%s {}");
  EXPECT_THAT(printed_.take(), ElementsAre("name      100%s %n {}", "%s {}"));
}

TEST_F(SessionLines, MayHaveAnEmptyLineBehindThem) {
  lines_.heading("\n<heading>\n");
  lines_.printAs("last", "{}\n", 3);
  EXPECT_THAT(printed_.take(), ElementsAre("", "<heading>", "", "last      3", ""));
}

TEST(FileLines, AreEndedInTheFile) {
  FILE* const file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  const LabelledLines lines(file, 8);
  lines.heading("\n<heading>\n");
  lines.print("first", 1);
  lines.printFlag("second", true);
  lines.printAs("last", "{}\n", 3);
  std::rewind(file);
  char text[100];
  const size_t size = std::fread(text, 1, sizeof text, file);
  std::fclose(file);
  EXPECT_EQ(std::string(text, size), "\n<heading>\nfirst     1\nsecond    T\nlast      3\n\n");
}

}  // namespace
