// Bits of each subcarrier.
#include <qvr.h>

QVR_retval_t QVR_readTxBitLoadingTable(QVR_lineId_t, QVR_BLT_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readRxBitLoadingTable(QVR_lineId_t, QVR_BLT_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readTxRMCBitLoadingTable(QVR_lineId_t, QVR_BLT_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readRxRMCBitLoadingTable(QVR_lineId_t, QVR_BLT_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
