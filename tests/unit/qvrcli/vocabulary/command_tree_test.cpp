#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "qvrcli/session/session_stream.h"
#include "qvrcli/vocabulary/command_table.h"
#include "unit/qvrcli/captured_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;

constexpr const char* kVersion = "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $";

TEST(Dispatch, PrintsTheUsageWhenTheLastWordHoldsAQuestionMark) {
  CapturedConsole console;
  EXPECT_THAT(console.run("show version ?"), ElementsAre("show version"));
  EXPECT_THAT(console.run("show version one two?three"), ElementsAre("show version"));
  EXPECT_THAT(console.run("read sbr ?"), ElementsAre("read sbr <device-id> [ 0 ]"));
  EXPECT_EQ(console.result(), CLI_OK);
}

TEST(Dispatch, LooksAtTheLastWordOnly) {
  CapturedConsole console;
  EXPECT_THAT(console.run("show version ? now"), ElementsAre(kVersion));
}

TEST(Dispatch, PrintsTheUsageForAnotherNumberOfWords) {
  CapturedConsole console;
  EXPECT_THAT(console.run("sleep"), ElementsAre("sleep <seconds>"));
  EXPECT_THAT(console.run("sleep 1 2"), ElementsAre("sleep <seconds>"));
  EXPECT_THAT(console.run("show log-level now"), ElementsAre("show log-level"));
  EXPECT_THAT(console.run("rediscover now"), ElementsAre("rediscover"));
  EXPECT_THAT(console.run("activate line"), ElementsAre("activate line [<line-id> | all] : { 0 }"));
}

TEST(Dispatch, RunsACommandThatTakesAnyNumberOfWords) {
  CapturedConsole console;
  EXPECT_THAT(console.run("show version"), ElementsAre(kVersion));
  EXPECT_THAT(console.run("show version one two three"), ElementsAre(kVersion));
}

TEST(Dispatch, PrintsTheUsageForTheOneNumberOfWordsThatIsRefused) {
  CapturedConsole console;
  EXPECT_THAT(console.run("set inventory 0 1 2 3"),
              ElementsAre("set inventory <device-id> <vendor-id> <serial-number> : vendor-id (hex string) "
                          "XX:XX:XX:XX:XX:XX:XX:XX, serial-number (string)"));
}

TEST(Dispatch, KnowsExecShowFromConfigurationShow) {
  CapturedConsole console;
  EXPECT_THAT(console.run("show"), ElementsAre("Incomplete command"));
  console.run("configure");
  EXPECT_THAT(console.run("show ?"), ElementsAre("show"));
  EXPECT_THAT(console.run("show version"), ElementsAre("show"));
}

TEST(Dispatch, ReachesEveryCommandByItsFullName) {
  CapturedConsole console;
  for (const Command& command : commandTable()) {
    if (command.handler != nullptr) {
      cli_set_configmode(console.cli(), command.mode, nullptr);
      EXPECT_THAT(console.run(std::string(command.path) + " ?"), ElementsAre(command.usage)) << command.path;
    }
  }
}

TEST(Dispatch, RefusesAnAbbreviationThatFitsTwoCommandsWhateverTheirCase) {
  CapturedConsole console;
  EXPECT_THAT(console.run("show e"), ElementsAre("Invalid command \"show e\""));
  EXPECT_THAT(console.run("sh E"), ElementsAre("Invalid command \"show E\""));
  EXPECT_THAT(console.run("show et ?"), ElementsAre("show ETR <lineId>"));
  console.run("configure");
  EXPECT_THAT(console.run("sh ds 1"), ElementsAre("Invalid command \"sh\""));
  EXPECT_THAT(console.run("shi ?"), ElementsAre("SHINERATIO (ds | us) <0..100> (0 to 0.1)"));
  EXPECT_THAT(console.run("sho ?"), ElementsAre("show"));
}

TEST(Dispatch, RefusesAnAbbreviationThatFitsOneOfLibclisCommands) {
  CapturedConsole console;
  console.run("configure");
  EXPECT_THAT(console.run("lo"), ElementsAre("Invalid command \"lo\""));
  EXPECT_NE(console.result(), CLI_QUIT);
  console.run("logo");
  EXPECT_EQ(console.result(), CLI_QUIT);
}

TEST(Dispatch, TakesAFullNameThatOthersBeginWith) {
  CapturedConsole console;
  console.run("configure");
  EXPECT_THAT(console.run("TARSNRM ?"), ElementsAre("TARSNRM (ds | us) <0..310> * (0.1) dB"));
  EXPECT_THAT(console.run("tarsnrm ?"), ElementsAre("TARSNRM (ds | us) <0..310> * (0.1) dB"));
}

TEST(Dispatch, RefusesAKeywordAlone) {
  CapturedConsole console;
  for (const Command& command : commandTable()) {
    if (command.handler == nullptr) {
      EXPECT_THAT(console.run(command.path), ElementsAre("Incomplete command")) << command.path;
    }
  }
}

TEST(Dispatch, PrintsWaitingLinesBehindTheCommandsOwn) {
  CapturedConsole console;
  printLater("Event occurred");
  EXPECT_THAT(console.run("show version"), ElementsAre(kVersion, "Event occurred"));
}

TEST(Dispatch, RunsNothingForASessionThatIsLost) {
  CapturedConsole console;
  int sockets[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
  console.cli()->client = fdopen(sockets[1], "w+");
  close(sockets[0]);
  EXPECT_THAT(console.run("show version"), ElementsAre());
  EXPECT_EQ(console.result(), CLI_QUIT);
  fclose(console.cli()->client);
  console.cli()->client = nullptr;
}

constexpr const char* kReadOnly = "Refused: this console is read-only";

TEST(ReadOnlyConsole, RefusesWhatChangesSomething) {
  CapturedConsole console;
  refuseChanges();
  for (const char* const line : {"write memory 0 d0000000 4 1", "reboot", "show SNRps 0 us out.txt"}) {
    EXPECT_THAT(console.run(line), ElementsAre(kReadOnly)) << line;
    EXPECT_EQ(console.result(), CLI_OK);
  }
  console.run("configure");
  EXPECT_THAT(console.run("save 0"), ElementsAre(kReadOnly));
}

TEST(ReadOnlyConsole, RunsWhatOnlyReads) {
  CapturedConsole console;
  refuseChanges();
  EXPECT_THAT(console.run("show version"), ElementsAre(kVersion));
  console.run("configure");
  EXPECT_THAT(console.run("TARSNRM us 77"), ElementsAre());
}

TEST(ReadOnlyConsole, PrintsEveryUsage) {
  CapturedConsole console;
  refuseChanges();
  EXPECT_THAT(console.run("erase flash ?"), ElementsAre("erase flash [<device-id>] : { 0 }"));
  EXPECT_THAT(console.run("reboot 1 2 3"), ElementsAre("reboot [B0 | B1 | APP] [<device-id>] : { APP, 0 }"));
}

TEST(Configure, NeedsNeitherPrivilegeNorASecondWord) {
  CapturedConsole console;
  EXPECT_EQ(console.cli()->privilege, PRIVILEGE_UNPRIVILEGED);
  EXPECT_THAT(console.run("configure"), ElementsAre());
  EXPECT_EQ(console.cli()->mode, MODE_CONFIG);
  EXPECT_STREQ(console.cli()->modestring, "(config)");
  console.run("exit");
  EXPECT_EQ(console.cli()->mode, MODE_EXEC);
  console.run("configure terminal");
  EXPECT_EQ(console.cli()->mode, MODE_CONFIG);
}

}  // namespace
