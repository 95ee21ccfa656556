// What holds on every board at every moment, whatever happens to its line. GFAST_RANDOM_BOARDS says how many
// boards are tried, GFAST_RANDOM_HOURS how long each runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "unit/virtual-board/measured/tone_memory.h"
#include "virtual-board/base/draw.h"

using namespace gfast;
using namespace gfast::board;

namespace {

double setting(const char* name, double usual) {
  const char* const text = std::getenv(name);
  return text == nullptr ? usual : std::atof(text);
}

// Draws that depend on the board's number alone.
class Dice {
 public:
  explicit Dice(uint64_t board) : state_(mix(board)) {}
  double between(double least, double most) {
    state_ = mix(state_);
    return least +
           (most - least) * static_cast<double>(state_ >> 11) / static_cast<double>(uint64_t{1} << 53);
  }
  template <size_t N>
  const char* oneOf(const char* const (&texts)[N]) {
    return texts[static_cast<size_t>(between(0, N))];
  }

 private:
  uint64_t state_;
};

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", value);
  return text;
}

constexpr const char* kKinds[] = {
    "kind = \"tap\"\nlength_m = 7",
    "kind = \"joint\"\nohm = 120\nnf = 0.05\nwires = 1",
    "kind = \"joint\"\nohm = 1e8",
    "kind = \"section\"\nlength_m = 30\ncable = \"T05h\"",
    "kind = \"water\"\nlength_m = 20\ngrows_s = 200",
    "kind = \"noise\"\nlevel_dbm_hz = -128",
    "kind = \"noise\"\nlevel_dbm_hz = -105",
    "kind = \"noise\"\nshape = [ { mhz = 5, dbm_hz = -120 }, { mhz = 25, dbm_hz = -105 } ]",
    "kind = \"radio\"\nfrequency_mhz = 7.2\nwidth_khz = 100\nlevel_dbm_hz = -50",
    "kind = \"imbalance\"\nbalance_db = 20",
    "kind = \"crosstalk\"\nlength_m = 80\nlines = 3\nlevel_dbm_hz = -60\nto_mhz = 17.664",
    "kind = \"crosstalk\"\nlength_m = 80\nlines = 3\nlevel_dbm_hz = -76\nvectored = true",
    "kind = \"impulse\"\nlevel_dbm_hz = -85\nlength_ms = 0.2\nrate_hz = 120",
    "kind = \"supply\"\nlevel_dbm_hz = -85\nswitching_khz = 250"};
// What an operator allows.
constexpr const char* kAllowed[] = {
    "", "",
    "[spectrum]\ncarmask_ds = [ { from = 600, to = 700 } ]\ncarmask_us = [ { from = 300, to = 350 } ]\n",
    "[spectrum]\npsdmask_ds = [ { tone = 43, dbm_hz = -72 }, { tone = 1900, dbm_hz = -95 } ]\n",
    "[spectrum]\nupbo = { a = 82.0, b = 1.5, reference_db = 6.0 }\n"};
constexpr const char* kRandomCables[] = {"CAD55", "CAT5", "T05u", "T05b", "T05h"};

// When a fault of the line is there. Water leaves later than its time says.
struct FaultTime {
  double from_s;
  double to_s;
  bool impulses;
};

struct RandomBoard {
  std::string toml;
  std::vector<FaultTime> faults;

  bool impulsesAt(double from_s, double to_s) const {
    return std::any_of(faults.begin(), faults.end(), [=](const FaultTime& fault) {
      return fault.impulses && fault.from_s <= to_s && fault.to_s >= from_s;
    });
  }
  bool changesIn(double from_s, double to_s) const {
    const auto within = [=](double time) { return time >= from_s && time <= to_s; };
    return std::any_of(faults.begin(), faults.end(), [&within](const FaultTime& fault) {
      return within(fault.from_s) || within(fault.to_s);
    });
  }
};

