// The signal tests' start.
#include <qvr.h>

QVR_retval_t QVR_initTestModule() {
  return QVR_E_STATUS_OK;
}
