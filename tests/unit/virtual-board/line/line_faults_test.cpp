// Faults of the line, and what the chips make of them.
#include <gtest/gtest.h>

#include "chip/device_information.h"
#include "unit/virtual-board/measured/tone_memory.h"

using namespace gfast;
using namespace gfast::board;

namespace {

constexpr double kVelocity = 0.6976 * 3e8;  // of CAD55, m/s

// A line in showtime with one fault.
std::string faulty(const std::string& fault, const std::string& loop = "length_m = 100") {
  return "[loop]\n" + loop + "\n[[line_fault]]\n" + fault + "\n" + kShowtime;
}

uint32_t toneAt(double mhz) {
  return static_cast<uint32_t>(std::lround(mhz / kSubcarrierSpacing_mhz));
}

double rmsNoise(const Measured& tones, double mhz) {
  return tones.noise_dbm_hz[toneAt(mhz)];
}

uint32_t net(Bench& bench) {
  return derived(bench, 0).TxNDR + derived(bench, 0).RxNDR;
}

}  // namespace

TEST(LineFaults, ATapNotchesAQuarterWavelength) {
  Bench bench(faulty("kind = \"tap\"\nat_m = 40\nlength_m = 8\nat_s = 10"));
  const Measured before = measured(bench, 1);
  bench.wait(10.01);
  const Measured after = measured(bench, 1);
  const auto lost = [&](uint32_t tone) { return before.received_dbm_hz[tone] - after.received_dbm_hz[tone]; };
  uint32_t deepest = 60;
  for (uint32_t tone = 60; tone < 250; tone++) {
    deepest = lost(tone) > lost(deepest) ? tone : deepest;
  }
  const double quarter_mhz = kVelocity / (4 * 8) / 1e6;
  EXPECT_NEAR(deepest * kSubcarrierSpacing_mhz, quarter_mhz, 0.02 * quarter_mhz);
  EXPECT_GT(lost(deepest), 15);
  // A half wavelength does not see it.
  EXPECT_LT(lost(toneAt(2 * quarter_mhz)), 2);
}

TEST(LineFaults, AJointInSeriesWeakensAsTwoEndsOf100OhmSeeIt) {
  Bench good("[loop]\nlength_m = 0\n" + std::string(kShowtime));
  Bench bad(faulty("kind = \"joint\"\nat_m = 0\nohm = 200", "length_m = 0"));
  const Measured before = measured(good, 1);
  const Measured after = measured(bad, 1);
  for (const uint32_t tone : {100U, 1000U, 1900U}) {
    EXPECT_NEAR(before.received_dbm_hz[tone] - after.received_dbm_hz[tone], 20 * std::log10(2), 0.02);
  }
}

TEST(LineFaults, ACapacitanceBesideAJointLetsHighFrequenciesPass) {
  Bench bench(faulty("kind = \"joint\"\nat_m = 50\nohm = 2000\nnf = 0.1"));
  Bench good(kShowtime);
  const Measured after = measured(bench, 1);
  const Measured before = measured(good, 1);
  EXPECT_GT(before.received_dbm_hz[50] - after.received_dbm_hz[50], 8);
  EXPECT_LT(before.received_dbm_hz[1800] - after.received_dbm_hz[1800], 0.5);
}

TEST(LineFaults, AnotherCableInTheMiddleLosesItsShare) {
  const auto level = [](const std::string& toml) {
    Bench bench(toml);
    return measured(bench, 1).received_dbm_hz[1500];
  };
  const double own = level(kShowtime);
  const double other = level("[loop]\ncable = \"CAT5\"\n" + std::string(kShowtime));
  const double mixed = level(faulty("kind = \"section\"\nat_m = 20\nlength_m = 50\ncable = \"CAT5\""));
  EXPECT_NEAR(mixed, (own + other) / 2, 0.3);
}

