// Starts the library in one call.

#include "qvrfast/interval_history.h"

#include <qvr.h>
#include "qvrfast/line_failures.h"
#include "qvrfast/quarter_hours.h"
#include "qvrline/interval_counters.h"

using namespace gfast;

namespace {

bool initialized = false;  // used by the command thread only

void startHistory() {
  restartHistory();
  QVR_register15minCounterUpdateNotificationCB(QVR_15minCounterUpdateNotificationHandler);
  QVR_registerLinkFailureNotificationCB(QVR_LinkFailureEventHandler);
}

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
  if (QVR_STATUS_OK(status)) {
    startHistory();
    initialized = true;
  }
  return status;
}

QVR_retval_t QVR_reInitFastModule() {
  return QVR_E_STATUS_OK;
}

const char* QVR_versionIdent() {
  return "$Date: 2017-03-30 21:49:22 +0300 (Thu, 30 Mar 2017) $";
}
