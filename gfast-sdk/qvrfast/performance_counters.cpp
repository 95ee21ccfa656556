// The current counters of a line, from the chip's counter blocks and from the far end.
#include <qvr.h>

namespace {

void fillLine(const GFAST_DERIVED_COUNTERS_S& derived, const GFAST_FRAMER_RAW_COUNTERS_S& framer,
              QVR_linePerformance_t* counters) {
  counters->timeInterval.intervalNumber = 0;
  counters->LOS = derived.lossOfSignalFailureCounter;
  counters->LOM = derived.lossOfMarginFailureCounter;
  counters->LOR = derived.lossOfRmcFailureCounter;
  counters->LPR = derived.lossOfPowerFailureCounter;
  counters->ES = derived.erroredSeconds;
  counters->SES = derived.severlyErroredSeconds;
  counters->LOSS = derived.lossOfSignalSeconds;
  counters->LORS = derived.lossOfRMCSeconds;
  counters->UAS = derived.unavailableSeconds;
  counters->FULL_INITS = derived.fullInits;
  counters->FAILEDFULL_INITS = derived.failedFullInits;
  counters->FAST_INITS = derived.fastInits;
  counters->FAILEDFAST_INITS = derived.failedFastInits;
  counters->SRA = framer.sraRxExngCnt;
  counters->FRA = framer.fraRxExngCnt;
  counters->RPA = framer.rpaRxExngCnt;
  counters->TIGA = framer.tigaExngCnt;
  counters->BSW = framer.bitswapRxExngCnt;
}

using DerivedReader = QVR_retval_t (*)(QVR_lineId_t, GFAST_DERIVED_COUNTERS_S*);
using FramerReader = QVR_retval_t (*)(QVR_lineId_t, GFAST_FRAMER_RAW_COUNTERS_S*);

QVR_retval_t readLine(QVR_lineId_t line, DerivedReader readDerived, FramerReader readFramer,
                      QVR_linePerformance_t* counters) {
  GFAST_DERIVED_COUNTERS_S derived{};
  if (const QVR_retval_t status = readDerived(line, &derived); QVR_STATUS_ERROR(status)) {
    return status;
  }
  GFAST_FRAMER_RAW_COUNTERS_S framer{};
  if (const QVR_retval_t status = readFramer(line, &framer); QVR_STATUS_ERROR(status)) {
    return status;
  }
  fillLine(derived, framer, counters);
  return QVR_E_STATUS_OK;
}

}  // namespace

QVR_retval_t QVR_getCurrNELinePerformance(QVR_lineId_t xi_lineId, QVR_linePerformance_t* xo_counters) {
  return readLine(xi_lineId, QVR_readGfastDerivedCounters, QVR_readGfastFramerRawCounters, xo_counters);
}

QVR_retval_t QVR_getCurrFELinePerformance(QVR_lineId_t xi_lineId, QVR_linePerformance_t* xo_counters) {
  return readLine(xi_lineId, QVR_readGfastDerivedCountersFE, QVR_readGfastFramerRawCountersFE, xo_counters);
}

QVR_retval_t QVR_getCurrNEChannelPerformance(QVR_lineId_t xi_lineId, QVR_ChannelPerformance_t* xo_counters) {
  GFAST_FRAMER_RAW_COUNTERS_S framer{};
  if (const QVR_retval_t status = QVR_readGfastFramerRawCounters(xi_lineId, &framer);
      QVR_STATUS_ERROR(status)) {
    return status;
  }
  GFAST_DERIVED_COUNTERS_S derived{};
  if (const QVR_retval_t status = QVR_readGfastDerivedCounters(xi_lineId, &derived);
      QVR_STATUS_ERROR(status)) {
    return status;
  }
  xo_counters->CV = derived.crcAnomaly;
  xo_counters->RTXUC = framer.rtxuc;
  xo_counters->RTXTX = framer.numOfRetTxDTUs;
  xo_counters->EFB = derived.errorFreeBits;
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_getCurrFEChannelPerformance(QVR_lineId_t xi_lineId, QVR_ChannelPerformance_t* xo_counters) {
  G9701_ManagementCounters_t management{};
  const QVR_retval_t status = QVR_readFarEndFTUmanagementCounters(xi_lineId, &management);
  if (QVR_STATUS_OK(status)) {
    xo_counters->CV = management.crc;
    xo_counters->RTXUC = management.rtxUc;
    xo_counters->RTXTX = management.rtxTx;
    xo_counters->EFB = management.errorFreeBitsCounter;
  }
  return status;
}
