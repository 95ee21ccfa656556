// The library's start, in one call.
#include <qvr.h>

namespace {

bool initialized = false;  // the command thread's own

}  // namespace

QVR_retval_t QVR_initFastModule(BOOL xi_waitForDevice) {
  if (initialized) {
    return QVR_E_STATUS_OK;
  }
  QVR_retval_t status = QVR_initDeviceModule(xi_waitForDevice);
  if (QVR_STATUS_OK(status)) {
    status = QVR_initLineModule(xi_waitForDevice);
  }
  if (QVR_STATUS_OK(status)) {
    status = QVR_loadConfigParams(0);
  }
  initialized = QVR_STATUS_OK(status);
  return status;
}

QVR_retval_t QVR_reInitFastModule() {
  return QVR_E_STATUS_OK;
}

const char* QVR_versionIdent() {
  return "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $";
}
