// The counter blocks at the console: given what the chip and the far end answer, when this is typed, this is
// printed.
#include <algorithm>
#include <functional>
#include <sstream>

#include "support/chip_identity.h"
#include "support/far_end_answers.h"
#include "support/far_end_memory.h"
#include "support/lines.h"
#include "unit/qvrcli/typed_console.h"

using namespace gfast;
using namespace gfast::console;

namespace {

using testing::ElementsAre;

// One block as it is shown: its address, its fields in chip order (a minus marks a signed one), and its first
// word. The words count up from that one. All are above 2^31, so a signed one shows as negative.
struct ShownBlock {
  std::string heading;
  uint32_t address;
  uint32_t first;
  std::string fields;

  Lines names() const {
    std::istringstream stream(fields);
    Lines result;
    for (std::string name; stream >> name;) {
      result.push_back(name);
    }
    return result;
  }
  Bytes chipBytes() const { return countingWords(4 * names().size(), first); }
};

const ShownBlock kFramerInit{
    "               FRAMER INIT COUNTERS (e2400000)", 0xE2400000, 4000001000,
    "revision lengthInBytes firstTone numProcessedTones dsCodeWordSize dsNumCodeWords dsRsRedundancy "
    "usCodeWordSize usNumCodeWords usRsRedundancy txLogicalFrameNumSym txCodeWordSize txNumCodeWords "
    "txRsRedundancy rxLogicalFrameNumSym rxCodeWordSize rxNumCodeWords rxRsRedundancy"};

const ShownBlock kFduInit{
    "                 FDU INIT COUNTERS (e2000000)", 0xE2000000, 4000002000,
    "revision lengthInBytes winSize sseScale vectoringEnabled dsMargin usMargin numTonesOfVecPerFdu "
    "numTonesOfVecAux numTonesOfVecPerFduRnd numTonesOfVecAuxRnd -DacScaler -ActualAnalogGainTx"};

const ShownBlock kFramerRaw{
    "                FRAMER RAW COUNTERS (e2440000)", 0xE2440000, 4000003000,
    "revision lengthInBytes numOfTxFrames numOfGoodRMCs numOfBadRMCs numOfTxDTUs numOfDataTxDTUs "
    "numOfDummyTxDTUs numOfRetTxDTUs numOfRxDTUs numOfGoodRxDTUs numOfGoodRxDummyDTUs numOfBadRxDTUs "
    "numOfNotHandledDTUs_LackOfTime numOfOutRxDTUs numOfTxPackets numOfRxPackets numOfTxRScw numOfRxRScw "
    "numOfRxRSBytesCorrected numOfRxRScwUncorrected TxBD TxBR TxBDR RxBD RxBR RxBDR "
    "numDescriptorsProcessedByDtuBuilder TxBytes RxBytes EoCTxBytes EoCRxBytes rtxuc numOfRxFrames "
    "eocRxClientLpOutOfOrder txHrtAccumulatedNumSamples txSrtAccumulatedNumSamples "
    "rxHrtAccumulatedNumSamples rxSrtAccumulatedNumSamples nearEndLossOfSignal farEndLossOfSignal "
    "sraRxExngCnt sraTxExngCnt fraRxExngCnt fraTxExngCnt numNormalDescriptorsCreated "
    "nextSegmentIndexForPdlBuilding tailIndex tigaExngCnt attainableNdr TxIdleDataBytes TxDataBytes "
    "RxIdleDataBytes RxDataBytes snrMargin bitswapRxExngCnt bitswapTxExngCnt timesRejectedTxOlr fraRxToCnt "
    "hrtAccumulatedCycles trap0AccumulatedCycles trap1AccumulatedCycles numOfTailDroppedTxPackets "
    "currentIndex nextReleaseIndex RxLD xgmacRxRingCurrentIndexFirstRead "
    "xgmacRxRingCurrentIndexSecondRead xgmacRxRingCurrentDescriptor xgmacRxRingTailIndex dtaCurrentMds "
    "dtaMdsExngCnt numOfRxOffs numOfTxOffs isDtaActive sraRxTo sraTxTo rpaRxExngCnt rpaTxExngCnt "
    "timesRejectedTxRpa rmcSnrMargin trap2AccumulatedCycles srtAccumulatedCycles timesRejectedRxRpa "
    "rpaTxLateExchanges"};

const ShownBlock kFduRaw{
    "                   FDU RAW COUNTERS (e2040000)", 0xE2040000, 4000004000,
    "revision lengthInBytes rxMargin lossOfMargin lossOfPower UPBOKLE UPBOKLE_R -ACTATPds -ACTATPus "
    "TimeGapCorrection"};

const ShownBlock kDerived{
    "                   DERIVED COUNTERS (e2880000)", 0xE2880000, 4000005000,
    "revision lengthInBytes lossOfSignalFailure lossOfMarginFailure lossOfRmcFailure lossOfPowerFailure "
    "erroredSeconds severlyErroredSeconds lossOfSignalSeconds lossOfRMCSeconds unavailableSeconds fullInits "
    "failedFullInits fastInits failedFastInits crcAnomaly RxETR EFTR TxRateInKbps EFTR_min EocTxRateInKbps "
    "EocRxRateInKbps lorDefect lorDefects continousMillisecondsOfLorDefects persistentLorDefect "
    "errorFreeBits TxETR txHrtPrecentage txSrtPrecentage rxHrtPrecentage rxSrtPrecentage "
    "persistentLossOfSignalDefect lossOfSignalFailureCounter lossOfRmcFailureCounter "
    "lossOfMarginFailureCounter lossOfPowerFailureCounter TxNDR RxNDR TxEtrAvg RxEtrAvg PreShowTimeTxETR "
    "PreShowTimeRxETR continuousSeverlyErroredSeconds ETRds_MaxMds ETRus_MaxMus NewMds hrtPrecentage "
    "srtPrecentage trap0Precentage trap1Precentage trap2Precentage continuousLossOfSignalSeconds "
    "continuousLossOfRMCSeconds"};

using Blocks = std::vector<const ShownBlock*>;

const Blocks kInOrderOfReading{&kDerived, &kFramerInit, &kFramerRaw, &kFduInit, &kFduRaw};
const Blocks kInOrderOfPrinting{&kFramerInit, &kFduInit, &kFramerRaw, &kFduRaw, &kDerived};

// A field whose value does not come from the block's word in memory.
struct Patch {
  const ShownBlock* block;
  std::string field;
  uint32_t value;
};

// A line of the display: the name up to column 35, the value.
std::string fieldLine(const std::string& name, const std::string& value) {
  return std::string(35 - std::min<size_t>(35, name.size()), ' ') + name + " = " + value;
}

std::string signedText(uint32_t word) {
  return std::to_string(int64_t{word} - (int64_t{1} << 32));
}

// The whole display. In a block that could not be read all fields but the patched ones are zero.
Lines display(const std::vector<Patch>& patches = {}, const Blocks& unread = {}) {
  Lines lines;
  for (const ShownBlock* block : kInOrderOfPrinting) {
    lines.push_back(block->heading);
    const bool isRead = std::ranges::find(unread, block) == unread.end();
    uint32_t word = block->first;
    for (std::string name : block->names()) {
      const bool isSigned = name.starts_with('-');
      name.erase(0, isSigned ? 1 : 0);
      std::string value = isSigned ? signedText(word) : std::to_string(word);
      value = isRead ? value : "0";
      for (const Patch& patch : patches) {
        value = patch.block == block && patch.field == name ? std::to_string(patch.value) : value;
      }
      lines.push_back(fieldLine(name, value));
      word++;
    }
    lines.emplace_back(" ");
  }
  return lines;
}

// What a far end answers when it is asked for its counters and measurements.
const Bytes kManagement = countingWords(44, 3000000001);

Script asksCounters(int device) {
  return asksManagement(device, kManagement);
}

// The far end sends the block as it lies in its memory.
Script readsFarEndBlock(int device, uint16_t sequence, const ShownBlock& block) {
  return readsFarEnd(device, sequence, block.address, block.chipBytes());
}

// Fields that do not come from the far end's memory, but from its answers or from the near end.
const std::vector<Patch> kDerivedPatches{
    {&kDerived, "erroredSeconds", 3000000005},      {&kDerived, "severlyErroredSeconds", 3000000006},
    {&kDerived, "lossOfSignalSeconds", 3000000007}, {&kDerived, "lossOfRMCSeconds", 3000000008},
    {&kDerived, "unavailableSeconds", 3000000009},  {&kDerived, "EFTR_min", 3000000010},
    {&kDerived, "errorFreeBits", 3000000011}};
const std::vector<Patch> kManagementPatches{{&kFramerRaw, "rtxuc", 3000000003},
                                            {&kFramerRaw, "numOfRetTxDTUs", 3000000004}};
// Words of the near end that count up from 2000000000.
constexpr uint32_t kNearEndFirst = 2000000000;
const std::vector<Patch> kMirrorPatches{
    {&kFramerRaw, "sraRxExngCnt", 2000000042},     {&kFramerRaw, "sraTxExngCnt", 2000000041},
    {&kFramerRaw, "fraRxExngCnt", 2000000044},     {&kFramerRaw, "fraTxExngCnt", 2000000043},
    {&kFramerRaw, "bitswapRxExngCnt", 2000000056}, {&kFramerRaw, "bitswapTxExngCnt", 2000000056},
    {&kFramerRaw, "rpaRxExngCnt", 2000000078},     {&kFramerRaw, "rpaTxExngCnt", 2000000077}};
const std::vector<Patch> kPmdPatches{{&kFramerRaw, "snrMargin", 0x1234},
                                     {&kFramerRaw, "attainableNdr", 0x92345678},
                                     {&kFramerRaw, "rmcSnrMargin", 0xF102}};
const std::vector<Patch> kFduPatches{{&kFduRaw, "ACTATPds", 0xABCD}};

// One step of reading a far-end block: its requests, and the fields that it sets; without any, it reads the
// block itself.
struct Step {
  std::function<Script()> asks;
  std::vector<Patch> brings;
};

class ShowGfastCounters : public TypedConsole {
 protected:
  ShowGfastCounters() { enterBothLines(); }

