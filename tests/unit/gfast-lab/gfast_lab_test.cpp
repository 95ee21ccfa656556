// The lab's command line, tried on the real program.
#include <gmock/gmock.h>

#include <cstdio>
#include <string>

#include "unit/virtual-board/temp_file.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Outcome {
  std::string output;  // standard output and standard error
  int status;
};

Outcome lab(const std::string& arguments) {
  std::FILE* pipe = ::popen((std::string(LAUNCHER " " GFAST_LAB) + ' ' + arguments + " 2>&1").c_str(), "r");
  Outcome outcome;
  char buffer[4096];
  for (size_t got = 0; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    outcome.output.append(buffer, got);
  }
  const int status = ::pclose(pipe);
  outcome.status = WEXITSTATUS(status);  // an lvalue: some C libraries take its address
  return outcome;
}

}  // namespace

TEST(GfastLab, HelpExplainsEverything) {
  const Outcome help = lab("--help");
  EXPECT_EQ(help.status, 0);
  for (const char* text : {"--board FILE", "--port N", "--trace-requests FILE", "--version", "--speed N",
                           "--start TIME", "--replay FILE", "--blank-into FILE", "SCRIPT", "100 m of CAD55",
                           "seconds since start", "exit status 2"}) {
    EXPECT_THAT(help.output, HasSubstr(text));
  }
}

TEST(GfastLab, TellsItsVersion) {
  const Outcome version = lab("--version");
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, "gfast-lab " PROJECT_VERSION "\n");
}

TEST(GfastLab, MistakesOnTheCommandLineAreOneLineAndStatus2) {
  const struct {
    const char* arguments;
    const char* line;
  } mistakes[] = {
      {"--boards x", "gfast-lab: The following argument was not expected: --boards (--help explains)\n"},
      {"--port", "gfast-lab: --port: 1 required N missing (--help explains)\n"},
      {"--port 65536", "gfast-lab: Could not convert: --port = 65536 (--help explains)\n"},
      {"--port -1", "gfast-lab: Could not convert: --port = -1 (--help explains)\n"},
      {"a b", "gfast-lab: The following argument was not expected: b (--help explains)\n"},
      {"--speed fast",
       "gfast-lab: --speed: must be a number from 0.01 to 100000, or max (--help explains)\n"},
      {"--start noon",
       "gfast-lab: --start: must be a local time such as 2024-05-02T18:30:00 (--help explains)\n"},
      {"--replay x --speed 2", "gfast-lab: --speed excludes --replay (--help explains)\n"},
      {"--trace-requests /nonexistent/x", "gfast-lab: /nonexistent/x: No such file or directory\n"},
      {"--board missing.toml", "missing.toml: No such file or directory\n"},
      {"--replay missing.trace", "missing.trace: No such file or directory\n"},
      {"--replay /dev/null", "/dev/null:1: the first line is not that of a field trace: gfast-trace 1\n"},
      {"--replay x --board y", "gfast-lab: --board excludes --replay (--help explains)\n"},
      {"--blank-into x", "gfast-lab: --blank-into requires --replay (--help explains)\n"},
  };
  for (const auto& mistake : mistakes) {
    const Outcome outcome = lab(mistake.arguments);
    EXPECT_EQ(outcome.status, 2) << mistake.arguments;
    EXPECT_EQ(outcome.output, mistake.line);
  }
}

TEST(GfastLab, AMistakeInABoardFileIsOneLineAndStatus2) {
  const TempFile board("[board]\ndevices = 5\n", "board.toml");
  const Outcome outcome = lab("--board " + board.path());
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, board.path() + ":2: \"devices\" must be between 0 and 2\n");
}

TEST(GfastLab, AScriptSeesTheBoardAndItsRequestsAreTraced) {
  const TempFile board(
      "[[device]]\nline = \"idle\"\n[[memory]]\ndevice = 0\naddress = 0xEF000000\nbytes = \"01 02 03 04\"\n");
  const TempFile script("read memory 0 ef000000 4\n");
  const TempFile trace;
  const Outcome outcome =
      lab("--board " + board.path() + " --trace-requests " + trace.path() + ' ' + script.path());
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("ef000000: 04030201\n"));
  EXPECT_THAT(trace.content(), HasSubstr(" 0 open - 0 ok\n"));
  EXPECT_THAT(trace.content(), HasSubstr(" 0 memread 0xef000000 4 ok\n"));
}