TEST(LineFaults, WaterWeakensMoreAndMoreAndLeavesAsSlowly) {
  Bench bench(faulty("kind = \"water\"\nat_m = 20\nlength_m = 30\ngrows_s = 300\nat_s = 10\nfor_s = 1000"));
  const auto level = [&bench] { return measured(bench, 1).received_dbm_hz[1500]; };
  const double dry = level();
  std::vector<double> wetter{dry};
  for (int minute = 0; minute < 5; minute++) {
    bench.wait(minute == 0 ? 70.01 : 60);
    wetter.push_back(level());
    EXPECT_LT(wetter.back(), wetter[wetter.size() - 2] - 0.2) << minute;
  }
  bench.wait(1000 - 300);
  for (int minute = 0; minute < 5; minute++) {
    EXPECT_NEAR(level(), wetter.back(), 0.01) << minute;
    wetter.pop_back();
    bench.wait(60);
  }
  EXPECT_NEAR(level(), dry, 0.01);
}

// Rain of two minutes every three: one minute's water is left each time.
TEST(LineFaults, WaterThatHasNoTimeToLeaveAddsUp) {
  Bench rain(faulty(
      "kind = \"water\"\nat_m = 20\nlength_m = 30\ngrows_s = 300\nat_s = 10\nfor_s = 120\nevery_s = 180"));
  Bench flood(faulty("kind = \"water\"\nat_m = 20\nlength_m = 30\ngrows_s = 300\nat_s = 10"));
  const auto level = [](Bench& bench) { return measured(bench, 1).received_dbm_hz[1500]; };
  rain.wait(10.01);
  flood.wait(10.01);
  for (int i = 0; i < 4; i++) {
    EXPECT_NEAR(level(rain), level(flood), 0.01) << i;
    rain.wait(180);
    flood.wait(60);
  }
  const double fourMinutes = level(flood);
  EXPECT_NEAR(level(rain), fourMinutes, 0.01);
  // From now on each rain wets the cable through.
  rain.wait(90);
  flood.wait(60);
  EXPECT_NEAR(level(rain), level(flood), 0.01);
  rain.wait(90);
  EXPECT_NEAR(level(rain), fourMinutes, 0.01);
}

TEST(LineFaults, NoiseIsHeardAtItsPlaceAndWeakerAtTheOtherEnd) {
  Bench bench(
      faulty("kind = \"noise\"\nat_m = 100\nshape = [ { mhz = 20, dbm_hz = -110 }, "
             "{ mhz = 40, dbm_hz = -100 } ]"));
  const Measured near = measured(bench, 1);
  const Measured far = measured(bench, 0);
  // The pair's own impedance is near 100 ohm.
  EXPECT_NEAR(rmsNoise(near, 30), -105, 0.5);
  EXPECT_NEAR(rmsNoise(near, 39), -100.5, 0.5);
  EXPECT_NEAR(rmsNoise(near, 41), -139.6, 0.1);
  const double loss = 12.45;  // of 100 m of CAD55 at 30 MHz
  EXPECT_NEAR(rmsNoise(far, 30), -105 - loss, 0.7);
}

TEST(LineFaults, ARadioStationComesInWhereTheWiresDiffer) {
  const std::string radio =
      "kind = \"radio\"\nat_m = 50\nfrequency_mhz = 9.6\nwidth_khz = 200\nlevel_dbm_hz = -70";
  Bench good(faulty(radio));
  Bench bad(faulty(radio + "\n[[line_fault]]\nkind = \"imbalance\"\nat_m = 100\nbalance_db = 25"));
  EXPECT_LT(rmsNoise(measured(good, 1), 9.6), -128);
  const Measured heard = measured(bad, 1);
  EXPECT_NEAR(rmsNoise(heard, 9.6), -95, 0.5);
  // Ten subcarriers away, the main lobe's neighbours are 30 dB weaker.
  EXPECT_NEAR(rmsNoise(heard, 9.6 + 0.1 + 10.5 * kSubcarrierSpacing_mhz), -95 - 20 * std::log10(31.4), 1);
  EXPECT_NEAR(rmsNoise(heard, 30), -139.5, 0.5);
}

TEST(LineFaults, AJointInOneWireLetsTheStationIn) {
  const std::string radio =
      "kind = \"radio\"\nat_m = 0\nfrequency_mhz = 9.6\nwidth_khz = 200\nlevel_dbm_hz = -60\n"
      "[[line_fault]]\nkind = \"joint\"\nat_m = 100\nohm = 100\n";
  Bench both(faulty(radio));
  Bench one(faulty(radio + "wires = 1"));
  EXPECT_GT(rmsNoise(measured(one, 1), 9.6), rmsNoise(measured(both, 1), 9.6) + 30);
}