  // After this the device's record says that its line is up.
  void startDevice(int device) {
    expect(opens(device) + findsLineUp(device));
    QVR_getDeviceInfo(device, nullptr);
  }

  static Script readsNearEnd(int device) {
    Script script;
    for (const ShownBlock* block : kInOrderOfReading) {
      script = script + reads(device, block->address, block->chipBytes());
    }
    return script;
  }

  // The steps after the check whether the line is up.
  std::vector<Step> stepsOf(int device, const ShownBlock* block) {
    std::vector<Step> steps{
        {[this, device, block] { return readsFarEndBlock(device, ++sequence_, *block); }, {}}};
    if (block == &kDerived) {
      steps.push_back({[device] { return asksCounters(device); }, kDerivedPatches});
    } else if (block == &kFramerRaw) {
      steps.push_back({[device] { return asksCounters(device); }, kManagementPatches});
      steps.push_back({[device] { return reads(device, 0xE2440000, countingWords(340, kNearEndFirst)); },
                       kMirrorPatches});
      steps.push_back({[device] { return asksPmd(device); }, kPmdPatches});
    } else if (block == &kFduRaw) {
      steps.push_back({[device] { return asksPmd(device); }, kFduPatches});
    }
    return steps;
  }

  // Expects the reading of the far end, in which one step of one block may fail; returns the display.
  Lines expectFarEnd(int device, const ShownBlock* failingBlock = nullptr, size_t failingStep = 0) {
    std::vector<Patch> patches;
    Blocks unread;
    for (const ShownBlock* block : kInOrderOfReading) {
      expect(findsLineUp(device));
      const std::vector<Step> steps = stepsOf(device, block);
      for (size_t i = 0; i < steps.size(); i++) {
        const bool fails = block == failingBlock && i == failingStep;
        expect(fails ? steps[i].asks().fails(EIO) : steps[i].asks());
        if (!fails) {
          patches.insert(patches.end(), steps[i].brings.begin(), steps[i].brings.end());
        } else if (steps[i].brings.empty()) {
          unread.push_back(block);
        }
      }
    }
    return display(patches, unread);
  }

