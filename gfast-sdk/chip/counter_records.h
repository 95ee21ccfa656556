// The counter blocks of a chip, word by word. In chip memory every word is little-endian; in these records it
// is a value. A block that is printed whole is one list of its fields in chip order, from which the record is
// made: X(field) for unsigned words, S(field) for signed ones.
#pragma once

#include <stdint.h>

// One 32-bit word of a record made from such a list.
#define QVR_UNSIGNED_WORD(field) uint32_t field;
#define QVR_SIGNED_WORD(field) int32_t field;

// clang-format off

// Framing parameters, fixed at the start of showtime.
#define GFAST_FRAMER_INIT_COUNTERS_FIELDS(X, S) \
  X(revision) X(lengthInBytes) X(firstTone) X(numProcessedTones) X(dsCodeWordSize) X(dsNumCodeWords) \
  X(dsRsRedundancy) X(usCodeWordSize) X(usNumCodeWords) X(usRsRedundancy) X(txLogicalFrameNumSym) \
  X(txCodeWordSize) X(txNumCodeWords) X(txRsRedundancy) X(rxLogicalFrameNumSym) X(rxCodeWordSize) \
  X(rxNumCodeWords) X(rxRsRedundancy)
typedef struct GFAST_FRAMER_INIT_COUNTERS_S {
  GFAST_FRAMER_INIT_COUNTERS_FIELDS(QVR_UNSIGNED_WORD, QVR_SIGNED_WORD)
} GFAST_FRAMER_INIT_COUNTERS_S;

// Signal processing parameters, fixed at the start of showtime.
#define GFAST_FDU_INIT_COUNTERS_FIELDS(X, S) \
  X(revision) X(lengthInBytes) X(winSize) X(sseScale) X(vectoringEnabled) X(dsMargin) X(usMargin) \
  X(numTonesOfVecPerFdu) X(numTonesOfVecAux) X(numTonesOfVecPerFduRnd) X(numTonesOfVecAuxRnd) \
  S(DacScaler) S(ActualAnalogGainTx)
typedef struct GFAST_FDU_INIT_COUNTERS_S {
  GFAST_FDU_INIT_COUNTERS_FIELDS(QVR_UNSIGNED_WORD, QVR_SIGNED_WORD)
} GFAST_FDU_INIT_COUNTERS_S;

// Running counters of the framer.
#define GFAST_FRAMER_RAW_COUNTERS_FIELDS(X, S) \
  X(revision) X(lengthInBytes) X(numOfTxFrames) X(numOfGoodRMCs) X(numOfBadRMCs) X(numOfTxDTUs) \
  X(numOfDataTxDTUs) X(numOfDummyTxDTUs) X(numOfRetTxDTUs) X(numOfRxDTUs) X(numOfGoodRxDTUs) \
  X(numOfGoodRxDummyDTUs) X(numOfBadRxDTUs) X(numOfNotHandledDTUs_LackOfTime) X(numOfOutRxDTUs) \
  X(numOfTxPackets) X(numOfRxPackets) X(numOfTxRScw) X(numOfRxRScw) X(numOfRxRSBytesCorrected) \
  X(numOfRxRScwUncorrected) X(TxBD) X(TxBR) X(TxBDR) X(RxBD) X(RxBR) X(RxBDR) \
  X(numDescriptorsProcessedByDtuBuilder) X(TxBytes) X(RxBytes) X(EoCTxBytes) X(EoCRxBytes) X(rtxuc) \
  X(numOfRxFrames) X(eocRxClientLpOutOfOrder) X(txHrtAccumulatedNumSamples) \
  X(txSrtAccumulatedNumSamples) X(rxHrtAccumulatedNumSamples) X(rxSrtAccumulatedNumSamples) \
  X(nearEndLossOfSignal) X(farEndLossOfSignal) X(sraRxExngCnt) X(sraTxExngCnt) X(fraRxExngCnt) \
  X(fraTxExngCnt) X(numNormalDescriptorsCreated) X(nextSegmentIndexForPdlBuilding) X(tailIndex) \
  X(tigaExngCnt) X(attainableNdr) X(TxIdleDataBytes) X(TxDataBytes) X(RxIdleDataBytes) X(RxDataBytes) \
  X(snrMargin) X(bitswapRxExngCnt) X(bitswapTxExngCnt) X(timesRejectedTxOlr) X(fraRxToCnt) \
  X(hrtAccumulatedCycles) X(trap0AccumulatedCycles) X(trap1AccumulatedCycles) \
  X(numOfTailDroppedTxPackets) X(currentIndex) X(nextReleaseIndex) X(RxLD) \
  X(xgmacRxRingCurrentIndexFirstRead) X(xgmacRxRingCurrentIndexSecondRead) \
  X(xgmacRxRingCurrentDescriptor) X(xgmacRxRingTailIndex) X(dtaCurrentMds) X(dtaMdsExngCnt) \
  X(numOfRxOffs) X(numOfTxOffs) X(isDtaActive) X(sraRxTo) X(sraTxTo) X(rpaRxExngCnt) X(rpaTxExngCnt) \
  X(timesRejectedTxRpa) X(rmcSnrMargin) X(trap2AccumulatedCycles) X(srtAccumulatedCycles) \
  X(timesRejectedRxRpa) X(rpaTxLateExchanges)
typedef struct GFAST_FRAMER_RAW_COUNTERS_S {
  GFAST_FRAMER_RAW_COUNTERS_FIELDS(QVR_UNSIGNED_WORD, QVR_SIGNED_WORD)
} GFAST_FRAMER_RAW_COUNTERS_S;

