// The check of the links between chips.
#include <qvr.h>

QVR_retval_t QVR_startExtcomConnectivityTest() {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}

QVR_retval_t QVR_getExtcomConnectivityTestResults(QVR_extcomPortErrors_t*) {
  return QVR_E_NOT_CURRENTLY_SUPPORTED;
}