  // The same, but for one block the n-th read of the check whether the line is up fails.
  Lines expectFarEndLosing(int device, const ShownBlock* lost, size_t position) {
    std::vector<Patch> patches;
    for (const ShownBlock* block : kInOrderOfReading) {
      if (block == lost) {
        expect(findsLineUp(device).failingAt(position, EIO));
        continue;
      }
      expect(findsLineUp(device));
      for (const Step& step : stepsOf(device, block)) {
        expect(step.asks());
        patches.insert(patches.end(), step.brings.begin(), step.brings.end());
      }
    }
    return display(patches, {lost});
  }

 private:
  uint16_t sequence_ = 0;  // exchanges over far-end memory in this process
};

TEST_F(ShowGfastCounters, ShowsTheFiveBlocksFieldByField) {
  expect(opens(0) + readsNearEnd(0));
  const Lines shown = typed("show gfast-counters 0");
  EXPECT_EQ(shown, display());
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowGfastCounters, AlignsNamesToTheRightAndEndsBlocksWithABlank) {
  expect(opens(0) + readsNearEnd(0));
  const Lines shown = typed("show gfast-counters 0");
  ASSERT_EQ(shown.size(), size_t{18 + 13 + 85 + 10 + 54 + 2 * 5});
  EXPECT_EQ(shown[0], "               FRAMER INIT COUNTERS (e2400000)");
  EXPECT_EQ(shown[1], "                           revision = 4000001000");
  EXPECT_EQ(shown[19], " ");
  EXPECT_EQ(shown[20], "                 FDU INIT COUNTERS (e2000000)");
  EXPECT_EQ(shown[32], "                          DacScaler = -294965285");
  EXPECT_EQ(shown[33], "                 ActualAnalogGainTx = -294965284");
  EXPECT_EQ(shown[35], "                FRAMER RAW COUNTERS (e2440000)");
  EXPECT_EQ(shown[63], "numDescriptorsProcessedByDtuBuilder = 4000003027");
  EXPECT_EQ(shown[122], "                   FDU RAW COUNTERS (e2040000)");
  EXPECT_EQ(shown[130], "                           ACTATPds = -294963289");
  EXPECT_EQ(shown[134], "                   DERIVED COUNTERS (e2880000)");
  EXPECT_EQ(shown.back(), " ");
}

TEST_F(ShowGfastCounters, TakesNeForTheNearEnd) {
  expect(opens(1));
  for (const std::string end : {"ne", "NE"}) {
    expect(readsNearEnd(1));
    EXPECT_EQ(typed("show gfast-counters 1 " + end), display());
    verify();
  }
}

TEST_F(ShowGfastCounters, FailsAtTheNearEndOnlyWhenTheLastReadFails) {
  expect(opens(0) + readsNearEnd(0));
  typed("show gfast-counters 0");
  for (const ShownBlock* failing : kInOrderOfReading) {
    for (const ShownBlock* block : kInOrderOfReading) {
      const Script read = reads(0, block->address, block->chipBytes());
      expect(block == failing ? read.fails(EIO) : read);
    }
    SCOPED_TRACE(failing->heading);
    EXPECT_EQ(typed("show gfast-counters 0"),
              failing == &kFduRaw ? Lines{"QVR_readGfastCounters failed"} : display({}, {failing}));
    EXPECT_EQ(result(), CLI_OK);
    verify();
  }
}

TEST_F(ShowGfastCounters, AddsToTheBlocksOfTheFarEndWhatItTellsOfItself) {
  startDevice(1);
  for (const std::string end : {"fe", "FE"}) {
    const Lines expected = expectFarEnd(1);
    EXPECT_EQ(typed("show gfast-counters 1 " + end), expected);
    EXPECT_EQ(result(), CLI_OK);
    verify();
  }
}

TEST_F(ShowGfastCounters, FailsAtTheFarEndOnlyWhenTheLastStepFails) {
  startDevice(0);
  for (const ShownBlock* block : kInOrderOfReading) {
    const size_t count = stepsOf(0, block).size();
    for (size_t i = 0; i < count; i++) {
      SCOPED_TRACE(block->heading + ", step " + std::to_string(i));
      const Lines shown = expectFarEnd(0, block, i);
      const bool decides = block == &kFduRaw && i == count - 1;
      EXPECT_EQ(typed("show gfast-counters 0 fe"),
                decides ? Lines{"QVR_readGfastCounters failed (32)"} : shown);
      verify();
    }
  }
}

TEST_F(ShowGfastCounters, ShowsZerosForABlockOfTheFarEndWhileTheLineIsDown) {
  startDevice(0);
  for (const ShownBlock* block : kInOrderOfReading) {
    for (size_t position = 0; position < findsLineUp(0).size(); position++) {
      SCOPED_TRACE(block->heading + ", read " + std::to_string(position));
      const Lines shown = expectFarEndLosing(0, block, position);
      EXPECT_EQ(typed("show gfast-counters 0 fe"),
                block == &kFduRaw ? Lines{"QVR_readGfastCounters failed (1)"} : shown);
      verify();
    }
  }
}

TEST_F(ShowGfastCounters, FailsAtTheFarEndOfALineThatIsDown) {
  expect(opens(0) + readsIdentity(0, chipWithLine(LS_SILENT)).times(5));
  EXPECT_THAT(typed("show gfast-counters 0 fe"), ElementsAre("QVR_readGfastCounters failed (1)"));
}

TEST_F(ShowGfastCounters, FailsForALineWithoutADevice) {
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show gfast-counters 1"), ElementsAre("QVR_readGfastCounters failed"));
  EXPECT_THAT(typed("show gfast-counters 1 fe"), ElementsAre("QVR_readGfastCounters failed (17)"));
}

TEST_F(ShowGfastCounters, FailsForAnAbsentDevice) {
  expect(opens(1).fails(ENOENT).times(10));
  EXPECT_THAT(typed("show gfast-counters 1"), ElementsAre("QVR_readGfastCounters failed"));
  EXPECT_THAT(typed("show gfast-counters 1 fe"), ElementsAre("QVR_readGfastCounters failed (1)"));
}

TEST_F(ShowGfastCounters, RefusesAnUnknownLineOrEndBeforeReading) {
  for (const std::string line : {"2", "-1", "99999999999", "2 xx"}) {
    EXPECT_THAT(typed("show gfast-counters " + line), ElementsAre("invalid line number")) << line;
  }
  for (const std::string end : {"xx", "Ne", "fE", "nee", "f", "curr"}) {
    EXPECT_THAT(typed("show gfast-counters 0 " + end), ElementsAre("parameter must be curr or prev")) << end;
  }
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowGfastCounters, TakesALineAndAnEndAtMost) {
  const auto usage = ElementsAre("show gfast-counters <line-id> [(ne | fe)]");
  EXPECT_THAT(typed("show gfast-counters"), usage);
  EXPECT_THAT(typed("show gfast-counters ?"), usage);
  EXPECT_THAT(typed("show gfast-counters 0 ?"), usage);
  EXPECT_THAT(typed("show gfast-counters 0 ne 1"), usage);
}

using ShowRemoteManagementCounters = ShowGfastCounters;

const Lines kShownManagement{"fec                        3000000001",  //
                             "crc                        3000000002",  //
                             "rtxUc                      3000000003",  //
                             "rtxTx                      3000000004",  //
                             "erroredSeconds             3000000005",  //
                             "serverlyErroredSeconds     3000000006",  //
                             "lossOfSignalSeconds        3000000007",  //
                             "lossOfRmcSeconds           3000000008",  //
                             "unavailableSeconds         3000000009",  //
                             "eftrMin                    3000000010",  //
                             "errorFreeBitsCounter       3000000011"};

TEST_F(ShowRemoteManagementCounters, ShowsWhatTheFarEndCounts) {
  startDevice(0);
  expect(asksCounters(0));
  EXPECT_EQ(typed("show remote-management-counters"), kShownManagement);
  startDevice(1);
  expect(asksCounters(1));
  EXPECT_EQ(typed("show remote-management-counters 1"), kShownManagement);
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowRemoteManagementCounters, ReportsAFarEndThatDoesNotAnswer) {
  startDevice(0);
  expect(asksCounters(0).fails(ETIMEDOUT));
  EXPECT_THAT(typed("show remote-management-counters 0"),
              ElementsAre("CLI_showRemoteManagemenCounters failed (32)"));
  EXPECT_EQ(result(), CLI_OK);
  expect(sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_MGMT_COUNTERS, {}, 44, countingWords(40, 1)));
  EXPECT_THAT(typed("show remote-management-counters 0"),
              ElementsAre("CLI_showRemoteManagemenCounters failed (32)"));
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("show remote-management-counters 1"),
              ElementsAre("CLI_showRemoteManagemenCounters failed (32)"));
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show remote-management-counters 1"),
              ElementsAre("CLI_showRemoteManagemenCounters failed (17)"));
}

