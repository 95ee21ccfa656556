// Vectoring coefficients.
#include <qvr.h>

QVR_retval_t QVR_readVectMatrix(QVR_lineId_t, uint32_t, int16_t*, uint32_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readCancelerMatrixForLine(QVR_lineId_t, uint16_t, QVR_tonePairMatrix_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readCancelerMatrixForAllLines(uint16_t, QVR_tonePairMatrix_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readPrecoderMatrixForLine(QVR_lineId_t, uint16_t, QVR_tonePairMatrix_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readPrecoderMatrixForAllLines(uint16_t, QVR_tonePairMatrix_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
