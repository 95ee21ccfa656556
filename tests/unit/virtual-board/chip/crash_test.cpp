// Chips that crash: what their records hold, what the host is told, what the line does.
#include <gtest/gtest.h>

#include "chip/device_information.h"
#include "chip/registers.h"
#include "unit/virtual-board/chip/log_lines.h"
#include "unit/virtual-board/measured/counters.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kImage = VIRT_ADDR_DEVICE_INFO_READ;

constexpr const char* kFramerCrash = R"(
  [[crash]]
  device = 0
  at_s = 10
  processor = "framer"
  assert_id = 0x1A2B
  params = [1, -1, 0xCAFE]
  symbol_counter = 0x01020304
  tbm_symbol = 5
  tbm_phase = 6
  tbm_sample = 7
)";

}  // namespace

TEST(Crash, FillsTheRecordOfItsProcessorAndNoOther) {
  Bench bench(withShowtime(kFramerCrash));
  bench.wait(9.9);
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_INFO, 88), zeros(88));
  bench.wait(0.1);
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_INFO, 88),
            "01 00 00 00 2b 1a 00 00 03 00 00 00 01 00 00 00 ff ff ff ff fe ca 00 00 " + zeros(64));
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_EXTENSION, 32),
            "04 03 02 01 05 00 00 00 06 00 00 00 07 00 00 00 " + zeros(16));
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_CP_ASSERT_INFO, 60), zeros(60));
  EXPECT_EQ(bench.read(1, kImage + DEV_INF_LINK_ASSERT_INFO, 88), zeros(88));
  // The rest of the image is unchanged.
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_TEMPERATURE), 47U);
  EXPECT_NE(bench.word(0, kImage + DEV_INF_GHS_TIMES), 0U);
}

TEST(Crash, EveryProcessorHasItsPlace) {
  const struct {
    const char* processor;
    uint32_t record;
    uint32_t extension;
  } places[] = {{"framer", 40, 168}, {"fdu", 84, 184}, {"cp", 200, 244}};
  for (const auto& place : places) {
    Bench bench(
        withShowtime(std::string("[[crash]]\ndevice = 1\nat_s = 1\nassert_id = 77\nsymbol_counter = 99\n") +
                     "params = [1, 2, 3, 4, 5, 6, 7, 8]\nprocessor = \"" + place.processor + '"'));
    bench.wait(1);
    EXPECT_EQ(bench.word(1, kImage + place.record), 1U) << place.processor;
    EXPECT_EQ(bench.word(1, kImage + place.record + 4), 77U) << place.processor;
    EXPECT_EQ(bench.word(1, kImage + place.record + 8), 8U) << place.processor;
    EXPECT_EQ(bench.word(1, kImage + place.record + 40), 8U) << place.processor;
    EXPECT_EQ(bench.word(1, kImage + place.extension), 99U) << place.processor;
  }
}

TEST(Crash, TakesTheLineDownUntilTheChipIsReset) {
  Bench bench(withShowtime(kFramerCrash));
  bench.wait(10);
  EXPECT_EQ(bench.events(0), "failure 15 6>1");
  EXPECT_EQ(bench.events(1), "");
  EXPECT_EQ(bench.farEnd(0, 0), "ENOTCONN");
  EXPECT_EQ(bench.farEnd(1, 0), "ENOTCONN");
  bench.wait(2);
  EXPECT_EQ(bench.events(1), "failure 6 6>7 7>3");
  EXPECT_EQ(pm(bench, 1).ne.LOS, 1U);
  bench.wait(100);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(bench.lineState(0), 1U);
  EXPECT_EQ(bench.lineState(1), 3U);
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_INFO + 4), 0x1A2BU);
  bench.writeWord(0, VIRT_ADDR_REINIT(0), 1);
  bench.writeWord(0, VIRT_ADDR_LINKS_PROVISION(0), 0);
  bench.writeWord(0, VIRT_ADDR_LINKS_PROVISION(0), 1);
  bench.wait(20);
  EXPECT_EQ(bench.lineState(0), 1U);
  bench.rebootToApp(0);
  bench.wait(1.3);
  EXPECT_EQ(bench.events(0), "boot 2>3");
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_INFO, 88), zeros(88));
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_EXTENSION, 92), zeros(92));
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.lineState(1), 6U);
}

TEST(Crash, IsForgottenAfterALossOfPower) {
  Bench bench(withShowtime(std::string(kFramerCrash) +
                           "[[device_event]]\ndevice = 0\nat_s = 20\nkind = \"power_off\"\nfor_s = 1"));
  bench.wait(40);
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_INFO), 0U);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(Crash, IsClearedByReadAndClear) {
  Bench bench(withShowtime(kFramerCrash));
  bench.wait(10);
  const std::string before = bench.read(0, kImage, DEV_INF_SIZE);
  EXPECT_EQ(bench.read(0, VIRT_ADDR_DEVICE_INFO_READ_AND_CLEAR + DEV_INF_LINK_ASSERT_INFO, 4), "01 00 00 00");
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_INFO), 0U);
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_INFO + 4), 0x1A2BU);
  bench.read(0, VIRT_ADDR_DEVICE_INFO_READ_AND_CLEAR, DEV_INF_SIZE);
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_INFO, 88), zeros(88));
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_EXTENSION, 92), zeros(92));
  EXPECT_EQ(bench.read(0, kImage, 36), before.substr(0, 36 * 3 - 1));
}

