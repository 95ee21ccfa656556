// Every status command, with lines in each state and at either side.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "console/programs.h"
#include "support/stored_text.h"

namespace {

using testing::HasSubstr;

constexpr const char* kCommands[] = {
    "show line state",           "show line state 0",        "show line state 1",
    "show line status",          "show line status 1",       "show line config",
    "show line config 1",        "show channel status",      "show channel status 0 ds",
    "show channel status 1",     "show channel status 1 ds", "show init-failure-cause",
    "show init-failure-cause 1", "show inventory",           "show inventory 1",
    "show network-info",         "show number devices",      "show number lines",
    "show number reboots"};

// Fixes the error-free throughput of both ends, which changes every second: 450 Mbit/s downstream, 100 Mbit/s
// upstream.
std::string throughput(int networkDevice) {
  const auto overlay = [](int device, const std::string& bytes) {
    return "[[memory]]\ndevice = " + std::to_string(device) + "\naddress = 0xE2880044\nbytes = \"" + bytes +
           "\"\n";
  };
  return overlay(networkDevice, "a0 86 01 00") + overlay(1 - networkDevice, "d0 dd 06 00");
}

class LineStatus : public testing::Test {
 protected:
  // The transcript of a session during which the lines stayed in their state.
  std::string session(const std::string& text) {
    const std::string file = folder_.write("board.toml", text);
    for (int attempt = 0; attempt < kAttempts; attempt++) {
      ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", file, "--port", "0"});
      const std::string transcript = typedAt(program.port());
      if (program.output().find("state changed") == std::string::npos) {
        return transcript;
      }
    }
    return "the lines never stay in their state";
  }

  // What a script prints with the board.
  std::string script(const std::string& text, const std::string& commands) {
    ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", folder_.write("board.toml", text),
                                      folder_.write("script.txt", commands)});
    EXPECT_EQ(program.wait(), 0);
    return program.output();
  }

  static std::string stored(const std::string& name) { return std::string(TRANSCRIPTS) + "/" + name; }

 private:
  // A line trains for about two seconds; on a busy machine the session may take longer.
  static constexpr int kAttempts = 10;

  static std::string typedAt(uint16_t port) {
    OpenSession session(port);
    std::string transcript;
    for (const char* command : kCommands) {
      transcript += std::string("(gfast-cli)> ") + command + "\n" + withoutReturns(session.type(command));
    }
    return transcript;
  }

  // Every line of a session ends "\r\n"; a return anywhere else stays.
  static std::string withoutReturns(std::string text) {
    for (size_t end = 0; (end = text.find("\r\n", end)) != std::string::npos;) {
      text.erase(end, 1);
    }
    return text;
  }

  TemporaryFolder folder_;
};

TEST_F(LineStatus, OfIdleLinesMatchesTheTranscript) {
  expectStored(stored("status_idle.txt"), session(boardWithLines("idle")));
}

TEST_F(LineStatus, OfTrainingLinesMatchesTheTranscript) {
  expectStored(stored("status_training.txt"), session(boardWithLines("training")));
}

TEST_F(LineStatus, OfLinesInShowtimeMatchesTheTranscript) {
  expectStored(stored("status_showtime.txt"), session(boardWithLines("showtime") + throughput(0)));
}

TEST_F(LineStatus, WithTheSubscriberSideFirstMatchesTheTranscript) {
  expectStored(stored("status_subscriber_first.txt"),
               session(boardWithLines("showtime", "cpe", "dp") + throughput(1)));
}

TEST_F(LineStatus, EveryCommandReportsAbsentChips) {
  EXPECT_EQ(script("[board]\ndevices = 0\n",
                   "show line state\nshow line state 0\nshow line state 1\nshow line status\n"
                   "show line config\nshow channel status 0 us\nshow channel status 0 ds\n"
                   "show init-failure-cause\nshow inventory\nshow number devices\nshow number lines\n"
                   "show number reboots\n"),
            "Warning: Failed to connect to DFEs\n"
            "Could not refresh the data\n"
            "Could not refresh the data\n"
            "Failed getting line status (18)\n"
            "QVR_getLineConfig failed\n"
            "QVR_getChannelStatus failed\n"
            "QVR_getChannelStatus failed\n"
            "Failed getting information from device\n"
            "QVR_getInventory failed (18)\n"
            "0\n"
            "lines per device = 0, total = 0 \n"
            "0\n");
}

