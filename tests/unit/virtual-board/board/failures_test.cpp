// Events that a board file plans for the loop and for the modems at its ends.
#include <gtest/gtest.h>

#include "chip/boot_register.h"
#include "chip/device_information.h"
#include "chip/registers.h"
#include "unit/virtual-board/chip/log_lines.h"
#include "unit/virtual-board/measured/counters.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr uint32_t kFailureCause = VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_INIT_FAILURE_CAUSE;

}  // namespace

TEST(LoopEvents, ACutLoopGoesDownAndTrainsAgainAfterTheRepair) {
  Bench bench(withShowtime("[[loop_event]]\nat_s = 20\ncut = true\n[[loop_event]]\nat_s = 50\ncut = false"));
  bench.wait(19);
  EXPECT_EQ(bench.events(0), "");
  bench.wait(2.5);
  EXPECT_EQ(bench.events(0), "failure 6 6>7 7>3");
  EXPECT_EQ(bench.events(1), "failure 6 6>7 7>3");
  EXPECT_EQ(derived(bench, 0).lossOfSignalFailure, 1U);
  EXPECT_EQ(derived(bench, 0).lossOfSignalFailureCounter, 1U);
  EXPECT_EQ(derived(bench, 0).TxNDR, 0U);
  bench.wait(20);
  EXPECT_EQ(derived(bench, 0).continuousLossOfSignalSeconds, 21U);
  EXPECT_EQ(pm(bench, 0).ne.LOSS, 21U);
  EXPECT_EQ(pm(bench, 0).ne.UAS, 20U);
  // The far end cannot send its counts over a cut loop.
  EXPECT_LT(pm(bench, 0).fe.LOSS, 2U);
  bench.wait(30);
  EXPECT_EQ(bench.events(0), "3>4 4>5 5>6");
  EXPECT_EQ(derived(bench, 0).lossOfSignalFailure, 0U);
  EXPECT_EQ(pm(bench, 0).ne.LOSS, 31U);  // 30 s cut, and 1 s of silence before the handshake
  EXPECT_EQ(pm(bench, 0).fe.LOSS, 31U);
  EXPECT_NEAR(pm(bench, 0).ne.UAS, 29 + 4.1, 1.0);
  EXPECT_GE(pm(bench, 0).ne.ES, 1U);
  EXPECT_EQ(pm(bench, 0).fe.UAS, pm(bench, 1).ne.UAS);
}

TEST(LoopEvents, AShortCutCostsOneSeverelyErroredSecond) {
  Bench bench(
      withShowtime("[[loop_event]]\nat_s = 20\ncut = true\n[[loop_event]]\nat_s = 20.5\ncut = false"));
  bench.wait(30);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(pm(bench, 0).ne.SES, 1U);
  EXPECT_EQ(pm(bench, 0).ne.LOS, 0U);
  EXPECT_EQ(pm(bench, 0).ne.UAS, 0U);
  EXPECT_GT(pm(bench, 0).ne.RTXUC, 1000U);
}

TEST(LoopEvents, AWeakBurstIsCorrected) {
  Bench calm(kShowtime);
  Bench bench(withShowtime("[[loop_event]]\nat_s = 10\nerrors = 0.001\nfor_s = 5"));
  calm.wait(20);
  bench.wait(20);
  EXPECT_GT(framer(bench, 1).numOfBadRxDTUs, framer(calm, 1).numOfBadRxDTUs + 100);
  EXPECT_EQ(pm(bench, 1).ne.SES, 0U);
  EXPECT_LE(pm(bench, 1).ne.RTXUC, 2U);
}

// In each second 0.1 units are lost.
TEST(LoopEvents, FractionsOfLostUnitsAddUp) {
  Bench bench(withShowtime("[[loop_event]]\nat_s = 10\nerrors = 0.01\nfor_s = 300"));
  bench.wait(310);
  const double due = 300 * derived(bench, 1).RxNDR * 1e3 / 8 / 889 * std::pow(0.01, 3);
  const double lost = framer(bench, 1).rtxuc;
  EXPECT_GT(due, 20);
  EXPECT_NEAR(lost, due, 2);
  EXPECT_NEAR(pm(bench, 1).ne.ES, due, 2);
}