TEST(Crash, LogsWhatFailed) {
  Bench bench(withShowtime(std::string(kFramerCrash) +
                           "[[crash]]\ndevice = 0\nat_s = 10\nprocessor = \"cp\"\nassert_id = 3\n"
                           "symbol_counter = 9\n"
                           "[[crash]]\ndevice = 0\nat_s = 10\nprocessor = \"fdu\"\nassert_id = 4\n"
                           "symbol_counter = 10\n"));
  bench.enableLogs(0);
  bench.wait(10);
  const std::vector<std::string> expected = {"FRM assertion %u failed at symbol %u (6699, 16909060)",
                                             "CP assertion %u failed at symbol %u (3, 9)",
                                             "FDU assertion %u failed at symbol %u (4, 10)"};
  EXPECT_EQ(logLines(bench, 0), expected);
}

TEST(Crash, OfSeveralProcessorsTakesTheLineDownOnce) {
  Bench bench(withShowtime(std::string(kFramerCrash) +
                           "[[crash]]\ndevice = 0\nat_s = 10.5\nprocessor = \"cp\"\nassert_id = 3"));
  bench.wait(11);
  EXPECT_EQ(bench.events(0), "failure 15 6>1");
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_CP_ASSERT_INFO + 4), 3U);
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_INFO + 4), 0x1A2BU);
}

TEST(Crash, TheRecordDescribesTheFirstAssertionAndCountsAll) {
  Bench bench(withShowtime(std::string(kFramerCrash) +
                           "[[crash]]\ndevice = 0\nat_s = 11\nprocessor = \"framer\"\nassert_id = 3"));
  bench.wait(11);
  EXPECT_EQ(bench.read(0, kImage + DEV_INF_LINK_ASSERT_INFO, 12), "02 00 00 00 2b 1a 00 00 03 00 00 00");
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_EXTENSION), 0x01020304U);
}

TEST(Crash, WithoutASymbolCounterCountsTheSymbolsSincePowerUp) {
  Bench bench(withShowtime("[[crash]]\ndevice = 0\nat_s = 2.0005\nprocessor = \"fdu\"\nassert_id = 1"));
  bench.wait(3);
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_EXTENSION + 16), 96024U);
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_LINK_ASSERT_EXTENSION + 20), 96024U % 36);
  Bench atOnce("[[crash]]\ndevice = 0\nprocessor = \"fdu\"\nassert_id = 1");
  EXPECT_EQ(atOnce.word(0, kImage + DEV_INF_LINK_ASSERT_EXTENSION + 16), 1U);
}

TEST(Crash, DuringTrainingEndsIt) {
  Bench bench("[[crash]]\ndevice = 1\nat_s = 3\nprocessor = \"fdu\"\nassert_id = 1");
  bench.wait(20);
  EXPECT_EQ(bench.events(1), "3>4 4>5 failure 15 5>1");
  EXPECT_EQ(bench.events(0), "3>4 4>5 5>3");
  EXPECT_EQ(bench.word(0, kImage + DEV_INF_INIT_FAILURE_CAUSE), 4U);  // the next attempt found no far end
}

TEST(Crash, OfAnIdleChipIsNoLineFailure) {
  Bench bench(
      "[[device]]\nline = \"idle\"\n[[crash]]\ndevice = 0\nat_s = 1\nprocessor = \"cp\"\nassert_id = 1");
  bench.wait(2);
  EXPECT_EQ(bench.events(0), "2>1");
}

TEST(Crash, OfTheRemoteModemIsALossOfSignal) {
  Bench bench(
      withShowtime("[board]\ndevices = 1\n"
                   "[[crash]]\ndevice = 1\nat_s = 5\nprocessor = \"cp\"\nassert_id = 1"));
  bench.wait(7);
  EXPECT_EQ(bench.events(0), "failure 6 6>7 7>3");
}

TEST(Crash, HappensOnlyWhileTheApplicationRuns) {
  Bench bench(
      "[[device]]\nboot = \"b1\"\n[[crash]]\ndevice = 0\nat_s = 1\nprocessor = \"cp\"\nassert_id = 1\n"
      "[[crash]]\ndevice = 1\nat_s = 1\nprocessor = \"cp\"\nassert_id = 1");
  bench.writeWord(1, RESET_REG_ADDRESS, RESET_REGISTER_VALUE);
  bench.wait(5);
  for (const int device : {0, 1}) {
    EXPECT_EQ(bench.read(device, kImage + DEV_INF_CP_ASSERT_INFO, 8), "00 00 00 00 00 00 00 00") << device;
    EXPECT_NE(bench.lineState(device), 1U) << device;
  }
}
