// The counters of a lab whose lines are up: both ends answer, and what one end says of the other agrees.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <sstream>
#include <string>

#include "console/programs.h"

namespace {

using namespace std::chrono_literals;
using testing::ContainsRegex;
using testing::HasSubstr;

// The lines of one block, from its heading to the blank line behind it.
std::string blockOf(const std::string& display, const std::string& heading) {
  const size_t begin = display.find(heading);
  return begin == std::string::npos ? "no " + heading
                                    : display.substr(begin, display.find("\r\n \r\n", begin) - begin);
}

// The fields of a block by name.
std::map<std::string, long long> fieldsOf(const std::string& block) {
  std::istringstream stream(block);
  std::map<std::string, long long> fields;
  for (std::string line; std::getline(stream, line);) {
    if (const size_t equals = line.find(" = "); equals != std::string::npos) {
      fields[line.substr(line.find_first_not_of(' '), equals - line.find_first_not_of(' '))] =
          std::stoll(line.substr(equals + 3));
    }
  }
  return fields;
}

TEST(LabCounters, OfOneChipAreTheFarEndCountersOfTheOther) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const std::string line : {"0", "1"}) {
    const std::string other = line == "0" ? "1" : "0";
    const std::string near = session.type("show gfast-counters " + line);
    const std::string far = session.type("show gfast-counters " + other + " fe");
    for (const std::string heading : {"FRAMER INIT COUNTERS", "FDU INIT COUNTERS"}) {
      EXPECT_THAT(blockOf(near, heading), HasSubstr("lengthInBytes = ")) << heading;
      EXPECT_EQ(blockOf(far, heading), blockOf(near, heading));
    }
  }
}

TEST(LabCounters, GrowOnBothEndsWhileTheLineIsUp) {
  LabServer lab;
  OpenSession session(lab.port());
  for (const std::string command : {"show gfast-counters 0 ne", "show gfast-counters 0 fe"}) {
    auto before = fieldsOf(blockOf(session.type(command), "FRAMER RAW COUNTERS"));
    ASSERT_EQ(before.size(), 85U) << command;
    session.readFor(300ms);
    auto after = fieldsOf(blockOf(session.type(command), "FRAMER RAW COUNTERS"));
    for (const std::string field :
         {"numOfTxFrames", "numOfGoodRMCs", "numOfTxDTUs", "numOfRxDTUs", "TxBytes"}) {
      EXPECT_GT(after[field], before[field]) << command << ' ' << field;
    }
  }
}

TEST(LabCounters, ShowWhatTheFarEndMeasures) {
  LabServer lab;
  OpenSession session(lab.port());
  const std::string pmd = session.type("show pmd-test-parameters 1");
  EXPECT_THAT(
      pmd, ContainsRegex("^SNRM                       [0-9]+\r\nATTNDR                     [1-9][0-9]+\r\n"));
  EXPECT_THAT(session.type("show remote-management-counters 1"),
              ContainsRegex("\r\nunavailableSeconds         0\r\n"));
}

TEST(LabCounters, OfTheFarEndFailForALineThatIsDown) {
  LabServer lab;
  OpenSession session(lab.port());
  session.type("deactivate line all");
  lab.program().awaitOutput("to idle           \n", 2);
  EXPECT_EQ(session.type("show gfast-counters 0 fe"), "QVR_readGfastCounters failed (1)\r\n");
  EXPECT_EQ(session.type("show remote-management-counters 0"),
            "CLI_showRemoteManagemenCounters failed (32)\r\n");
  EXPECT_EQ(session.type("show pmd-test-parameters 1"), "CLI_showPMDTestParameters failed (32)\r\n");
}

}  // namespace
