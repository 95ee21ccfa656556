// First processed subcarrier and their number.
#include <qvr.h>

QVR_retval_t QVR_getLinePhyParams(QVR_lineId_t, QVR_linePhyParams_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
