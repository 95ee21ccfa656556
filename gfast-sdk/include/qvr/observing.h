// Reading beside a user: a thread that reads all the time, and must not change what another thread is told.
#pragma once

#include <qvr/types.h>

QVR_BEGIN_C

// From now on (TRUE) the calls of the calling thread leave nothing behind in the library; FALSE, as every
// thread begins, ends that. Other threads are not affected. While it is on:
//   - a device's record stays as it was last read, and no device is counted: QVR_getDeviceInfo fills the
//     caller's record only
//   - no device is opened: what is not open answers QVR_E_DEVICE_NOT_EXISTS
//   - the history stays as it was: QVR_getCurr15minCounters and QVR_getCurr24hrCounters, and interval 0 of
//     QVR_getPrev15minCounters and QVR_getPrev24hrCounters, compute the running interval without keeping it
//   - the trace log gets no message
// Operations that write into a chip write all the same: such a thread calls none of them.
void QVR_observeOnly(QVR_bool_t xi_only);

QVR_END_C
