// Every counter that the console shows moves on some board. The table kRows says on which.
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <ostream>
#include <regex>
#include <set>
#include <span>

#include "console/lab_script.h"

namespace {

// What shows counters, as bits of a set.
enum Display : unsigned {
  kQuarterHour = 1U << 0,
  kDay = 1U << 1,
  kPm = 1U << 2,
  kLineNear = 1U << 3,
  kLineFar = 1U << 4,
  kChannelNear = 1U << 5,
  kChannelFar = 1U << 6,
  kBlocksNear = 1U << 7,
  kBlocksFar = 1U << 8,
  kManagement = 1U << 9,
  kPmd = 1U << 10
};
constexpr unsigned kHistory = kQuarterHour | kDay | kPm;
constexpr unsigned kPerformance = kHistory | kLineNear | kLineFar | kChannelNear | kChannelFar;
constexpr unsigned kBlocks = kBlocksNear | kBlocksFar;

// By bit; a line's number goes in the place of the #.
constexpr const char* kCommands[] = {"show 15min-counters # 0",
                                     "show 24hr-counters # 0",
                                     "show pm-counters #",
                                     "show line performance-counters # ne",
                                     "show line performance-counters # fe",
                                     "show channel performance-counters # ne",
                                     "show channel performance-counters # fe",
                                     "show gfast-counters # ne",
                                     "show gfast-counters # fe",
                                     "show remote-management-counters #",
                                     "show pmd-test-parameters #"};

// ---- Boards ----

// Noise of several kinds, one after the other: much over 3 to 100 MHz, so that a training fails, too; less,
// for rate adaptations; a station, for bit swaps; where the RMC is; and neighbours that are vectored.
constexpr const char* kNoise = R"(
  [[device]]
  line = "showtime"
  [[line_fault]]
  kind = "noise"
  at_m = 50
  level_dbm_hz = -70
  at_s = 60
  for_s = 8
  [[line_fault]]
  kind = "noise"
  at_m = 50
  level_dbm_hz = -128
  at_s = 200
  for_s = 60
  [[line_fault]]
  kind = "radio"
  at_m = 50
  frequency_mhz = 20
  width_khz = 200
  level_dbm_hz = -62
  at_s = 300
  for_s = 30
  [[line_fault]]
  kind = "noise"
  at_m = 50
  level_dbm_hz = -115
  at_s = 400
  for_s = 30
  [[line_fault]]
  kind = "crosstalk"
  at_m = 0
  length_m = 60
  lines = 2
  level_dbm_hz = -76
  vectored = true
  at_s = 500
  for_s = 30
)";

// The subscriber's modem loses its power, then the loop is cut.
constexpr const char* kInterrupted = R"(
  [board]
  devices = 1
  [[device]]
  line = "showtime"
  [[device_event]]
  device = 1
  at_s = 60
  kind = "power_off"
  for_s = 10
  [[loop_event]]
  at_s = 120
  cut = true
  [[loop_event]]
  at_s = 140
  cut = false
)";

// The subscriber's chip loses its power before the eyes of its host.
constexpr const char* kPowerOff = R"(
  [[device]]
  line = "showtime"
  [[device_event]]
  device = 1
  at_s = 60
  kind = "power_off"
  for_s = 10
)";

// A receiver may not adapt when noise takes its margin.
constexpr const char* kRigid = R"(
  [[device]]
  line = "showtime"
  params = { disableDsSra = 1, disableUsSra = 1, disableDsFra = 1, disableUsFra = 1 }
  [[line_fault]]
  kind = "noise"
  at_m = 50
  level_dbm_hz = -127
  at_s = 60
  for_s = 20
)";

// Noise on the subcarriers of the RMC alone.
constexpr const char* kNoisyRmc = R"(
  [[device]]
  line = "showtime"
  [[line_fault]]
  kind = "noise"
  at_m = 50
  shape = [ { mhz = 3.2, dbm_hz = -60 }, { mhz = 106, dbm_hz = -60 } ]
  at_s = 60
  for_s = 30
)";

