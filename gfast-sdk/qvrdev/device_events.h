// A device's event queue: what the chip reports about its lines and itself, turned into callbacks.
#pragma once

#include <qvr.h>

namespace gfast {

// Events taken from one device in one go, so that a chip that floods its queue does not delay the other.
constexpr int kMostEventsInOneGo = 64;

// Dispatches the device's pending events, oldest first, until none is pending or kMostEventsInOneGo were
// taken; *xo_taken, unless nullptr, is how many. Always QVR_E_STATUS_OK: a request that fails ends the
// draining.
QVR_retval_t QVR_handleAlarm(int xi_descriptor, QVR_deviceId_t xi_deviceId, int* xo_taken = nullptr);

// A chip has restarted: calls the line layer's handler, then the registered callback.
void QVR_handleRebootEvent();

}  // namespace gfast
