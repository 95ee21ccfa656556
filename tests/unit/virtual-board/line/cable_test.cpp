#include "virtual-board/line/cable.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace gfast;
using namespace gfast::board;

namespace {

double loss_db(const char* cable, double length_m, double mhz, const std::vector<BridgedTap>& taps = {}) {
  return -20 * std::log10(std::abs(Cable({cable, length_m, -140, taps, false}).insertionGain(mhz * 1e6)));
}

constexpr const char* kCables[] = {"CAD55", "CAT5", "T05u", "T05b", "T05h"};

}  // namespace

TEST(Cable, HasThePublishedLoss) {
  const struct {
    const char* cable;
    double length_m, mhz, loss_db;
  } published[] = {{"CAD55", 100, 10, 6.3},  {"CAD55", 100, 50, 16.7}, {"CAD55", 100, 100, 26.5},
                   {"CAD55", 200, 10, 12.6}, {"CAD55", 200, 50, 33.3}, {"CAD55", 200, 100, 53.0},
                   {"CAT5", 100, 10, 5.7},   {"CAT5", 100, 50, 12.7},  {"CAT5", 100, 100, 18.2}};
  for (const auto& each : published) {
    EXPECT_NEAR(loss_db(each.cable, each.length_m, each.mhz), each.loss_db, 0.1)
        << each.cable << ' ' << each.length_m << " m at " << each.mhz << " MHz";
  }
}

TEST(Cable, WithoutLengthHasNoLoss) {
  for (const char* cable : kCables) {
    EXPECT_NEAR(std::abs(Cable({cable, 0, -140, {}, false}).insertionGain(50e6) - 1.0), 0, 1e-12) << cable;
  }
}

TEST(Cable, LosesMoreWithLengthAndFrequency) {
  for (const char* cable : kCables) {
    double before = 0;
    for (const double length : {20.0, 100.0, 400.0, 1500.0}) {
      EXPECT_GT(loss_db(cable, length, 50), before) << cable << ' ' << length;
      before = loss_db(cable, length, 50);
    }
    EXPECT_GT(loss_db(cable, 100, 100), loss_db(cable, 100, 10)) << cable;
  }
}

TEST(Cable, DelaysASignalByItsLength) {
  // The phase falls by 2 pi a megahertz for each microsecond.
  const Cable cable({"CAD55", 100, -140, {}, false});
  const auto turn = cable.insertionGain(50.01e6) / cable.insertionGain(50e6);
  const double delay_us = -std::arg(turn) / (2 * std::acos(-1.0)) / 0.01;
  EXPECT_NEAR(delay_us, 100 / (0.6976 * 300), 0.02);
}

TEST(Cable, IsFiniteAtEveryLengthAndFrequency) {
  for (const char* cable : kCables) {
    for (const double length : {0.0, 1e4, 1e6, 1e9}) {
      for (const double frequency : {-1.0, 0.0, 1.0, 51750.0, 106e6}) {
        const auto gain = Cable({cable, length, -140, {{5, 1e6}}, false}).insertionGain(frequency);
        EXPECT_TRUE(std::isfinite(gain.real()) && std::isfinite(gain.imag()))
            << cable << ' ' << length << ' ' << frequency;
      }
    }
  }
}

TEST(Cable, ABridgedTapMakesANotchWhereItIsAQuarterOfAWaveLong) {
  const double quarter_mhz = 0.6976 * 300 / (4 * 5);
  EXPECT_GT(loss_db("CAD55", 100, quarter_mhz, {{40, 5}}), loss_db("CAD55", 100, quarter_mhz) + 10);
  EXPECT_LT(loss_db("CAD55", 100, 2 * quarter_mhz, {{40, 5}}), loss_db("CAD55", 100, 2 * quarter_mhz) + 2);
}

TEST(Cable, ThePlaceOfATapCounts) {
  EXPECT_DOUBLE_EQ(loss_db("CAT5", 100, 20, {{70, 3}, {20, 8}}),
                   loss_db("CAT5", 100, 20, {{20, 8}, {70, 3}}));
  EXPECT_NE(loss_db("CAT5", 100, 20, {{50, 8}}), loss_db("CAT5", 100, 20, {{20, 8}}));
  EXPECT_DOUBLE_EQ(loss_db("CAT5", 100, 20, {{500, 8}}), loss_db("CAT5", 100, 20, {{100, 8}}));
}
