#include "qvrcli/session/interpreter_guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "qvrcli/session/pattern_size.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::Gt;

std::vector<std::string> printedLines;

void remember(cli_def* /*cli*/, const char* line) {
  printedLines.emplace_back(line);
}

int printFruit(cli_def* cli, const char* /*command*/, char* /*argv*/[], int /*argc*/) {
  for (const char* const line : {"apple", "red apple", "pear", "fig (dried)", "red  apple"}) {
    cli_print(cli, "%s", line);
  }
  return CLI_OK;
}

// A guarded interpreter with one command.
class GuardedFilters : public testing::Test {
 protected:
  void SetUp() override {
    cli_ = cli_init();
    guardInterpreter(cli_);
    cli_register_command(cli_, nullptr, "fruit", printFruit, PRIVILEGE_UNPRIVILEGED, MODE_EXEC, "Fruit");
    cli_set_configmode(cli_, MODE_CONFIG, nullptr);
    cli_set_configmode(cli_, MODE_EXEC, nullptr);
    cli_print_callback(cli_, remember);
  }
  void TearDown() override { cli_done(cli_); }

  std::vector<std::string> run(const std::string& line) {
    printedLines.clear();
    cli_run_command(cli_, line.c_str());
    return printedLines;
  }

  cli_def* cli_ = nullptr;
};

TEST_F(GuardedFilters, TakeOneWord) {
  EXPECT_THAT(run("fruit | include pear"), ElementsAre("pear"));
  EXPECT_THAT(run("fruit | exclude apple"), ElementsAre("pear", "fig (dried)"));
  EXPECT_THAT(run("fruit | begin pear"), ElementsAre("pear", "fig (dried)", "red  apple"));
  EXPECT_THAT(run("fruit | between red pear"), ElementsAre("red apple", "pear", "red  apple"));
  EXPECT_THAT(run("fruit | grep ^red"), ElementsAre("red apple", "red  apple"));
  EXPECT_THAT(run("fruit | egrep \"^(pear|fig)\""), ElementsAre("pear", "fig (dried)"));
}

TEST_F(GuardedFilters, TakeTheRestOfTheLine) {
  EXPECT_THAT(run("fruit | include red apple"), ElementsAre("red apple"));
  EXPECT_THAT(run("fruit | include \"red  apple\""), ElementsAre("red  apple"));
  EXPECT_THAT(run("fruit | exclude red apple"), ElementsAre("apple", "pear", "fig (dried)", "red  apple"));
  EXPECT_THAT(run("fruit | begin fig (dried)"), ElementsAre("fig (dried)", "red  apple"));
  EXPECT_THAT(run("fruit | between pear fig (dried)"), ElementsAre("pear", "fig (dried)"));
  EXPECT_THAT(run("fruit | egrep red +apple"), ElementsAre("red apple", "red  apple"));
  EXPECT_THAT(run("fruit | grep -v red apple"), ElementsAre("apple", "pear", "fig (dried)", "red  apple"));
}

TEST_F(GuardedFilters, TakeFlags) {
  EXPECT_THAT(run("fruit | egrep -i ^PEAR$"), ElementsAre("pear"));
  EXPECT_THAT(run("fruit | grep -iv APPLE"), ElementsAre("pear", "fig (dried)"));
}

TEST_F(GuardedFilters, MayBeAbbreviated) {
  EXPECT_THAT(run("fruit | inc pear"), ElementsAre("pear"));
  EXPECT_THAT(run("fruit | exc apple"), ElementsAre("pear", "fig (dried)"));
  EXPECT_THAT(run("fruit | eg \"^(pear|fig)\""), ElementsAre("pear", "fig (dried)"));
  EXPECT_THAT(run("fruit | INCLUDE pear"), ElementsAre("pear"));
}

TEST_F(GuardedFilters, FollowEachOther) {
  EXPECT_THAT(run("fruit | include apple | exclude red | include app"), ElementsAre("apple"));
}

TEST_F(GuardedFilters, NeedTheirWord) {
  EXPECT_THAT(
      run("fruit | include"),
      ElementsAre("Incomplete command, missing required argument 'search_pattern' for command 'include'"));
  EXPECT_THAT(run("fruit | "), ElementsAre("Empty command given"));
  EXPECT_THAT(run("fruit | between red"),
              ElementsAre("Incomplete command, missing required argument 'range_end' for command 'between'"));
}

TEST_F(GuardedFilters, SurviveABadPattern) {
  EXPECT_THAT(run("fruit | egrep ("), ElementsAre());
  EXPECT_THAT(run("fruit | egrep a{2"), ElementsAre());
  EXPECT_THAT(run("fruit | grep ["), ElementsAre());
  EXPECT_THAT(run("fruit | count now"), ElementsAre());
}

TEST_F(GuardedFilters, RefuseAPatternThatGrowsTooLarge) {
  EXPECT_THAT(run("fruit | egrep ((((a{99}){99}){99}){99})"), ElementsAre("Pattern too large"));
  EXPECT_THAT(run("fruit | eg a{30000}"), ElementsAre("Pattern too large"));
  EXPECT_THAT(run("fruit | include apple | egrep ((((a{99}){99}){99}){99})"),
              ElementsAre("Pattern too large"));
  EXPECT_THAT(run("fruit | include ((((a{99}){99}){99}){99})"), ElementsAre());
}

