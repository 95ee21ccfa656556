// How the device layer sends a request and takes its result.
#pragma once

#include <qvr.h>

#include "driver/driver.h"

namespace gfast {

constexpr int kRequestFailed = -1;

// Sends the request: the failure code when the device cannot be opened or the driver refuses.
inline QVR_retval_t sendRequest(QVR_deviceId_t device, uint32_t code, gfast_iocreq& request,
                                QVR_retval_t failure) {
  const int descriptor = QVR_deviceHandle(device);
  if (descriptor < 0) {
    return QVR_E_DEVICE_NOT_EXISTS;
  }
  return driver().request(descriptor, code, request) == kRequestFailed ? failure : QVR_E_STATUS_OK;
}

}  // namespace gfast
