#include <gtest/gtest.h>

#include "chip/log_records.h"
#include "unit/virtual-board/bench.h"
#include "virtual-board/chip/pending_records.h"

using namespace gfast;
using namespace gfast::board;

TEST(Events, ABoardFilesEventIsRaisedAtItsTime) {
  Bench bench(R"(
    [[device]]
    line = "showtime"
    [[event]]
    device = 0
    at_s = 1.5
    type = 2
    params = [6, 0]
  )");
  bench.wait(1.4);
  EXPECT_FALSE(bench.readable(0));
  EXPECT_EQ(bench.event(0), "");
  bench.wait(0.2);
  EXPECT_TRUE(bench.readable(0));
  EXPECT_FALSE(bench.readable(1));
  EXPECT_EQ(bench.event(0), "02 00 00 00 06 00 00 00 00 00 00 00");
  EXPECT_EQ(bench.event(0), "");
  EXPECT_FALSE(bench.readable(0));
}

TEST(Events, CarryTheChipsTimeInMicroseconds) {
  Bench bench("[[device]]\nline = \"showtime\"\n[[event]]\ndevice = 0\nat_s = 6000.25\ntype = 3");
  bench.wait(6001);
  char buffer[64];
  bench.request = {};
  bench.request.req_u.logalm_read = {buffer, sizeof buffer, 0, 0};
  ASSERT_EQ(bench.send(0, DFEIOCALMRD), "ok");
  EXPECT_EQ(hex(buffer, 8), "90 8c a4 65 01 00 00 00");  // 6000250000
}

TEST(Events, AnyTypeAndNegativeParametersAreDelivered) {
  Bench bench(
      "[[device]]\nline = \"showtime\"\n[[event]]\ndevice = 1\ntype = 4294967295\nparams = [-1, 2, 3]");
  bench.wait(0);
  EXPECT_EQ(bench.event(1), "ff ff ff ff ff ff ff ff 02 00 00 00 03 00 00 00");
}

TEST(Events, TheLargestRecordFitsTheHostsBuffer) {
  std::string params;
  for (int i = 0; i < 253; i++) {
    params += i == 0 ? "7" : ", 7";
  }
  Bench bench(("[[event]]\ndevice = 0\ntype = 3\nparams = [" + params + ']'));
  bench.wait(0);
  EXPECT_EQ(bench.event(0).size(), (1024U - 8) * 3 - 1);
}

TEST(Events, ABufferTooSmallKeepsTheEvent) {
  Bench bench("[[device]]\nline = \"showtime\"\n[[event]]\ndevice = 0\ntype = 3");
  bench.wait(0);
  EXPECT_EQ(bench.event(0, 19), "EMSGSIZE");
  EXPECT_TRUE(bench.readable(0));
  EXPECT_EQ(bench.event(0, 20), "03 00 00 00 00 00 00 00 00 00 00 00");
}

TEST(Events, TenThousandAreDeliveredInOrder) {
  BoardConfig config;
  for (uint32_t i = 0; i < 10000; i++) {
    config.events.push_back({0, 0.1, 100, {i}});
  }
  Bench bench(config);
  bench.wait(0.2);
  for (uint32_t i = 0; i < 10000; i++) {
    ASSERT_EQ(load_le32(fromHex(bench.event(0)).data() + 4), i);
  }
  EXPECT_EQ(bench.event(0), "");
}

TEST(Events, TheOldestAreDroppedWhenNobodyReads) {
  PendingRecords records;
  for (uint32_t i = 0; i < PendingRecords::kMaxEvents + 5; i++) {
    records.raiseEvent(0, 3, std::span(&i, 1));
  }
  uint8_t out[64];
  size_t length = 0;
  ASSERT_TRUE(records.takeEvent(out, length));
  EXPECT_EQ(load_le32(out + GFAST_EVENT_PARAMS), 5U);
}

TEST(Events, EveryDescriptorOfAChipShowsThem) {
  Bench bench("[[device]]\nline = \"showtime\"\n[[event]]\ndevice = 0\ntype = 3");
  bench.wait(0);
  const int first = bench.descriptors[0];
  bench.descriptors[0] = bench.board.open(0);
  EXPECT_NE(bench.descriptors[0], first);
  EXPECT_TRUE(bench.readable(0));
  bench.events(0);
  EXPECT_FALSE(bench.readable(0));
  bench.descriptors[0] = first;
  EXPECT_FALSE(bench.readable(0));
}

TEST(Logs, ReachTheHostAfterItSwitchesThemOn) {
  Bench bench(R"(
    [[device]]
    line = "showtime"
    [[log]]
    device = 0
    at_s = 1.0
    core = "FRM"
    text = "ab"
    params = [7]
  )");
  bench.wait(2);
  EXPECT_FALSE(bench.readable(0));
  EXPECT_EQ(bench.logs(0), "");
  EXPECT_EQ(bench.enableLogs(0), "ok");
  EXPECT_TRUE(bench.readable(0));
  EXPECT_EQ(bench.logs(0), "00 01 01 04 61 00 62 00 07 00 00 00");
  EXPECT_EQ(bench.logs(0), "");
  EXPECT_FALSE(bench.readable(0));
}

TEST(Logs, HaveOneOrTwoBytesACharacterDependingOnTheCore) {
  Bench bench(R"(
    [[log]]
    device = 0
    core = "FDU"
    line = 3
    text = "abc"
    params = [-1]
    [[log]]
    device = 0
    core = "CP"
    text = "x"
  )");
  bench.enableLogs(0);
  bench.wait(0);
  EXPECT_EQ(bench.logs(0), "03 00 01 03 61 62 63 ff ff ff ff 00 00 02 00 02 78 00");
}

TEST(Logs, ABufferTakesWholeRecordsOnly) {
  Bench bench(R"(
    [[log]]
    device = 0
    core = "FDU"
    text = "ab"
    [[log]]
    device = 0
    core = "FDU"
    text = "cd"
  )");
  bench.enableLogs(0);
  bench.wait(0);
  EXPECT_EQ(bench.logs(0, 5), "EMSGSIZE");
  EXPECT_EQ(bench.logs(0, 11), "00 00 00 02 61 62");
  EXPECT_EQ(bench.logs(0, 11), "00 00 00 02 63 64");
  EXPECT_EQ(bench.logs(0, 11), "");
}

TEST(Logs, TheOldestAreDroppedWhenNobodyReads) {
  PendingRecords records;
  records.raiseLog(FDU_CORE, 0, "first", {});
  for (size_t i = 0; i < PendingRecords::kMaxLogs; i++) {
    records.raiseLog(FDU_CORE, 1, "", {});
  }
  records.enableLogs();
  uint8_t out[4];
  size_t length = 0;
  ASSERT_TRUE(records.takeLogs(out, length));
  EXPECT_EQ(hex(out, length), "01 00 00 00");
}

TEST(Logs, AConfigurationHasSixteenBytes) {
  Bench bench;
  char body[32] = {};
  bench.request = {};
  bench.request.req_u.logcfg = {body, 15};
  EXPECT_EQ(bench.send(0, DFEIOCLOGCFG), "EINVAL");
  bench.request.req_u.logcfg = {nullptr, 16};
  EXPECT_EQ(bench.send(0, DFEIOCLOGCFG), "EFAULT");
}
