#include "virtual-board/chip/parameter_table.h"

#include <array>

#include "virtual-board/base/line_framing.h"

namespace gfast::board {

namespace {

// The dictionary has eleven bits for an offset and nine for a length.
constexpr uint32_t kMaxArea = 1U << 11;
constexpr uint32_t kMaxLength = (1U << 9) - 1;

// Complex samples at half the line's sample rate: 2048 and the cyclic extension of 10/64.
constexpr uint32_t kComplexSamplesPerSymbol = kSamplesPerSymbol / 2;
constexpr uint32_t kCyclicPrefix = kComplexSamplesPerSymbol - kTones;
static_assert(kCyclicPrefix == 160);
constexpr uint32_t kTone30MHz = 580;
constexpr uint64_t kEveryBit = 0xFFFFFFFFFFFF;  // of a MAC address
constexpr uint64_t kGroupBit = 0x000000000001;
constexpr uint32_t kTargetMargin = 60;    // 6.0 dB
constexpr uint32_t kReinFrequency = 100;  // Hz
constexpr uint32_t kAnyRate = 0xFFFFFFFF;

// One value for the whole chip, applied by a restart.
constexpr Parameter chip(eConstParams id, uint32_t length, uint64_t initial) {
  return {id, length, CONFIG_STATE_SYSTEM, CONFIG_TYPE_PER_DEVICE, initial};
}

// A value for each line, applied by a restart: the shape of the spectrum.
constexpr Parameter spectrum(eConstParams id, uint32_t length, uint64_t initial) {
  return {id, length, CONFIG_STATE_SYSTEM, CONFIG_TYPE_PER_LINE, initial};
}

// A value for each line that can be changed while the chip runs.
constexpr Parameter line(eConstParams id, uint32_t length, uint64_t initial) {
  return {id, length, CONFIG_STATE_LINE, CONFIG_TYPE_PER_LINE, initial};
}

using Table = std::array<Parameter, PARAMS_Last>;

// Numbers are aligned to their length, byte strings to two bytes.
constexpr Table placed(Table table, uint32_t& end) {
  for (Parameter& parameter : table) {
    const uint32_t boundary = parameter.length == 4 ? 4 : 2;
    parameter.offset = (end + boundary - 1) / boundary * boundary;
    end = parameter.offset + parameter.length;
  }
  end = (end + 3) / 4 * 4;
  return table;
}

constexpr Table kParameters{{
    chip(PARAMS_ParamsRevision, 4, 1),
    chip(PARAMS_ClassifierUnicastMask, 6, kEveryBit),
    chip(PARAMS_ClassifierMulticastMask, 6, kGroupBit),
    chip(PARAMS_reserved_1, 12, 0),
    chip(PARAMS_runBootForLinks, 2, 1),
    chip(PARAMS_pad_1, 3, 0),
    chip(PARAMS_outerVlanID, 2, 0),
    chip(PARAMS_innerVlanID, 2, 0),
    chip(PARAMS_numTduSymbolSamples, 4, kComplexSamplesPerSymbol),
    chip(PARAMS_numTxSymbolsInFrame, 4, kSymbolsPerFrame),
    chip(PARAMS_numRxSymbolsInFrame, 4, kSymbolsPerFrame),
    chip(PARAMS_numDownstreamSymbols, 4, kDownstreamSymbols),
    chip(PARAMS_profileNumber, 4, 106),
    chip(PARAMS_RunGHandShake, 4, 1),
    chip(PARAMS_numSecondsToWait, 4, 5),
    chip(PARAMS_ethernetInterfaceType, 4, 1),
    chip(PARAMS_userActivationState, 4, 0),
    chip(PARAMS_loggerEnabled, 4, 1),
    chip(PARAMS_AutoResetAtFailState, 4, 0),
    chip(PARAMS_AutoResetTimeoutSec, 4, 60),
    line(PARAMS_disableReinit, 4, 0),
    chip(PARAMS_disableBcastLogs, 4, 0),
    spectrum(PARAMS_bandStart_0, 4, kFirstTone),
    spectrum(PARAMS_bandStart_1, 4, kTone30MHz),
    spectrum(PARAMS_bandStart_2, 4, kLastTone),
    spectrum(PARAMS_bandStart_3, 4, 0),
    spectrum(PARAMS_bandStart_4, 4, 0),
    spectrum(PARAMS_bandStart_5, 4, 0),
    spectrum(PARAMS_bandStart_6, 4, 0),
    spectrum(PARAMS_bandStart_7, 4, 0),
    spectrum(PARAMS_flatDecrease_0, 2, 0),
    spectrum(PARAMS_flatDecrease_1, 2, 0),
    spectrum(PARAMS_flatDecrease_2, 2, 0),
    spectrum(PARAMS_flatDecrease_3, 2, 0),
    spectrum(PARAMS_flatDecrease_4, 2, 0),
    spectrum(PARAMS_flatDecrease_5, 2, 0),
    spectrum(PARAMS_flatDecrease_6, 2, 0),
    spectrum(PARAMS_flatDecrease_7, 2, 0),
    spectrum(PARAMS_saturation_0, 2, 0),
    spectrum(PARAMS_saturation_1, 2, 0),
    spectrum(PARAMS_saturation_2, 2, 0),
    spectrum(PARAMS_saturation_3, 2, 0),
    spectrum(PARAMS_saturation_4, 2, 0),
    spectrum(PARAMS_saturation_5, 2, 0),
    spectrum(PARAMS_saturation_6, 2, 0),
    spectrum(PARAMS_saturation_7, 2, 0),
    spectrum(PARAMS_isFlatDecrease, 4, 0),
    chip(PARAMS_numTones, 4, kTones),
    chip(PARAMS_obsoleteNumDataTonesRmcPart, 4, 0),
    chip(PARAMS_obsoleteNumPilotsTonesRmcPart, 4, 0),
    chip(PARAMS_txNumUnmodulated, 4, 0),
    chip(PARAMS_rxNumUnmodulated, 4, 0),
    chip(PARAMS_obsoleteRmcSize, 4, 0),
    chip(PARAMS_codeWordSize, 4, kDownstreamDtu.codewordSize),
    chip(PARAMS_numCodeWords, 4, kDownstreamDtu.codewords),
    chip(PARAMS_txLogicalFrameNumSym, 4, kDownstreamSymbols),
    chip(PARAMS_rxLogicalFrameNumSym, 4, kUpstreamSymbols),
    chip(PARAMS_logical_frame_num_sym_dl, 4, kDownstreamSymbols),
    chip(PARAMS_logical_frame_num_sym_ul, 4, kUpstreamSymbols),
    chip(PARAMS_logical_frame_delay_dl, 4, 0),
    chip(PARAMS_logical_frame_delay_ul, 4, 0),
    chip(PARAMS_tx_delay_in_framer_cpe, 4, 2),
    chip(PARAMS_rx_delay_in_framer_cpe, 4, 2),
    chip(PARAMS_fdu_pipe_length_cpe, 4, 4),
    chip(PARAMS_ack_delay_dl, 4, 2),
    chip(PARAMS_ack_delay_ul, 4, 2),
    chip(PARAMS_fdu_ack_delay_cpe, 4, 2),
    chip(PARAMS_dmprUseFinals, 4, 1),
    chip(PARAMS_dmprSlicerSatSelect, 4, 0),
    chip(PARAMS_dmprSwapTrellisOneBitOrder, 4, 0),
    chip(PARAMS_dmprQam8, 4, 0),
    chip(PARAMS_dmprPrbs1State, 4, 0x7FF),
    chip(PARAMS_dmprNumBitsRstValToDecrease, 4, 0),
    chip(PARAMS_rsRedundancy, 4, kDownstreamDtu.redundancy),
    chip(PARAMS_obsoleteNr, 4, 0),
    line(PARAMS_maxGarunteedRate, 4, kAnyRate),
    chip(PARAMS_segmentSize, 4, 64),
    chip(PARAMS_numberOfBursts, 4, 1),
    chip(PARAMS_badStreakLen, 4, 8),
    chip(PARAMS_goodStreakLen, 4, 8),
    line(PARAMS_disableUsSra, 4, 0),
    line(PARAMS_disableDsSra, 4, 0),
    chip(PARAMS_vectoringEnabled, 4, 1),
    line(PARAMS_usMargin, 2, kTargetMargin),
    line(PARAMS_dsMargin, 2, kTargetMargin),
    chip(PARAMS_GHandShakeProfile, 4, 0),
    chip(PARAMS_SpiClockDivider, 4, 4),
    chip(PARAMS_cyclicPrefixSize, 4, kCyclicPrefix),
    line(PARAMS_reinitQuickRmcIndicationTime, 4, 100),
    line(PARAMS_reinitQuickDtuIndicationTime, 4, 100),
    line(PARAMS_AdaptiveMarginMode, 4, 0),
    line(PARAMS_blUpperLimit, 2, kMostToneBits),
    chip(PARAMS_GHSToneAmplitudeConfig, 8, 0),
    line(PARAMS_us_shine_oh, 2, 0),
    line(PARAMS_us_INP_min_rein, 2, 0),
    line(PARAMS_us_fREIN, 4, kReinFrequency),
    line(PARAMS_ds_shine_oh, 2, 0),
    line(PARAMS_ds_INP_min_rein, 2, 0),
    line(PARAMS_ds_fREIN, 4, kReinFrequency),
    chip(PARAMS_ResetOnAssert, 4, 1),
    chip(PARAMS_ResetOnAssertDelay, 4, 5),
    chip(PARAMS_defaultActivationLinksState, 4, 1),
    spectrum(PARAMS_IARBands, 4, 0),
    spectrum(PARAMS_RFIBand_0, 4, 0),
    spectrum(PARAMS_RFIBand_1, 4, 0),
    spectrum(PARAMS_RFIBand_2, 4, 0),
    spectrum(PARAMS_RFIBand_3, 4, 0),
    spectrum(PARAMS_RFIBand_4, 4, 0),
    spectrum(PARAMS_RFIBand_5, 4, 0),
    spectrum(PARAMS_RFIBand_6, 4, 0),
    spectrum(PARAMS_RFIBand_7, 4, 0),
    spectrum(PARAMS_RFIBand_8, 4, 0),
    spectrum(PARAMS_RFIBand_9, 4, 0),
    spectrum(PARAMS_RFIBand_10, 4, 0),
    spectrum(PARAMS_RFIBand_11, 4, 0),
    spectrum(PARAMS_RFIBand_12, 4, 0),
    spectrum(PARAMS_RFIBand_13, 4, 0),
    spectrum(PARAMS_RFIBand_14, 4, 0),
    spectrum(PARAMS_RFIBand_15, 4, 0),
    line(PARAMS_disableUsFra, 4, 0),
    line(PARAMS_disableDsFra, 4, 0),
    line(PARAMS_fraMinBytesPerSymTh, 4, 32),
    line(PARAMS_fraFirstStepNoRdtFrames, 4, 2),
    chip(PARAMS_enableFlowControl, 4, 0),
    line(PARAMS_dsCodeWordSize, 4, kDownstreamDtu.codewordSize),
    line(PARAMS_dsNumCodeWords, 4, kDownstreamDtu.codewords),
    line(PARAMS_dsRsRedundancy, 4, kDownstreamDtu.redundancy),
    line(PARAMS_usCodeWordSize, 4, kUpstreamDtu.codewordSize),
    line(PARAMS_usNumCodeWords, 4, kUpstreamDtu.codewords),
    line(PARAMS_usRsRedundancy, 4, kUpstreamDtu.redundancy),
}};

struct Layout {
  Table table{};
  uint32_t size = 0;
};

constexpr Layout kLayout = [] {
  Layout layout;
  layout.table = placed(kParameters, layout.size);
  return layout;
}();

constexpr bool inOrder(const Table& table) {
  for (size_t i = 0; i < table.size(); i++) {
    if (table[i].id != i || table[i].length == 0 || table[i].length > kMaxLength) {
      return false;
    }
  }
  return true;
}
static_assert(inOrder(kLayout.table));
static_assert(kLayout.size < kMaxArea);

}  // namespace

std::span<const Parameter, PARAMS_Last> parameterTable() {
  return kLayout.table;
}

uint32_t parameterAreaSize() {
  return kLayout.size;
}

const char* parameterName(eConstParams id) {
#define NAME(name) #name,
  static constexpr const char* names[] = {QVR_NAMED_CONFIG_PARAMS(NAME) QVR_NAMELESS_CONFIG_PARAMS(NAME)};
#undef NAME
  static_assert(std::size(names) == PARAMS_Last);
  return names[id];
}

}  // namespace gfast::board
