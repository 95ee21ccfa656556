// Counter blocks and measurements of the far end: its chip memory over the eoc, and what it answers when
// asked.
#include <qvr.h>

#include <cstring>

#include "chip/counters.h"
#include "qvrline/eoc.h"
#include "qvrline/line_table.h"
#include "std/byte_order.h"

using namespace gfast;

namespace {

// The far end numbers its own only line 0.
constexpr uint32_t farEndAddress(uint32_t core, uint32_t type) {
  return VIRT_ADDR_GFAST_COUNTERS(core, 0, type);
}

// Clears the block, then asks whether there is a far end to read it from.
template <typename Block>
QVR_retval_t clearAndReach(QVR_lineId_t lineId, Block* block) {
  *block = {};
  if (QVR_deviceIdforLine(lineId) == QVR_K_DEVICE_NULL) {
    return QVR_E_NO_DEVICE_FOR_LINE;
  }
  return QVR_isLineUp(lineId) ? QVR_E_STATUS_OK : QVR_E_ERROR;
}

// Reads and converts a block. A block that was read only in part is cleared.
template <typename Block>
QVR_retval_t readFarEndBlock(QVR_lineId_t lineId, uint32_t core, uint32_t type, Block* block) {
  const QVR_retval_t status = QVR_readmemFarEnd(lineId, farEndAddress(core, type), block, sizeof *block);
  if (QVR_STATUS_OK(status)) {
    QVR_NTOHGfastCounters(block, sizeof *block);
  } else {
    *block = {};
  }
  return status;
}

// What one end sends the other end receives.
void mirrorExchanges(const GFAST_FRAMER_RAW_COUNTERS_S& near, GFAST_FRAMER_RAW_COUNTERS_S* far) {
  far->sraRxExngCnt = near.sraTxExngCnt;
  far->sraTxExngCnt = near.sraRxExngCnt;
  far->fraRxExngCnt = near.fraTxExngCnt;
  far->fraTxExngCnt = near.fraRxExngCnt;
  far->bitswapRxExngCnt = near.bitswapTxExngCnt;
  far->bitswapTxExngCnt = near.bitswapTxExngCnt;  // not the receive counter: management systems rely on it
  far->rpaRxExngCnt = near.rpaTxExngCnt;
  far->rpaTxExngCnt = near.rpaRxExngCnt;
}

}  // namespace

QVR_retval_t QVR_readFarEndFTUmanagementCounters(QVR_lineId_t xi_lineId,
                                                 G9701_ManagementCounters_t* xo_counters) {
  *xo_counters = {};
  uint8_t response[sizeof *xo_counters] = {};
  const QVR_retval_t status =
      askFarEnd(xi_lineId, MGMT_FAR_END_REQ_TYPE_MGMT_COUNTERS, response, sizeof response);
  if (QVR_STATUS_OK(status)) {
    std::memcpy(xo_counters, response, sizeof response);
    QVR_NTOHGfastCounters(xo_counters, sizeof *xo_counters);
  }
  return status;
}

QVR_retval_t QVR_readFarEndPMDTestParameters(QVR_lineId_t xi_lineId,
                                             G9701_PMDTestParameters_t* xo_parameters) {
  *xo_parameters = {};
  uint8_t response[sizeof *xo_parameters] = {};
  const QVR_retval_t status =
      askFarEnd(xi_lineId, MGMT_FAR_END_REQ_TYPE_PMD_SINGLE_READ, response, sizeof response);
  if (QVR_STATUS_OK(status)) {
    xo_parameters->SNRM = load_le16(response);
    xo_parameters->ATTNDR = load_le32(response + 2);
    xo_parameters->nearEnd_ACTATP = load_le16(response + 6);
    xo_parameters->farEnd_INP_act_shine = load_le16(response + 8);
    xo_parameters->farEnd_actualSNRM_RMC = load_le16(response + 10);
    xo_parameters->RXpower_dBm_DS = load_le16(response + 12);
  }
  return status;
}

QVR_retval_t QVR_readGfastFramerInitCountersFE(QVR_lineId_t xi_lineId,
                                               GFAST_FRAMER_INIT_COUNTERS_S* xo_counters) {
  const QVR_retval_t reachable = clearAndReach(xi_lineId, xo_counters);
  if (QVR_STATUS_ERROR(reachable)) {
    return reachable;
  }
  return readFarEndBlock(xi_lineId, VIRT_GFAST_CNTR_FRAMER_CORE, VIRT_GFAST_CNTR_INIT, xo_counters);
}