TEST(LoopEvents, AStrongBurstMakesSeverelyErroredSeconds) {
  Bench bench(withShowtime("[[loop_event]]\nat_s = 10\nerrors = 0.2\nfor_s = 5"));
  bench.wait(20);
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(pm(bench, 0).ne.SES, 5U);
  EXPECT_EQ(pm(bench, 0).ne.FRA, 5U);
  EXPECT_EQ(pm(bench, 0).ne.LORS, 0U);
  EXPECT_LT(derived(bench, 0).EFTR_min, derived(bench, 0).RxETR);
}

TEST(LoopEvents, MoreThanTenSeverelyErroredSecondsEndShowtime) {
  Bench ten(withShowtime("[[loop_event]]\nat_s = 10\nerrors = 0.2\nfor_s = 10"));
  ten.wait(30);
  EXPECT_EQ(ten.events(0), "");
  EXPECT_EQ(pm(ten, 0).ne.SES, 10U);
  Bench more(withShowtime("[[loop_event]]\nat_s = 10\nerrors = 0.2\nfor_s = 12"));
  more.wait(21);
  EXPECT_EQ(more.events(0), "");
  EXPECT_GE(derived(more, 0).continuousSeverlyErroredSeconds, 10U);
  more.wait(9);
  for (const int device : {0, 1}) {
    EXPECT_EQ(more.events(device), "failure 2 6>7 7>3 3>4 4>5 5>6");
    EXPECT_EQ(pm(more, device).ne.FULL_INITS, 2U);
    EXPECT_EQ(pm(more, device).ne.LOS + pm(more, device).ne.LOR + pm(more, device).ne.LOM, 0U);
    EXPECT_EQ(derived(more, device).continuousSeverlyErroredSeconds, 0U);
  }
}

TEST(LoopEvents, ABurstThatStopsTheManagementChannelEndsShowtime) {
  Bench bench(withShowtime("[[loop_event]]\nat_s = 10\nerrors = 0.6\nfor_s = 3"));
  bench.wait(12.4);
  EXPECT_EQ(bench.events(0), "");
  bench.wait(0.2);
  EXPECT_EQ(bench.events(0), "failure 3 6>7");
  bench.wait(10);
  EXPECT_EQ(bench.events(0), "7>3 3>4 4>5 5>6");
  EXPECT_EQ(pm(bench, 0).ne.LOR, 1U);
  EXPECT_GE(pm(bench, 0).ne.LORS, 2U);
  EXPECT_GT(framer(bench, 0).numOfBadRMCs, 1000U);
}

TEST(Initialisation, FailsOnALoopThatIsTooLongAndIsTriedAgain) {
  Bench bench("[loop]\nlength_m = 600");
  bench.wait(5);
  EXPECT_EQ(bench.events(0), "3>4 4>5 failure 7 5>3");
  EXPECT_EQ(bench.word(0, kFailureCause), 2U);
  EXPECT_EQ(bench.word(1, kFailureCause), 2U);
  EXPECT_EQ(pm(bench, 0).ne.FULL_INITS, 1U);
  EXPECT_EQ(pm(bench, 0).ne.FAILEDFULL_INITS, 1U);
  bench.wait(8);
  EXPECT_EQ(bench.events(0), "");
  bench.wait(6);
  EXPECT_EQ(bench.events(0), "3>4 4>5 failure 7 5>3");
  EXPECT_EQ(derived(bench, 1).failedFullInits, 2U);
  EXPECT_EQ(bench.farEnd(0, 0), "ENOTCONN");
}

TEST(Initialisation, FindsNoFarEndOverAVeryLongOrCutLoop) {
  for (const char* loop : {"[loop]\nlength_m = 2000", "[loop]\nnoise_dbm_hz = -60", "[loop]\ncut = true"}) {
    Bench bench(loop);
    bench.wait(5.1);
    EXPECT_EQ(bench.events(0), "");
    EXPECT_EQ(bench.lineState(0), 3U);
    EXPECT_EQ(bench.word(0, kFailureCause), 4U);
    EXPECT_EQ(pm(bench, 0).ne.FAILEDFULL_INITS, 1U);
    bench.wait(10);
    EXPECT_EQ(pm(bench, 0).ne.FAILEDFULL_INITS, 2U);
    EXPECT_EQ(pm(bench, 0).ne.UAS, 15U);
  }
}

