#include "qvrcli/text/line_buffer.h"

#include <gtest/gtest.h>

#include <string>

#include "unit/qvrcli/printed_lines.h"

using namespace gfast;
using namespace gfast::console;

namespace {

std::string printedLine() {
  PrintedLines printed;
  PrintMessage(printed.cli());
  return printed.take().back();
}

TEST(Line, IsFilledWithBlanksUpToAColumn) {
  AddMessage("ab", 5);
  AddMessage("c", 3);
  EXPECT_EQ(printedLine(), "     abc");
}

TEST(Line, IsEmptyAfterItWasPrinted) {
  AddMessage("one", 0);
  EXPECT_EQ(printedLine(), "one");
  AddMessage("two", 4);
  EXPECT_EQ(printedLine(), "    two");
  EXPECT_EQ(printedLine(), "");
}

TEST(Line, IsPrintedAsTextAndNotAsAFormat) {
  AddMessage("100%s %n", 0);
  EXPECT_EQ(printedLine(), "100%s %n");
}

TEST(Line, HoldsAtMost999Characters) {
  AddMessage(std::string(700, 'a').c_str(), 0);
  AddMessage(std::string(700, 'b').c_str(), 0);
  AddMessage("c", 5000);
  EXPECT_EQ(printedLine(), std::string(700, 'a') + std::string(299, 'b'));
  AddMessage("d", 4000000000U);
  EXPECT_EQ(printedLine(), std::string(999, ' '));
}

TEST(Filler, RepeatsTheCharacter) {
  EXPECT_STREQ(filler(' ', 3), "   ");
  EXPECT_STREQ(filler('-', 79), std::string(79, '-').c_str());
  EXPECT_STREQ(filler('-', 0), "");
}

TEST(Filler, IsOneBufferThatEveryCallReuses) {
  const char* const first = filler('a', 5);
  EXPECT_EQ(filler('b', 2), first);
  EXPECT_STREQ(first, "bb");
}

TEST(Filler, IsAtMost79Wide) {
  EXPECT_STREQ(filler('x', 255), std::string(79, 'x').c_str());
}

TEST(CopyToString, PutsATerminatorBehindTheBytes) {
  char text[4] = {'x', 'x', 'x', 'x'};
  copyToString(text, "ab", 2);
  EXPECT_STREQ(text, "ab");
  EXPECT_EQ(text[3], 'x');
  copyToString(text, "", 0);
  EXPECT_STREQ(text, "");
}

}  // namespace
