#include <qvr.h>

#include "std/observing.h"

void QVR_observeOnly(QVR_bool_t xi_only) {
  gfast::observing = xi_only != FALSE;
}
