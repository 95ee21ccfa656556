#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qvrcli/qvrcli.h"
#include "qvrcli/session/interpreter.h"
#include "qvrcli/session/session_stream.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

std::vector<std::string> printed;

void remember(cli_def* /*cli*/, const char* line) {
  printed.emplace_back(line);
}

TEST(StartUp, KeepsTheInterpreterItIsGiven) {
  cli_def* const interpreter = cli_init();
  EXPECT_EQ(QVR_cliInit(interpreter), QVR_E_STATUS_OK);
  EXPECT_EQ(cli, interpreter);
}

TEST(StartUp, DressesTheInterpreter) {
  cli_def* const interpreter = cli_init();
  QVR_cliInit(interpreter);
  EXPECT_THAT(interpreter->banner,
              MatchesRegex("Welcome to Quelvor G\\.fast CLI environment \\(build: "
                           "[A-Z][a-z][a-z] [ 0-9][0-9] [0-9]+ [0-9][0-9]:[0-9][0-9]:[0-9][0-9]\\)"));
  EXPECT_STREQ(interpreter->hostname, "(gfast-cli)");
  EXPECT_EQ(interpreter->telnet_protocol, 1);
  EXPECT_EQ(interpreter->timeout_tm.tv_sec, 5);
  EXPECT_EQ(interpreter->auth_callback, nullptr);
  EXPECT_EQ(interpreter->enable_callback, nullptr);
}

TEST(StartUp, WarnsOnStandardOutputWithoutDevices) {
  cli_def* const interpreter = cli_init();
  testing::internal::CaptureStdout();
  QVR_cliInit(interpreter);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Warning: Failed to connect to DFEs\n");
}

TEST(StartUp, WarnsWhereThePrintedLinesGo) {
  cli_def* const interpreter = cli_init();
  cli_print_callback(interpreter, remember);
  testing::internal::CaptureStdout();
  QVR_cliInit(interpreter);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_THAT(printed, ElementsAre("Warning: Failed to connect to DFEs"));
}

TEST(StartUp, TracesAtItsMostVerboseLevel) {
  QVR_cliInit(cli_init());
  EXPECT_EQ(QVR_traceLogLevel(), QVRLOG_DEBUG);
}

TEST(StartUp, LeavesTheConsoleUsable) {
  cli_def* const interpreter = cli_init();
  QVR_cliInit(interpreter);
  cli_print_callback(interpreter, remember);
  cli_run_command(interpreter, "show device-info 0");
  EXPECT_THAT(printed, ElementsAre("Could not refresh the data"));
}

TEST(StartUp, HasTheIdleInterpreterPrintWhatWaits) {
  cli_def* const interpreter = cli_init();
  QVR_cliInit(interpreter);
  cli_print_callback(interpreter, remember);
  EXPECT_EQ(interpreter->regular_callback(interpreter), CLI_OK);
  EXPECT_FALSE(interpreter->showprompt);
  printLater("Event occurred");
  EXPECT_EQ(interpreter->regular_callback(interpreter), CLI_OK);
  EXPECT_THAT(printed, ElementsAre("", "Event occurred")) << "the first ends the line that is being typed";
  EXPECT_TRUE(interpreter->showprompt);
}

}  // namespace
