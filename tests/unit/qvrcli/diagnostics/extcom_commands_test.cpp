// The links between the chips: given what the chip answers, when this is typed, this is printed.
#include <cstdio>

#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;

using Extcom = TypedConsole;

// The first step of both device programs: a command to the first unit of device 0's first block.
Script firstStep(uint32_t command) {
  return writes(0, 0xA00B0140,
                {static_cast<uint8_t>(command >> 24), static_cast<uint8_t>(command >> 16),
                 static_cast<uint8_t>(command >> 8), static_cast<uint8_t>(command)});
}

TEST_F(Extcom, ReportsATestThatDoesNotStart) {
  expect(opens(0) + firstStep(0x10150000).fails(EIO));
  EXPECT_THAT(typed("start extcom-test"), ElementsAre("Failed starting Extcom Connectivity Test (13)"));
  expect(firstStep(0x10150000).fails(EIO));
  EXPECT_THAT(typed("start extcom-test anything"),
              ElementsAre("Failed starting Extcom Connectivity Test (13)"));
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Extcom, ShowsResultsThatCannotBeReadAsNotMeasured) {
  expect(opens(0) + firstStep(0x10170000).fails(EIO));
  Lines expected = {"Failed getting Extcom Connectivity Test (13)", "[device, port, lane] = errors"};
  for (int device = 0; device < 2; device++) {
    for (int port = 0; port < 6; port++) {
      for (int lane = 0; lane < 2; lane++) {
        char line[32];
        std::snprintf(line, sizeof line, "[%02d, %02d, %02d] = -1", device, port, lane);
        expected.emplace_back(line);
      }
    }
  }
  EXPECT_EQ(typed("show extcom-results"), expected);
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(Extcom, ReportsAnAbsentDevice) {
  expect(opens(0).fails(ENOENT) + opens(0).fails(ENOENT));
  EXPECT_THAT(typed("start extcom-test"), ElementsAre("Failed starting Extcom Connectivity Test (18)"));
  const Lines lines = typed("show extcom-results 0");
  EXPECT_EQ(lines.size(), 26U);
  EXPECT_EQ(lines.front(), "Failed getting Extcom Connectivity Test (18)");
  EXPECT_EQ(lines.back(), "[01, 05, 01] = -1");
}

TEST_F(Extcom, TakesOneWordAtMost) {
  EXPECT_THAT(typed("start extcom-test 1 2"), ElementsAre("start extcom-text"));
  EXPECT_THAT(typed("show extcom-results 1 2"), ElementsAre("start extcom-text"));
  EXPECT_THAT(typed("show extcom-results ?"), ElementsAre("start extcom-text"));
}

}  // namespace
