// SNR of each subcarrier.
#include <qvr.h>

QVR_retval_t QVR_readSNRTable(QVR_lineId_t, QVR_SNRTBL_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_readFarEndSNRTable(QVR_lineId_t, QVR_SNRTBL_t) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
