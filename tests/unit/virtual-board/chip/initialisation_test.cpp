// How far the last initialisation got in each direction.
#include <gtest/gtest.h>

#include "chip/device_information.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

// The last signals that were sent: downstream, then upstream.
std::string lastSignals(Bench& bench, int device) {
  const auto bytes = fromHex(bench.read(device, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_LAST_SIGNAL, 4));
  return std::to_string(bytes[0]) + ' ' + std::to_string(bytes[2]);
}

}  // namespace

TEST(LastSignals, OfALineThatIsUp) {
  Bench bench;
  EXPECT_EQ(lastSignals(bench, 0), "0 0");
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(lastSignals(bench, 0), "4 5");
  EXPECT_EQ(lastSignals(bench, 1), "4 5");
  bench.rebootToApp(0);
  bench.wait(1.3);
  EXPECT_EQ(lastSignals(bench, 0), "0 0");
  EXPECT_EQ(lastSignals(bench, 1), "4 5");
}

TEST(LastSignals, OfAnEndThatFoundNoFarEnd) {
  Bench bench("[loop]\ncut = true");
  bench.wait(6);
  EXPECT_EQ(lastSignals(bench, 0), "0 0");  // it waits for the other end
  EXPECT_EQ(lastSignals(bench, 1), "0 1");  // it sends first
}

TEST(LastSignals, OfAnInitialisationThatWasInterrupted) {
  const struct {
    double at_s;
    const char* signals;
  } cases[] = {{1.5, "1 1"}, {2.5, "2 2"}, {3.2, "2 3"}, {4.0, "3 4"}};
  for (const auto& each : cases) {
    Bench bench;
    bench.wait(each.at_s);
    bench.board.cutLoop(true);
    EXPECT_EQ(lastSignals(bench, 0), each.signals) << each.at_s;
    EXPECT_EQ(lastSignals(bench, 1), each.signals) << each.at_s;
  }
}

TEST(LastSignals, OfALoopThatIsTooLong) {
  Bench bench("[loop]\nlength_m = 600");
  bench.wait(5);
  EXPECT_EQ(lastSignals(bench, 0), "3 4");
  EXPECT_EQ(lastSignals(bench, 1), "3 4");
}
