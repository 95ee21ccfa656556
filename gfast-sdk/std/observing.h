// Whether this thread only looks: QVR_observeOnly says what its calls then leave as it was.
#pragma once

namespace gfast {

inline constinit thread_local bool observing = false;

}  // namespace gfast
