#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qvrcli/build_time.h"
#include "qvrcli/config/config_commands.h"
#include "qvrcli/qvrcli.h"
#include "qvrcli/session/interpreter.h"
#include "qvrcli/session/session_stream.h"
#include "support/chip_identity.h"
#include "support/dictionaries.h"
#include "support/expected_requests.h"
#include "support/test_clock.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
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
  EXPECT_THAT(interpreter->banner, HasSubstr(kBuildTime));
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

// Both chips answer. Their only parameter is the upstream margin, which the record of configuration mode
// holds afterwards.
class StartUpWithChips : public testing::Test {
 protected:
  StartUpWithChips() {
    testClock();
    driver_.expect(opens(0) + readsIdentity(0, {}).times(2) + opens(1) + readsIdentity(1, {}) + readsLine(0) +
                   readsLine(1) + readsDictionary(8, {{0, 0, 0}, {PARAMS_usMargin, 2, 4}}) +
                   reads(0, kArea, Bytes(8)).times(2) + reads(0, kArea + 4, {61, 0}));
    testing::internal::CaptureStdout();
    QVR_cliInit(cli_init());
    printed_ = testing::internal::GetCapturedStdout();
  }

  static Script readsLine(int device) {
    return reads(device, 0xE2400000, Bytes(72)) + reads(device, 0xF0000000, Bytes(156));
  }

  ExpectedRequests driver_{Script()};
  std::string printed_;
};

TEST_F(StartUpWithChips, TakesTheConfigurationOfTheFirstLine) {
  EXPECT_EQ(configParams.noiseMarginProfile.TARSNRMus, 61);
}

// The trace level is raised behind the start of the library: what is odd in a dictionary is not printed.
TEST_F(StartUpWithChips, TracesNothingOfTheLibrarysStart) {
  EXPECT_THAT(printed_, testing::Not(testing::HasSubstr("Dictionary has")));
  EXPECT_THAT(printed_, testing::HasSubstr("Parameter with ID=87 not found in dictionary"));
}

}  // namespace
