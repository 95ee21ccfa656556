// Why lines went down, in the words of ITU-T G.997.2.
#pragma once

#include <qvr.h>

namespace gfast {

// Tells the one who registered for it which failure a line has had. Runs on the notification thread.
void QVR_LinkFailureEventHandler(QVR_lineId_t xi_lineId, LINK_FAILURE_TYPE_E xi_reason, time_t xi_time);

}  // namespace gfast
