// Expected throughput and raw rate of a line, from its framing (ITU-T G.9701).
//
// The results are compared digit by digit with those of the chip and of other machines. So every operation
// has single precision, in the order written; nothing may be more precise, reordered or fused (the library is
// built without contraction).
#include <qvr.h>

#include <cfloat>

#include "qvrline/line_table.h"

using namespace gfast;

static_assert(FLT_EVAL_METHOD == 0, "single precision must be evaluated as such");

namespace {

constexpr float EOC_OVERHEAD = 1000.0F;  // bit/s

// The values of one direction; the others are common to both.
struct Framing {
  uint32_t symbols;         // of a frame, in this direction
  uint32_t kFec;            // bytes of a Reed-Solomon code word that carry data
  uint32_t nFec;            // bytes of a code word
  uint32_t codeWords;       // a data transfer unit
  uint32_t bytesPerSymbol;  // of data symbols
  uint32_t bytesPerRmc;     // of data in RMC symbols
};

float expectedThroughput(const ETR_DB_S& shared, const Framing& direction) {
  const auto F = static_cast<float>(shared.samplingFrequency);
  const auto O = static_cast<float>(shared.dtuOverheadSize);
  const auto S = static_cast<float>(shared.numSamplesInSymbol);
  const auto M = static_cast<float>(shared.numFramesInSuperFrame);
  const auto Nf = static_cast<float>(shared.numSymbolsInFrame);
  const auto Ns = static_cast<float>(direction.symbols);
  const auto K = static_cast<float>(direction.kFec);
  const auto N = static_cast<float>(direction.nFec);
  const auto Q = static_cast<float>(direction.codeWords);
  const auto BD = static_cast<float>(direction.bytesPerSymbol);
  const auto BDR = static_cast<float>(direction.bytesPerRmc);

  const float A = F * O;
  const float X = F * K * (Ns - 1.0F) - Ns * A / Q - F * K / M + A / Q + A / (M * Q);
  const float ofDataSymbols = BD * (X / (S * Nf * N)) * 8.0F;
  const float ofRmcSymbols = BDR * ((F * 8.0F * (Q * K - O)) / (S * Nf * N * Q));
  return (ofDataSymbols + ofRmcSymbols - EOC_OVERHEAD) / 1000.0F;
}

float rawRate(const ETR_DB_S& shared, uint32_t bytesPerSymbol) {
  const auto bits = static_cast<float>(bytesPerSymbol * 8);
  const auto S = static_cast<float>(shared.numSamplesInSymbol);
  const auto F = static_cast<float>(shared.samplingFrequency);
  return bits / S * F / 1000.0F;
}

// The framer's byte counts are live; those of the database are of the start of showtime.
void takeReceiveBytes(const GFAST_FRAMER_RAW_COUNTERS_S& live, ETR_DB_S* framing) {
  framing->Rx_B_D = live.RxBD;
  framing->Rx_B_DR = live.RxBDR;
}

void takeTransmitBytes(const GFAST_FRAMER_RAW_COUNTERS_S& live, ETR_DB_S* framing) {
  framing->Tx_B_D = live.TxBD;
  framing->Tx_B_DR = live.TxBDR;
}

}  // namespace

QVR_retval_t QVR_calcTxETR(ETR_DB_S xi_framing, float* xo_etr) {
  *xo_etr = expectedThroughput(xi_framing, {xi_framing.numTxSymbols, xi_framing.Tx_kFec, xi_framing.Tx_nFec,
                                            xi_framing.Tx_Q, xi_framing.Tx_B_D, xi_framing.Tx_B_DR});
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_calcRxETR(ETR_DB_S xi_framing, float* xo_etr) {
  *xo_etr = expectedThroughput(xi_framing, {xi_framing.numRxSymbols, xi_framing.Rx_kFec, xi_framing.Rx_nFec,
                                            xi_framing.Rx_Q, xi_framing.Rx_B_D, xi_framing.Rx_B_DR});
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_calcTxRawPhyRate(ETR_DB_S xi_framing, float* xo_rate) {
  *xo_rate = rawRate(xi_framing, xi_framing.Tx_B_D);
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_calcRxRawPhyRate(ETR_DB_S xi_framing, float* xo_rate) {
  *xo_rate = rawRate(xi_framing, xi_framing.Rx_B_D);
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_calcETRsForLine(QVR_lineId_t xi_lineId, float* xo_etrDs, float* xo_etrUs,
                                 float* xo_rawRateDs, float* xo_rawRateUs) {
  const QVR_lineDescriptor_t line = QVR_lineDescriptorForLine(xi_lineId);
  if (line.deviceId == QVR_K_DEVICE_NULL || QVR_isLineUp(xi_lineId) != TRUE) {
    return QVR_E_ERROR;
  }
  ETR_DB_S framing{};
  if (const QVR_retval_t status = QVR_readGfastETRdbCounters(xi_lineId, &framing); QVR_STATUS_ERROR(status)) {
    return status;
  }
  GFAST_FRAMER_RAW_COUNTERS_S live{};
  if (const QVR_retval_t status = QVR_readGfastFramerRawCounters(xi_lineId, &live);
      QVR_STATUS_ERROR(status)) {
    return status;
  }
  const bool networkSide = line.isDPsideLink == TRUE;
  takeReceiveBytes(live, &framing);
  QVR_calcRxETR(framing, networkSide ? xo_etrUs : xo_etrDs);
  if (networkSide && xo_rawRateUs != nullptr) {
    QVR_calcRxRawPhyRate(framing, xo_rawRateUs);
  }
  // Here the raw rate is the transmitter's, from the database's bytes. Rates on record were computed this
  // way, and could not be compared with others.
  if (!networkSide && xo_rawRateDs != nullptr) {
    QVR_calcTxRawPhyRate(framing, xo_rawRateDs);
  }
  takeTransmitBytes(live, &framing);
  QVR_calcTxETR(framing, networkSide ? xo_etrDs : xo_etrUs);
  if (float* transmitted = networkSide ? xo_rawRateDs : xo_rawRateUs; transmitted != nullptr) {
    QVR_calcTxRawPhyRate(framing, transmitted);
  }
  return QVR_E_STATUS_OK;
}