TEST_F(ShowRemoteManagementCounters, RefusesAnUnknownLine) {
  for (const std::string line : {"2", "-1"}) {
    EXPECT_THAT(typed("show remote-management-counters " + line),
                ElementsAre("invalid parameter - line number must be between 0..1"));
  }
  EXPECT_EQ(result(), CLI_OK);
  const auto usage = ElementsAre("show remote-management-counters [<line-id>] : { 0 }");
  EXPECT_THAT(typed("show remote-management-counters ?"), usage);
  EXPECT_THAT(typed("show remote-management-counters 0 1"), usage);
}

using ShowPmdTestParameters = ShowGfastCounters;

const Lines kShownPmd{"SNRM                       4660",        //
                      "ATTNDR                     2452903544",  //
                      "nearEnd_ACTATP             43981",       //
                      "farEnd_INP_act_shine       772",         //
                      "farEnd_actualSNRM_RMC      61698",       //
                      "RXpower_dBm_DS             1543"};

TEST_F(ShowPmdTestParameters, ShowsWhatTheFarEndMeasures) {
  startDevice(0);
  expect(asksPmd(0));
  EXPECT_EQ(typed("show pmd-test-parameters"), kShownPmd);
  startDevice(1);
  expect(asksPmd(1));
  EXPECT_EQ(typed("show pmd-test-parameters 1"), kShownPmd);
  EXPECT_EQ(result(), CLI_OK);
}

