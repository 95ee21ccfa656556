// The command line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/console_session.h"

namespace {

using testing::HasSubstr;

struct Outcome {
  int status;
  std::string output;
  std::string errors;
};

Outcome outcomeOf(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), GFAST_CUSE);
  ConsoleProgram program(LAUNCHER, arguments);
  const int status = program.wait();
  return {status, program.output(), program.errors()};
}

TEST(GfastCuse, HelpExplainsEverything) {
  const Outcome help = outcomeOf({"--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* text :
       {"--board FILE", "--trace-requests FILE", "--version", "/dev/cuse", "CONFIG_CUSE", "exit status 2"}) {
    EXPECT_THAT(help.output, HasSubstr(text));
  }
}

TEST(GfastCuse, TellsItsVersion) {
  const Outcome version = outcomeOf({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "gfast-cuse " PROJECT_VERSION "\n");
}

TEST(GfastCuse, MistakesOnTheCommandLineAreOneLineAndStatus2) {
  const struct {
    std::vector<std::string> arguments;
    const char* line;
  } mistakes[] = {
      {{"--boards"}, "gfast-cuse: The following argument was not expected: --boards (--help explains)\n"},
      {{"--board", "missing.toml"}, "missing.toml: No such file or directory\n"},
      {{"--trace-requests", "/nonexistent/x"}, "gfast-cuse: /nonexistent/x: No such file or directory\n"},
  };
  for (const auto& mistake : mistakes) {
    const Outcome outcome = outcomeOf(mistake.arguments);
    EXPECT_EQ(outcome.status, 2) << mistake.line;
    EXPECT_EQ(outcome.errors, mistake.line);
  }
}

TEST(GfastCuse, SaysThatTheMachineHasNoCuse) {
  if (access("/dev/cuse", F_OK) == 0) {
    GTEST_SKIP() << "this machine has it";
  }
  const Outcome outcome = outcomeOf({});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "gfast-cuse: /dev/cuse: No such file or directory\n");
  EXPECT_EQ(outcome.output, "");
}

}  // namespace
