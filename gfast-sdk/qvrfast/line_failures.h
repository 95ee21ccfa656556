// Reports why a line went down, as the line failures of ITU-T G.997.2.
#pragma once

#include <qvr.h>

namespace gfast {

// Calls the registered callback with the failure of a line. Runs on the notification thread.
void QVR_LinkFailureEventHandler(QVR_lineId_t xi_lineId, LINK_FAILURE_TYPE_E xi_reason, time_t xi_time);

}  // namespace gfast
