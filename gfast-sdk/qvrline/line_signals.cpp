// What is received and sent on each subcarrier.
#include <qvr.h>

QVR_retval_t QVR_readRxSignal(QVR_lineId_t, double*, double*, QVR_AFE_PARAMS_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readFarEndRxSignal(QVR_lineId_t, double*, double*, QVR_AFE_PARAMS_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readTxSignal(QVR_lineId_t, double*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readFarEndTxSignal(QVR_lineId_t, double*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readTxFEQ(QVR_lineId_t, QVR_FEQ_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readFarEndTxFEQ(QVR_lineId_t, QVR_FEQ_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
