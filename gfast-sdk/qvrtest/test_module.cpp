// The signal tests' start.
#include <qvr.h>

QVR_retval_t QVR_initTestModule() {
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_enterTestMode() {
  return QVR_E_STATUS_OK;
}

QVR_retval_t QVR_exitTestMode() {
  return QVR_E_STATUS_OK;
}