TEST(PowerLoss, IsReportedByTheOtherEndAndTheChipStartsAfresh) {
  Bench bench(withShowtime("[[device_event]]\ndevice = 1\nat_s = 30\nkind = \"power_off\"\nfor_s = 10"));
  bench.writeWord(1, 0xE8000000, 7);
  bench.wait(30.1);
  EXPECT_EQ(bench.events(0), "failure 4 6>7");
  EXPECT_EQ(bench.read(1, SBR_REG_ADDRESS, 4), "EIO");
  EXPECT_EQ(bench.writeWord(1, RESET_REG_ADDRESS, RESET_REGISTER_VALUE), "EIO");
  bench.wait(10);
  EXPECT_EQ(bench.lineState(0), 3U);
  EXPECT_EQ(bench.word(0, kFailureCause), 4U);
  EXPECT_EQ(bench.read(1, SBR_REG_ADDRESS, 4), "EIO");
  bench.wait(10);
  EXPECT_EQ(bench.events(1), "boot 2>3 3>4 4>5 5>6");
  EXPECT_EQ(bench.sbr(1), 0x01800000U);
  EXPECT_EQ(bench.word(1, 0xE8000000), 0U);
  EXPECT_EQ(pm(bench, 0).ne.LPR, 1U);
  EXPECT_EQ(fdu(bench, 0).lossOfPower, 1U);
  EXPECT_EQ(pm(bench, 0).ne.LOS, 0U);
  EXPECT_EQ(pm(bench, 1).ne.LPR, 0U);
  EXPECT_EQ(pm(bench, 1).ne.FULL_INITS, 1U);
}

TEST(LoopAndDeviceEvents, AreCountedAtBothEnds) {
  Bench bench(
      withShowtime("[[loop_event]]\nat_s = 10\nerrors = 0.2\nfor_s = 5\n"
                   "[[loop_event]]\nat_s = 30\ncut = true\n[[loop_event]]\nat_s = 40\ncut = false\n"
                   "[[device_event]]\ndevice = 1\nat_s = 80\nkind = \"power_off\"\nfor_s = 10"));
  bench.wait(70);
  for (const int device : {0, 1}) {
    const auto near = pm(bench, device).ne;
    const auto other = pm(bench, 1 - device).fe;
    EXPECT_GE(near.SES, 6U) << device;  // five of the burst, and the second of the cut
    EXPECT_GE(near.ES, near.SES) << device;
    EXPECT_EQ(near.LOS, 1U) << device;
    EXPECT_EQ(near.LOSS, 11U) << device;
    EXPECT_NEAR(near.UAS, 9 + 4.6, 1.5) << device;
    EXPECT_EQ(near.FULL_INITS, 3U) << device;  // two that led to showtime, one without a far end
    EXPECT_EQ(near.FAILEDFULL_INITS, 1U) << device;
    EXPECT_EQ(near.LPR, 0U) << device;
    EXPECT_EQ(other.ES, near.ES) << device;
    EXPECT_EQ(other.SES, near.SES) << device;
    EXPECT_EQ(other.LOS, near.LOS) << device;
    EXPECT_EQ(other.LOSS, near.LOSS) << device;
    EXPECT_EQ(other.UAS, near.UAS) << device;
  }
  bench.wait(40);
  EXPECT_EQ(pm(bench, 0).ne.LPR, 1U);
  EXPECT_EQ(pm(bench, 1).fe.LPR, 0U);  // it counts from its own start
  EXPECT_EQ(pm(bench, 0).ne.LOS, 1U);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(PowerLoss, OfTheRemoteModemWithoutReturn) {
  Bench bench(
      "[board]\ndevices = 1\n[[device]]\nline = \"showtime\"\n"
      "[[device_event]]\ndevice = 1\nat_s = 3\nkind = \"power_off\"");
  bench.wait(100);
  EXPECT_EQ(bench.events(0), "failure 4 6>7 7>3");
  EXPECT_EQ(bench.farEnd(0, 0), "ENOTCONN");
}

TEST(PowerLoss, MayComeDuringTrainingAndDuringABoot) {
  Bench bench(
      "[[device_event]]\ndevice = 1\nat_s = 2\nkind = \"power_off\"\nfor_s = 1\n"
      "[[device_event]]\ndevice = 1\nat_s = 3.5\nkind = \"power_off\"\nfor_s = 1");
  bench.wait(2.1);
  EXPECT_EQ(bench.word(0, kFailureCause), 3U);
  bench.wait(2.7);
  EXPECT_EQ(bench.read(1, SBR_REG_ADDRESS, 4), "EIO");
  bench.wait(10);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.events(1), "boot 2>3 3>4 4>5 5>6");
}