TEST(LineFaults, NeighboursOfAnotherSystemAreHeardAtBothEnds) {
  Bench bench(
      faulty("kind = \"crosstalk\"\nat_m = 0\nlength_m = 100\nlines = 4\nlevel_dbm_hz = -60\n"
             "to_mhz = 17.664"));
  for (const int device : {0, 1}) {
    const Measured heard = measured(bench, device);
    EXPECT_GT(rmsNoise(heard, 10), -115) << device;
    EXPECT_LT(rmsNoise(heard, 18), -138) << device;
    // The near end grows with 15 dB a decade.
    EXPECT_NEAR(rmsNoise(heard, 16) - rmsNoise(heard, 8), 15 * std::log10(2), 1.5) << device;
  }
}

TEST(LineFaults, VectoringCancelsTheOwnGroup) {
  const std::string group =
      "kind = \"crosstalk\"\nat_m = 0\nlength_m = 100\nlines = 4\nlevel_dbm_hz = -76\nvectored = true\n";
  Bench with(faulty(group));
  Bench without("[[line_fault]]\n" + group + kShowtime + "params = { vectoringEnabled = 0 }");
  EXPECT_LT(rmsNoise(measured(with, 1), 60), -139);
  EXPECT_GT(rmsNoise(measured(without, 1), 60), -125);
  EXPECT_LT(net(without), net(with) * 3 / 4);
}

TEST(LineFaults, ASupplyIsHeardAtItsHarmonics) {
  Bench bench(faulty("kind = \"supply\"\nat_m = 100\nlevel_dbm_hz = -70\nswitching_khz = 1000"));
  const Measured heard = measured(bench, 1);
  EXPECT_NEAR(rmsNoise(heard, 10) - rmsNoise(heard, 20), 20 * std::log10(2), 0.3);
  EXPECT_GT(rmsNoise(heard, 10), rmsNoise(heard, 10.5) + 15);
}