// A board, one of its lines, and two moments between which the counters move.
struct Watch {
  const char* name;
  const char* board;
  char line;
  int from_s;
  int to_s;

  friend void PrintTo(const Watch& watch, std::ostream* out) { *out << watch.name; }
};

constexpr Watch kWatches[] = {{"noise", kNoise, '0', 50, 650},
                              {"noise on the RMC", kNoisyRmc, '0', 50, 350},
                              {"interrupted", kInterrupted, '0', 50, 250},
                              {"without power, at the subscriber", kPowerOff, '1', 50, 150},
                              {"rigid", kRigid, '0', 50, 150},
                              // While something is wrong.
                              {"management channel lost", kNoise, '0', 50, 62},
                              {"down without management channel", kNoise, '0', 50, 64},
                              {"down without signal", kInterrupted, '0', 110, 124},
                              {"down without power", kInterrupted, '0', 50, 62},
                              {"down without margin", kRigid, '0', 50, 73}};

// ---- What moves where ----

struct Row {
  const char* watch;
  unsigned displays;
  const char* counters;
};

constexpr Row kRows[] = {
    {"noise", kPerformance,
     "NE-LOR NE-ES NE-SES NE-LORS NE-UAS NE-SRA NE-FRA NE-BSW NE-TIGA NE-FULL_INITS NE-FAILEDFULL_INITS "
     "NE-CV NE-RTXUC NE-RTXTX NE-EFB "
     "FE-LOR FE-ES FE-SES FE-LORS FE-UAS FE-SRA FE-FRA FE-BSW FE-CV FE-RTXUC FE-RTXTX FE-EFB"},
    {"noise on the RMC", kPerformance, "NE-RPA FE-RPA"},
    {"interrupted", kPerformance, "NE-LOS NE-LOSS NE-LPR FE-LOS FE-LOSS"},
    {"interrupted", kHistory, "FE-LPR"},
    // A chip that had no power counts from 0, so its far end is asked.
    {"without power, at the subscriber", kLineFar, "FE-LPR"},
    {"rigid", kPerformance, "NE-LOM FE-LOM"},

    {"noise", kBlocks,
     "numOfTxFrames numOfGoodRMCs numOfBadRMCs numOfTxDTUs numOfDataTxDTUs numOfDummyTxDTUs numOfRetTxDTUs "
     "numOfRxDTUs numOfGoodRxDTUs numOfGoodRxDummyDTUs numOfBadRxDTUs numOfOutRxDTUs numOfTxPackets "
     "numOfRxPackets numOfTxRScw numOfRxRScw numOfRxRSBytesCorrected numOfRxRScwUncorrected TxBD TxBDR RxBD "
     "RxBDR RxLD numDescriptorsProcessedByDtuBuilder TxBytes RxBytes EoCTxBytes EoCRxBytes rtxuc "
     "numOfRxFrames txHrtAccumulatedNumSamples txSrtAccumulatedNumSamples rxHrtAccumulatedNumSamples "
     "rxSrtAccumulatedNumSamples sraRxExngCnt sraTxExngCnt fraRxExngCnt fraTxExngCnt "
     "numNormalDescriptorsCreated nextSegmentIndexForPdlBuilding tailIndex tigaExngCnt TxIdleDataBytes "
     "TxDataBytes RxIdleDataBytes RxDataBytes bitswapRxExngCnt bitswapTxExngCnt hrtAccumulatedCycles "
     "trap0AccumulatedCycles trap1AccumulatedCycles trap2AccumulatedCycles srtAccumulatedCycles currentIndex "
     "nextReleaseIndex xgmacRxRingCurrentIndexFirstRead xgmacRxRingCurrentIndexSecondRead "
     "xgmacRxRingCurrentDescriptor xgmacRxRingTailIndex"},
    {"noise", kBlocks,
     "erroredSeconds severlyErroredSeconds lossOfRMCSeconds unavailableSeconds fullInits failedFullInits "
     "crcAnomaly RxETR EFTR TxRateInKbps EFTR_min lorDefects errorFreeBits TxETR lossOfRmcFailureCounter "
     "TxNDR RxNDR TxEtrAvg RxEtrAvg PreShowTimeTxETR PreShowTimeRxETR ETRds_MaxMds ETRus_MaxMus"},
    {"noise on the RMC", kBlocks, "TxBR RxBR attainableNdr rpaRxExngCnt rpaTxExngCnt rmcSnrMargin"},
    {"interrupted", kBlocks,
     "nearEndLossOfSignal farEndLossOfSignal lossOfSignalSeconds lossOfSignalFailureCounter"},
    {"interrupted", kBlocksNear, "lossOfPower lossOfPowerFailureCounter"},
    {"without power, at the subscriber", kBlocksFar, "lossOfPower lossOfPowerFailureCounter"},
    {"rigid", kBlocks, "lossOfMargin lossOfMarginFailureCounter"},
    {"management channel lost", kBlocks,
     "snrMargin rxMargin lorDefect persistentLorDefect continousMillisecondsOfLorDefects "
     "continuousLossOfRMCSeconds continuousSeverlyErroredSeconds"},
    {"down without management channel", kBlocksNear, "lossOfRmcFailure"},
    {"down without signal", kBlocksNear,
     "lossOfSignalFailure persistentLossOfSignalDefect continuousLossOfSignalSeconds"},
    {"down without power", kBlocksNear, "lossOfPowerFailure"},
    {"down without margin", kBlocksNear, "lossOfMarginFailure"},

    {"noise", kManagement,
     "fec crc rtxUc rtxTx erroredSeconds serverlyErroredSeconds lossOfRmcSeconds unavailableSeconds eftrMin "
     "errorFreeBitsCounter"},
    {"interrupted", kManagement, "lossOfSignalSeconds"},
    {"noise", kPmd, "SNRM"},
    {"noise on the RMC", kPmd, "ATTNDR farEnd_actualSNRM_RMC"},
};

