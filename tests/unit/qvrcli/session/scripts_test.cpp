#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "qvrcli/session/scripts.h"
#include "support/temporary_folder.h"
#include "unit/qvrcli/captured_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr const char* kVersion = "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $";

class Scripts : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(chdir(directory_.path().c_str()), 0); }

  TemporaryFolder directory_;
  CapturedConsole console_;
};

TEST_F(Scripts, RunOnceWithoutBeingAnnounced) {
  directory_.write("a.txt", "show version\n# a comment\n\n  sleep ?  # another\n");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre(kVersion, "sleep <seconds>"));
}

TEST_F(Scripts, AreClitestTxtUnlessNamed) {
  EXPECT_THAT(console_.run("run"), ElementsAre("Unable to open file [clitest.txt]"));
  directory_.write("clitest.txt", "show version\n");
  EXPECT_THAT(console_.run("run"), ElementsAre(kVersion));
}

TEST_F(Scripts, AreAnnouncedWhenTheyRunAgain) {
  directory_.write("a.txt", "show version\n");
  EXPECT_THAT(console_.run("run a.txt 3"), ElementsAre(">run a.txt 1 of 3", kVersion, ">run a.txt 2 of 3",
                                                       kVersion, ">run a.txt 3 of 3", kVersion));
}

TEST_F(Scripts, StopWhenTheFileCannotBeOpened) {
  EXPECT_THAT(console_.run("run missing.txt 3"),
              ElementsAre(">run missing.txt 1 of 3", "Unable to open file [missing.txt]"));
}

TEST_F(Scripts, AreOpenedAnewEachTime) {
  directory_.write("a.txt", "show version\n");
  directory_.write("b.txt", "run a.txt\n");
  EXPECT_THAT(console_.run("run b.txt 2"),
              ElementsAre(">run b.txt 1 of 2", kVersion, ">run b.txt 2 of 2", kVersion));
}

TEST_F(Scripts, RunAfterABadCountAsOftenAsItSays) {
  directory_.write("a.txt", "show version\n");
  EXPECT_THAT(console_.run("run a.txt 0"), ElementsAre("Invalid number of iterations counter <0>"));
  EXPECT_THAT(console_.run("run a.txt \"\""),
              ElementsAre("Invalid number of iterations counter <>", kVersion));
  EXPECT_THAT(console_.run("run a.txt often"), ElementsAre(kVersion));
}

TEST_F(Scripts, StartInExecModeAndLeaveTheModeAsItWas) {
  directory_.write("a.txt", "configure\nTARSNRM ?\n");
  EXPECT_THAT(console_.run("run a.txt 2"),
              ElementsAre(">run a.txt 1 of 2", "TARSNRM (ds | us) <0..310> * (0.1) dB", ">run a.txt 2 of 2",
                          "TARSNRM (ds | us) <0..310> * (0.1) dB"));
  EXPECT_EQ(console_.cli()->mode, MODE_EXEC);
}

TEST_F(Scripts, EndAtQuitAndTheCommandReturnsOk) {
  directory_.write("a.txt", "show version\nquit\nshow version\n");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre(kVersion));
  EXPECT_EQ(console_.result(), CLI_OK);
}

TEST_F(Scripts, ThatRunThemselvesAreStoppedWithOneLine) {
  directory_.write("self.txt", "show version\nrun self.txt 2\nsleep ?\n");
  const std::vector<std::string> printed = console_.run("run self.txt");
  EXPECT_EQ(std::count(printed.begin(), printed.end(), kVersion), 10);
  EXPECT_THAT(printed.back(), StartsWith("Scripts run each other more than 10 deep"));
  EXPECT_EQ(std::count(printed.begin(), printed.end(), "sleep <seconds>"), 0);
  EXPECT_EQ(console_.result(), CLI_OK);
}

TEST_F(Scripts, ThatRunEachOtherAreStopped) {
  directory_.write("a.txt", "run b.txt\nshow version\n");
  directory_.write("b.txt", "run a.txt\nshow version\n");
  EXPECT_THAT(console_.run("run a.txt 1000"),
              ElementsAre(">run a.txt 1 of 1000", StartsWith("Scripts run each other more than 10 deep")));
}

TEST_F(Scripts, RunAgainAfterSomeWereStopped) {
  directory_.write("self.txt", "run self.txt\n");
  directory_.write("a.txt", "show version\n");
  console_.run("run self.txt");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre(kVersion));
  EXPECT_EQ(console_.run("run self.txt").size(), 1U);
}

TEST_F(Scripts, MayNestTenDeep) {
  for (int i = 1; i < 10; i++) {
    directory_.write(std::to_string(i), "run " + std::to_string(i + 1) + "\n");
  }
  directory_.write("10", "show version\n");
  EXPECT_THAT(console_.run("run 1"), ElementsAre(kVersion));
}