TEST(Hang, TheChipDoesNotAnswerAndItsLineStaysUp) {
  Bench bench(
      withShowtime("[[device_event]]\ndevice = 0\nat_s = 5\nkind = \"hang\"\nfor_s = 30\n"
                   "[[event]]\ndevice = 0\nat_s = 10\ntype = 3"));
  bench.wait(12);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "ETIMEDOUT");
  EXPECT_EQ(bench.writeWord(0, RESET_REG_ADDRESS, RESET_REGISTER_VALUE), "ETIMEDOUT");
  EXPECT_EQ(bench.erase(0, FLASHERASE_4KB, 0), "ETIMEDOUT");
  EXPECT_EQ(bench.readFlash(0, 0, 4), "ETIMEDOUT");
  EXPECT_EQ(bench.activate(0, ROM_DEFAULT_ENTRY_POINT), "ETIMEDOUT");
  EXPECT_EQ(bench.enableLogs(0), "ETIMEDOUT");
  EXPECT_EQ(bench.farEnd(0, 0), "ETIMEDOUT");
  EXPECT_EQ(bench.farEnd(1, 0), "ETIMEDOUT");
  EXPECT_FALSE(bench.readable(0));
  EXPECT_EQ(bench.events(0), "");
  EXPECT_EQ(bench.lineState(1), 6U);
  bench.wait(24);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_TRUE(bench.readable(0));
  EXPECT_EQ(bench.events(0), "type 3");
  EXPECT_EQ(framer(bench, 0).numOfTxFrames, 48000U);
}

TEST(Hang, EndsWithALossOfPower) {
  Bench bench(
      withShowtime("[[device_event]]\ndevice = 0\nat_s = 1\nkind = \"hang\"\n"
                   "[[device_event]]\ndevice = 0\nat_s = 50\nkind = \"power_off\"\nfor_s = 1"));
  bench.wait(49);
  EXPECT_EQ(bench.read(0, SBR_REG_ADDRESS, 4), "ETIMEDOUT");
  bench.wait(10);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(LineLogs, AllCoresLogATraining) {
  Bench bench;
  bench.enableLogs(0);
  bench.wait(kTrainingTime_s);
  const auto cp = derived(bench, 0);
  EXPECT_EQ(logLines(bench, 0),
            (std::vector<std::string>{
                "CP link %u: state %u to %u (0, 3, 4)", "CP link %u: state %u to %u (0, 4, 5)",
                "FDU training on tones %u to %u (43, 1971)", "CP link %u: state %u to %u (0, 5, 6)",
                "FRM showtime: sends %u kbit/s, receives %u kbit/s (" + std::to_string(cp.TxNDR) + ", " +
                    std::to_string(cp.RxNDR) + ')'}));
}

TEST(LineLogs, AreNotKeptForAHostThatSwitchesThemOnLater) {
  Bench bench;
  bench.wait(kTrainingTime_s);
  bench.enableLogs(0);
  EXPECT_EQ(bench.logs(0), "");
}

TEST(LineLogs, ShowFailuresAndBoots) {
  Bench bench(kShowtime);
  bench.enableLogs(0);
  bench.enableLogs(1);
  bench.rebootToApp(1);
  bench.wait(1.3);
  EXPECT_EQ(logLines(bench, 0), (std::vector<std::string>{"FRM line failure %u on link %u (6, 0)",
                                                          "CP link %u: state %u to %u (0, 6, 7)",
                                                          "CP link %u: state %u to %u (0, 7, 3)"}));
  EXPECT_EQ(logLines(bench, 1), (std::vector<std::string>{"CP firmware %u.%u.%u.%u runs (2, 9, 4, 106)",
                                                          "CP link %u: state %u to %u (0, 2, 3)"}));
}
