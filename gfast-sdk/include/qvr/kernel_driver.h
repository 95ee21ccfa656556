// The board's kernel driver as what carries the library's requests. Not part of qvr.h: its operation is in an
// archive of its own, libgfast-kernel-driver, which is linked before libgfast-sdk.
#pragma once

#include <qvr/types.h>

QVR_BEGIN_C

// The driver's character devices: "/dev/gfdfe0" and "/dev/gfdfe1".
#define QVR_K_DEVICE_NAME_FMT "/dev/gfdfe%1d"

// Requests go to the kernel driver from now on. Called before any other operation, once; until then no device
// can be opened (QVR_E_DEVICE_NOT_EXISTS). Opens no device.
//
// With GFAST_TRACE=FILE in the environment, every request and its answer is recorded in that file from now
// on, as text; with GFAST_TRACE_BLANK=1 as well, without MAC addresses and serial numbers. A file that cannot
// be written is one line on standard error; the requests go on. SIGPIPE and SIGXFSZ are ignored then, and the
// calling thread counts as the one that runs the commands.
void QVR_useKernelDriver(void);

QVR_END_C