RandomBoard randomBoard(uint64_t board, double duration_s) {
  Dice dice(board);
  const double length_m = dice.between(5, 350);
  RandomBoard random;
  const std::string cable = dice.oneOf(kRandomCables);
  random.toml = "[board]\nseed = " + std::to_string(board) + "\n[loop]\ncable = \"" + cable +
                "\"\nlength_m = " + number(length_m) +
                "\nnoise_dbm_hz = " + number(dice.between(-150, -130)) + "\n";
  for (int i = 0; i < 4; i++) {
    const std::string kind = dice.oneOf(kKinds);
    const std::string at_m = number(dice.between(0, length_m));
    const double at_s = dice.between(10, duration_s / 2);
    const double for_s = dice.between(5, duration_s / 3);
    random.toml += "[[line_fault]]\n" + kind + "\nat_m = " + at_m + "\nat_s = " + number(at_s) +
                   "\nfor_s = " + number(for_s) + "\n";
    random.faults.push_back({at_s, at_s + for_s, kind.find("impulse") != std::string::npos});
  }
  random.toml += dice.oneOf(kAllowed);
  std::sort(random.faults.begin(), random.faults.end(),
            [](const FaultTime& one, const FaultTime& other) { return one.from_s < other.from_s; });
  return random;
}

// Of one direction: what follows from what.
void expectBitsFollowFromSnr(Bench& bench, int receiver) {
  const Measured tones = measured(bench, receiver);
  const auto bits = bitsReceived(bench, receiver);
  const auto raw = framer(bench, receiver);
  double least_db = 1000;
  uint32_t sum = 0;
  for (uint32_t tone = 0; tone < 2048; tone++) {
    sum += bits[tone];
    if (bits[tone] != 0) {
      const double needed = std::exp2(bits[tone]) - 1;
      least_db = std::min(least_db, 10 * std::log10(std::max(tones.snr[tone], 1e-30) / needed) - 4.8);
    }
  }
  EXPECT_EQ(raw.RxBD, sum / 8);
  EXPECT_EQ(raw.RxBD, framer(bench, 1 - receiver).TxBD);
  EXPECT_EQ(raw.RxLD, raw.RxBD * 8);
  // Energies have 32 bits: a signal far below the noise is not measured exactly.
  if (least_db > -8) {
    EXPECT_NEAR(static_cast<int32_t>(raw.snrMargin) / 10.0, least_db, 0.3);
  }
}

void expectRatesFollowFromBits(Bench& bench, int receiver) {
  const auto db = bench.block<ETR_DB_S>(receiver, kEtrDb);
  const auto raw = framer(bench, receiver);
  EXPECT_NEAR(derived(bench, receiver).RxETR,
              std::max(0.0, expectedThroughput(db.numRxSymbols, db.Rx_kFec, db.Rx_nFec, db.Rx_Q, raw.RxBD,
                                               raw.RxBDR, db)),
              1);
  EXPECT_EQ(derived(bench, receiver).RxNDR, derived(bench, 1 - receiver).TxNDR);
}

// Two moments of the same showtime.
struct Moment {
  GFAST_FRAMER_RAW_COUNTERS_S raw[2];
  GFAST_DERIVED_COUNTERS_S cp[2];
  G9972_PM_COUNTERS_S pms[2];
  double at_s;
};

Moment momentOf(Bench& bench) {
  Moment moment{};
  for (int device = 0; device < 2; device++) {
    moment.raw[device] = framer(bench, device);
    moment.cp[device] = derived(bench, device);
    moment.pms[device] = pm(bench, device);
  }
  moment.at_s = bench.now;
  return moment;
}

