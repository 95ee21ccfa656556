// Gain and mode of the analogue front end.
#pragma once

#include "qvrline/tone_memory.h"

namespace gfast {

// Results as QVR_getAfeParams of a line in showtime. *afe is untouched on failure.
QVR_retval_t readAfe(const LineInShowtime& line, LineEnd end, QVR_AFE_PARAMS_t* afe);

}  // namespace gfast
