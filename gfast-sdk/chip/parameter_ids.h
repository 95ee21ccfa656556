// The firmware's start-up parameters: their numbers and names.
#pragma once

#include <std/c_words.h>

// clang-format off

// The parameters in the order of their ids, from 0: X(name). These have a display name.
#define QVR_NAMED_CONFIG_PARAMS(X) \
  X(ParamsRevision) X(ClassifierUnicastMask) X(ClassifierMulticastMask) X(reserved_1) X(runBootForLinks) \
  X(pad_1) X(outerVlanID) X(innerVlanID) X(numTduSymbolSamples) X(numTxSymbolsInFrame) \
  X(numRxSymbolsInFrame) X(numDownstreamSymbols) X(profileNumber) X(RunGHandShake) X(numSecondsToWait) \
  X(ethernetInterfaceType) X(userActivationState) X(loggerEnabled) X(AutoResetAtFailState) \
  X(AutoResetTimeoutSec) X(disableReinit) X(disableBcastLogs) \
  X(bandStart_0) X(bandStart_1) X(bandStart_2) X(bandStart_3) X(bandStart_4) X(bandStart_5) \
  X(bandStart_6) X(bandStart_7) X(flatDecrease_0) X(flatDecrease_1) X(flatDecrease_2) X(flatDecrease_3) \
  X(flatDecrease_4) X(flatDecrease_5) X(flatDecrease_6) X(flatDecrease_7) X(saturation_0) \
  X(saturation_1) X(saturation_2) X(saturation_3) X(saturation_4) X(saturation_5) X(saturation_6) \
  X(saturation_7) \
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
  X(RFIBand_0) X(RFIBand_1) X(RFIBand_2) X(RFIBand_3) X(RFIBand_4) X(RFIBand_5) X(RFIBand_6) \
  X(RFIBand_7) X(RFIBand_8) X(RFIBand_9) X(RFIBand_10) X(RFIBand_11) X(RFIBand_12) X(RFIBand_13) X(RFIBand_14) \
  X(RFIBand_15) X(disableUsFra) X(disableDsFra) X(fraMinBytesPerSymTh) X(fraFirstStepNoRdtFrames)

// These are known by their number alone.
#define QVR_NAMELESS_CONFIG_PARAMS(X) \
  X(enableFlowControl) X(dsCodeWordSize) X(dsNumCodeWords) X(dsRsRedundancy) X(usCodeWordSize) \
  X(usNumCodeWords) X(usRsRedundancy)

#define QVR_CONFIG_PARAM_ID(name) PARAMS_##name,
GFAST_API_ENUM(eConstParams) {
  QVR_NAMED_CONFIG_PARAMS(QVR_CONFIG_PARAM_ID)
  QVR_NAMELESS_CONFIG_PARAMS(QVR_CONFIG_PARAM_ID)
  PARAMS_Last  // their number
};
#undef QVR_CONFIG_PARAM_ID

// clang-format on

// Whether one value of a parameter serves the device, or each line has its own.
GFAST_API_ENUM(eConfigType){CONFIG_TYPE_PER_DEVICE = 0, CONFIG_TYPE_PER_LINE = 1};

// In which state of the system a parameter is set.
GFAST_API_ENUM(eConfigState){CONFIG_STATE_SYSTEM = 0, CONFIG_STATE_LINE = 1};