// Chip memory that cannot be read, and what the command then prints.
struct Unreadable {
  const char* name;
  const char* address;
  const char* command;
  const char* message;

  friend void PrintTo(const Unreadable& memory, std::ostream* out) { *out << memory.command; }
};

class UnreadableMemory : public LineStatus, public testing::WithParamInterface<Unreadable> {};

TEST_P(UnreadableMemory, IsReported) {
  const std::string fault = std::string("[[fault]]\ndevice = 0\nrequest = \"memread\"\naddress = ") +
                            GetParam().address + "\nerrno = \"EIO\"\ncount = 0\n";
  EXPECT_THAT(script(boardWithLines("idle") + fault, std::string(GetParam().command) + "\n"),
              HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, UnreadableMemory,
    testing::Values(
        Unreadable{"FduOfLineStatus", "0xE2040000", "show line status", "Failed getting line status (12)\n"},
        Unreadable{"DerivedOfChannelUpstream", "0xE2880000", "show channel status",
                   "QVR_getChannelStatus failed\n"},
        Unreadable{"FramerInitOfChannel", "0xE2400000", "show channel status",
                   "QVR_getChannelStatus failed\n"},
        Unreadable{"FramerOfChannel", "0xE2440000", "show channel status", "QVR_getChannelStatus failed\n"},
        Unreadable{"EtrDatabaseOfChannel", "0xE5002000", "show channel status",
                   "QVR_getChannelStatus failed\n"},
        Unreadable{"DerivedOfChannelDownstream", "0xE2880000", "show channel status 0 ds",
                   "QVR_getChannelStatus failed\n"},
        Unreadable{"Inventory", "0xF1000000", "show inventory", "QVR_getInventory failed (12)\n"}),
    [](const auto& memory) { return memory.param.name; });

// The device record is read at the start and cannot be read again.
TEST_F(LineStatus, ChipThatStoppedAnsweringIsNotShownFromItsLastRecord) {
  const std::string silent = boardWithLines("showtime") +
                             "[[fault]]\ndevice = 1\nrequest = \"memread\"\naddress = 0xE1000000\n"
                             "errno = \"EIO\"\nskip = 1\ncount = 0\n";
  const std::string shown =
      script(silent, "show line state\nshow line state 1\nshow init-failure-cause 1\nshow network-info\n");
  EXPECT_THAT(shown, HasSubstr("Line[00] show time      \nCould not refresh the data\n"
                               "Could not refresh the data\nFailed getting information from device\n"));
  EXPECT_THAT(shown,
              HasSubstr("|  01  |  Unknown          |\t   0    |     0    |     0  |     0  |     0  |"));
}

TEST_F(LineStatus, ShowsTheNearEndWhenTheFarEndDoesNotAnswer) {
  const std::string mute = boardWithLines("showtime") + throughput(0) +
                           "[[fault]]\ndevice = 0\nrequest = \"farend\"\n"
                           "errno = \"ETIMEDOUT\"\ncount = 0\n";
  const std::string shown =
      script(mute, "show line status\nshow channel status 0 ds\nshow network-info\nshow inventory\n");
  EXPECT_THAT(shown, HasSubstr("LINK_STATE            L0N\nSNRMds                -512\n"));
  EXPECT_THAT(shown, HasSubstr("ACTATPus              -512\nSNRM_RMCds            0\n"));
  EXPECT_THAT(shown, HasSubstr("QVR_getChannelStatus failed\n"));
  EXPECT_THAT(shown, HasSubstr("|    0.0   |   100.0   |\n"));
  EXPECT_THAT(shown, HasSubstr("VERSION:       1.9.4.106\n"));
}

}  // namespace
