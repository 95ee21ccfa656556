// Scripts that the program is started with: what they print, and the exit status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "console/programs.h"

namespace {

using testing::HasSubstr;

const std::string kVersionLine = "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $\n";

TEST(Script, PrintsOnStandardOutputAndExitsWith0) {
  TemporaryFolder folder;
  ConsoleProgram program = lab({folder.write("a.txt", "show version\nsleep ?\n")});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(), kVersionLine + "sleep <seconds>\n");
  EXPECT_EQ(program.errors(), "");
}

TEST(Script, ExitsWith0WhenItsCommandsFail) {
  TemporaryFolder folder;
  ConsoleProgram program =
      lab({folder.write("a.txt", "no such command\nread memory 0 zz 4\nshow device-info 9\n")});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(),
            "Invalid command \"no\"\n"
            "readmem invalid memaddr (zz)\n"
            "invalid device number 9\n");
}

TEST(Script, MayBeEmpty) {
  TemporaryFolder folder;
  ConsoleProgram program = lab({folder.write("a.txt", "")});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(), "");
}

TEST(Script, MayHoldAnyBytes) {
  TemporaryFolder folder;
  std::string text("\0\xFF\x80|\"'\\\t\n| | |\n\"|\" x\nshow version | egrep \"", 37);
  text += std::string(10000, '(') + "\n" + std::string(9000, 'x') + "\nshow version\n";
  ConsoleProgram program = lab({folder.write("a.txt", text)});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_THAT(program.output(), HasSubstr(kVersionLine));
}

TEST(Script, RefusesALineThatIsTooLongWhole) {
  TemporaryFolder folder;
  ConsoleProgram program =
      lab({folder.write("a.txt", "# " + std::string(4092, 'x') + "show version\nsleep ?\n")});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(),
            "Line 1 of the script is too long (more than 4095 characters)\nsleep <seconds>\n");
}

// What `head -1` leaves of a script: the first line, and what it did until then.
TEST(Script, EndsWhenNobodyReadsItsOutputAnyMore) {
  TemporaryFolder folder;
  const std::string script =
      folder.write("a.txt", "show version\nsleep 2\ngenerate signal after.dat\nsleep 60\n");
  const std::string command = "cd " + folder.path() + " && " LAUNCHER " " + gfastLab() + " --board " +
                              quietBoard() + " a.txt | head -1";
  FILE* const shell = popen(command.c_str(), "r");
  char line[100] = {};
  EXPECT_NE(std::fgets(line, sizeof line, shell), nullptr);
  EXPECT_EQ(line, kVersionLine);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(pclose(shell), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  EXPECT_FALSE(std::filesystem::exists(folder.path() + "/after.dat"));
}

TEST(Script, SaysThatAFolderCannotBeRead) {
  TemporaryFolder folder;
  ConsoleProgram program = lab({folder.path()});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(), "");
  EXPECT_EQ(program.errors(), folder.path() + ": Is a directory\n");
}

TEST(Script, MissingFileStartsTheServer) {
  ConsoleProgram program = lab({"--port", "0", "/no/such/script.txt"});
  OpenSession session(program.port());
  EXPECT_EQ(session.type("show version"), kVersion);
}

TEST(Script, EndsWhenItRunsItself) {
  TemporaryFolder folder;
  folder.write("self.txt", "run self.txt\nrun self.txt\nshow version\n");
  ConsoleProgram program = lab({"self.txt"}, folder.path());
  EXPECT_EQ(program.wait(), 0);
  const std::string stopped = "Scripts run each other more than 10 deep, stopped at [self.txt]\n";
  EXPECT_EQ(program.output(), stopped + stopped + kVersionLine);
}

// gfast-lab on a board without chips.
ConsoleProgram emptyLab(const TemporaryFolder& folder, const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {gfastLab(), "--board",
                                      folder.write("none.toml", "[board]\ndevices = 0\n")};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return ConsoleProgram(LAUNCHER, command);
}

TEST(Script, WarnsOnceWithoutDevicesAndGoesOn) {
  TemporaryFolder folder;
  ConsoleProgram program = emptyLab(folder, {folder.write("a.txt", "show device-info\nread sbr\nsleep ?\n")});
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(program.output(),
            "Warning: Failed to connect to DFEs\n"
            "Could not refresh the data\n"
            "Failed reading SBR for device 0\n"
            "sleep <seconds>\n");
}

TEST(Server, WarnsOnceWithoutDevicesAndStillPrompts) {
  TemporaryFolder folder;
  ConsoleProgram program = emptyLab(folder, {"--port", "0"});
  const std::string listening = "Listening on port " + std::to_string(program.port()) + "\n";
  EXPECT_EQ(program.output(), "Warning: Failed to connect to DFEs\n" + listening);
  OpenSession session(program.port());
  EXPECT_EQ(session.type("show device-info"), "Could not refresh the data\r\n");
}

}  // namespace
