// The counter blocks at the console: given what the chip and the far end answer, when this is typed, this is
// printed.
#include <algorithm>

#include "typed_console.h"
#include "unit/sdk/lines.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A field's name and, of a signed one, a minus before it.
using Names = std::vector<std::string>;

// One block as it is shown: where it lies, what its fields are called in chip order, and its first word. The
// words count up from it, above 2^31: read as signed, every one is negative.
struct ShownBlock {
  std::string heading;
  uint32_t address;
  uint32_t first;
  Names names;

  size_t size() const { return 4 * names.size(); }
  Bytes chipBytes() const { return countingWords(size(), first); }
};

const ShownBlock kFramerInit{
    "               FRAMER INIT COUNTERS (e2400000)",
    0xE2400000,
    4000001000,
    {"revision", "lengthInBytes", "firstTone", "numProcessedTones", "dsCodeWordSize", "dsNumCodeWords",
     "dsRsRedundancy", "usCodeWordSize", "usNumCodeWords", "usRsRedundancy", "txLogicalFrameNumSym",
     "txCodeWordSize", "txNumCodeWords", "txRsRedundancy", "rxLogicalFrameNumSym", "rxCodeWordSize",
     "rxNumCodeWords", "rxRsRedundancy"}};

const ShownBlock kFduInit{
    "                 FDU INIT COUNTERS (e2000000)",
    0xE2000000,
    4000002000,
    {"revision", "lengthInBytes", "winSize", "sseScale", "vectoringEnabled", "dsMargin", "usMargin",
     "numTonesOfVecPerFdu", "numTonesOfVecAux", "numTonesOfVecPerFduRnd", "numTonesOfVecAuxRnd", "-DacScaler",
     "-ActualAnalogGainTx"}};

const ShownBlock kFramerRaw{"                FRAMER RAW COUNTERS (e2440000)",
                            0xE2440000,
                            4000003000,
                            {"revision",
                             "lengthInBytes",
                             "numOfTxFrames",
                             "numOfGoodRMCs",
                             "numOfBadRMCs",
                             "numOfTxDTUs",
                             "numOfDataTxDTUs",
                             "numOfDummyTxDTUs",
                             "numOfRetTxDTUs",
                             "numOfRxDTUs",
                             "numOfGoodRxDTUs",
                             "numOfGoodRxDummyDTUs",
                             "numOfBadRxDTUs",
                             "numOfNotHandledDTUs_LackOfTime",
                             "numOfOutRxDTUs",
                             "numOfTxPackets",
                             "numOfRxPackets",
                             "numOfTxRScw",
                             "numOfRxRScw",
                             "numOfRxRSBytesCorrected",
                             "numOfRxRScwUncorrected",
                             "TxBD",
                             "TxBR",
                             "TxBDR",
                             "RxBD",
                             "RxBR",
                             "RxBDR",
                             "numDescriptorsProcessedByDtuBuilder",
                             "TxBytes",
                             "RxBytes",
                             "EoCTxBytes",
                             "EoCRxBytes",
                             "rtxuc",
                             "numOfRxFrames",
                             "eocRxClientLpOutOfOrder",
                             "txHrtAccumulatedNumSamples",
                             "txSrtAccumulatedNumSamples",
                             "rxHrtAccumulatedNumSamples",
                             "rxSrtAccumulatedNumSamples",
                             "nearEndLossOfSignal",
                             "farEndLossOfSignal",
                             "sraRxExngCnt",
                             "sraTxExngCnt",
                             "fraRxExngCnt",
                             "fraTxExngCnt",
                             "numNormalDescriptorsCreated",
                             "nextSegmentIndexForPdlBuilding",
                             "tailIndex",
                             "tigaExngCnt",
                             "attainableNdr",
                             "TxIdleDataBytes",
                             "TxDataBytes",
                             "RxIdleDataBytes",
                             "RxDataBytes",
                             "snrMargin",
                             "bitswapRxExngCnt",
                             "bitswapTxExngCnt",
                             "timesRejectedTxOlr",
                             "fraRxToCnt",
                             "hrtAccumulatedCycles",
                             "trap0AccumulatedCycles",
                             "trap1AccumulatedCycles",
                             "numOfTailDroppedTxPackets",
                             "currentIndex",
                             "nextReleaseIndex",
                             "RxLD",
                             "xgmacRxRingCurrentIndexFirstRead",
                             "xgmacRxRingCurrentIndexSecondRead",
                             "xgmacRxRingCurrentDescriptor",
                             "xgmacRxRingTailIndex",
                             "dtaCurrentMds",
                             "dtaMdsExngCnt",
                             "numOfRxOffs",
                             "numOfTxOffs",
                             "isDtaActive",
                             "sraRxTo",
                             "sraTxTo",
                             "rpaRxExngCnt",
                             "rpaTxExngCnt",
                             "timesRejectedTxRpa",
                             "rmcSnrMargin",
                             "trap2AccumulatedCycles",
                             "srtAccumulatedCycles",
                             "timesRejectedRxRpa",
                             "rpaTxLateExchanges"}};