TEST(LineFaults, ComeAndGoAgainAndAgain) {
  Bench bench(
      faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -130\nat_s = 20\nfor_s = 5\nevery_s = 30"));
  for (int i = 0; i < 3; i++) {
    EXPECT_LT(rmsNoise(measured(bench, 1), 20), -139);
    bench.wait(i == 0 ? 20.01 : 25);
    EXPECT_GT(rmsNoise(measured(bench, 1), 20), -131);
    bench.wait(5);
  }
}

// ---- What the chips do ----

TEST(LineReacts, TheMarginFollowsTheNoiseAtOnce) {
  Bench bench(faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -137\nat_s = 10"));
  const uint32_t before = derived(bench, 1).RxNDR;
  bench.wait(10.01);
  EXPECT_LT(framer(bench, 1).snrMargin, 40U);
  EXPECT_EQ(derived(bench, 1).RxNDR, before);
  EXPECT_EQ(framer(bench, 1).numOfBadRxDTUs > 100, false);
  bench.wait(2);
  EXPECT_GE(framer(bench, 1).snrMargin, 50U);
  EXPECT_LT(derived(bench, 1).RxNDR, before);
  EXPECT_EQ(pm(bench, 1).ne.SRA, 1U);
  EXPECT_EQ(pm(bench, 0).fe.SRA, 1U);
  EXPECT_EQ(pm(bench, 0).ne.SRA, 0U);  // upstream hears it far weaker
}

TEST(LineReacts, BitsThatARadioStationTakesAreMoved) {
  Bench bench(
      faulty("kind = \"noise\"\nat_m = 20\nat_s = 10\nshape = [ { mhz = 9.5, dbm_hz = -100 }, "
             "{ mhz = 9.7, dbm_hz = -100 } ]",
             "length_m = 20"));
  const auto before = framer(bench, 1);
  bench.wait(13);
  const auto after = framer(bench, 1);
  EXPECT_GE(after.snrMargin, 50U);
  EXPECT_TRUE(after.bitswapRxExngCnt > before.bitswapRxExngCnt || after.fraRxExngCnt > before.fraRxExngCnt);
  EXPECT_LT(bitsReceived(bench, 1)[toneAt(9.6)], 11U);
}

TEST(LineReacts, MuchNoiseMakesErrorsAndAFastAdaptation) {
  Bench bench(faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -120\nat_s = 10"));
  bench.wait(10.9);
  EXPECT_LT(static_cast<int32_t>(framer(bench, 1).snrMargin), 0);
  EXPECT_GT(framer(bench, 1).rtxuc, 1000U);
  bench.wait(2);
  EXPECT_EQ(pm(bench, 1).ne.FRA, 1U);
  EXPECT_GE(pm(bench, 1).ne.SES, 1U);
  const uint32_t lost = framer(bench, 1).rtxuc;
  bench.wait(60);
  EXPECT_LE(framer(bench, 1).rtxuc, lost + 1);
  EXPECT_EQ(bench.lineState(0), 6U);
  EXPECT_EQ(bench.events(1), "");
}

TEST(LineReacts, TheRateRisesAgainWhenTheNoiseHasGone) {
  Bench bench(faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -125\nat_s = 10\nfor_s = 20"));
  const uint32_t usual = net(bench);
  bench.wait(20);
  const uint32_t low = net(bench);
  EXPECT_LT(low, usual * 9 / 10);
  bench.wait(15);
  EXPECT_EQ(net(bench), low);
  bench.wait(10);
  EXPECT_GT(net(bench), usual * 9 / 10);
  EXPECT_GE(framer(bench, 1).snrMargin, 60U);
}

TEST(LineReacts, WithoutAdaptationsAReceiverLosesItsMarginAndTrainsAnew) {
  const std::string noise = "[[line_fault]]\nkind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -120\nat_s = 10\n";
  Bench bench(noise + kShowtime + "params = { disableDsSra = 1, disableDsFra = 1 }");
  bench.wait(20);
  EXPECT_EQ(bench.events(1), "");
  EXPECT_GT(pm(bench, 1).ne.SES, 5U);
  bench.wait(2);
  EXPECT_EQ(bench.events(1), "failure 5 6>7 7>3");
  EXPECT_EQ(derived(bench, 1).lossOfMarginFailureCounter, 1U);
  bench.wait(kTrainingTime_s);
  EXPECT_EQ(bench.lineState(1), 6U);
  EXPECT_EQ(pm(bench, 1).ne.LOM, 1U);
  EXPECT_EQ(pm(bench, 0).fe.LOM, 1U);
  EXPECT_GE(framer(bench, 1).snrMargin, 60U);
}

TEST(LineReacts, NoiseOnTheRmcTakesTheManagementChannelAway) {
  Bench bench(faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -70\nat_s = 10"));
  bench.wait(12.6);
  EXPECT_NE(bench.events(1).find("failure 3"), std::string::npos);
  EXPECT_EQ(pm(bench, 1).ne.LOR, 1U);
}

TEST(LineReacts, DefectsAreCountedWhileTheyLast) {
  Bench bench(faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -70\nat_s = 10"));
  bench.wait(9);
  EXPECT_EQ(derived(bench, 1).lorDefect, 0U);
  bench.wait(3.2);
  const auto now = derived(bench, 1);
  EXPECT_EQ(now.lorDefect, 1U);
  EXPECT_EQ(now.persistentLorDefect, 1U);
  EXPECT_NEAR(now.continousMillisecondsOfLorDefects, 2200, 1);
  EXPECT_EQ(now.continuousLossOfRMCSeconds, 2U);
  EXPECT_GE(now.continuousSeverlyErroredSeconds, 1U);
}

TEST(LineReacts, NoiseThatLeavesTooLittleFailsTheTraining) {
  Bench bench(
      "[[line_fault]]\nkind = \"noise\"\nat_m = 100\nshape = [ { mhz = 3.2, dbm_hz = -60 }, "
      "{ mhz = 106, dbm_hz = -60 } ]\n");
  bench.wait(5);
  EXPECT_EQ(bench.events(1), "3>4 4>5 failure 7 5>3");
  EXPECT_EQ(bench.word(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_INIT_FAILURE_CAUSE), 2U);
}

TEST(LineReacts, NoiseThatDrownsTheHandshakeFindsNobody) {
  Bench bench("[[line_fault]]\nkind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -60\nat_s = 0\n");
  bench.wait(6);
  EXPECT_EQ(bench.word(0, VIRT_ADDR_DEVICE_INFO_READ + DEV_INF_INIT_FAILURE_CAUSE), 4U);
}

TEST(LineReacts, AWireThatComesLooseIsALossOfSignal) {
  Bench bench(faulty("kind = \"joint\"\nat_m = 50\nohm = 1e8\nat_s = 10\nfor_s = 5"));
  bench.wait(12);
  EXPECT_NE(bench.events(1).find("failure 6"), std::string::npos);
  bench.wait(20);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(LineReacts, AnInterruptionDoesNotKeepAReceiverFromAdapting) {
  Bench bench(faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -135\nat_s = 10"));
  bench.wait(10.7);
  bench.board.cutLoop(true);
  bench.wait(0.6);
  bench.board.cutLoop(false);
  bench.wait(3);
  EXPECT_EQ(bench.events(1), "");
  EXPECT_GE(framer(bench, 1).snrMargin, 50U);
}

TEST(LineReacts, AShortImpulseIsRepairedByRetransmission) {
  Bench bench(faulty("kind = \"impulse\"\nat_m = 100\nlevel_dbm_hz = -70\nlength_ms = 4\nat_s = 10.5"));
  bench.wait(10.4);
  const auto before = framer(bench, 1);
  bench.wait(0.5);
  const auto after = framer(bench, 1);
  // What 4 ms of the line carry.
  const double met = derived(bench, 1).RxNDR * 1e3 / 8 / 889 * 0.004;
  EXPECT_NEAR(after.numOfBadRxDTUs - before.numOfBadRxDTUs, met, met / 3 + 5);
  EXPECT_LE(after.rtxuc - before.rtxuc, 1U);
  EXPECT_EQ(bench.lineState(0), 6U);
}

TEST(LineReacts, ALongImpulseIsNot) {
  Bench bench(faulty("kind = \"impulse\"\nat_m = 100\nlevel_dbm_hz = -70\nlength_ms = 40\nat_s = 10.5"));
  bench.wait(12);
  EXPECT_GT(framer(bench, 1).rtxuc, 1000U);
  EXPECT_GE(pm(bench, 1).ne.ES, 1U);
}

TEST(LineReacts, RepeatedImpulsesAreRetransmittedAsOftenAsTheyCome) {
  Bench bench(
      faulty("kind = \"impulse\"\nat_m = 100\nlevel_dbm_hz = -70\nlength_ms = 0.1\nrate_hz = 100\n"
             "at_s = 10\nfor_s = 60"));
  bench.wait(10);
  const auto before = framer(bench, 1);
  bench.wait(30);
  const auto after = framer(bench, 1);
  const double share = static_cast<double>(after.numOfBadRxDTUs - before.numOfBadRxDTUs) /
                       (after.numOfRxDTUs - before.numOfRxDTUs);
  EXPECT_NEAR(share, 100 * (100e-6 + 1 / 48000.0), 0.001);
  EXPECT_EQ(framer(bench, 1).snrMargin, 60U);
}

// Impulses of 10 s, and how many of the units that they corrupt are lost.
struct Impulses {
  const char* length_ms;
  const char* rate_hz;
  double leastLost;
  double mostLost;

  friend void PrintTo(const Impulses& impulses, std::ostream* out) {
    *out << impulses.length_ms << " ms at " << impulses.rate_hz << " Hz";
  }
};

class RepeatedImpulses : public testing::TestWithParam<Impulses> {};

TEST_P(RepeatedImpulses, AreCorrectedWhenARepeatMeetsTheQuiet) {
  const Impulses& impulses = GetParam();
  Bench bench(
      faulty("kind = \"impulse\"\nat_m = 100\nlevel_dbm_hz = -70\nat_s = 10\nfor_s = 10\nlength_ms = " +
             std::string(impulses.length_ms) + "\nrate_hz = " + impulses.rate_hz));
  bench.wait(10);
  const auto before = framer(bench, 1);
  const uint32_t errored = pm(bench, 1).ne.ES;
  bench.wait(10);
  const auto after = framer(bench, 1);
  ASSERT_EQ(bench.events(1), "");
  const double bad = after.numOfBadRxDTUs - before.numOfBadRxDTUs;
  const double lost = after.rtxuc - before.rtxuc;
  EXPECT_GE(lost / bad, impulses.leastLost);
  EXPECT_LE(lost / bad, impulses.mostLost);
  if (impulses.mostLost == 0) {
    EXPECT_EQ(pm(bench, 1).ne.ES, errored);
  }
}

// Repeats are sent 4 and 8 ms after a unit, or up to one frame later.
constexpr Impulses kImpulses[] = {{"0.1", "100", 0, 0},
                                  {"0.2", "100", 0, 0},
                                  {"2", "100", 0, 0},
                                  {"0.2", "120", 0, 0},
                                  // Of some units both repeats meet the next impulse.
                                  {"4", "120", 0.005, 0.05},
                                  // The impulses come as often as the repeats.
                                  {"0.2", "250", 0.02, 0.1},
                                  // Each repeat meets one of twenty.
                                  {"0.03", "1000", 0.001, 0.01}};
INSTANTIATE_TEST_SUITE_P(LineReacts, RepeatedImpulses, testing::ValuesIn(kImpulses));

TEST(LineReacts, UnitsThatAreSentAgainCostThroughput) {
  Bench bench(
      faulty("kind = \"impulse\"\nat_m = 100\nlevel_dbm_hz = -70\nlength_ms = 2\nrate_hz = 100\n"
             "at_s = 10\nfor_s = 60"));
  bench.wait(9);
  const auto before = derived(bench, 1);
  EXPECT_NEAR(before.EFTR, before.RxETR, 50);
  EXPECT_NEAR(before.EFTR_min, before.RxETR, 50);
  bench.wait(30);
  const auto now = derived(bench, 1);
  EXPECT_EQ(now.RxETR, before.RxETR);
  EXPECT_NEAR(now.EFTR, now.RxETR * (1 - 100 * (2e-3 + 1 / 48000.0)), 10);
  EXPECT_NEAR(now.EFTR_min, now.EFTR, 10);
  EXPECT_EQ(farCounters(bench, 0).eftrMin, now.EFTR_min);
  EXPECT_EQ(pm(bench, 1).ne.RTXUC, 0U);
  bench.wait(60);
  EXPECT_NEAR(derived(bench, 1).EFTR, before.RxETR, 50);
  EXPECT_EQ(derived(bench, 1).EFTR_min, now.EFTR_min);
}

TEST(LineReacts, TheAverageOfARateCountsEachSecondOfShowtime) {
  Bench bench(faulty("kind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -115\nat_s = 100"));
  bench.wait(99);
  const auto before = derived(bench, 1);
  EXPECT_EQ(before.RxEtrAvg, before.RxETR);
  bench.wait(101);
  const auto after = derived(bench, 1);
  ASSERT_LT(after.RxETR, before.RxETR * 9 / 10);
  EXPECT_NEAR(after.RxEtrAvg, (before.RxETR + after.RxETR) / 2.0, before.RxETR * 0.01);
  EXPECT_EQ(derived(bench, 0).TxEtrAvg, after.RxEtrAvg);
  // A new training begins a new average.
  bench.board.cutLoop(true);
  bench.wait(5);
  bench.board.cutLoop(false);
  bench.wait(20);
  EXPECT_EQ(derived(bench, 1).RxEtrAvg, derived(bench, 1).RxETR);
}

TEST(LineReacts, ALineWhoseLoopChangesInTrainingComesUpOnTheNewOne) {
  Bench bench("[[line_fault]]\nkind = \"noise\"\nat_m = 100\nlevel_dbm_hz = -120\nat_s = 3\n");
  bench.wait(kTrainingTime_s);
  ASSERT_EQ(bench.lineState(0), 6U);
  EXPECT_GE(framer(bench, 1).snrMargin, 60U);
  Bench quiet;
  quiet.wait(kTrainingTime_s);
  EXPECT_LT(net(bench), net(quiet) * 9 / 10);
}
