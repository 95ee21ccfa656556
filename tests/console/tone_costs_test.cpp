// What each table costs: the requests it makes of the driver. A request reads at most 900 bytes of chip
// memory, an exchange with the far end at most 512; what is read through a window comes in blocks, each
// behind two guard words.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "console/programs.h"

namespace {

constexpr int kTones = 1929;  // processed, from 43 to 1971
constexpr int kHighestTone = 1971;

constexpr int pieces(int size, int each) {
  return (size + each - 1) / each;
}
constexpr int reads(int bytes) {
  return pieces(bytes, 900);
}
constexpr int exchanges(int bytes) {
  return pieces(bytes, 512);
}

// Is it up (boot register, identity, boot-stage registers), and what does it process?
constexpr int kLineUp = 3;
constexpr int kLine = kLineUp + 1;
constexpr int kSet = 1;
constexpr int kLoading = reads(2 * kTones);
constexpr int kRmcLoading = 1 + reads(4096) + 1;  // the area's index before and after
constexpr int kSnr = pieces(kTones, 220) + 1;     // 222 words a request, and their scale
constexpr int kFarSnr = kSet + pieces(kHighestTone + 1, 248);
constexpr int kFrontEnd = 2;
constexpr int kExponents = kTones + kTones % 2;  // bytes; an odd number cannot be read
constexpr int kReceived = reads(4 * kTones) + reads(kExponents) + kFrontEnd;
constexpr int kFarReceived = exchanges(4 * kTones) + exchanges(kExponents) + kFrontEnd;
constexpr int kSent = reads(2 * kTones);
constexpr int kFarSent = exchanges(2 * kTones);
constexpr int kMatrix = pieces(512 * 1024, 248);  // 256 bytes a request, 8 of them guard words

const struct {
  const char* command;
  int requests;
} kCosts[] = {
    {"show BITSps 0 ds", kLine + kSet + kLoading},
    {"show BITSps 0 us", kLine + kSet + kLoading},
    {"show BITS-RMCps 0 ds", kLine + kSet + kRmcLoading},
    {"show BITS-RMCps 0 us", kLine + kSet + kRmcLoading},
    {"show SNRps 0 us", kLine + kSnr + kSet},
    {"show SNRps 0 ds", kLine + kFarSnr + kSet},
    {"show ALNps 0 us", kLine + kReceived + kSnr + kSet},
    {"show ALNps 0 ds", kLine + kFarReceived + kFarSnr + kSet},
    {"show HLOGps 0 us", kLine + kFarSent + kReceived + kSet},
    {"show HLOGps 0 ds", kLine + kSent + kFarReceived + kSet},
    {"show SATN 0 us", kLine + kFarSent + kReceived + kSet + kFarSent},
    {"show SATN 0 ds", kLine + kSent + kFarReceived + kSet + kFarSent},
    {"show phy params 0", kLine},
    {"show afe-params 0", kLine + kFrontEnd},
    {"show afe-params 0 fe", kLine + kFrontEnd},
    {"show phy info 0 ne", kLine + 2 * (kLine + kSet + kLoading) + kLine + kSnr + kLine + kReceived},
    {"show phy info 0 fe",
     kLine + 2 * (kLine + kSet + kLoading) + kSet + kLine + kFarSnr + kLine + kFarReceived},
    {"show ETR 0", kLineUp + kLineUp + 3},  // framing, framer, derived counters
};

// The requests between two reads of this word, which no command reads by itself.
constexpr const char* kMark = "read memory 0 d0000000 4\n";
constexpr const char* kMarkTraced = " 0 memread 0xd0000000 4 ok";

// How many requests each command of a script makes, those of the notification thread left out.
std::vector<int> requestsOf(const std::vector<std::string>& commands) {
  const TemporaryFolder folder;
  std::string script = kMark;
  for (const std::string& command : commands) {
    script += command + "\n" + kMark;
  }
  const std::string trace = folder.file("trace.txt");
  ConsoleProgram program(
      LAUNCHER,
      {gfastLab(), "--board", quietBoard(), "--trace-requests", trace, folder.write("script.txt", script)},
      folder.path());
  EXPECT_EQ(program.wait(), 0);
  std::vector<int> counts;
  std::ifstream lines(trace);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with(kMarkTraced)) {
      counts.push_back(0);
    } else if (!counts.empty() && line.find(" eventread ") == std::string::npos &&
               line.find(" logread ") == std::string::npos) {
      counts.back()++;
    }
  }
  return counts;
}

TEST(ToneCosts, AreTheFewestRequestsThatTheDriverAllows) {
  std::vector<std::string> commands;
  for (const auto& cost : kCosts) {
    commands.emplace_back(cost.command);
  }
  const std::vector<int> counts = requestsOf(commands);
  ASSERT_EQ(counts.size(), commands.size() + 1);
  for (size_t i = 0; i < commands.size(); i++) {
    EXPECT_EQ(counts[i], kCosts[i].requests) << commands[i];
  }
}

TEST(ToneCosts, OfAMatrixAreOneRequestABlock) {
  const std::vector<int> counts = requestsOf({"show vectoring canceler 0 matrix.txt"});
  ASSERT_EQ(counts.size(), 2U);
  // On a slow machine the notification thread may check the chips meanwhile.
  EXPECT_GE(counts[0], kLine + kMatrix);
  EXPECT_LE(counts[0], kLine + kMatrix + 10);
}

}  // namespace
