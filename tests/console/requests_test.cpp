// What each command costs: the requests it makes of the driver, as the lab's request trace shows them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "console/programs.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Requests = std::vector<std::string>;

// Lines of a trace without their time; what the notification thread asks by itself is left out.
Requests readTrace(const std::string& filename) {
  Requests requests;
  std::ifstream trace(filename);
  for (std::string line; std::getline(trace, line);) {
    const std::string request = line.substr(line.find(' ') + 1);
    if (request.find(" eventread ") == std::string::npos && request.find(" logread ") == std::string::npos) {
      requests.push_back(request);
    }
  }
  return requests;
}

class RequestTrace : public testing::Test {
 protected:
  // The requests that a script makes beyond those of a start.
  Requests requestsOf(const std::string& commands) {
    static const Requests start = traced("# nothing\n");
    const Requests all = traced(commands);
    EXPECT_GT(start.size(), 0U);
    EXPECT_EQ(Requests(all.begin(), all.begin() + static_cast<long>(start.size())), start);
    return {all.begin() + static_cast<long>(start.size()), all.end()};
  }

  // A file for the driver to read.
  std::string file(const std::string& name) { return folder_.write(name, std::string(1000, 'x')); }

 private:
  Requests traced(const std::string& commands) {
    const std::string board = folder_.write("board.toml", boardWithLines("idle"));
    const std::string script = folder_.write("script.txt", commands);
    const std::string trace = folder_.file("trace.txt");
    ConsoleProgram program(LAUNCHER, {gfastLab(), "--board", board, "--trace-requests", trace, script});
    EXPECT_EQ(program.wait(), 0);
    return readTrace(trace);
  }

  TemporaryFolder folder_;
};

TEST_F(RequestTrace, ReadTakesPiecesOf900Bytes) {
  EXPECT_THAT(requestsOf("read memory 0 d0000000 1800\n"),
              ElementsAre("0 memread 0xd0000000 900 ok", "0 memread 0xd0000384 900 ok"));
  EXPECT_THAT(requestsOf("read memory 0 d0000000 902\n"),
              ElementsAre("0 memread 0xd0000000 900 ok", "0 memread 0xd0000384 2 ok"));
  EXPECT_THAT(requestsOf("read memory 1 d0000000 2000\n"),
              ElementsAre("1 memread 0xd0000000 900 ok", "1 memread 0xd0000384 900 ok",
                          "1 memread 0xd0000708 200 ok"));
}

TEST_F(RequestTrace, WriteTakesPiecesOf128Bytes) {
  EXPECT_THAT(requestsOf("write memory 0 d0000000 130 1:2:3\n"),
              ElementsAre("0 memwrite 0xd0000000 128 ok", "0 memwrite 0xd0000080 2 ok"));
}

TEST_F(RequestTrace, DeviceInfoTakesThreeReads) {
  EXPECT_THAT(
      requestsOf("show device-info 1\n"),
      ElementsAre("1 memread 0xe0000238 4 ok", "1 memread 0xe3100000 260 ok", "1 memread 0xe1000000 64 ok"));
}

TEST_F(RequestTrace, BootRegisterTakesOneRead) {
  EXPECT_THAT(requestsOf("read sbr\n"), ElementsAre("0 memread 0xe0000238 4 ok"));
}

TEST_F(RequestTrace, RebootReadsTheBootRegisterAndWritesThreeWords) {
  Requests requests = requestsOf("reboot b1 1\n");
  ASSERT_GE(requests.size(), 4U);
  requests.resize(4);  // the library reads a chip that is back, if the program still runs then
  EXPECT_THAT(requests, ElementsAre("1 memread 0xe0000238 4 ok", "1 memwrite 0xe0000238 4 ok",
                                    "1 memwrite 0xe0000018 4 ok", "1 memwrite 0xe0000014 4 ok"));
}

TEST_F(RequestTrace, UpgradeInTheWrongStageOnlyReadsTheBootRegister) {
  EXPECT_THAT(requestsOf("upgrade firmware " + file("new.bin") + "\n"),
              ElementsAre("0 memread 0xe0000238 4 ok"));
}

TEST_F(RequestTrace, UpgradeChecksErasesAndPrograms) {
  const Requests requests = requestsOf("reboot B1\nsleep 2\nupgrade bootloader " + file("new.bin") + "\n");
  ASSERT_GE(requests.size(), 4U);
  EXPECT_THAT(Requests(requests.end() - 4, requests.end()),
              ElementsAre("0 memread 0xe0000238 4 ok", "0 memread 0xe0000238 4 ok",
                          "0 flasherase 0x00000000 0 ok", "0 flashprog 0x00000000 1000 ok"));
}

TEST_F(RequestTrace, ErasingTheFirmwareTakesFourteenSectors) {
  const Requests requests = requestsOf("reboot B1\nsleep 2\nerase firmware\n");
  ASSERT_GE(requests.size(), 15U);
  EXPECT_EQ(*(requests.end() - 15), "0 memread 0xe0000238 4 ok");
  EXPECT_EQ(*(requests.end() - 14), "0 flasherase 0x00020000 0 ok");
  EXPECT_EQ(requests.back(), "0 flasherase 0x000f0000 0 ok");
}

TEST_F(RequestTrace, LineControlWritesItsRegisters) {
  EXPECT_THAT(requestsOf("activate line 0\n"), ElementsAre("0 memwrite 0xe9300000 4 ok"));
  EXPECT_THAT(requestsOf("deactivate line 1\n"),
              ElementsAre("1 memwrite 0xe9300000 4 ok", "1 memwrite 0xe9200000 4 ok"));
  EXPECT_THAT(
      requestsOf("restart line 0\n"),
      ElementsAre("0 memread 0xe0000238 4 ok", "0 memread 0xe3100000 260 ok", "0 memread 0xe1000000 64 ok"));
}

TEST_F(RequestTrace, UsageAndBadArgumentsMakeNoRequest) {
  EXPECT_THAT(requestsOf("read memory ?\nread memory 2 0 4\nreboot x\nupgrade firmware x 2\nsleep 0\n"),
              IsEmpty());
}

// After the reboot both chips hold log records that nobody takes. What is left are the checks that the chips
// answer, each 5 seconds, and a look at the queues each half second. The bound is twice what is measured.
TEST(NotificationThread, RestsWhileLogRecordsWaitInBothChips) {
  const TemporaryFolder folder;
  const std::string script =
      folder.write("script.txt", "start logging\nstop logging\nreboot APP 1\nsleep 8\n");
  const std::string trace = folder.file("trace.txt");
  ConsoleProgram program(LAUNCHER, {gfastLab(), "--trace-requests", trace, script});
  EXPECT_EQ(program.wait(), 0);
  std::ifstream requests(trace);
  int all = 0;
  for (std::string line; std::getline(requests, line);) {
    all++;
  }
  EXPECT_GT(all, 0);
  EXPECT_LT(all, 250);
}

}  // namespace
