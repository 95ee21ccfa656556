// Test signals: generated, sent, captured.
#include <qvr.h>

QVR_retval_t QVR_generateRandomTxSignal(uint32_t, uint32_t, uint32_t, uint32_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_startSignalTransmission(QVR_lineId_t, const uint32_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_receiveSignalSnapshot(QVR_lineId_t, QVR_complex_t*, QVR_complex_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