TEST_F(ShowPmdTestParameters, ReportsAFarEndThatDoesNotAnswer) {
  startDevice(0);
  expect(asksPmd(0).fails(ETIMEDOUT));
  EXPECT_THAT(typed("show pmd-test-parameters 0"), ElementsAre("CLI_showPMDTestParameters failed (32)"));
  EXPECT_EQ(result(), CLI_OK);
  expect(sendsToFarEnd(0, 0, MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ, {}, 14, Bytes(13, 1)));
  EXPECT_THAT(typed("show pmd-test-parameters 0"), ElementsAre("CLI_showPMDTestParameters failed (32)"));
  expect(opens(1).fails(ENOENT));
  EXPECT_THAT(typed("show pmd-test-parameters 1"), ElementsAre("CLI_showPMDTestParameters failed (32)"));
  addLine(1, QVR_K_DEVICE_NULL, 0, FALSE);
  EXPECT_THAT(typed("show pmd-test-parameters 1"), ElementsAre("CLI_showPMDTestParameters failed (17)"));
}

TEST_F(ShowPmdTestParameters, RefusesAnUnknownLine) {
  for (const std::string line : {"2", "-1"}) {
    EXPECT_THAT(typed("show pmd-test-parameters " + line),
                ElementsAre("invalid parameter - line number must be between 0..1"));
  }
  EXPECT_EQ(result(), CLI_OK);
  const auto usage = ElementsAre("show pmd-test-parameters [<line-id>] : { 0 }");
  EXPECT_THAT(typed("show pmd-test-parameters ?"), usage);
  EXPECT_THAT(typed("show pmd-test-parameters 0 1"), usage);
}

}  // namespace