void expectCountersFollow(const Moment& before, const Moment& after, int receiver, int& compared) {
  const auto& one = before.raw[receiver];
  const auto& other = after.raw[receiver];
  const auto& sender = after.raw[1 - receiver];
  EXPECT_EQ(other.numOfGoodRxDTUs, other.numOfRxDTUs - other.numOfBadRxDTUs);
  EXPECT_GE(sender.numOfTxDTUs, other.numOfRxDTUs);
  EXPECT_LE(other.rtxuc, other.numOfBadRxDTUs);
  EXPECT_EQ(other.numOfBadRxDTUs - other.rtxuc, sender.numOfRetTxDTUs);
  const double elapsed_s = after.at_s - before.at_s;
  const auto& rates = after.cp[receiver];
  if (rates.RxNDR != before.cp[receiver].RxNDR || one.numOfRxDTUs > other.numOfRxDTUs || elapsed_s < 2) {
    return;
  }
  const auto& pmBefore = before.pms[receiver].ne;
  const auto& pmAfter = after.pms[receiver].ne;
  EXPECT_LE(pmAfter.ES - pmBefore.ES, elapsed_s + 2);
  EXPECT_LE(pmAfter.SES - pmBefore.SES, pmAfter.ES - pmBefore.ES);
  EXPECT_EQ(pmAfter.RTXUC, other.rtxuc);
  // While nothing was adapted, units arrive at the rate of the symbols.
  if (one.RxBD == other.RxBD && one.RxBDR == other.RxBDR && pmBefore.SRA == pmAfter.SRA &&
      pmBefore.FRA == pmAfter.FRA && pmBefore.RPA == pmAfter.RPA && pmBefore.UAS == pmAfter.UAS) {
    const double symbols = receiver == 0 ? 7 : 28;
    const double bytesPerFrame = (symbols - 1) * other.RxBD + other.RxBDR;
    const double unit = receiver == 0 ? 224 * 5 : 240 * 4;
    const double expected = elapsed_s * 48000 / 36 * bytesPerFrame / unit;
    // Each change of the noise begins a new count of whole frames.
    EXPECT_NEAR(other.numOfRxDTUs - one.numOfRxDTUs, expected, 20 * bytesPerFrame / unit + 20);
    compared++;
  }
}

// The share of data transfer units in which a symbol of a subcarrier is wrong, from its SNR and its bits.
double corruptedShare(Bench& bench, int receiver) {
  const Measured tones = measured(bench, receiver);
  const auto bits = bitsReceived(bench, receiver);
  double wrong = 0;
  for (uint32_t tone = 0; tone < 2048; tone++) {
    if (bits[tone] != 0) {
      // The code is worth 5 dB.
      const double above = std::pow(10, 0.5) * tones.snr[tone] / (std::exp2(bits[tone]) - 1);
      wrong += 2 * std::erfc(std::sqrt(1.5 * above));
    }
  }
  const double unit = receiver == 0 ? 224 * 5 : 240 * 4;
  return 1 - std::exp(-wrong * unit / framer(bench, receiver).RxBD);
}

bool inShowtime(Bench& bench) {
  return bench.lineState(0) == 6 && bench.lineState(1) == 6;
}

uint32_t exchanges(const GFAST_FRAMER_RAW_COUNTERS_S& raw) {
  return raw.sraRxExngCnt + raw.fraRxExngCnt + raw.bitswapRxExngCnt + raw.rpaRxExngCnt;
}

// Looks at half a second, before a receiver changes its bits, and in which no fault comes or goes. A small
// error of the measured SNR is a large one of the errors that follow from it, so they are compared within a
// factor.
void expectErrorsFollowFromNoise(Bench& bench, const RandomBoard& board, int receiver, int& compared) {
  const double start_s = bench.now;
  const auto before = framer(bench, receiver);
  const double share = corruptedShare(bench, receiver);
  bench.wait(0.5);
  const auto after = framer(bench, receiver);
  if (!inShowtime(bench) || exchanges(before) != exchanges(after) || before.RxBD == 0 ||
      board.changesIn(start_s, bench.now)) {
    return;
  }
  const double units = after.numOfRxDTUs - before.numOfRxDTUs;
  const double bad = after.numOfBadRxDTUs - before.numOfBadRxDTUs;
  const double lost = after.rtxuc - before.rtxuc;
  if (units * share < 1) {
    // The few of a healthy line.
    EXPECT_LE(bad, 5);
  } else if (units * share > 50) {
    EXPECT_GT(bad, units * share / 2);
    EXPECT_LT(bad, units * share * 2);
    compared++;
  }
  if (const double due = units * share * share * share; due > 50) {
    EXPECT_GT(lost, due / 4);
    EXPECT_LT(lost, due * 4);
  }
}