// What is shown and counts nothing: it is set by the chip, its parameters or the length of the loop.
constexpr Row kSet[] = {
    {"", kBlocks,
     "revision lengthInBytes firstTone numProcessedTones dsCodeWordSize dsNumCodeWords dsRsRedundancy "
     "usCodeWordSize usNumCodeWords usRsRedundancy txLogicalFrameNumSym txCodeWordSize txNumCodeWords "
     "txRsRedundancy rxLogicalFrameNumSym rxCodeWordSize rxNumCodeWords rxRsRedundancy winSize sseScale "
     "vectoringEnabled dsMargin usMargin numTonesOfVecPerFdu numTonesOfVecAux numTonesOfVecPerFduRnd "
     "numTonesOfVecAuxRnd DacScaler ActualAnalogGainTx UPBOKLE UPBOKLE_R ACTATPds ACTATPus TimeGapCorrection "
     "EocTxRateInKbps EocRxRateInKbps NewMds dtaCurrentMds isDtaActive txHrtPrecentage txSrtPrecentage "
     "rxHrtPrecentage rxSrtPrecentage hrtPrecentage srtPrecentage trap0Precentage trap1Precentage "
     "trap2Precentage"},
    {"", kPmd, "nearEnd_ACTATP farEnd_INP_act_shine RXpower_dBm_DS"},
};

// What the virtual chips never do: initialise fast, reject or miss an exchange, share the frame anew, switch
// transmitters off, drop packets. A line that is down tells nothing of its far end.
constexpr Row kNever[] = {
    {"", kPerformance, "NE-FAST_INITS NE-FAILEDFAST_INITS"},
    {"", kBlocks,
     "fastInits failedFastInits timesRejectedTxOlr timesRejectedTxRpa timesRejectedRxRpa fraRxToCnt sraRxTo "
     "sraTxTo rpaTxLateExchanges dtaMdsExngCnt numOfRxOffs numOfTxOffs numOfNotHandledDTUs_LackOfTime "
     "numOfTailDroppedTxPackets eocRxClientLpOutOfOrder"},
    {"", kBlocksFar,
     "lossOfSignalFailure lossOfMarginFailure lossOfRmcFailure lossOfPowerFailure "
     "persistentLossOfSignalDefect "
     "continuousLossOfSignalSeconds"},
};

