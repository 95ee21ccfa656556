// The rates that a loop allows.
#include <gtest/gtest.h>

#include "unit/virtual-board/measured/counters.h"

using namespace gfast;
using namespace gfast::board;

TEST(Loop, RatesFallWithLength) {
  for (const char* cable : {"CAD55", "CAT5"}) {
    double before = 1000;
    for (const double length : {0.0, 20.0, 60.0, 100.0, 140.0, 200.0, 250.0, 330.0, 400.0, 480.0}) {
      BoardConfig config;
      config.loop.cable = cable;
      config.loop.length_m = length;
      config.device[0].line = LineState::kShowtime;
      Bench bench(config);
      const double both = (derived(bench, 0).TxNDR + derived(bench, 0).RxNDR) / 1000.0;
      EXPECT_GT(both, 0) << cable << ' ' << length;
      EXPECT_LE(both, before) << cable << ' ' << length;
      EXPECT_TRUE(length < 100 || both < before) << cable << ' ' << length;
      EXPECT_TRUE(length > 100 || both >= 500) << cable << ' ' << length << ": " << both;
      EXPECT_TRUE(length > 200 || both >= 200) << cable << ' ' << length << ": " << both;
      EXPECT_TRUE(length > 250 || both >= 150) << cable << ' ' << length << ": " << both;
      before = both;
    }
  }
}

TEST(Loop, RatesDependOnCableTapsAndNoise) {
  const auto rate = [](const char* loop) {
    Bench bench((std::string("[loop]\n") + loop + "\n" + kShowtime));
    return derived(bench, 0).TxNDR;
  };
  const uint32_t usual = rate("");
  EXPECT_GT(rate("cable = \"CAT5\""), usual);
  EXPECT_GT(rate("cable = \"T05b\""), rate("cable = \"CAT5\""));
  EXPECT_LT(rate("cable = \"T05h\""), usual);
  EXPECT_LT(rate("taps = [ { at_m = 10, length_m = 5 } ]"), usual);
  EXPECT_LT(rate("noise_dbm_hz = -130"), usual);
  EXPECT_GT(rate("noise_dbm_hz = -150"), usual);
}
