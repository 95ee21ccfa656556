// A device's log queue: buffers of packed records, rendered into lines for the registered log callback.
#pragma once

#include <qvr.h>

namespace gfast {

constexpr size_t QVR_K_MAX_LOG_STRING_LEN = 1024;  // bytes of a rendered line, terminator included

// Log buffers taken from one device in one go, so that a chip with many logs does not delay the other.
constexpr int kMostLogBuffersInOneGo = 16;

// Fetches the device's pending log records and delivers them, until none is pending or kMostLogBuffersInOneGo
// buffers were taken; *xo_taken, unless nullptr, is how many. Always QVR_E_STATUS_OK: a request that fails
// ends the draining.
QVR_retval_t QVR_handleLogEvents(int xi_descriptor, QVR_deviceId_t xi_deviceId, int* xo_taken = nullptr);

// Delivers the records of a completed log read, in order: "<time> CP - <text>" of the control processor,
// "<time> <core><line> - <text>" of the others. A record whose text reaches past what the driver copied ends
// the delivery. Parameter words beyond what was copied are 0.
void QVR_sendLogMessage(QVR_deviceId_t xi_deviceId, const gfast_iocreq& xi_request);

}  // namespace gfast