// ---- Reading ----

std::set<std::string> wordsOf(const std::string& text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

using Counters = std::map<std::string, long long>;
// By display.
using Shown = std::vector<Counters>;

// Before each command the script asks for a number, which no display has on a line of its own.
std::string scriptOf(const Watch& watch) {
  std::string script;
  for (const int wait_s : {watch.from_s, watch.to_s - watch.from_s}) {
    script += "sleep " + std::to_string(wait_s) + "\n";
    for (std::string command : kCommands) {
      command[command.find('#')] = watch.line;
      script += "show number 24hr-intervals 0\n" + command + "\n";
    }
  }
  return script;
}

std::vector<Shown> shownBy(const Watch& watch) {
  const TemporaryFolder folder;
  std::istringstream output(
      outputOf({"--speed", "max", "--board", folder.write("board.toml", watch.board)}, scriptOf(watch)));
  const std::regex counter(" *([A-Za-z0-9_-]+) +(?:= )?(-?[0-9]+) *\r?");
  std::vector<Counters> displays;
  for (std::string line; std::getline(output, line);) {
    std::smatch words;
    if (line == "1") {
      displays.emplace_back();
    } else if (!displays.empty() && std::regex_match(line, words, counter)) {
      displays.back()[words[1]] = std::stoll(words[2]);
    }
  }
  const auto half = static_cast<std::ptrdiff_t>(std::size(kCommands));
  EXPECT_EQ(displays.size(), 2 * std::size(kCommands));
  displays.resize(2 * std::size(kCommands));
  return {{displays.begin(), displays.begin() + half}, {displays.begin() + half, displays.end()}};
}

class CountersOfABoard : public testing::TestWithParam<Watch> {};

TEST_P(CountersOfABoard, Move) {
  const std::vector<Shown> moments = shownBy(GetParam());
  for (const Row& row : kRows) {
    if (GetParam().name != std::string(row.watch)) {
      continue;
    }
    for (const std::string& name : wordsOf(row.counters)) {
      int displays = 0;
      for (size_t i = 0; i < std::size(kCommands); i++) {
        const Counters& before = moments[0][i];
        const Counters& after = moments[1][i];
        if ((row.displays >> i & 1) != 0 && after.count(name) != 0 && before.count(name) != 0) {
          displays++;
          EXPECT_NE(after.at(name), before.at(name)) << name << " of " << kCommands[i];
        }
      }
      EXPECT_GT(displays, 0) << name;
    }
  }
}
INSTANTIATE_TEST_SUITE_P(Boards, CountersOfABoard, testing::ValuesIn(kWatches));

// A counter that is shown anew needs a board that makes it move.
TEST(ShownCounters, AreAllInTheTable) {
  std::vector<std::set<std::string>> named(std::size(kCommands));
  for (const auto& rows :
       {std::span<const Row>(kRows), std::span<const Row>(kSet), std::span<const Row>(kNever)}) {
    for (const Row& row : rows) {
      for (size_t i = 0; i < named.size(); i++) {
        if ((row.displays >> i & 1) != 0) {
          named[i].merge(wordsOf(row.counters));
        }
      }
    }
  }
  const Shown shown = shownBy(kWatches[0]).back();
  for (size_t i = 0; i < named.size(); i++) {
    EXPECT_GT(shown[i].size(), 3U) << kCommands[i];
    for (const auto& [name, value] : shown[i]) {
      EXPECT_EQ(named[i].count(name), 1U) << name << " of " << kCommands[i];
    }
  }
}

}  // namespace
