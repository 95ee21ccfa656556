// Vectoring coefficients, read through the windows of a chip's memory.
#include <gtest/gtest.h>

#include <cmath>

#include "chip/tones.h"
#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

struct Coefficient {
  int16_t re, im;
};

Coefficient coefficient(Bench& bench, uint32_t area, uint32_t i, uint32_t j, uint32_t pair) {
  const uint32_t offset = ((i * 16 + j) * 512 + pair) * 4;
  const auto window = fromHex(bench.read(0, area + offset, 12));
  EXPECT_EQ(load_le32(&window[0]), load_le32(&window[4]));
  return {static_cast<int16_t>(load_le16(&window[8])), static_cast<int16_t>(load_le16(&window[10]))};
}

double strength(const Coefficient& c) {
  return std::hypot(c.re, c.im) / 4096;
}

}  // namespace

TEST(Vectoring, CoefficientsAreNearlyTheIdentity) {
  Bench bench(kShowtime);
  for (const uint32_t area : {VIRT_ADDR_RX_VEC_COEFFS(0), VIRT_ADDR_TX_VEC_COEFFS(0)}) {
    for (uint32_t i = 0; i < 16; i++) {
      const Coefficient self = coefficient(bench, area, i, i, 511);
      EXPECT_GT(self.re, 4000);
      EXPECT_LT(self.re, 4096);
      EXPECT_EQ(self.im, 0);
    }
    for (const uint32_t pair : {0U, 200U, 511U}) {
      EXPECT_LT(strength(coefficient(bench, area, 3, 4, pair)), 0.13);
    }
    EXPECT_GT(strength(coefficient(bench, area, 3, 4, 511)), strength(coefficient(bench, area, 3, 4, 50)));
    EXPECT_GT(strength(coefficient(bench, area, 3, 4, 511)), strength(coefficient(bench, area, 3, 8, 511)));
  }
}

TEST(Vectoring, AWindowShowsTheBytesFromItsAddressOn) {
  Bench bench(kShowtime);
  const uint32_t area = VIRT_ADDR_RX_VEC_COEFFS(0) + 248 * 8;
  const auto window = fromHex(bench.read(0, area, 256));
  const auto next = fromHex(bench.read(0, area + 100, 20));
  EXPECT_EQ(hex(&next[8], 12), hex(&window[108], 12));
  // A read at the end of the area returns zeros from the end on.
  const auto last = fromHex(bench.read(0, VIRT_ADDR_RX_FEQ_MAN(0) - 16, 32));
  EXPECT_EQ(load_le32(&last[0]), load_le32(&last[4]));
  EXPECT_GT(static_cast<int16_t>(load_le16(&last[8])), 4000);
  EXPECT_EQ(hex(&last[24], 8), "00 00 00 00 00 00 00 00");
}

TEST(Vectoring, CoefficientsAreDrawnFromTheSeed) {
  const auto some = [](const char* toml) {
    Bench bench((std::string(toml) + kShowtime));
    return bench.read(0, VIRT_ADDR_RX_VEC_COEFFS(0) + 4 * 512 + 1000, 64).substr(24);
  };
  EXPECT_EQ(some("[board]\nseed = 3\n"), some("[board]\nseed = 3\n"));
  EXPECT_NE(some("[board]\nseed = 3\n"), some("[board]\nseed = 4\n"));
}

TEST(Vectoring, IsTheIdentityWhenSwitchedOff) {
  Bench bench(withShowtime("params = { vectoringEnabled = 0 }"));
  EXPECT_EQ(coefficient(bench, VIRT_ADDR_RX_VEC_COEFFS(0), 5, 5, 100).re, 4096);
  EXPECT_EQ(strength(coefficient(bench, VIRT_ADDR_RX_VEC_COEFFS(0), 5, 6, 100)), 0);
}