QVR_retval_t QVR_readGfastFduInitCountersFE(QVR_lineId_t xi_lineId, GFAST_FDU_INIT_COUNTERS_S* xo_counters) {
  const QVR_retval_t reachable = clearAndReach(xi_lineId, xo_counters);
  if (QVR_STATUS_ERROR(reachable)) {
    return reachable;
  }
  return readFarEndBlock(xi_lineId, VIRT_GFAST_CNTR_FDU_CORE, VIRT_GFAST_CNTR_INIT, xo_counters);
}

// The three operations below complete their block with what the far end only tells when asked. Each step may
// fail alone; the result is that of the last step.

QVR_retval_t QVR_readGfastFramerRawCountersFE(QVR_lineId_t xi_lineId,
                                              GFAST_FRAMER_RAW_COUNTERS_S* xo_counters) {
  const QVR_retval_t reachable = clearAndReach(xi_lineId, xo_counters);
  if (QVR_STATUS_ERROR(reachable)) {
    return reachable;
  }
  readFarEndBlock(xi_lineId, VIRT_GFAST_CNTR_FRAMER_CORE, VIRT_GFAST_CNTR_RAW, xo_counters);
  G9701_ManagementCounters_t management{};
  if (QVR_STATUS_OK(QVR_readFarEndFTUmanagementCounters(xi_lineId, &management))) {
    xo_counters->rtxuc = management.rtxUc;
    xo_counters->numOfRetTxDTUs = management.rtxTx;
  }
  GFAST_FRAMER_RAW_COUNTERS_S near{};
  if (QVR_STATUS_OK(QVR_readGfastFramerRawCounters(xi_lineId, &near))) {
    mirrorExchanges(near, xo_counters);
  }
  G9701_PMDTestParameters_t pmd{};
  const QVR_retval_t status = QVR_readFarEndPMDTestParameters(xi_lineId, &pmd);
  if (QVR_STATUS_OK(status)) {
    xo_counters->snrMargin = pmd.SNRM;
    xo_counters->attainableNdr = pmd.ATTNDR;
    xo_counters->rmcSnrMargin = pmd.farEnd_actualSNRM_RMC;
  }
  return status;
}

QVR_retval_t QVR_readGfastFduRawCountersFE(QVR_lineId_t xi_lineId, GFAST_FDU_RAW_COUNTERS_S* xo_counters) {
  const QVR_retval_t reachable = clearAndReach(xi_lineId, xo_counters);
  if (QVR_STATUS_ERROR(reachable)) {
    return reachable;
  }
  readFarEndBlock(xi_lineId, VIRT_GFAST_CNTR_FDU_CORE, VIRT_GFAST_CNTR_RAW, xo_counters);
  G9701_PMDTestParameters_t pmd{};
  const QVR_retval_t status = QVR_readFarEndPMDTestParameters(xi_lineId, &pmd);
  if (QVR_STATUS_OK(status)) {
    xo_counters->ACTATPds = pmd.nearEnd_ACTATP;
  }
  return status;
}

QVR_retval_t QVR_readGfastDerivedCountersFE(QVR_lineId_t xi_lineId, GFAST_DERIVED_COUNTERS_S* xo_counters) {
  const QVR_retval_t reachable = clearAndReach(xi_lineId, xo_counters);
  if (QVR_STATUS_ERROR(reachable)) {
    return reachable;
  }
  readFarEndBlock(xi_lineId, VIRT_GFAST_CNTR_CP_CORE, VIRT_GFAST_CNTR_DERIVED, xo_counters);
  G9701_ManagementCounters_t management{};
  const QVR_retval_t status = QVR_readFarEndFTUmanagementCounters(xi_lineId, &management);
  if (QVR_STATUS_OK(status)) {
    xo_counters->erroredSeconds = management.erroredSeconds;
    xo_counters->severlyErroredSeconds = management.serverlyErroredSeconds;
    xo_counters->lossOfSignalSeconds = management.lossOfSignalSeconds;
    xo_counters->lossOfRMCSeconds = management.lossOfRmcSeconds;
    xo_counters->unavailableSeconds = management.unavailableSeconds;
    xo_counters->EFTR_min = management.eftrMin;
    xo_counters->errorFreeBits = management.errorFreeBitsCounter;
  }
  return status;
}
