// The inter-chip links: settings and error counters of their lane units.
#include <gtest/gtest.h>

#include "unit/virtual-board/bench.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kControl[] = {0xA00B0140, 0xA80B0140};
constexpr uint32_t kData[] = {0xA00B0144, 0xA80B0144};
constexpr size_t kUnits[] = {4, 3};

constexpr uint32_t command(uint32_t unit, uint32_t reg) {
  return unit << 24 | reg << 16;
}

// The word in memory, big-endian.
std::string stored(uint32_t value) {
  uint8_t bytes[4];
  store_be32(bytes, value);
  return hex(bytes, 4);
}

void put(Bench& bench, int device, size_t block, uint32_t unit, uint32_t reg, uint32_t value) {
  EXPECT_EQ(bench.write(device, kControl[block], stored(command(unit, reg))), "ok");
  EXPECT_EQ(bench.write(device, kData[block], stored(value)), "ok");
  EXPECT_EQ(bench.write(device, kControl[block], stored(3)), "ok");
}

uint32_t get(Bench& bench, int device, size_t block, uint32_t unit, uint32_t reg) {
  bench.write(device, kControl[block], stored(command(unit, reg)));
  bench.write(device, kControl[block], stored(1));
  return load_be32(fromHex(bench.read(device, kData[block], 4)).data());
}

void start(Bench& bench, int device) {
  for (size_t block = 0; block < 2; block++) {
    for (uint32_t unit = 0x10; unit < 0x10 + kUnits[block]; unit++) {
      for (const uint32_t value : {0U, 4U}) {
        put(bench, device, block, unit, 0x15, value);
      }
      for (const uint32_t value : {0U, 4U, 0x14U}) {
        put(bench, device, block, unit, 0x16, value);
      }
    }
  }
}

// The counters of all seven lanes.
std::vector<uint32_t> errors(Bench& bench, int device) {
  std::vector<uint32_t> counts;
  for (size_t block = 0; block < 2; block++) {
    for (uint32_t unit = 0x10; unit < 0x10 + kUnits[block]; unit++) {
      counts.push_back(get(bench, device, block, unit, 0x17));
    }
  }
  return counts;
}

using Counts = std::vector<uint32_t>;

}  // namespace

TEST(Extcom, LinksHaveNoErrorsByDefault) {
  Bench bench;
  EXPECT_EQ(errors(bench, 0), Counts(7));
  start(bench, 0);
  start(bench, 1);
  bench.wait(3600);
  EXPECT_EQ(errors(bench, 0), Counts(7));
  EXPECT_EQ(errors(bench, 1), Counts(7));
}

TEST(Extcom, ErrorsAreCountedFromTheStartOfTheCheck) {
  Bench bench(
      "[[extcom]]\ndevice = 0\nlane = 1\nerrors_per_s = 10\n"
      "[[extcom]]\ndevice = 0\nlane = 6\nerrors_per_s = 0.25\n"
      "[[extcom]]\ndevice = 1\nerrors_per_s = 1");
  bench.wait(100);
  EXPECT_EQ(errors(bench, 0), Counts(7));  // the check has not started
  start(bench, 0);
  EXPECT_EQ(errors(bench, 0), Counts(7));
  bench.wait(10);
  EXPECT_EQ(errors(bench, 0), (Counts{0, 100, 0, 0, 0, 0, 2}));
  EXPECT_EQ(errors(bench, 1), Counts(7));
  start(bench, 1);
  bench.wait(10);
  EXPECT_EQ(errors(bench, 0), (Counts{0, 200, 0, 0, 0, 0, 5}));
  EXPECT_EQ(errors(bench, 1), Counts(7, 10));
}