void expectFewLostUnitsWithMargin(const RandomBoard& board, const Moment& before, const Moment& after,
                                  int receiver) {
  const auto& one = before.raw[receiver];
  const auto& other = after.raw[receiver];
  const bool sheltered =
      static_cast<int32_t>(one.snrMargin) >= 0 && static_cast<int32_t>(other.snrMargin) >= 0;
  if (!sheltered || board.impulsesAt(before.at_s, after.at_s) || board.changesIn(before.at_s, after.at_s) ||
      before.pms[receiver].ne.UAS != after.pms[receiver].ne.UAS) {
    return;
  }
  // A healthy line loses one in ten minutes.
  EXPECT_LE(other.rtxuc - one.rtxuc, 2U);
}

// Waits until this moment. Whenever a fault begins, looks at what it does before a receiver reacts.
void waitUntil(Bench& bench, const RandomBoard& board, double until_s, int& compared) {
  for (const FaultTime& fault : board.faults) {
    const double soon_s = fault.from_s + 0.1;
    if (soon_s <= bench.now || soon_s > until_s - 1) {
      continue;
    }
    bench.wait(soon_s - bench.now);
    if (inShowtime(bench) && !board.impulsesAt(bench.now, bench.now + 1)) {
      for (const int receiver : {0, 1}) {
        expectErrorsFollowFromNoise(bench, board, receiver, compared);
      }
    }
  }
  bench.wait(until_s - bench.now);
}

}  // namespace

TEST(LineInvariants, HoldOnRandomBoards) {
  const auto boards = static_cast<uint64_t>(setting("GFAST_RANDOM_BOARDS", 2));
  const double duration_s = 3600 * setting("GFAST_RANDOM_HOURS", 0.1);
  int compared = 0;  // how often counters were compared with rates
  int noisy = 0;     // how often errors were compared with noise
  for (uint64_t seed = 1; seed <= boards; seed++) {
    const RandomBoard board = randomBoard(seed, duration_s);
    SCOPED_TRACE(board.toml);
    Bench bench(board.toml);
    for (int step = 0; step < 12; step++) {
      waitUntil(bench, board, bench.now + duration_s / 12 + 0.0137, noisy);
      // Some seconds apart, so that a line that nothing happens to makes no adaptation of its own between
      // them.
      const bool up = inShowtime(bench);
      const Moment before = momentOf(bench);
      bench.wait(20);
      const bool upNow = inShowtime(bench);
      const Moment now = momentOf(bench);
      for (const int receiver : {0, 1}) {
        if (upNow) {
          expectBitsFollowFromSnr(bench, receiver);
          expectRatesFollowFromBits(bench, receiver);
        }
        if (upNow && up) {
          expectCountersFollow(before, now, receiver, compared);
          expectFewLostUnitsWithMargin(board, before, now, receiver);
        }
      }
      ASSERT_FALSE(HasFailure()) << "at " << bench.now;
    }
  }
  EXPECT_GT(compared, 0);
  EXPECT_GT(noisy, 0);
}

// One seed, one history.
TEST(LineInvariants, TheSameBoardHasTheSameHistory) {
  const std::string toml = randomBoard(3, 300).toml;
  Bench often(toml);
  Bench once(toml);
  while (often.now < 300) {
    often.wait(0.377);
    framer(often, 0);
  }
  once.wait(often.now);
  for (const int device : {0, 1}) {
    EXPECT_EQ(often.read(device, kFramerRaw, 340), once.read(device, kFramerRaw, 340));
    EXPECT_EQ(often.read(device, kDerived, 216), once.read(device, kDerived, 216));
    EXPECT_EQ(often.read(device, kPm, 156), once.read(device, kPm, 156));
  }
}