const ShownBlock kFduRaw{"                   FDU RAW COUNTERS (e2040000)",
                         0xE2040000,
                         4000004000,
                         {"revision", "lengthInBytes", "rxMargin", "lossOfMargin", "lossOfPower", "UPBOKLE",
                          "UPBOKLE_R", "-ACTATPds", "-ACTATPus", "TimeGapCorrection"}};

const ShownBlock kDerived{"                   DERIVED COUNTERS (e2880000)",
                          0xE2880000,
                          4000005000,
                          {"revision",
                           "lengthInBytes",
                           "lossOfSignalFailure",
                           "lossOfMarginFailure",
                           "lossOfRmcFailure",
                           "lossOfPowerFailure",
                           "erroredSeconds",
                           "severlyErroredSeconds",
                           "lossOfSignalSeconds",
                           "lossOfRMCSeconds",
                           "unavailableSeconds",
                           "fullInits",
                           "failedFullInits",
                           "fastInits",
                           "failedFastInits",
                           "crcAnomaly",
                           "RxETR",
                           "EFTR",
                           "TxRateInKbps",
                           "EFTR_min",
                           "EocTxRateInKbps",
                           "EocRxRateInKbps",
                           "lorDefect",
                           "lorDefects",
                           "continousMillisecondsOfLorDefects",
                           "persistentLorDefect",
                           "errorFreeBits",
                           "TxETR",
                           "txHrtPrecentage",
                           "txSrtPrecentage",
                           "rxHrtPrecentage",
                           "rxSrtPrecentage",
                           "persistentLossOfSignalDefect",
                           "lossOfSignalFailureCounter",
                           "lossOfRmcFailureCounter",
                           "lossOfMarginFailureCounter",
                           "lossOfPowerFailureCounter",
                           "TxNDR",
                           "RxNDR",
                           "TxEtrAvg",
                           "RxEtrAvg",
                           "PreShowTimeTxETR",
                           "PreShowTimeRxETR",
                           "continuousSeverlyErroredSeconds",
                           "ETRds_MaxMds",
                           "ETRus_MaxMus",
                           "NewMds",
                           "hrtPrecentage",
                           "srtPrecentage",
                           "trap0Precentage",
                           "trap1Precentage",
                           "trap2Precentage",
                           "continuousLossOfSignalSeconds",
                           "continuousLossOfRMCSeconds"}};

// In the order in which the console reads and in that in which it prints.
const std::vector<const ShownBlock*> kRead{&kDerived, &kFramerInit, &kFramerRaw, &kFduInit, &kFduRaw};
const std::vector<const ShownBlock*> kPrinted{&kFramerInit, &kFduInit, &kFramerRaw, &kFduRaw, &kDerived};

// A line of the display: the name up to column 35, the value.
std::string fieldLine(const std::string& name, const std::string& value) {
  std::string line = name + " = " + value;
  line.insert(0, 35 - std::min<size_t>(35, name.size()), ' ');
  return line;
}

std::string shownValue(uint32_t word, bool isSigned) {
  return isSigned ? std::to_string(int64_t{word} - (int64_t{1} << 32)) : std::to_string(word);
}

// The whole display; `changed` says which words are others than those in chip memory.
struct Patch {
  const ShownBlock* block;
  std::string name;
  uint32_t value;
};

Lines display(const std::vector<Patch>& changed = {}, const std::vector<const ShownBlock*>& unread = {}) {
  Lines lines;
  for (const ShownBlock* block : kPrinted) {
    lines.push_back(block->heading);
    const bool empty = std::ranges::find(unread, block) != unread.end();
    for (size_t i = 0; i < block->names.size(); i++) {
      const bool isSigned = block->names[i].starts_with('-');
      const std::string name = block->names[i].substr(isSigned ? 1 : 0);
      const auto patch = std::ranges::find_if(
          changed, [&](const Patch& other) { return other.block == block && other.name == name; });
      std::string value = empty ? "0" : shownValue(block->first + static_cast<uint32_t>(i), isSigned);
      if (patch != changed.end()) {
        value = std::to_string(patch->value);
      }
      lines.push_back(fieldLine(name, value));
    }
    lines.emplace_back(" ");
  }
  return lines;
}

class ShowGfastCounters : public TypedConsole {
 protected:
  ShowGfastCounters() { enterBothLines(); }

  static Script readsNearEnd(int device) {
    Script script;
    for (const ShownBlock* block : kRead) {
      script = script + reads(device, block->address, block->chipBytes());
    }
    return script;
  }

  // The far end's blocks and answers; a step named in `failing` fails.
  Script step(const Script& good, size_t number, size_t failing) const {
    return number == failing ? good.fails(EIO) : good;
  }
};

TEST_F(ShowGfastCounters, PrintsTheFiveBlocksField ByField) {}

}  // namespace
