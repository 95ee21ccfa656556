// Loop-back measurements of the analogue front end.
#include <qvr.h>

QVR_retval_t QVR_testAfeTxRxPath(QVR_lineId_t, QVR_lineId_t, const uint32_t*, QVR_complex_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

void QVR_calcMTPR(const QVR_complex_t*, double*) {}

QVR_retval_t QVR_testAfePerformanceMTPR(QVR_lineId_t, QVR_lineId_t, const uint32_t*, QVR_complex_t*,
                                        double*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_testAfePerformanceMTPRInLoop(QVR_lineId_t, QVR_lineId_t, int, QVR_complex_t*, double*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