TEST(Extcom, ACheckCanBeStartedAgain) {
  Bench bench("[[extcom]]\ndevice = 0\nerrors_per_s = 1");
  start(bench, 0);
  bench.wait(10);
  put(bench, 0, 0, 0x10, 0x16, 0x14);  // no change: goes on counting
  EXPECT_EQ(errors(bench, 0), Counts(7, 10));
  start(bench, 0);
  bench.wait(3);
  EXPECT_EQ(errors(bench, 0), Counts(7, 3));
  put(bench, 0, 0, 0x10, 0x16, 0);
  EXPECT_EQ(errors(bench, 0), (Counts{0, 3, 3, 3, 3, 3, 3}));
}

TEST(Extcom, ACounterStaysAtItsHighestValue) {
  Bench bench("[[extcom]]\ndevice = 0\nerrors_per_s = 1e9");
  start(bench, 0);
  bench.wait(1e6);
  EXPECT_EQ(errors(bench, 0), Counts(7, 0x7FFFFFFF));
}

TEST(Extcom, WordsAreBigEndian) {
  Bench bench;
  bench.write(0, kData[0], "00 00 00 14");
  bench.write(0, kControl[0], "12 16 00 00");
  bench.write(0, kControl[0], "00 00 00 03");
  bench.write(0, kData[0], "00 00 00 00");
  EXPECT_EQ(bench.read(0, kControl[0], 8), "00 00 00 03 00 00 00 00");
  bench.write(0, kControl[0], "00 00 00 01");
  EXPECT_EQ(bench.read(0, kControl[0], 8), "00 00 00 01 00 00 00 14");
}

TEST(Extcom, RegistersKeepWhatIsWritten) {
  Bench bench;
  put(bench, 0, 0, 0x13, 0x15, 4);
  put(bench, 0, 1, 0x12, 0x16, 0xABCD);
  EXPECT_EQ(get(bench, 0, 0, 0x13, 0x15), 4U);
  EXPECT_EQ(get(bench, 0, 1, 0x12, 0x16), 0xABCDU);
  EXPECT_EQ(get(bench, 0, 0, 0x12, 0x15), 0U);
  EXPECT_EQ(get(bench, 0, 1, 0x11, 0x16), 0U);
  EXPECT_EQ(get(bench, 1, 0, 0x13, 0x15), 0U);
  put(bench, 0, 0, 0x13, 0x17, 99);  // a counter cannot be written
  EXPECT_EQ(get(bench, 0, 0, 0x13, 0x17), 0U);
}

TEST(Extcom, UnknownCommandsDoNothing) {
  Bench bench;
  put(bench, 0, 0, 0x10, 0x15, 4);
  const struct {
    size_t block;
    uint32_t word;
  } unknown[] = {{0, command(0x0F, 0x15)},
                 {0, command(0x14, 0x15)},
                 {1, command(0x13, 0x15)},
                 {0, command(0x10, 0x14)},
                 {0, command(0x10, 0x18)},
                 {0, command(0x10, 0x15) | 1},
                 {0, 0},
                 {0, 2},
                 {0, 0xFFFFFFFF}};
  for (const auto& each : unknown) {
    bench.write(0, kControl[each.block], stored(each.word));
    bench.write(0, kData[each.block], stored(0x55));
    bench.write(0, kControl[each.block], stored(3));
    bench.write(0, kControl[each.block], stored(1));
    EXPECT_EQ(bench.read(0, kData[each.block], 4), stored(0x55)) << each.word;
  }
  EXPECT_EQ(get(bench, 0, 0, 0x10, 0x15), 4U);
  EXPECT_EQ(errors(bench, 0), Counts(7));
}

TEST(Extcom, AResetEndsTheCheck) {
  Bench bench("[[extcom]]\ndevice = 0\nerrors_per_s = 1");
  start(bench, 0);
  bench.wait(10);
  bench.rebootToApp(0);
  bench.wait(2);
  EXPECT_EQ(get(bench, 0, 0, 0x10, 0x15), 0U);
  EXPECT_EQ(errors(bench, 0), Counts(7));
  start(bench, 0);
  bench.wait(10);
  EXPECT_EQ(errors(bench, 0), Counts(7, 10));
}
