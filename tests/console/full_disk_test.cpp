// A disk without room: each command that writes a file says so in one line. The disk is a real one, as small
// as a file system gets, mounted where only the program sees it.
#include <gtest/gtest.h>

#include <string>

#include "console/programs.h"
#include "support/temporary_folder.h"

namespace {

// One block, in which a file's first 4096 bytes have room.
constexpr const char* kOneBlock = "size=4k";
constexpr const char* kPlenty = "size=64m";

constexpr const char* kEmpty = "true";
constexpr const char* kFilled = "head -c 4096 /dev/zero >filling";

// Every command that writes a file, with names of its own and with the usual ones.
const std::string kTableCommands =
    "show BITSps 0 us a\n"
    "show BITS-RMCps 0 us a\n"
    "show SNRps 0 us a\n"
    "show ALNps 0 us a\n"
    "show HLOGps 0 us a\n"
    "show phy info 0 ne a\n"
    "show vectoring canceler 0 a\n"
    "show vectoring precoder 0 a\n";
const std::string kSignalCommands =
    "generate signal\n"
    "receive signal 0\n"
    "test afe-loop 0 1\n"
    "test afe-mtpr 0 1\n"
    "test afe-mtpr-loop 0 1\n"
    "analyze crashdump 1 ../dump.txt a\n";

const std::string kIteration = "0\n";  // what test afe-mtpr-loop counts

class TinyDisk : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* const way : {"unshare -rm", "unshare -m"}) {
      ConsoleProgram mount(way, {"mount", "-t", "tmpfs", "none", "/mnt"});
      if (mount.wait() == 0) {
        unshare_ = way;
        return;
      }
    }
    GTEST_SKIP() << "neither root nor a user namespace: nothing may be mounted";
  }

  // What the commands print in a folder on a disk of this size, filled before by a shell command.
  std::string printed(const std::string& size, const std::string& filling, const std::string& commands) {
    directory_.write("dump.txt", "");
    directory_.write("script.txt", "set log-level 1\n" + commands);
    directory_.write("on-disk", "mkdir -p disk && mount -t tmpfs -o " + size + " none disk && cd disk && " +
                                    filling + "\nexec \"$@\"\n");
    ConsoleProgram program(unshare_ + " sh on-disk " LAUNCHER,
                           {gfastLab(), "--board", quietBoard(), "../script.txt"}, directory_.path());
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(program.errors(), "");
    return program.output();
  }

  TemporaryFolder directory_;
  std::string unshare_;
};

TEST_F(TinyDisk, ThatIsFullIsReportedByEveryTable) {
  const std::string report = "Could not write file a\n";
  EXPECT_EQ(printed(kOneBlock, kFilled, kTableCommands),
            report + report + report + report + report + report + report + report);
}

TEST_F(TinyDisk, ThatIsFullIsReportedByEveryTestAndAnalysis) {
  EXPECT_EQ(printed(kOneBlock, kFilled, kSignalCommands),
            "Failed writing file txsignal.dat (No space left on device)\n"
            "Failed writing file fdsignal.out (No space left on device)\n"
            "Failed writing file fdsignal.out (No space left on device)\n"
            "Failed writing file fdsignal.out (No space left on device)\n"
            "Failed writing file mtpr.out (No space left on device)\n" +
                kIteration +
                "Failed writing file mtpr.out (No space left on device)\n"
                "Failed writing file fdsignal.out (No space left on device)\n"
                "Failed writing file a (No space left on device)\n");
}

TEST_F(TinyDisk, ThatFillsUpWhileAFileIsWrittenIsReported) {
  EXPECT_EQ(
      printed(kOneBlock, kEmpty,
              "show BITSps 0 us a\nshow phy info 0 ne a\nshow vectoring canceler 0 a\ngenerate signal a\n"
              "receive signal 0 a\n"),
      "Could not write file a\n"
      "Could not write file a\n"
      "Could not write file a\n"
      "Failed writing file a (No space left on device)\n"
      "Failed writing file a (No space left on device)\n");
}

TEST_F(TinyDisk, WithRoomIsNotReported) {
  EXPECT_EQ(printed(kPlenty, kEmpty, kTableCommands + kSignalCommands), kIteration);
}

}  // namespace