TEST_F(Scripts, PrintThroughTheFilterOfTheLineThatRunsThem) {
  directory_.write("a.txt", "show version\nsleep ?\nread sbr ?\n");
  EXPECT_THAT(console_.run("run a.txt | include sleep"), ElementsAre("sleep <seconds>"));
  EXPECT_THAT(console_.run("run a.txt | exclude sleep | exclude read"), ElementsAre(kVersion));
  EXPECT_THAT(console_.run("run a.txt 2 | include run"),
              ElementsAre(">run a.txt 1 of 2", ">run a.txt 2 of 2"));
}

TEST_F(Scripts, HaveFiltersOfTheirOwn) {
  directory_.write("a.txt", "sleep ? | exclude nothing\nsleep ? | exclude sleep\nread sbr ?\n");
  EXPECT_THAT(console_.run("run a.txt | exclude read"), ElementsAre("sleep <seconds>"));
}

TEST_F(Scripts, PrintThroughTheFiltersOfEveryLineThatLedToThem) {
  directory_.write("outer.txt", "run inner.txt | exclude version\nsleep ?\n");
  directory_.write("inner.txt", "show version ?\nread sbr ?\nreboot ?\nsleep ?\n");
  EXPECT_THAT(console_.run("run outer.txt | exclude reboot"),
              ElementsAre("read sbr <device-id> [ 0 ]", "sleep <seconds>", "sleep <seconds>"));
  EXPECT_THAT(console_.run("show version ?"), ElementsAre("show version"));
}

TEST_F(Scripts, SurviveABrokenFilterInside) {
  directory_.write("a.txt",
                   "sleep ? | include\nsleep ? |\nsleep ? | egrep (\nsleep ? | nothing x\nsleep ?\n");
  EXPECT_THAT(console_.run("run a.txt | include sleep <"), ElementsAre("sleep <seconds>"));
}

constexpr const char* kTooLong = "Line 1 of the script is too long (more than 4095 characters)";

TEST_F(Scripts, RefuseALineThatIsTooLongWhole) {
  directory_.write("a.txt", "# " + std::string(4092, 'x') + "show version ?\nsleep ?\n");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre(kTooLong, "sleep <seconds>"));
  directory_.write("a.txt", "show version " + std::string(100000, ' ') + "?");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre(kTooLong));
}

TEST_F(Scripts, TakeLinesOf4095Characters) {
  const std::string line = "show version " + std::string(4081, ' ') + "?";
  directory_.write("a.txt", line + "\n" + line + "\r\n" + line);
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre("show version", "show version", "show version"));
  directory_.write("a.txt", line + " \n");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre(kTooLong));
}

TEST_F(Scripts, RefuseALineOfTooManyWords) {
  std::string line = "show version";
  for (int i = 2; i < 126; i++) {
    line += " x";
  }
  directory_.write("a.txt", line + "\n" + line + " x\n");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre(kVersion, "Line too long (more than 126 words)"));
}

TEST_F(Scripts, EndTheirCommandsAtACommentAReturnOrANul) {
  directory_.write("a.txt", std::string("\t sleep ?#x\n sleep ?\rx\nsleep ?\0x\n#\n \n\n", 38));
  EXPECT_THAT(console_.run("run a.txt"),
              ElementsAre("sleep <seconds>", "sleep <seconds>", "sleep <seconds>"));
}

TEST_F(Scripts, StopWhenTheSessionIsLost) {
  directory_.write("a.txt", "show version\n");
  int sockets[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
  console_.cli()->client = fdopen(sockets[1], "w+");
  close(sockets[0]);
  EXPECT_EQ(runScript(console_.cli(), "a.txt", 4294967295), CLI_OK);
  fclose(console_.cli()->client);
  console_.cli()->client = nullptr;
}

TEST_F(Scripts, AreNotRunFromWhatIsNoFile) {
  directory_.write("a.txt", "show version\n");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  EXPECT_THAT(console_.run("run pipe 2"), ElementsAre(">run pipe 1 of 2", "Unable to open file [pipe]"));
  EXPECT_THAT(console_.run("run /dev/zero"), ElementsAre("Unable to open file [/dev/zero]"));
  EXPECT_THAT(console_.run("run " + directory_.path()),
              ElementsAre("Unable to open file [" + directory_.path() + "]"));
}

// Whatever privilege the session has: `disable` is a word for privileged users only.
TEST_F(Scripts, RunWithoutPrivilege) {
  directory_.write("a.txt", "disable\n");
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre("Invalid command \"disable\""));
  console_.run("enable");
  ASSERT_EQ(console_.cli()->privilege, PRIVILEGE_PRIVILEGED);
  EXPECT_THAT(console_.run("run a.txt"), ElementsAre("Invalid command \"disable\""));
  EXPECT_EQ(console_.cli()->privilege, PRIVILEGE_PRIVILEGED);
}

TEST_F(Scripts, MayRunAsOftenAsFits32Bits) {
  EXPECT_THAT(console_.run("run missing.txt 4294967295"),
              ElementsAre(">run missing.txt 1 of -1", "Unable to open file [missing.txt]"));
}

}  // namespace
