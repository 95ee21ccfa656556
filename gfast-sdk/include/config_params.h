// The firmware's start-up parameters: their ids and names, and the dictionary by which a chip says where each
// of them lies, how long it is and what it applies to.
#pragma once

#include <cstddef>
#include <cstdint>

// clang-format off

// The parameters in the order of their ids, from 0: X(name).
#define QVR_CONFIG_PARAMS_OF_8(X, name) \
  X(name##_0) X(name##_1) X(name##_2) X(name##_3) X(name##_4) X(name##_5) X(name##_6) X(name##_7)

// These have a display name.
#define QVR_NAMED_CONFIG_PARAMS(X) \
  X(ParamsRevision) X(ClassifierUnicastMask) X(ClassifierMulticastMask) X(reserved_1) X(runBootForLinks) \
  X(pad_1) X(outerVlanID) X(innerVlanID) X(numTduSymbolSamples) X(numTxSymbolsInFrame) \
  X(numRxSymbolsInFrame) X(numDownstreamSymbols) X(profileNumber) X(RunGHandShake) X(numSecondsToWait) \
  X(ethernetInterfaceType) X(userActivationState) X(loggerEnabled) X(AutoResetAtFailState) \
  X(AutoResetTimeoutSec) X(disableReinit) X(disableBcastLogs) \
  QVR_CONFIG_PARAMS_OF_8(X, bandStart) \
  QVR_CONFIG_PARAMS_OF_8(X, flatDecrease) \
  QVR_CONFIG_PARAMS_OF_8(X, saturation) \
  X(isFlatDecrease) X(numTones) X(obsoleteNumDataTonesRmcPart) X(obsoleteNumPilotsTonesRmcPart) \
  X(txNumUnmodulated) X(rxNumUnmodulated) X(obsoleteRmcSize) X(codeWordSize) X(numCodeWords) \
  X(txLogicalFrameNumSym) X(rxLogicalFrameNumSym) X(logical_frame_num_sym_dl) \
  X(logical_frame_num_sym_ul) X(logical_frame_delay_dl) X(logical_frame_delay_ul) \
  X(tx_delay_in_framer_cpe) X(rx_delay_in_framer_cpe) X(fdu_pipe_length_cpe) X(ack_delay_dl) \
  X(ack_delay_ul) X(fdu_ack_delay_cpe) X(dmprUseFinals) X(dmprSlicerSatSelect) \
  X(dmprSwapTrellisOneBitOrder) X(dmprQam8) X(dmprPrbs1State) X(dmprNumBitsRstValToDecrease) \
  X(rsRedundancy) X(obsoleteNr) X(maxGarunteedRate) X(segmentSize) X(numberOfBursts) X(badStreakLen) \
  X(goodStreakLen) X(disableUsSra) X(disableDsSra) X(vectoringEnabled) X(usMargin) X(dsMargin) \
  X(GHandShakeProfile) X(SpiClockDivider) X(cyclicPrefixSize) X(reinitQuickRmcIndicationTime) \
  X(reinitQuickDtuIndicationTime) X(AdaptiveMarginMode) X(blUpperLimit) X(GHSToneAmplitudeConfig) \
  X(us_shine_oh) X(us_INP_min_rein) X(us_fREIN) X(ds_shine_oh) X(ds_INP_min_rein) X(ds_fREIN) \
  X(ResetOnAssert) X(ResetOnAssertDelay) X(defaultActivationLinksState) X(IARBands) \
  QVR_CONFIG_PARAMS_OF_8(X, RFIBand) \
  X(RFIBand_8) X(RFIBand_9) X(RFIBand_10) X(RFIBand_11) X(RFIBand_12) X(RFIBand_13) X(RFIBand_14) \
  X(RFIBand_15) X(disableUsFra) X(disableDsFra) X(fraMinBytesPerSymTh) X(fraFirstStepNoRdtFrames)

// These are known by their number alone.
#define QVR_NAMELESS_CONFIG_PARAMS(X) \
  X(enableFlowControl) X(dsCodeWordSize) X(dsNumCodeWords) X(dsRsRedundancy) X(usCodeWordSize) \
  X(usNumCodeWords) X(usRsRedundancy)

#define QVR_CONFIG_PARAM_ID(name) PARAMS_##name,
enum eConstParams : uint32_t {
  QVR_NAMED_CONFIG_PARAMS(QVR_CONFIG_PARAM_ID)
  QVR_NAMELESS_CONFIG_PARAMS(QVR_CONFIG_PARAM_ID)
  PARAMS_Last  // their number
};
#undef QVR_CONFIG_PARAM_ID

// clang-format on

static_assert(PARAMS_disableUsSra == 80 && PARAMS_cyclicPrefixSize == 87 && PARAMS_RFIBand_15 == 118);
static_assert(PARAMS_enableFlowControl == 123 && PARAMS_Last == 130);

// Entries of the table of display names; the last one stands for a parameter without a name.
constexpr uint32_t QVR_K_PARAM_NAMES = 124;

// Whether one value of a parameter serves the device, or each line has its own.
enum eConfigType : uint32_t { CONFIG_TYPE_PER_DEVICE = 0, CONFIG_TYPE_PER_LINE = 1 };

// The dictionary in chip memory: a header of three little-endian words, then the entries, a word each.
constexpr uint32_t VIRT_BASE_ADDR_CONFIGURATION_PARAMS_DICTIONARY = 0xEA000000;
constexpr size_t PARAMS_DICTIONARY_ADDRESS = 0;  // params_address
constexpr size_t PARAMS_DICTIONARY_PARAMS_SIZE = 4;
constexpr size_t PARAMS_DICTIONARY_SIZE = 8;
constexpr size_t PARAMS_DICTIONARY_HEADER_SIZE = 12;

// An entry word, bits from the least significant: param id 10, length 9 (0: the word is unused), offset 11,
// eConfigState 1, eConfigType 1.
constexpr uint32_t PARAMS_ENTRY_ID(uint32_t word) {
  return word & 0x3FFU;
}
constexpr uint32_t PARAMS_ENTRY_LENGTH(uint32_t word) {
  return (word >> 10) & 0x1FFU;
}
constexpr uint32_t PARAMS_ENTRY_OFFSET(uint32_t word) {
  return (word >> 19) & 0x7FFU;
}
constexpr uint32_t PARAMS_ENTRY_STATE(uint32_t word) {
  return (word >> 30) & 1U;
}
constexpr uint32_t PARAMS_ENTRY_TYPE(uint32_t word) {
  return word >> 31;
}

// Where a line's own copy of the parameters lies; linkId is the line's index within its device.
constexpr uint32_t VIRT_ADDR_CONFIG_PER_LINE_LINK_ID_OFFSET = 20;
constexpr uint32_t VIRT_ADDR_CONFIG_PER_LINE(uint32_t linkId) {
  return 0xEC000000U | (linkId << VIRT_ADDR_CONFIG_PER_LINE_LINK_ID_OFFSET);
}

struct sParamsDictionaryHeader {
  uint32_t params_address;   // device address of the startup-parameters area
  uint32_t params_size;      // bytes of that area
  uint32_t dictionary_size;  // bytes of the entries
};

// One parameter, as its dictionary entry describes it.
struct QVR_paramInfo_t {
  uint32_t param_id : 10;           // eConstParams; the index of a slot that is in use
  uint32_t param_len : 9;           // bytes
  uint32_t param_offset : 11;       // bytes from the start of the startup-parameters area
  uint32_t param_config_state : 1;  // eConfigState
  uint32_t param_config_type : 1;   // eConfigType
  uint32_t param_address;           // device address of the value
  uint32_t param_entry : 16;        // position of the entry in the device's list
};
static_assert(sizeof(QVR_paramInfo_t) == 12);

// Longest value an entry can describe, bytes.
constexpr size_t QVR_K_MAX_PARAM_LEN = 0x1FF;
