// The analogue front end.
#include <qvr.h>

QVR_retval_t QVR_getAfeParams(QVR_lineId_t, QVR_AFE_PARAMS_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getFarEndAfeParams(QVR_lineId_t, QVR_AFE_PARAMS_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
