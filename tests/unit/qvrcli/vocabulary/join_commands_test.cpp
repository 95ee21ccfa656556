#include "qvrcli/vocabulary/join_commands.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace gfast;
using namespace gfast::console;

namespace {

int handler(cli_def* /*cli*/, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  return CLI_OK;
}

Command rowFor(const char* path, int mode = MODE_EXEC) {
  return {path, mode, kReads, "help", handler, anyNumber, "usage"};
}

std::string refusalOf(std::vector<Place> order, std::vector<Command> rows) {
  try {
    joinCommands(order, rows);
  } catch (const std::logic_error& error) {
    return error.what();
  }
  return "";
}

TEST(JoinedCommands, StandInTheGivenOrder) {
  const Place order[] = {
      {MODE_EXEC, "show"}, {MODE_EXEC, "show b"}, {MODE_EXEC, "show a"}, {MODE_CONFIG, "show"}};
  const Command rows[] = {rowFor("show", MODE_CONFIG), rowFor("show a"), rowFor("show b")};
  const std::vector<Command> joined = joinCommands(order, rows);
  ASSERT_EQ(joined.size(), 4U);
  for (size_t i = 0; i < 4; i++) {
    EXPECT_STREQ(joined[i].path, order[i].path);
    EXPECT_EQ(joined[i].mode, order[i].mode);
  }
  EXPECT_EQ(joined[0].handler, nullptr);  // only leads to the others
  EXPECT_EQ(joined[1].handler, handler);
  EXPECT_EQ(joined[3].handler, handler);
}

TEST(JoinedCommands, AreRefusedWhenAPlaceHasNoRow) {
  EXPECT_EQ(refusalOf({{MODE_EXEC, "a"}, {MODE_EXEC, "b"}}, {rowFor("a")}), "vocabulary: no row for 'b'");
  EXPECT_EQ(refusalOf({{MODE_EXEC, "a"}}, {rowFor("a", MODE_CONFIG)}), "vocabulary: no row for 'a'");
}

TEST(JoinedCommands, AreRefusedWhenARowHasNoPlace) {
  EXPECT_EQ(refusalOf({{MODE_EXEC, "a"}}, {rowFor("a"), rowFor("b")}), "vocabulary: no place for 'b'");
}

TEST(JoinedCommands, AreRefusedWhenTwoHaveOnePath) {
  EXPECT_EQ(refusalOf({{MODE_EXEC, "a"}}, {rowFor("a"), rowFor("a")}), "vocabulary: two rows for 'a'");
  EXPECT_EQ(refusalOf({{MODE_EXEC, "a"}, {MODE_EXEC, "a"}}, {rowFor("a")}), "vocabulary: two places for 'a'");
  EXPECT_EQ(refusalOf({{MODE_EXEC, "a"}, {MODE_EXEC, "a b"}, {MODE_EXEC, "a"}}, {rowFor("a b")}),
            "vocabulary: two places for 'a'");
}

TEST(JoinedCommands, AreRefusedWhenAWordIsBothACommandAndTheBeginningOfOthers) {
  EXPECT_EQ(refusalOf({{MODE_EXEC, "a"}, {MODE_EXEC, "a b"}}, {rowFor("a"), rowFor("a b")}),
            "vocabulary: a row for a word that leads to others 'a'");
}

}  // namespace