TEST_F(GuardedFilters, TakeEveryWordALineCanHold) {
  std::string line = "fruit";
  for (int i = 0; i < 200; i++) {
    line += " | include apple";
  }
  EXPECT_THAT(run(line), ElementsAre("apple", "red apple", "red  apple"));
  EXPECT_THAT(run(std::string(300, '|')), ElementsAre("Invalid command \"\""));
  EXPECT_THAT(run("fruit " + std::string(300, '|')), ElementsAre("Empty command given"));
}

TEST(PatternSize, CountsThePiecesOfAPattern) {
  EXPECT_EQ(patternSize(""), 0U);
  EXPECT_EQ(patternSize("abc"), 3U);
  EXPECT_EQ(patternSize("[abc]"), 1U);
  EXPECT_LE(patternSize("^(Version|Compiled|State).*[0-9]+$"), 60U);
}

TEST(PatternSize, MultipliesRepetitions) {
  EXPECT_GE(patternSize("a{100}"), 100U);
  EXPECT_GE(patternSize("(abc){100}"), 300U);
  EXPECT_GE(patternSize("a{2,100}"), 100U);
  EXPECT_GE(patternSize("a{100,}"), 100U);
  EXPECT_GE(patternSize("a{,100}"), 100U);
  EXPECT_LE(patternSize("(abc){10}x{10}"), 100U);
}

TEST(PatternSize, IsTooLargeWhenRepetitionsNest) {
  EXPECT_THAT(patternSize("(a{99}){99}"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("a{99}{99}"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("a{99999999999999999999999}"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("((((((((((a+)+)+)+)+)+)+)+)+)+)"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("a++++++++++"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("(((((a{99}){99}){99}"), Gt(kLargestPattern));
}

TEST(PatternSize, IsTooLargeWhenWhatMayMatchNothingIsRepeated) {
  for (const char* const pattern :
       {"(^)*", "($)+", "^*", "$?", "(^){2}", "(a?)*", "(a*)+", "(a|)*", "(|a)*", "()*", "((a)*)*",
        "(a*b?){2,3}", "x(a{0,3})?", "(a|b?|c)+", "((^))*", "(a+|b){2}(a|b*){2}"}) {
    EXPECT_GT(patternSize(pattern), kLargestPattern) << pattern;
  }
}

TEST(PatternSize, IsSmallForWhatIsUsuallyTyped) {
  for (const char* const pattern : {"^State", "[0-9]+$", "(FW|Config) State", "(State|Version)?", "(ab)*",
                                    "(a|b)+x", "(foo.*)?bar", ".*?x", "^(Version|Compiled)?.*[0-9]{1,3}$",
                                    "(^a|b$)", "(a?b)*", "([0-9a-f]{2}:){5}[0-9a-f]{2}", "^$", "a*b*c*"}) {
    EXPECT_LT(patternSize(pattern), 100U) << pattern;
  }
}

// Writes random patterns: what a repetition, a group, an alternative or an anchor can stand next to.
class RandomPatterns {
 public:
  std::string next() {
    const std::string one = alternatives(0);
    std::string all;
    for (int i = random(3) == 0 ? random(60) : 1; i > 0; i--) {
      all += one + (random(2) == 0 ? "*" : "");
    }
    return all;
  }

 private:
  int random(int limit) { return static_cast<int>(generator_() % static_cast<unsigned>(limit)); }

  std::string alternatives(int depth) {
    std::string all = sequence(depth);
    while (random(4) == 0) {
      all += "|" + sequence(depth);
    }
    return all;
  }

  std::string sequence(int depth) {
    static constexpr const char* kRepetitions[] = {"", "", "", "*", "+", "?", "{2}", "{0,3}", "{3,}", "{40}"};
    std::string all;
    for (int i = 1 + random(4); i > 0; i--) {
      all += piece(depth) + kRepetitions[random(std::size(kRepetitions))];
    }
    return all;
  }

  std::string piece(int depth) {
    static constexpr const char* kPieces[] = {"a", "p", ".", "^", "$", "[a-r]", "[^ ]", ""};
    return depth < 5 && random(2) == 0 ? "(" + alternatives(depth + 1) + ")"
                                       : kPieces[random(std::size(kPieces))];
  }

  std::mt19937 generator_{20170330};
};

TEST_F(GuardedFilters, TakeLittleTimeForEveryPattern) {
  using Clock = std::chrono::steady_clock;
  RandomPatterns patterns;
  const auto begin = Clock::now();
  int answered = 0;
  for (int i = 0; i < 3000 && Clock::now() - begin < std::chrono::seconds(20); i++) {
    const std::string pattern = patterns.next();
    const std::clock_t start = std::clock();  // of the processor, so that a busy machine does not count
    const std::vector<std::string> lines = run("fruit | egrep \"" + pattern + "\"");
    EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC) << pattern;
    answered += lines != std::vector<std::string>{"Pattern too large"} ? 1 : 0;
  }
  EXPECT_GT(answered, 100);
}

TEST(PatternSize, CountsABracketAsOnePiece) {
  EXPECT_THAT(patternSize("[]](a{99}){99}[]]"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("[^]](a{99}){99}]"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("[[:alpha:][](a{99}){99}]"), Gt(kLargestPattern));
  EXPECT_THAT(patternSize("[[.].][](a{99}){99}]"), Gt(kLargestPattern));
  EXPECT_EQ(patternSize("[(a{99}){99}]"), 1U);
}

}  // namespace