// Running counters of the signal processing.
#define GFAST_FDU_RAW_COUNTERS_FIELDS(X, S) \
  X(revision) X(lengthInBytes) X(rxMargin) X(lossOfMargin) X(lossOfPower) X(UPBOKLE) X(UPBOKLE_R) \
  S(ACTATPds) S(ACTATPus) X(TimeGapCorrection)
typedef struct GFAST_FDU_RAW_COUNTERS_S {
  GFAST_FDU_RAW_COUNTERS_FIELDS(QVR_UNSIGNED_WORD, QVR_SIGNED_WORD)
} GFAST_FDU_RAW_COUNTERS_S;

// What the control processor derives from the others.
#define GFAST_DERIVED_COUNTERS_FIELDS(X, S) \
  X(revision) X(lengthInBytes) X(lossOfSignalFailure) X(lossOfMarginFailure) X(lossOfRmcFailure) \
  X(lossOfPowerFailure) X(erroredSeconds) X(severlyErroredSeconds) X(lossOfSignalSeconds) \
  X(lossOfRMCSeconds) X(unavailableSeconds) X(fullInits) X(failedFullInits) X(fastInits) \
  X(failedFastInits) X(crcAnomaly) X(RxETR) X(EFTR) X(TxRateInKbps) X(EFTR_min) X(EocTxRateInKbps) \
  X(EocRxRateInKbps) X(lorDefect) X(lorDefects) X(continousMillisecondsOfLorDefects) \
  X(persistentLorDefect) X(errorFreeBits) X(TxETR) X(txHrtPrecentage) X(txSrtPrecentage) \
  X(rxHrtPrecentage) X(rxSrtPrecentage) X(persistentLossOfSignalDefect) X(lossOfSignalFailureCounter) \
  X(lossOfRmcFailureCounter) X(lossOfMarginFailureCounter) X(lossOfPowerFailureCounter) X(TxNDR) \
  X(RxNDR) X(TxEtrAvg) X(RxEtrAvg) X(PreShowTimeTxETR) X(PreShowTimeRxETR) \
  X(continuousSeverlyErroredSeconds) X(ETRds_MaxMds) X(ETRus_MaxMus) X(NewMds) X(hrtPrecentage) \
  X(srtPrecentage) X(trap0Precentage) X(trap1Precentage) X(trap2Precentage) \
  X(continuousLossOfSignalSeconds) X(continuousLossOfRMCSeconds)
typedef struct GFAST_DERIVED_COUNTERS_S {
  GFAST_DERIVED_COUNTERS_FIELDS(QVR_UNSIGNED_WORD, QVR_SIGNED_WORD)
} GFAST_DERIVED_COUNTERS_S;

// Counters that the FTU at the far end keeps of itself.
#define G9701_MANAGEMENT_COUNTERS_FIELDS(X, S) \
  X(fec) X(crc) X(rtxUc) X(rtxTx) X(erroredSeconds) X(serverlyErroredSeconds) X(lossOfSignalSeconds) \
  X(lossOfRmcSeconds) X(unavailableSeconds) X(eftrMin) X(errorFreeBitsCounter)
typedef struct G9701_ManagementCounters_t {
  G9701_MANAGEMENT_COUNTERS_FIELDS(QVR_UNSIGNED_WORD, QVR_SIGNED_WORD)
} G9701_ManagementCounters_t;

// clang-format on

#undef QVR_UNSIGNED_WORD
#undef QVR_SIGNED_WORD

// What the expected throughput is computed from.
typedef struct ETR_DB_S {
  uint32_t dtuOverheadSize, numSamplesInSymbol, samplingFrequency, numFramesInSuperFrame, numSymbolsInFrame;
  uint32_t numTxSymbols, Tx_kFec, Tx_nFec, Tx_Q, Tx_B_D, Tx_B_DR;
  uint32_t numRxSymbols, Rx_kFec, Rx_nFec, Rx_Q, Rx_B_D, Rx_B_DR;
} ETR_DB_S;

// Cumulative performance monitoring counters since the chip started (ITU-T G.997.2), both ends.
typedef struct G9972_NEAR_END_COUNTERS_S {
  uint32_t LOS, LOM, LOR, LPR;
  uint32_t ES, SES, LOSS, LORS, UAS;
  uint32_t FULL_INITS, FAILEDFULL_INITS, FAST_INITS, FAILEDFAST_INITS;
  uint32_t SRA, FRA, RPA, BSW, TIGA;
  uint32_t CV, RTXUC, RTXTX, EFB;
} G9972_NEAR_END_COUNTERS_S;

typedef struct G9972_FAR_END_COUNTERS_S {
  uint32_t LOS, LOM, LOR, LPR;
  uint32_t ES, SES, LOSS, LORS, UAS;
  uint32_t CV;
  uint32_t SRA, FRA, RPA, BSW;
  uint32_t RTXUC, RTXTX, EFB;
} G9972_FAR_END_COUNTERS_S;

typedef struct G9972_PM_COUNTERS_S {
  G9972_NEAR_END_COUNTERS_S ne;
  G9972_FAR_END_COUNTERS_S fe;
} G9972_PM_COUNTERS_S;

// Measurements of the far end (ITU-T G.9701), in the packed layout they have on the wire.
typedef struct G9701_PMDTestParameters_t {
  uint16_t SNRM;                   // signal-to-noise margin, 0.1 dB
  uint32_t ATTNDR;                 // attainable net data rate, kbit/s
  uint16_t nearEnd_ACTATP;         // actual aggregate transmit power, 0.1 dBm
  uint16_t farEnd_INP_act_shine;   // actual impulse noise protection against SHINE, symbols
  uint16_t farEnd_actualSNRM_RMC;  // signal-to-noise margin of the RMC, 0.1 dB
  uint16_t RXpower_dBm_DS;         // received power
} __attribute__((packed)) G9701_PMDTestParameters_t;
