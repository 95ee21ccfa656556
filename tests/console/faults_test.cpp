// Boards that fail requests: every command prints its own message, and the session goes on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "console/programs.h"

namespace {

const std::string kTwoQuietChips = boardWithLines("idle");

class FaultyBoard : public testing::Test {
 protected:
  // What a script prints, without lines of events and without the source lines of warnings.
  std::string printed(const std::string& board, const std::string& commands) {
    const std::string boardFile = folder_.write("board.toml", board);
    const std::string script = folder_.write("script.txt", commands);
    ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", boardFile, script});
    EXPECT_EQ(program.wait(), 0);
    const std::string quiet =
        std::regex_replace(program.output(), std::regex("(Reboot notification|Link \\[)[^\n]*\n"), "");
    return std::regex_replace(quiet, std::regex("(LOG_[A-Z]+\\] \\w+):[0-9]+"), "$1");
  }

  // A chip whose matching requests all fail.
  static std::string failing(const std::string& request, const std::string& address = "") {
    return kTwoQuietChips + "[[fault]]\ndevice = 0\nrequest = \"" + request +
           "\"\nerrno = \"EIO\"\ncount = 0\n" + (address.empty() ? "" : "address = " + address + "\n");
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(FaultyBoard, WithoutChipsWarnsOnceAndEveryCommandAnswers) {
  EXPECT_EQ(
      printed("[board]\ndevices = 0\n",
              "show device-info 0\nshow device-info 1\nread memory 0 0 4\nwrite memory 1 0 2 1:2\nread sbr\n"
              "reboot\nload bootloader\nupgrade firmware\nupgrade bootloader x.bin\n"
              "upgrade manufacturer-block\nerase bootloader\nerase manufacturer-block\nerase firmware\n"
              "erase flash\nrestart line all\nrestart system\nactivate line 0\ndeactivate line 1\n"
              "rediscover\nsleep 0\nshow gfast-counters 0\nshow remote-management-counters\n"),
      "Warning: Failed to connect to DFEs\n"
      "Could not refresh the data\n"
      "Could not refresh the data\n"
      "readmem error (18)\n"
      "writemem Failed (18)\n"
      "Failed reading SBR for device 0\n"
      "failed resetting device\n"
      "Could not refresh the data\n"
      "[LOG_WARNING] QVR_upgradeAppFirmware Invalid FW state (18)\n"
      "failed upgrading firmware image\n"
      "[LOG_WARNING] QVR_upgradeBootloader Invalid FW state (18)\n"
      "failed upgrading bootloader\n"
      "[LOG_WARNING] QVR_upgradeManufactureBlock Invalid FW state (18)\n"
      "failed upgrading manufacturer block\n"
      "[LOG_WARNING] QVR_eraseBootloader Invalid FW state (18)\n"
      "failed erasing bootloader\n"
      "[LOG_WARNING] QVR_eraseManufacturerBlock Invalid FW state (18)\n"
      "failed erasing manufacturer block\n"
      "[LOG_WARNING] QVR_eraseAppFirmware Invalid FW state (18)\n"
      "failed erasing firmware image\n"
      "Failed erasing flash\n"
      "invalid parameter - must enter value between 1..86400\n"
      "QVR_readGfastCounters failed\n"
      "CLI_showRemoteManagemenCounters failed (32)\n");
}

TEST_F(FaultyBoard, WithOneChipReportsTheOtherAbsent) {
  EXPECT_EQ(printed("[board]\ndevices = 1\n[[device]]\nline = \"idle\"\n",
                    "show device-info 1\nread memory 1 0 4\n"),
            "Could not refresh the data\nreadmem error (18)\n");
}

TEST_F(FaultyBoard, FindsAChipThatFailedAtTheStart) {
  const std::string board =
      kTwoQuietChips + "[[fault]]\ndevice = 0\nrequest = \"memread\"\nerrno = \"EIO\"\ncount = 1\n";
  EXPECT_THAT(printed(board, "show device-info 0 | include MAC\n"),
              testing::StartsWith("Warning: Failed to connect to DFEs\nMAC address"));
}

// The start of the library makes none of these requests.
TEST_F(FaultyBoard, EachFailedRequestHasItsMessage) {
  EXPECT_EQ(printed(failing("memread", "0xd0000000"), "read memory 0 d0000000 4\nread memory 0 d0000004 4\n"),
            "readmem error (12)\nd0000004: 00000000\n");
  EXPECT_EQ(printed(failing("memwrite", "0xe0000238"), "reboot B1\nwrite memory 0 d0000000 2 1:2\n"),
            "failed resetting device\n");
  EXPECT_EQ(printed(failing("memwrite"), "write memory 0 d0000000 2 1:2\n"), "writemem Failed (13)\n");
  EXPECT_EQ(printed(failing("flasherase"), "erase flash\nerase flash 1\n"), "Failed erasing flash\n");
}

TEST_F(FaultyBoard, FailedErasureNamesItsSector) {
  EXPECT_EQ(printed(failing("flasherase", "0x30000"), "reboot B1\nsleep 2\nerase firmware\n"),
            "[LOG_WARNING] QVR_eraseAppFirmware Failed erasing sector at address (00030000)\n"
            "failed erasing firmware image\n");
}

TEST_F(FaultyBoard, MissingFirmwareFileIsReported) {
  EXPECT_EQ(printed(kTwoQuietChips, "reboot B1\nsleep 2\nupgrade bootloader no-such-file.bin\n"),
            "failed upgrading bootloader\n");
  EXPECT_EQ(printed(kTwoQuietChips, "reboot B0\nsleep 2\nload bootloader no-such-file.bin\n"),
            "[LOG_WARNING] QVR_loadBootloader Failed loading image file no-such-file.bin\n"
            "Error loading image - No such file or directory\n");
}

}  // namespace
