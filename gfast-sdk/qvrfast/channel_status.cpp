// The status of each direction of a line. A chip knows what it receives and what it transmits; which of the
// two is upstream depends on the side of the line that it is on.

#include "qvrline/line_table.h"

#include <qvr.h>

using namespace gfast;

namespace {

// How one direction's data transfer units are framed.
struct DtuFraming {
  uint32_t codewordBytes;
  uint32_t dataBytes;  // of a codeword; the rest is redundancy
  uint32_t codewords;
};

QVR_retval_t readFraming(QVR_lineId_t lineId, DtuFraming (*directionOf)(const ETR_DB_S&),
                         QVR_channelStatus_t* status) {
  ETR_DB_S database{};
  const QVR_retval_t result = QVR_readGfastETRdbCounters(lineId, &database);
  if (QVR_STATUS_OK(result)) {
    const DtuFraming framing = directionOf(database);
    status->DTU_NFEC = static_cast<uint8_t>(framing.codewordBytes);
    status->DTU_RFEC = static_cast<uint8_t>(framing.codewordBytes - framing.dataBytes);
    status->DTU_Q = static_cast<uint8_t>(framing.codewords);
  }
  return result;
}

// The direction that the device receives.
QVR_retval_t __QVR_getChannelStatusus(QVR_lineId_t lineId, QVR_channelStatus_t* status) {
  GFAST_DERIVED_COUNTERS_S derived{};
  GFAST_FRAMER_INIT_COUNTERS_S framerInit{};  // not used, but without it there is no status
  GFAST_FRAMER_RAW_COUNTERS_S framer{};
  QVR_retval_t result = QVR_readGfastDerivedCounters(lineId, &derived);
  if (QVR_STATUS_OK(result)) {
    result = QVR_readGfastFramerInitCounters(lineId, &framerInit);
  }
  if (QVR_STATUS_OK(result)) {
    result = QVR_readGfastFramerRawCounters(lineId, &framer);
  }
  if (QVR_STATUS_ERROR(result)) {
    return result;
  }
  status->NDR = derived.RxNDR;
  status->ETR = derived.RxETR;
  status->GDR = derived.RxETR;
  status->ATTNDR = framer.attainableNdr;
  return readFraming(
      lineId,
      [](const ETR_DB_S& etr) {
        return DtuFraming{etr.Rx_nFec, etr.Rx_kFec, etr.Rx_Q};
      },
      status);
}

// The direction that the device transmits.
QVR_retval_t __QVR_getChannelStatusds(QVR_lineId_t lineId, QVR_channelStatus_t* status) {
  GFAST_DERIVED_COUNTERS_S derived{};
  G9701_PMDTestParameters_t farEnd{};
  QVR_retval_t result = QVR_readGfastDerivedCounters(lineId, &derived);
  if (QVR_STATUS_OK(result)) {
    result = QVR_readFarEndPMDTestParameters(lineId, &farEnd);
  }
  if (QVR_STATUS_ERROR(result)) {
    return result;
  }
  status->NDR = derived.TxNDR;
  status->ETR = derived.TxETR;
  status->GDR = derived.TxETR;
  status->ATTNDR = farEnd.ATTNDR;
  return readFraming(
      lineId,
      [](const ETR_DB_S& etr) {
        return DtuFraming{etr.Tx_nFec, etr.Tx_kFec, etr.Tx_Q};
      },
      status);
}

bool isNetworkSide(QVR_lineId_t lineId) {
  return QVR_lineDescriptorForLine(lineId).isDPsideLink != FALSE;
}

}  // namespace

QVR_retval_t QVR_getChannelStatusus(QVR_lineId_t xi_lineId, QVR_channelStatus_t* xo_status) {
  return isNetworkSide(xi_lineId) ? __QVR_getChannelStatusus(xi_lineId, xo_status)
                                  : __QVR_getChannelStatusds(xi_lineId, xo_status);
}

QVR_retval_t QVR_getChannelStatusds(QVR_lineId_t xi_lineId, QVR_channelStatus_t* xo_status) {
  return isNetworkSide(xi_lineId) ? __QVR_getChannelStatusds(xi_lineId, xo_status)
                                  : __QVR_getChannelStatusus(xi_lineId, xo_status);
}
