// The library's start, in one call.
#include <qvr.h>

namespace {

bool initialized = false;  // the command thread's own

}  // namespace

QVR_retval_t QVR_initFastModule(BOOL xi_waitForDevice) {
  if (initialized) {
    return QVR_E_STATUS_OK;
  }
  const QVR_retval_t status = QVR_initDeviceModule(xi_waitForDevice);
  initialized = QVR_STATUS_OK(status);
  return status;
}
